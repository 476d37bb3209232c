// Shrinking by cells, the means of 2 x 2 samples: ratios of 2 to 8.
#include <stdlib.h>

#include "pivra.h"
#include "rsz/engine.h"
#include "rsz/passes.h"

namespace pivra {
namespace {

// How many cells of a source may be looked at.
struct Cells {
  int32_t columns, rows;
};
struct Destination {
  uint8_t *first;
  ptrdiff_t stride;
};
constexpr Cells kAllCells = {INT32_MAX, INT32_MAX};

// Outputs of a strip that such a source does not reach are dropped; whether any are left.
bool clip(Strip &strip, int32_t columns) {
  while (strip.count > 0) {
    const int32_t last = strip.count - 1;
    strip.samples = strip.at[last] + strip.pair[last] + 1;
    if (strip.source + strip.samples <= columns) return true;
    strip.count = last;
  }
  return false;
}

// The rule of carries over cells: rows of cells are made of two rows each, as far as a
// strip needs them, and resized like rows of samples.
void shrink_cells(Shape shape, const Axis &across, const Axis &down, Source src, Cells cells,
                  Destination dst) {
  const Engine engine(shape);
  // Every output moves on by one cell or two.
  AxisWalk walk(across, engine.limit / 2);
  Strip strip, halves;
  while (walk.next(strip) && clip(strip, cells.columns)) {
    engine.plan(strip);
    AxisWalk halving({Axis::kPairs, strip.samples, 0, 2, 0}, engine.limit);
    engine.next(halving, halves);
    const uint8_t *columns = src.first + 2 * strip.source * engine.bytes;
    uint8_t cell_row[2][kStripBytes];
    AxisSteps steps(down);
    for (int32_t line = 0; line < down.outputs; ++line) {
      const GrowStep step = steps.next();
      if (step.at + step.pair >= cells.rows) break;
      for (int32_t row = 0; row <= step.pair; ++row) {
        const uint8_t *top = columns + 2 * (step.at + row) * src.stride;
        engine.shrink(halves, top, top + src.stride, cell_row[row]);
      }
      engine.shrink(strip, cell_row[0], step.pair ? cell_row[1] : nullptr,
                    dst.first + line * dst.stride + strip.first * engine.bytes);
    }
  }
}

template <Shape kShape>
void down_2xplus(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, int32_t rx, int32_t ry,
                 int32_t src_stride, int32_t dst_stride, Cells cells = kAllCells) {
  shrink_cells(kShape, {Axis::kCarries, dw, 0, 1, rx}, {Axis::kCarries, dh, 0, 1, ry},
               {src, src_stride}, cells, {dst, dst_stride});
}

// Of bytes the lower row is looked for where it lies in a plane without padding.
template <Shape kShape>
void down_4xplus(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, int32_t sw, int32_t sh,
                 int32_t src_stride, int32_t dst_stride, uint8_t *scratch,
                 Cells cells = kAllCells) {
  const int32_t half_stride = src_stride >> 1;
  const Place halves(kStraight, kShape, scratch, half_stride, sw >> 1, sh >> 1);
  shrink_both(kShape, {Axis::kPairs, sw >> 1, 0, 2, 0}, {Axis::kPairs, sh >> 1, 0, 2, 0},
              {src, kShape == k8b ? sw : src_stride}, 2 * ptrdiff_t{src_stride}, halves);
  down_2xplus<kShape>(scratch, dst, dw, dh, (sw >> 2) % dw, (sh >> 2) % dh, half_stride, dst_stride,
                      cells);
}

// One plane of pivra_rsz_8b_down_special, as far as the source is large enough.
template <Shape kShape>
void down_special(const ImageDesc &src, const ImageDesc &dst, int plane, bool from_4,
                  uint8_t *scratch) {
  const int32_t sw = src.width[plane], sh = src.height[plane];
  const int32_t dw = dst.width[plane], dh = dst.height[plane];
  if (sw <= 0 || sh <= 0 || dw <= 0 || dh <= 0) return;
  if (from_4)
    down_4xplus<kShape>(src.plane[plane], dst.plane[plane], dw, dh, sw, sh, src.stride[plane],
                        dst.stride[plane], scratch, {sw >> 2, sh >> 2});
  else
    down_2xplus<kShape>(src.plane[plane], dst.plane[plane], dw, dh, (sw >> 1) % dw, (sh >> 1) % dh,
                        src.stride[plane], dst.stride[plane], {sw >> 1, sh >> 1});
}

// Bytes of a plane's halves, at least one.
size_t halves(const ImageDesc &src, int plane) {
  if (src.height[plane] <= 1 || src.stride[plane] <= 1) return 1;
  return static_cast<size_t>(src.height[plane] >> 1) * static_cast<size_t>(src.stride[plane] >> 1);
}

}  // namespace
}  // namespace pivra

using namespace pivra;

#define PIVRA_DEFINE(shape)                                                                      \
  void pivra_##shape##_rsz_down_2xplus(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, \
                                       int32_t rx, int32_t ry, int32_t src_stride,               \
                                       int32_t dst_stride) {                                     \
    down_2xplus<k##shape>(src, dst, dw, dh, rx, ry, src_stride, dst_stride);                     \
  }                                                                                              \
  void pivra_##shape##_rsz_down_4xplus(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, \
                                       int32_t sw, int32_t sh, int32_t src_stride,               \
                                       int32_t dst_stride, uint8_t *scratch) {                   \
    down_4xplus<k##shape>(src, dst, dw, dh, sw, sh, src_stride, dst_stride, scratch);            \
  }
PIVRA_DEFINE(8b)
PIVRA_DEFINE(8b8b)
#undef PIVRA_DEFINE

int32_t pivra_rsz_8b_down_special(const ImageDesc *src, ImageDesc *dst) {
  if (src->width[0] <= 0 || dst->width[0] <= 0) return PIVRA_OK;
  const int32_t ratio = src->width[0] / dst->width[0];
  if (ratio < 2 || ratio > 7) return PIVRA_OK;
  const bool from_4 = ratio >= 4;
  uint8_t *scratch = nullptr;
  if (from_4) {
    const size_t luma = halves(*src, 0), chroma = halves(*src, 1);
    scratch = static_cast<uint8_t *>(malloc(luma < chroma ? chroma : luma));
    if (scratch == nullptr) return PIVRA_REFUSED;
  }
  down_special<k8b>(*src, *dst, 0, from_4, scratch);
  down_special<k8b8b>(*src, *dst, 1, from_4, scratch);
  free(scratch);
  return PIVRA_OK;
}

intptr_t pivra_rsz_8b_rot_90r_quarter(intptr_t x) { return x; }
