// The 8x8 layout to RGBA, with a matrix of its own.
#include "pivra.h"
#include "tile/layout.h"

namespace {

// Without branches, which noise would make unpredictable.
uint8_t clamp_high_byte(int32_t x) {
  const int32_t positive = x & ~(x >> 31);
  const int32_t all_ones_above = (65535 - positive) >> 31;
  return static_cast<uint8_t>((positive | all_ones_above) >> 8);
}

// Not the matrix of the other kernels: 408 and not 409, other roundings, and only
// the bits that rgb565 would keep.
void write_pixel(uint8_t *p, int32_t y, int32_t u, int32_t v) {
  p[0] = clamp_high_byte(298 * y + 408 * v - 57059) & 0xF8;
  p[1] = clamp_high_byte(298 * y - 100 * u - 208 * v + 34713) & 0xFC;
  p[2] = clamp_high_byte(298 * y + 516 * u - 70887) & 0xF8;
  p[3] = 255;
}

}  // namespace

// Chroma lies behind the luma, and the destination has no padding.
void pivra_csc_t8x8_to_rgba8888(uint8_t **src, int32_t *width, int32_t *height, int32_t *,
                                int32_t *, uint8_t **dst) {
  using namespace pivra;
  const int32_t w = width[0], h = height[0];
  const ptrdiff_t luma_bytes = tile_offset(kLumaStrips, w, h, 0, (h + 15) & ~15);
  const uint8_t *const plane = src[0];
  uint8_t *const picture = dst[0];
  // By value: what is written could be anything that is captured by reference.
  for_each_tile<kLumaStrips>(w, h, [=](const Tile &tile) {
    const uint8_t *luma = plane + tile_offset(kLumaStrips, w, h, tile.x, tile.y);
    const uint8_t *chroma =
        plane + luma_bytes + tile_offset(kChromaStrips, w, h >> 1, tile.x, tile.y >> 1);
    for (int32_t row = 0; row < tile.rows; ++row, luma += kLumaStrips.width) {
      const uint8_t *pairs = chroma + (row >> 1) * kChromaStrips.width;
      uint8_t *out = picture + (ptrdiff_t{tile.y + row} * w + tile.x) * 4;
      for (int32_t x = 0; x < tile.columns; ++x)
        write_pixel(out + 4 * x, luma[x], pairs[x & ~1], pairs[x | 1]);
    }
  });
}
