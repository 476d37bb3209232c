// Tiled nv12 to RGB: tile by tile, the rows of a tile as rows of nv12. Compiled
// once per instruction-set level.
#include "tile/tiled_to_rgb.h"

#include "csc/rows.h"
#include "tile/layout.h"

namespace pivra::PIVRA_LEVEL {
namespace {

// A layout's planes, the columns that are converted, and where destination row
// y + row begins, y being the first row of a tile.
struct T64x32 {
  static constexpr TileLayout kLuma = k64x32, kChroma = k64x32;
  static int32_t columns(int32_t width) { return width; }
  template <int kPixelBytes>
  static ptrdiff_t line(int32_t y, int32_t row, int32_t stride) {
    return ptrdiff_t{y + row} * (kPixelBytes == 2 ? stride & ~1 : stride);
  }
};

// No more than a band holds, and whole pairs.
struct T256x16 {
  static constexpr TileLayout kLuma = k256x16, kChroma = k256x16;
  static int32_t columns(int32_t width) { return (smaller(width, kLuma.group) + 1) & ~1; }
  template <int kPixelBytes>
  static ptrdiff_t line(int32_t y, int32_t row, int32_t stride) {
    constexpr ptrdiff_t kWords = ~ptrdiff_t{3};
    return (ptrdiff_t{y} * stride & kWords) + (ptrdiff_t{row} * stride & kWords);
  }
};

// A tile's share of a row of the picture is too short for a processor to foresee
// the next one: it is asked for two tiles ahead, in good time for the second cache.
template <ptrdiff_t kBytes>
PIVRA_INLINE void prefetch_tile_row(const uint8_t *out) {
  constexpr ptrdiff_t kLine = 64;
  for (ptrdiff_t x = 0; x < kBytes; x += kLine) __builtin_prefetch(out + 2 * kBytes + x, 0, 2);
}

// Rows that share chroma are converted together unless they overlap in the
// destination. The last row of an odd height is a pair with itself.
template <class Layout, class Target>
void convert(uint8_t **src, int32_t *width, int32_t *height, int32_t *, int32_t *dst_stride,
             uint8_t **dst) {
  constexpr TileLayout kLuma = Layout::kLuma, kChroma = Layout::kChroma;
  constexpr ptrdiff_t kRowBytes = ptrdiff_t{kLuma.width} * Target::kBytes;
  const int32_t w = Layout::columns(width[0]), h = height[0], stride = dst_stride[0];
  const uint8_t *const luma_plane = src[0], *const chroma_plane = src[1];
  uint8_t *const picture = dst[0];
  for_each_tile<kLuma>(
      w, h, [=](Tile tile) __attribute__((always_inline)) {
        const uint8_t *luma = luma_plane + tile_offset(kLuma, w, h, tile.x, tile.y);
        const uint8_t *chroma = chroma_plane + tile_offset(kChroma, w, h >> 1, tile.x, tile.y >> 1);
        uint8_t *const out = picture + ptrdiff_t{tile.x} * Target::kBytes;
        const auto line = [=](int32_t row) {
          return out + Layout::template line<Target::kBytes>(tile.y, row, stride);
        };
        const auto from = [=](int32_t row, int32_t second) {
          return SourceRows<2>{{luma + row * kLuma.width, luma + second * kLuma.width},
                               {chroma + (row >> 1) * kChroma.width, nullptr}};
        };
        // Rounding brings rows up to three bytes closer.
        const bool overlap = rows_overlap(stride, ptrdiff_t{tile.columns} * Target::kBytes + 3);
        int32_t row = 0;
        if (tile.columns == kLuma.width && !overlap)
          for (; row + 1 < tile.rows; row += 2) {
            TargetRows<2> to = {{line(row), line(row + 1)}};
            for (const uint8_t *p : to.row) prefetch_tile_row<kRowBytes>(p);
            convert_rows<Nv12, Target>(from(row, row + 1), to, kLuma.width);
          }
        while (row < tile.rows) {
          const bool lone = overlap || (row & 1) || row + 1 == tile.rows;
          const int32_t second = lone ? row : row + 1;
          convert_rows<Nv12, Target>(from(row, second), {{line(row), line(second)}}, tile.columns);
          row = second + 1;
        }
      });
}

PIVRA_INLINE void append(uint8_t *line, const uint8_t *src, int32_t bytes) {
  if (bytes == k16x16.width)
    memcpy(line, src, k16x16.width);
  else
    memcpy(line, src, static_cast<size_t>(bytes));
}

// These tiles are narrower than a block: their rows are put together first, and
// written as those of linear nv12 are.
template <class Target>
void convert_16x16(uint8_t **src, int32_t *width, int32_t *height, int32_t *, int32_t *dst_stride,
                   uint8_t **dst) {
  constexpr int32_t kRun = 256;
  const int32_t w = width[0], h = height[0];
  const ptrdiff_t stride = dst_stride[0], row_bytes = ptrdiff_t{w} * Target::kBytes;
  const bool overlap = rows_overlap(stride, row_bytes);
  for (int32_t y = 0; y < h;) {
    const int32_t second = overlap || (y & 1) || y + 1 == h ? y : y + 1;
    for (int32_t start = 0; start < w; start += kRun) {
      const int32_t columns = smaller(kRun, w - start);
      uint8_t luma[2][kRun], chroma[kRun];
      for (int32_t x = 0; x < columns; x += k16x16.width) {
        const int32_t bytes = smaller(k16x16.width, columns - x);
        append(luma[0] + x, src[0] + tile_offset(k16x16, w, h, start + x, y), bytes);
        append(luma[1] + x, src[0] + tile_offset(k16x16, w, h, start + x, second), bytes);
        append(chroma + x, src[1] + tile_offset(k16x8, w, h >> 1, start + x, y >> 1),
               (bytes + 1) & ~1);
      }
      uint8_t *const out = dst[0] + ptrdiff_t{start} * Target::kBytes;
      convert_rows<Nv12, Target>(SourceRows<2>{{luma[0], luma[1]}, {chroma, nullptr}},
                                 TargetRows<2>{{out + y * stride, out + second * stride}}, columns);
    }
    y = second + 1;
  }
}

}  // namespace

extern const TiledToRgb tiled_to_rgb;
const TiledToRgb tiled_to_rgb = {
    .t64x32_to_rgb565 = convert<T64x32, Rgb565>,
    .t64x32_to_bgr565 = convert<T64x32, Bgr565>,
    .t64x32_to_rgb888 = convert<T64x32, Rgb888>,
    .t64x32_to_bgr888 = convert<T64x32, Bgr888>,
    .t64x32_to_rgba8888 = convert<T64x32, Rgba8888>,
    .t64x32_to_bgra8888 = convert<T64x32, Bgra8888>,
    .t64x32_to_argb8888 = convert<T64x32, Argb8888>,
    .t64x32_to_abgr8888 = convert<T64x32, Abgr8888>,
    .t16x16_to_rgba8888 = convert_16x16<Rgba8888>,
    .t256x16_to_rgba8888 = convert<T256x16, Rgba8888>,
};

}  // namespace pivra::PIVRA_LEVEL
