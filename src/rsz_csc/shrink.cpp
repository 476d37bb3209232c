// Both axes shrink: pixels are converted as they are averaged.
#include "pivra.h"
#include "rsz_csc/planes.h"

namespace pivra {
namespace {

// Steps on a plane of so many samples: beyond its last one there is only that. Behind
// the outputs that the remainder is out of there may be one more, of a single sample.
class ClampedSteps {
 public:
  static constexpr bool kSkips = true;

  ClampedSteps(int32_t outputs, int32_t quotient, int32_t remainder, bool all_pairs,
               int32_t samples)
      : steps_(outputs, quotient, remainder, all_pairs),
        left_(outputs),
        last_(samples - 1),
        fits_(ptrdiff_t{outputs - 1} * quotient < last_) {}

  static bool all_means() { return true; }
  int32_t whole() const { return fits_ ? steps_.whole() : 0; }
  ptrdiff_t skip(int32_t outputs) { return steps_.skip(outputs); }

  ShrinkStep next() {
    ShrinkStep step = steps_.next();
    if (left_-- <= 0) step.pair = false;
    if (step.at >= last_) step = {last_, false};
    return step;
  }

 private:
  ShrinkSteps steps_;
  int32_t left_;
  ptrdiff_t last_;
  bool fits_;
};

struct ClampedWalk : Walk<ClampedSteps> {
  explicit ClampedWalk(const ClampedSteps &steps) : Walk(0, kStripOutputs, steps) {}
};

// Of luma and of chroma.
struct Shrink {
  ClampedSteps across[2], down[2];
  int32_t quotient[2], quotient_down;

  int32_t limit(const Plane &plane, const Engine &engine, int which) const {
    return StripRows::limit(plane, engine, quotient[which]);
  }
  ClampedWalk walk(int which) const { return ClampedWalk(across[which]); }

  class Lines {
   public:
    Lines(const Shrink &shrink, const Engine &engine, const Plane &plane, Strip &strip, int which)
        : engine_(engine),
          strip_(strip),
          rows_(plane, strip, shrink.quotient_down),
          down_(shrink.down[which]) {}

    const uint8_t *next() {
      const ShrinkStep step = down_.next();
      uint8_t *const line = line_[odd_ = !odd_].byte;
      if (step.pair && rows_.halve(step.at, line)) return line;
      const uint8_t *top = rows_(step.at);
      engine_.shrink(strip_, top, step.pair ? rows_(step.at, true) : nullptr, line);
      return line;
    }

   private:
    const Engine &engine_;
    const Strip &strip_;
    StripRows rows_;
    ClampedSteps down_;
    bool odd_ = false;
    LineBuffer line_[2];
  };
};

constexpr int32_t kUnbounded = INT32_MAX;

// By whole factors, in whole pairs of columns. Of planes so large.
void shrink_whole(const Plane *planes, int count, const int32_t *width, const int32_t *height,
                  int32_t qx, int32_t qy, Target to) {
  to.width &= ~1;
  const int32_t half_width = to.width / 2, half_height = to.height / 2;
  const Shrink shrink = {
      {{to.width, qx, 0, true, width[0]}, {half_width, qx, 0, true, width[1]}},
      {{to.height, qy, 0, true, height[0]}, {half_height, qy, 0, true, height[1]}},
      {qx, qx},
      qy};
  convert_resized(shrink, planes, count, to);
}

// By others. The rows of chroma step by the quotient of the luma.
void shrink_by_carries(const Plane *planes, int count, const int32_t *width, const int32_t *height,
                       const Target &to) {
  if (to.width < 1 || to.height < 1) return;
  const auto steps = [](int32_t samples, int32_t outputs, int32_t quotient) {
    const int32_t remainder = outputs > 0 ? samples % outputs : 0;
    return ClampedSteps(outputs, quotient, remainder, false, samples);
  };
  const int32_t half_width = to.width / 2, half_height = to.height / 2;
  const int32_t quotient[2] = {width[0] / to.width, half_width > 0 ? width[1] / half_width : 0};
  const int32_t down = height[0] / to.height;
  const Shrink shrink = {
      {steps(width[0], to.width, quotient[0]), steps(width[1], half_width, quotient[1])},
      {steps(height[0], to.height, down), steps(height[1], half_height, down)},
      {quotient[0], quotient[1]},
      down};
  convert_resized(shrink, planes, count, to);
}

Target rgb565(bool tiled, uint8_t *dst, ptrdiff_t stride, int32_t width, int32_t height) {
  const PairsToRgb &pairs = chosen(pairs_to_rgb_tables);
  return {tiled ? pairs.nv12_to_rgb565 : pairs.yuv420_to_rgb565,
          2,
          dst,
          2 * stride,
          stride,
          width,
          height};
}

}  // namespace
}  // namespace pivra

using namespace pivra;

void pivra_8b_rsz_csc_down_mult_yuvtorgb565(uint8_t **src, uint8_t *dst, int32_t width,
                                            int32_t height, int32_t quotient_x, int32_t quotient_y,
                                            int32_t *src_stride, int32_t dst_stride) {
  const ptrdiff_t below = src_stride[0] / 2;
  const Plane planes[] = {linear_plane(src[0], src_stride[0], src_stride[0]),
                          linear_plane(src[1], src_stride[1], below),
                          linear_plane(src[2], src_stride[2], below)};
  const int32_t size[] = {kUnbounded, kUnbounded};
  shrink_whole(planes, 3, size, size, quotient_x, quotient_y,
               rgb565(false, dst, dst_stride, width, height));
}

void pivra_8b_rsz_csc_down_non_multyuvtorgb565(uint8_t **src, uint8_t *dst, int32_t width,
                                               int32_t height, int32_t *src_width,
                                               int32_t *src_height, int32_t *src_stride,
                                               int32_t dst_stride) {
  const ptrdiff_t stride = src_stride[0], half = src_stride[0] / 2;
  const Plane planes[] = {linear_plane(src[0], stride, stride), linear_plane(src[1], half, half),
                          linear_plane(src[2], half, half)};
  shrink_by_carries(planes, 3, src_width, src_height,
                    rgb565(false, dst, dst_stride, width, height));
}

void pivra_8b_rsz_csc_down_mult_t64x32torgb565(uint8_t **src, uint8_t *dst, int32_t width,
                                               int32_t height, int32_t quotient_x,
                                               int32_t quotient_y, int32_t *src_width,
                                               int32_t *src_height, int32_t dst_stride) {
  const Plane planes[] = {tiled_plane(k8b, src[0], src_width[0], src_height[0]),
                          tiled_plane(k8b8b, src[1], src_width[0], src_height[1])};
  shrink_whole(planes, 2, src_width, src_height, quotient_x, quotient_y,
               rgb565(true, dst, dst_stride, width, height));
}

void pivra_8b_rsz_csc_down_non_multt64x32torgb565(uint8_t **src, uint8_t *dst, int32_t width,
                                                  int32_t height, int32_t *src_width,
                                                  int32_t *src_height, int32_t dst_stride) {
  const Plane planes[] = {tiled_plane(k8b, src[0], src_width[0], src_height[0]),
                          tiled_plane(k8b8b, src[1], src_width[0], src_height[1])};
  shrink_by_carries(planes, 2, src_width, src_height, rgb565(true, dst, dst_stride, width, height));
}
