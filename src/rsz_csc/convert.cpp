// The conversion behind the passes.
#include <stddef.h>

#include "pivra.h"
#include "rsz_csc/pairs.h"

namespace pivra {
namespace {

// Rows in pairs that lie pair_step apart, to the last row of an even number or a row of
// its own. Where rows run into each other the later one wins.
void convert(const uint8_t *y, const uint8_t *u, const uint8_t *v, uint8_t *dst, ptrdiff_t stride,
             ptrdiff_t pair_step, int32_t height, int32_t width) {
  if (width < 1) return;
  const auto to_rgb565 = chosen(pairs_to_rgb_tables).yuv420_to_rgb565;
  const int32_t columns = (width + 1) & ~1;
  const ptrdiff_t luma_pitch = stride >> 1, chroma_pitch = stride >> 2, row_step = stride & ~1;
  const ptrdiff_t row_bytes = ptrdiff_t{2} * columns;
  const bool overlap = row_step < row_bytes && -row_step < row_bytes;
  for (ptrdiff_t row = 0; row < height; row += 2) {
    const uint8_t *luma[2] = {y, y + luma_pitch};
    uint8_t *out[2] = {dst, dst + row_step};
    const bool lone = row + 1 == height;
    if (lone || overlap) to_rgb565({{luma[0], luma[0]}, {u, v}, {out[0], out[0]}}, columns);
    if (!lone) {
      const int first = overlap ? 1 : 0;
      to_rgb565({{luma[first], luma[1]}, {u, v}, {out[first], out[1]}}, columns);
    }
    y += 2 * luma_pitch;
    u += chroma_pitch;
    v += chroma_pitch;
    dst += pair_step;
  }
}

}  // namespace
}  // namespace pivra

void pivra_rsz_csc_up_h2x_yuv420_to_rgb565_gen(const uint8_t *y, const uint8_t *u, const uint8_t *v,
                                               uint8_t *dst, int32_t *dst_stride,
                                               int32_t *dst_height, int32_t *dst_width) {
  const int32_t stride = dst_stride[0], rows = dst_height[0] + (dst_height[0] & 1);
  pivra::convert(y, u, v, dst, stride, ptrdiff_t{2} * stride, rows, dst_width[0]);
}

void pivra_rsz_csc_up_h_yuv420_to_rgb565_gen(const uint8_t *y, const uint8_t *u, const uint8_t *v,
                                             uint8_t *dst, int32_t *dst_stride, int32_t *dst_height,
                                             int32_t *dst_width) {
  const int32_t stride = dst_stride[0];
  pivra::convert(y, u, v, dst, stride, ptrdiff_t{2} * (stride & ~1), dst_height[0], dst_width[0]);
}
