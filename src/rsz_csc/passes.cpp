// To rgb565 by two passes and a conversion, where not both axes shrink.
#include "rsz_csc/passes.h"

#include <string.h>

#include "rsz/passes.h"
#include "rsz_csc/planes.h"

namespace pivra {
namespace {

// A call.
struct Job {
  bool tiled;
  uint8_t *const *src;
  const int32_t *src_width, *src_height, *src_stride;
  int32_t *dst_width, *dst_height, *dst_stride;
  uint8_t *const *dst;
  bool mode1;

  // Of the three planes: tiles have both chromas in one.
  int32_t sw(int plane) const { return src_width[tiled && plane > 1 ? 1 : plane]; }
  int32_t sh(int plane) const { return src_height[tiled && plane > 1 ? 1 : plane]; }
  int32_t dw(int plane) const { return plane == 0 ? dst_width[0] : dst_width[0] >> 1; }
  int32_t dh(int plane) const { return plane == 0 ? dst_height[0] : dst_height[0] >> 1; }

  bool empty() const { return dw(0) < 1 || sw(0) < 1 || dh(0) < 1 || sh(0) < 1; }
  bool shrinks_both() const { return dw(0) < sw(0) && dh(0) < sh(0); }

  Axis across(int plane) const { return axis(sw(0), dw(0), sw(plane), dw(plane)); }
  Axis down(int plane) const { return axis(sh(0), dh(0), sh(plane), dh(plane)); }

 private:
  // The quotient is that of luma, the remainder the plane's own. Without samples or
  // outputs there is nothing to do.
  Axis axis(int32_t luma_samples, int32_t luma_outputs, int32_t samples, int32_t outputs) const {
    if (samples < 1 || outputs < 1) return {};
    return luma_outputs < luma_samples
               ? shrink_axis(outputs, luma_samples / luma_outputs, samples % outputs)
               : grow_axis(outputs, samples, luma_outputs / luma_samples, outputs % samples, mode1);
  }
};

// Where the planes are in the scratch: before and after the pass over columns. The
// heights of chroma count differently here and there: with odd ones the last row of a
// plane may be the first of the next one.
struct Layout {
  int64_t rows[3], lines[3];
  ptrdiff_t pitch[3];
  int64_t bytes;  // with what the conversion reads beyond the planes

  explicit Layout(const Job &job) {
    const int64_t dw = job.dw(0), dh = job.dh(0), half = job.dw(1), stride = job.dst_stride[0];
    const ptrdiff_t luma_pitch = job.dst_stride[0] >> 1, chroma_pitch = job.dst_stride[0] >> 2;
    rows[0] = 0;
    rows[1] = dw * job.sh(0);
    rows[2] = rows[1] + half * (job.sh(0) >> 1);
    lines[0] = rows[1] + half * (int64_t{job.sh(1)} + job.sh(2));
    lines[1] = lines[0] + dh * luma_pitch;
    lines[2] = lines[1] + (dh >> 1) * chroma_pitch;
    pitch[0] = luma_pitch;
    pitch[1] = pitch[2] = chroma_pitch;
    bytes = lines[2] + ((dh >> 1) + 1) * chroma_pitch + dw + 2;
    const int64_t known = half * (job.sh(0) >> 1) * 2 + dw * job.sh(0) + dh * (stride >> 1) +
                          (dh >> 1) * (stride >> 2) * 2;
    const int64_t first_end = rows[2] + half * job.sh(2);
    if (bytes < known) bytes = known;
    if (bytes < first_end) bytes = first_end;
  }
};

// The pass over the rows of tiles.
void resize_tiles(const Job &job, const Layout &layout, uint8_t *scratch) {
  const int32_t tw = job.src_width[0];
  const Axis luma = job.across(0), chroma = job.across(1);
  uint8_t *const y = scratch + layout.rows[0], *const u = scratch + layout.rows[1],
                 *const v = scratch + layout.rows[2];
  if (!luma.grows()) {
    pivra_nv12t_rsz_down_w(job.src[0], y, tw, luma.outputs, job.sh(0), luma.quotient,
                           luma.remainder);
    if (chroma.outputs > 0)
      pivra_nv12t_rsz_down_w_c(job.src[1], u, v, tw, chroma.outputs, job.sh(1), chroma.quotient,
                               chroma.remainder);
    return;
  }
  const auto up = job.mode1 ? pivra_nv12t_rsz_up_mode1 : pivra_nv12t_rsz_up;
  const auto up_c = job.mode1 ? pivra_nv12t_rsz_up_c_mode1 : pivra_nv12t_rsz_up_c;
  up(job.src[0], y, luma.outputs, job.sw(0), job.sh(0), luma.quotient, luma.remainder, tw);
  if (chroma.outputs > 0)
    up_c(job.src[1], u, v, chroma.outputs, 2 * job.sw(1), job.sh(1), chroma.quotient,
         chroma.remainder, tw);
}

// Pass by pass.
void resize_in_scratch(const Job &job, uint8_t *scratch) {
  const Layout layout(job);
  if (job.tiled) resize_tiles(job, layout, scratch);
  for (int plane = 0; plane < 3; ++plane) {
    const Axis across = job.across(plane);
    if (!job.tiled && across.outputs > 0)
      resize_width(k8b, across, {job.src[plane], job.src_stride[plane]}, job.sh(plane),
                   scratch + layout.rows[plane]);
  }
  for (int plane = 0; plane < 3; ++plane) {
    const Axis down = job.down(plane);
    if (down.outputs < 1 || job.dw(plane) < 1) continue;
    resize_height(k8b, down, {scratch + layout.rows[plane], job.dw(plane)},
                  {kStraight, k8b, scratch + layout.lines[plane], layout.pitch[plane],
                   job.dw(plane), job.dh(plane)});
  }
  const auto convert = (job.dh(0) & 1) != 0 ? pivra_rsz_csc_up_h_yuv420_to_rgb565_gen
                                            : pivra_rsz_csc_up_h2x_yuv420_to_rgb565_gen;
  convert(scratch + layout.lines[0], scratch + layout.lines[1], scratch + layout.lines[2],
          job.dst[0], job.dst_stride, job.dst_height, job.dst_width);
}

// Two lines at a time, with the few rows that those are made of.
struct Passes {
  Axis across[2], down[2];

  int32_t limit(const Plane &plane, const Engine &engine, int which) const {
    return StripRows::limit(plane, engine, across[which].grows() ? 0 : across[which].quotient);
  }
  AxisWalk walk(int which) const { return {across[which], kStripOutputs}; }

  class Lines {
   public:
    Lines(const Passes &passes, const Engine &engine, const Plane &plane, Strip &strip, int which)
        : engine_(engine),
          across_(passes.across[which]),
          strip_(strip),
          rows_(plane, strip, passes.down[which].grows() ? 1 : passes.down[which].quotient),
          down_(passes.down[which]) {}

    const uint8_t *next() {
      const GrowStep step = down_.next();
      const uint8_t *upper = row(step.at);
      if (is_copy(step.mix)) return upper;
      uint8_t *const line = line_[odd_ = !odd_].byte;
      engine_.mix(upper, row(step.at + 1), step.mix, strip_.count, line);
      return line;
    }

   private:
    // Rows are asked for by rising numbers, but for the one before the last. Two lines are
    // made of four.
    const uint8_t *row(ptrdiff_t number) {
      if (number > next_) next_ = number;
      for (; next_ <= number; ++next_) engine_.resize(across_, strip_, rows_(next_), slot(made_++));
      return slot(made_ - (next_ - number));
    }
    uint8_t *slot(ptrdiff_t n) { return row_[n & 3].byte; }

    const Engine &engine_;
    const Axis &across_;
    const Strip &strip_;
    StripRows rows_;
    AxisSteps down_;
    ptrdiff_t next_ = 0, made_ = 0;  // row to make next, and how many were made
    bool odd_ = false;
    LineBuffer row_[4], line_[2];
  };
};

void resize_by_lines(const Job &job) {
  const Passes passes = {{job.across(0), job.across(1)}, {job.down(0), job.down(1)}};
  const Plane tiles[] = {tiled_plane(k8b, job.src[0], job.sw(0), job.sh(0)),
                         tiled_plane(k8b8b, job.src[1], job.sw(0), job.sh(1))};
  const Plane planes[] = {linear_plane(job.src[0], job.src_stride[0], 0),
                          linear_plane(job.src[1], job.src_stride[1], 0),
                          linear_plane(job.tiled ? nullptr : job.src[2], job.src_stride[2], 0)};
  const ptrdiff_t stride = job.dst_stride[0];
  const PairsToRgb &pairs = chosen(pairs_to_rgb_tables);
  const Target to = {job.tiled ? pairs.nv12_to_rgb565 : pairs.yuv420_to_rgb565,
                     2,
                     job.dst[0],
                     2 * stride,
                     stride & ~1,
                     job.dw(0),
                     job.dh(0)};
  convert_resized(passes, job.tiled ? tiles : planes, job.tiled ? 2 : 3, to);
}

// Whether all that the passes and the conversion read is what was made of that plane,
// whatever else lies in the scratch.
bool fits_lines(const Job &job) {
  const int32_t half_width = job.sw(0) >> 1, half_height = job.sh(0) >> 1;
  const bool even = job.dw(0) % 2 == 0 && job.dh(0) % 2 == 0;
  const bool halved = half_width > 0 && half_height > 0 && job.sh(1) == half_height &&
                      job.sh(2) == half_height && job.sw(1) == job.sw(2) &&
                      (job.sw(1) == half_width || job.sw(1) == (job.sw(0) + 1) >> 1);
  return even && halved && job.dst_stride[0] >= 2 * job.dw(0);
}

// Averages while it converts.
void shrink(const Job &job) {
  uint8_t *src[] = {job.src[0], job.src[1], job.tiled ? nullptr : job.src[2]};
  int32_t width[] = {job.sw(0), job.sw(1)}, height[] = {job.sh(0), job.sh(1)};
  const int32_t dw = job.dw(0), dh = job.dh(0), stride = job.dst_stride[0];
  const bool whole = width[0] % dw == 0 && height[0] % dh == 0;
  const int32_t qx = width[0] / dw, qy = height[0] / dh;
  if (job.tiled) {
    if (whole)
      pivra_8b_rsz_csc_down_mult_t64x32torgb565(src, job.dst[0], dw, dh, qx, qy, width, height,
                                                stride);
    else
      pivra_8b_rsz_csc_down_non_multt64x32torgb565(src, job.dst[0], dw, dh, width, height, stride);
    return;
  }
  int32_t src_stride[] = {job.src_stride[0], job.src_stride[1], job.src_stride[2]};
  if (whole)
    pivra_8b_rsz_csc_down_mult_yuvtorgb565(src, job.dst[0], dw, dh, qx, qy, src_stride, stride);
  else
    pivra_8b_rsz_csc_down_non_multyuvtorgb565(src, job.dst[0], dw, dh, width, height, src_stride,
                                              stride);
}

int32_t run(const Job &job, uint8_t *scratch, bool kept) {
  if (job.empty()) return PIVRA_REFUSED;
  if (job.shrinks_both()) {
    shrink(job);
    return PIVRA_OK;
  }
  if (scratch == nullptr) return PIVRA_REFUSED;
  if (!kept && fits_lines(job)) {
    resize_by_lines(job);
  } else {
    if (!kept) memset(scratch, 0, static_cast<size_t>(Layout(job).bytes));
    resize_in_scratch(job, scratch);
  }
  return PIVRA_OK;
}

Job job_of(const ImageDesc &src, ImageDesc &dst) {
  return {src.format == PIVRA_FORMAT_T64X32,
          src.plane,
          src.width,
          src.height,
          src.stride,
          dst.width,
          dst.height,
          dst.stride,
          dst.plane,
          dst.resize_mode == PIVRA_RSZ_MODE1};
}

}  // namespace

int64_t rgb565_scratch(const ImageDesc &src, ImageDesc &dst) {
  return Layout(job_of(src, dst)).bytes;
}

int32_t resize_to_rgb565(const ImageDesc &src, ImageDesc &dst, uint8_t *scratch) {
  return run(job_of(src, dst), scratch, false);
}

}  // namespace pivra

#define PIVRA_DEFINE(name, tiled)                                                            \
  int32_t name(uint8_t **src, int32_t *src_width, int32_t *src_height, int32_t *src_stride,  \
               int32_t *dst_width, int32_t *dst_height, int32_t *dst_stride, uint8_t **dst,  \
               uint8_t *scratch, uint32_t mode) {                                            \
    return pivra::run({tiled, src, src_width, src_height, src_stride, dst_width, dst_height, \
                       dst_stride, dst, mode == PIVRA_RSZ_MODE1},                            \
                      scratch, true);                                                        \
  }
PIVRA_DEFINE(pivra_rsz_csc_yuv420_to_rgb565, false)
PIVRA_DEFINE(pivra_rsz_csc_t64x32_to_rgb565, true)
#undef PIVRA_DEFINE
