// The dispatchers of resizing, and the entry points for single planes.
#include <stdlib.h>

#include "pivra.h"
#include "rsz/passes.h"

namespace pivra {
namespace {

// A plane before and after. By a quarter turn the columns of the resized plane become
// the height of the destination.
struct Resize {
  Shape shape;
  int32_t turn;
  Source src;
  int32_t sw, sh, dw, dh;
  uint8_t *dst;
  ptrdiff_t dst_stride;
  uint32_t mode;

  int32_t columns() const { return is_quarter_turn(turn) ? dh : dw; }
  int32_t lines() const { return is_quarter_turn(turn) ? dw : dh; }
  bool empty() const { return sw <= 0 || sh <= 0 || dw <= 0 || dh <= 0; }
  bool shrinks_both() const { return columns() < sw && lines() < sh; }

  // Bytes.
  uint64_t scratch() const {
    if (empty() || shrinks_both()) return 0;
    return static_cast<uint64_t>(kSampleBytes[shape]) * static_cast<uint32_t>(columns()) *
           static_cast<uint32_t>(sh);
  }

  int32_t run(Scratch scratch) const;
};

int32_t Resize::run(Scratch scratch) const {
  if (empty()) return PIVRA_REFUSED;
  const bool mode1 = mode == PIVRA_RSZ_MODE1;
  Axis across = axis_between(sw, columns(), mode1), down = axis_between(sh, lines(), mode1);
  const Place place(turn, shape, dst, dst_stride, dw, dh);
  if (shrinks_both()) {
    // Two integer ratios, or carries alone.
    if (across.remainder != 0 || down.remainder != 0) across.rule = down.rule = Axis::kCarries;
    shrink_both(shape, across, down, src, down.quotient * src.stride, place);
  } else {
    resize_both(shape, across, down, src, sh, scratch, place);
  }
  return PIVRA_OK;
}

// Strides of 5-6-5 planes are rounded down to whole words.
constexpr ptrdiff_t whole_stride(Shape shape, int32_t stride) {
  return shape == k5b6b5b ? stride & ~1 : stride;
}

}  // namespace
}  // namespace pivra

using namespace pivra;

#define PIVRA_DEFINE(name, shape, turn)                                                            \
  int32_t name(const uint8_t *src, int32_t sw, int32_t sh, int32_t dw, int32_t dh, uint8_t *dst,   \
               uint8_t *scratch, int32_t src_stride, int32_t dst_stride, uint32_t mode) {          \
    const Source from = {src, whole_stride(shape, src_stride)};                                    \
    const Resize plane = {shape, turn, from, sw, sh, dw, dh, dst, whole_stride(shape, dst_stride), \
                          mode};                                                                   \
    return plane.run({scratch, true});                                                             \
  }
#define PIVRA_STRAIGHT(shape) PIVRA_DEFINE(pivra_rsz_##shape, k##shape, kStraight)
#define PIVRA_TURNED(shape, turn) PIVRA_DEFINE(pivra_rsz_##shape##_rot_##turn, k##shape, k##turn)
PIVRA_RSZ_SHAPES(PIVRA_STRAIGHT)
PIVRA_RSZ_TURNS(PIVRA_TURNED)
#undef PIVRA_TURNED
#undef PIVRA_STRAIGHT
#undef PIVRA_DEFINE

namespace {

// How the planes of a group of formats are resized, and copied if the size stays.
struct Layout {
  int32_t first, last;
  int planes;
  Shape shape[3];
  pivra_cpy_kernel *copy;
  bool stride_rows;  // the scratch has rows of the destination's stride
};
// The first line that has the format counts.
constexpr Layout kLayouts[] = {
    {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV400, 1, {k8b}, pivra_cpy_8b, false},
    {PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV21, 2, {k8b, k8b8b}, pivra_cpy_8b, false},
    {PIVRA_FORMAT_T64X32, PIVRA_FORMAT_T64X32, 0, {}, nullptr, false},
    {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV400 + 99, 3, {k8b, k8b, k8b}, pivra_cpy_8b, false},
    {PIVRA_FORMAT_RGB565, PIVRA_FORMAT_BGR565, 1, {k5b6b5b}, pivra_cpy_16b, true},
    {PIVRA_FORMAT_RGB888, PIVRA_FORMAT_BGR888, 1, {k8b8b8b}, pivra_cpy_24b, true},
    {PIVRA_FORMAT_RGBA8888, PIVRA_FORMAT_ABGR8888, 1, {k8b8b8b8b}, pivra_cpy_32b, true},
};

// Null unless the format resizes.
const Layout *layout_of(int32_t format) {
  for (const Layout &layout : kLayouts)
    if (layout.first <= format && format <= layout.last)
      return layout.planes > 0 ? &layout : nullptr;
  return nullptr;
}

// Pairs are copied as so many bytes.
void copy_plane(const Layout &layout, const ImageDesc &src, const ImageDesc &dst, int plane) {
  layout.copy(src.plane[plane], src.width[plane] * (layout.shape[plane] == k8b8b ? 2 : 1),
              src.height[plane], src.stride[plane], dst.stride[plane], dst.plane[plane]);
}

Resize plane_of(const Layout &layout, int32_t turn, const ImageDesc &src, const ImageDesc &dst,
                int plane) {
  const Shape shape = layout.shape[plane];
  return {shape,
          turn,
          {src.plane[plane], whole_stride(shape, src.stride[plane])},
          src.width[plane],
          src.height[plane],
          dst.width[plane],
          dst.height[plane],
          dst.plane[plane],
          whole_stride(shape, dst.stride[plane]),
          dst.resize_mode};
}

// As much memory as callers know the scratch to take, or more where a later plane does.
uint8_t *allocate(int64_t known, uint64_t needed) {
  uint64_t bytes = known > 0 ? static_cast<uint64_t>(known) : 1;
  if (bytes < needed) bytes = needed;
  return bytes > PTRDIFF_MAX ? nullptr : static_cast<uint8_t *>(malloc(static_cast<size_t>(bytes)));
}

// With a scratch of so many bytes a source row.
int32_t resize_planes(const Layout &layout, int32_t turn, const ImageDesc &src,
                      const ImageDesc &dst, int32_t scratch_row) {
  uint64_t needed = 0;
  for (int plane = 0; plane < layout.planes; ++plane) {
    const uint64_t bytes = plane_of(layout, turn, src, dst, plane).scratch();
    if (needed < bytes) needed = bytes;
  }
  uint8_t *scratch = allocate(int64_t{scratch_row} * src.height[0], needed);
  if (scratch == nullptr && needed > 0) return PIVRA_REFUSED;
  for (int plane = 0; plane < layout.planes; ++plane) {
    const int32_t result = plane_of(layout, turn, src, dst, plane).run({scratch, false});
    // The scratch stays allocated, as callers know it to.
    if (result != PIVRA_OK) return result;  // NOLINT(clang-analyzer-unix.Malloc)
  }
  free(scratch);
  return PIVRA_OK;
}

}  // namespace

int32_t pivra_rsz(const ImageDesc *src, ImageDesc *dst) {
  if (src->format != dst->format) return PIVRA_REFUSED;
  const Layout *layout = layout_of(src->format);
  if (layout == nullptr) return PIVRA_UNSUPPORTED;
  if (src->width[0] == dst->width[0] && src->height[0] == dst->height[0]) {
    for (int plane = 0; plane < layout->planes; ++plane) copy_plane(*layout, *src, *dst, plane);
    return PIVRA_OK;
  }
  return resize_planes(*layout, kStraight, *src, *dst,
                       layout->stride_rows ? dst->stride[0] : dst->width[0]);
}

int32_t pivra_rsz_rot(const ImageDesc *src, int32_t rotation, ImageDesc *dst) {
  if (src->format != dst->format) return PIVRA_REFUSED;
  const bool quarter = is_quarter_turn(rotation);
  const int32_t columns = quarter ? dst->height[0] : dst->width[0];
  const int32_t lines = quarter ? dst->width[0] : dst->height[0];
  if (src->width[0] == columns && src->height[0] == lines) return pivra_rot(src, rotation, dst);
  const Layout *layout = layout_of(src->format);
  if (layout == nullptr || src->format >= PIVRA_FORMAT_UYVY) return PIVRA_UNSUPPORTED;
  // Mirrors and what is no code resize straight. There the scratch of planar formats has
  // rows of the stride.
  const bool turns = quarter || rotation == k180;
  const bool stride_rows = !turns && layout->shape[1] != k8b8b;
  return resize_planes(*layout, turns ? rotation : kStraight, *src, *dst,
                       stride_rows ? dst->stride[0] : columns);
}
