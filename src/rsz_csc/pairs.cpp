// Rows of tiles, and pairs of rows to RGB: source x target. Compiled once per
// instruction-set level.
#include "rsz_csc/pairs.h"

#include "csc/rows.h"
#include "tile/layout.h"

namespace pivra::PIVRA_LEVEL {
namespace {

template <class Source, class Target>
void convert(const RowPair &rows, int32_t columns) {
  convert_rows<Source, Target>(
      SourceRows<2>{{rows.luma[0], rows.luma[1]}, {rows.chroma[0], rows.chroma[1]}},
      TargetRows<2>{{rows.out[0], rows.out[1]}}, columns);
}

constexpr int32_t kTileRow = k64x32.width;

PIVRA_INLINE void copy_tile_row(const uint8_t *src, uint8_t *dst) {
#if PIVRA_VECTORS
  for (int32_t x = 0; x < kTileRow; x += kBlock) store_bytes(dst + x, load_bytes(src + x));
#else
  memcpy(dst, src, kTileRow);
#endif
}

void tiles_to_rows(const uint8_t *const *tiles, int32_t count, ptrdiff_t within, int32_t rows,
                   uint8_t *dst, ptrdiff_t dst_step) {
  for (ptrdiff_t i = 0; i < count; ++i)
    for (ptrdiff_t row = 0; row < rows; ++row)
      copy_tile_row(tiles[i] + within + row * kTileRow, dst + i * kTileRow + row * dst_step);
}

template <int unit>
void halve_tiles(const uint8_t *const *tiles, int32_t count, ptrdiff_t within, uint8_t *dst) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const uint8_t *p = tiles[i] + within;
#if PIVRA_VECTORS
    halve<unit, kTileRow / 2>(p, kTileRow, dst);
#else
    for (int32_t x = 0; x < kTileRow / 2; ++x, ++dst) {
      const uint8_t *at = p + x / unit * (2 * unit) + x % unit, *below = at + kTileRow;
      *dst = static_cast<uint8_t>((at[0] + at[unit] + below[0] + below[unit]) >> 2);
    }
#endif
  }
}

}  // namespace

extern const PairsToRgb pairs_to_rgb;
const PairsToRgb pairs_to_rgb = {
    .tiles_to_rows = tiles_to_rows,
    .halve_tiles = {halve_tiles<1>, halve_tiles<2>},
    .yuv420_to_rgb565 = convert<Yuv420, Rgb565>,
    .nv12_to_rgb565 = convert<Nv12, Rgb565>,
    .yuv420_to_rgb888 = convert<Yuv420, Rgb888>,
};

}  // namespace pivra::PIVRA_LEVEL
