// Tiled layouts to RGB: by the rows of a tile where those are long enough, or by
// rows put together. Compiled once per instruction-set level.
#include "tile/tiled_to_rgb.h"

#include "csc/rows.h"
#include "tile/layout.h"
#include "tile/t8x8.h"

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

// Layouts whose tiles are narrower than a block.
struct T16x16 {
  static constexpr TileLayout kLuma = k16x16, kChroma = k16x8;
  using Source = Nv12;
  static const uint8_t *chroma(uint8_t **src, int32_t, int32_t) { return src[1]; }
  static ptrdiff_t stride(int32_t, const int32_t *dst_stride) { return dst_stride[0]; }
};

// Chroma lies behind the luma, and the destination has no padding.
struct T8x8 {
  static constexpr TileLayout kLuma = kLumaStrips, kChroma = kChromaStrips;
  using Source = Nv12Of8x8;
  static const uint8_t *chroma(uint8_t **src, int32_t width, int32_t height) {
    return src[0] + tile_offset(kLuma, width, height, 0, (height + 15) & ~15);
  }
  static ptrdiff_t stride(int32_t width, const int32_t *) { return ptrdiff_t{width} * 4; }
};

// So many bytes of a row that begins at `from` in a tile and goes on in those behind it.
template <TileLayout kLayout>
PIVRA_INLINE void gather_row(const uint8_t *from, int32_t bytes, uint8_t *row) {
  for (; bytes >= kLayout.width; bytes -= kLayout.width) {
    memcpy(row, from, kLayout.width);
    from += kLayout.slot;
    row += kLayout.width;
  }
  memcpy(row, from, static_cast<size_t>(bytes));
}

// Rows are put together first and then converted like linear ones.
template <class Layout, class Target>
void convert_gathered(uint8_t **src, int32_t *width, int32_t *height, int32_t *,
                      int32_t *dst_stride, uint8_t **dst) {
  constexpr TileLayout kLuma = Layout::kLuma, kChroma = Layout::kChroma;
  constexpr int32_t kRun = 1024;
  const int32_t w = width[0], h = height[0];
  if (w <= 0 || h <= 0) return;
  const ptrdiff_t stride = Layout::stride(w, dst_stride);
  const bool overlap = rows_overlap(stride, ptrdiff_t{w} * Target::kBytes);
  const uint8_t *const chroma_plane = Layout::chroma(src, w, h);
  for (int32_t y = 0; y < h;) {
    const int32_t second = overlap || (y & 1) || y + 1 == h ? y : y + 1;
    for (int32_t x = 0; x < w; x += kRun) {
      const int32_t columns = smaller(kRun, w - x);
      uint8_t luma[2][kRun], chroma[kRun];
      gather_row<kLuma>(src[0] + tile_offset(kLuma, w, h, x, y), columns, luma[0]);
      gather_row<kLuma>(src[0] + tile_offset(kLuma, w, h, x, second), columns, luma[1]);
      gather_row<kChroma>(chroma_plane + tile_offset(kChroma, w, h >> 1, x, y >> 1),
                          (columns + 1) & ~1, chroma);
      uint8_t *const out = dst[0] + ptrdiff_t{x} * Target::kBytes;
      convert_rows<typename Layout::Source, Target>(
          SourceRows<2>{{luma[0], luma[1]}, {chroma, nullptr}},
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
    .t16x16_to_rgba8888 = convert_gathered<T16x16, Rgba8888>,
    .t256x16_to_rgba8888 = convert<T256x16, Rgba8888>,
    .t8x8_to_rgba8888 = convert_gathered<T8x8, Rgba8888Of565>,
};

}  // namespace pivra::PIVRA_LEVEL
