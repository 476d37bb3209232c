// The 8x8 layout to RGBA, with a matrix of its own.
#include "pivra.h"
#include "tile/layout.h"

namespace {

uint8_t clamp_high_byte(int32_t x) {
  return static_cast<uint8_t>(x < 0 ? 0 : x > 65535 ? 255 : x >> 8);
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
  for_each_tile<kLumaStrips>(w, h, [&](const Tile &tile) {
    const uint8_t *luma = src[0] + tile_offset(kLumaStrips, w, h, tile.x, tile.y);
    const uint8_t *chroma =
        src[0] + luma_bytes + tile_offset(kChromaStrips, w, h >> 1, tile.x, tile.y >> 1);
    for (int32_t row = 0; row < tile.rows; ++row) {
      uint8_t *out = dst[0] + (ptrdiff_t{tile.y + row} * w + tile.x) * 4;
      for (int32_t x = 0; x < tile.columns; ++x) {
        const uint8_t *pair = chroma + (row >> 1) * kChromaStrips.width + (x & ~1);
        write_pixel(out + 4 * x, luma[row * kLumaStrips.width + x], pair[0], pair[1]);
      }
    }
  });
}
