// Tiled planes to linear ones and back, and the conversions that consist of that.
#include <string.h>

#include "csc/repack.h"
#include "pivra.h"
#include "simd/copy.h"
#include "tile/layout.h"

namespace pivra {
namespace {

// Rows of one plane follow each other in memory, those of the other are far apart.
constexpr ptrdiff_t kPrefetch = 192;

// Rows of a tile; whole ones, of kFull bytes, are moved without a call.
template <int32_t kFull>
void copy_rows(const uint8_t *src, ptrdiff_t src_stride, int32_t bytes, int32_t rows, uint8_t *dst,
               ptrdiff_t dst_stride) {
  if (bytes == kFull) {
    for (; rows > 0; --rows) {
      __builtin_prefetch(src + kPrefetch);
      copy_row<kFull>(src, src_stride, dst, dst_stride);
    }
  } else {
    for (; rows > 0; --rows, src += src_stride, dst += dst_stride)
      memcpy(dst, src, static_cast<size_t>(bytes));
  }
}

template <TileLayout kLayout>
void copy_to_linear(const uint8_t *src, int32_t width, int32_t height, int32_t dst_stride,
                    uint8_t *dst) {
  for_each_tile<kLayout>(width, height, [=](const Tile &tile) {
    copy_rows<kLayout.width>(src + tile_offset(kLayout, width, height, tile.x, tile.y),
                             kLayout.width, tile.columns, tile.rows,
                             dst + ptrdiff_t{tile.y} * dst_stride + tile.x, dst_stride);
  });
}

// Tiles of byte pairs to two planes. Rows of whole tiles step by full_stride_b in plane b.
template <TileLayout kLayout>
void unpack_to_linear(const uint8_t *src, int32_t width, int32_t height, int32_t stride_a,
                      uint8_t *dst_a, int32_t stride_b, int32_t full_stride_b, uint8_t *dst_b) {
  constexpr int32_t kPairs = kLayout.width / 2;
  const Repack &repack = chosen(repack_tables);
  for_each_tile<kLayout>(width, height, [=, &repack](const Tile &tile) {
    const uint8_t *from = src + tile_offset(kLayout, width, height, tile.x, tile.y);
    uint8_t *a = dst_a + ptrdiff_t{tile.y} * stride_a + tile.x / 2;
    uint8_t *b = dst_b + ptrdiff_t{tile.y} * stride_b + tile.x / 2;
    if (tile.columns < kLayout.width) {
      for (ptrdiff_t row = 0; row < tile.rows; ++row)
        repack.deinterleave(from + row * kLayout.width, tile.columns / 2, a + row * stride_a,
                            b + row * stride_b);
    } else if constexpr (kPairs == kTilePairs) {
      repack.deinterleave_tile(from, tile.rows, a, stride_a, b, full_stride_b);
    } else {
      uint8_t tile_a[kPairs * kLayout.rows], tile_b[kPairs * kLayout.rows];
      repack.deinterleave(from, kPairs * tile.rows, tile_a, tile_b);
      copy_rows<kPairs>(tile_a, kPairs, kPairs, tile.rows, a, stride_a);
      copy_rows<kPairs>(tile_b, kPairs, kPairs, tile.rows, b, full_stride_b);
    }
  });
}

int32_t low_16_bits(int32_t n) { return static_cast<int16_t>(n); }

}  // namespace
}  // namespace pivra

using namespace pivra;

int32_t pivra_get_tile_offset(int32_t width, int32_t height, int32_t x, int32_t y) {
  return zigzag_offset(width, height, x, y);
}

// The first tile of a band and the first band are copied whole, whatever the size,
// and of an odd width the last byte stays behind.
void pivra_csc_copy_tiles_to_linear(const uint8_t *src, int32_t width, int32_t height,
                                    int32_t dst_stride, uint8_t *dst) {
  constexpr TileLayout kLayout = k64x32;
  for_each_tile<kLayout>(
      larger(width, kLayout.width), larger(height, kLayout.rows), [=](const Tile &tile) {
        const ptrdiff_t line = ptrdiff_t{low_16_bits(tile.y)} * low_16_bits(dst_stride);
        copy_rows<kLayout.width>(src + zigzag_offset(width, height, tile.x, tile.y), kLayout.width,
                                 tile.columns & ~1, tile.rows, dst + line + tile.x, dst_stride);
      });
}

void pivra_csc_unpack_tiles_to_linear(const uint8_t *src, int32_t width, int32_t height,
                                      int32_t stride_a, uint8_t *dst_a, int32_t stride_b,
                                      uint8_t *dst_b) {
  unpack_to_linear<k64x32>(src, width, height, stride_a, dst_a, stride_b, stride_b, dst_b);
}

void pivra_csc_swap_8byte8(uint8_t *buf, int32_t width, int32_t height) {
  const int32_t pairs = low_16_bits(width) * low_16_bits(height) / 2;
  chosen(repack_tables).swap_pairs(buf, larger(pairs, 1), buf);
}

void pivra_csc_copy_16x16tiles_to_linear(const uint8_t *src, int32_t width, int32_t height,
                                         int32_t dst_stride, uint8_t *dst) {
  copy_to_linear<k16x16>(src, width, height, dst_stride, dst);
}
void pivra_csc_copy_16x8tiles_to_linear(const uint8_t *src, int32_t width, int32_t height,
                                        int32_t dst_stride, uint8_t *dst) {
  copy_to_linear<k16x8>(src, width, height, dst_stride, dst);
}
void pivra_csc_copy_8x8tiles_to_linear(const uint8_t *src, int32_t width, int32_t height,
                                       int32_t dst_stride, uint8_t *dst) {
  copy_to_linear<k8x8>(src, width, height, dst_stride, dst);
}
void pivra_csc_copy_8x4tiles_to_linear(const uint8_t *src, int32_t width, int32_t height,
                                       int32_t dst_stride, uint8_t *dst) {
  copy_to_linear<k8x4>(src, width, height, dst_stride, dst);
}

// Both planes step by stride_a within a tile that lies wholly in the picture.
void pivra_csc_unpack_16x8tiles_to_linear(const uint8_t *src, int32_t width, int32_t height,
                                          int32_t stride_a, uint8_t *dst_a, int32_t stride_b,
                                          uint8_t *dst_b) {
  unpack_to_linear<k16x8>(src, width, height, stride_a, dst_a, stride_b, stride_a, dst_b);
}

// The conversions. w x h is the luma size; interleaved chroma has h / 2 rows.

void pivra_csc_t64x32_to_nv12(uint8_t **src, int32_t *width, int32_t *height, int32_t *,
                              int32_t *dst_stride, uint8_t **dst) {
  const int32_t w = width[0], h = height[0];
  pivra_csc_copy_tiles_to_linear(src[0], w, h, dst_stride[0], dst[0]);
  pivra_csc_copy_tiles_to_linear(src[1], w, h >> 1, dst_stride[1], dst[1]);
}

// The bytes are exchanged as if chroma had no padding.
void pivra_csc_t64x32_to_nv21(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
                              int32_t *dst_stride, uint8_t **dst) {
  pivra_csc_t64x32_to_nv12(src, width, height, src_stride, dst_stride, dst);
  pivra_csc_swap_8byte8(dst[1], width[0], height[0] >> 1);
}

// Both chroma planes take the stride of the one that holds V.
static void t64x32_to_planar(uint8_t **src, int32_t w, int32_t h, int32_t *dst_stride,
                             uint8_t **dst, int u, int v) {
  pivra_csc_copy_tiles_to_linear(src[0], w, h, dst_stride[0], dst[0]);
  pivra_csc_unpack_tiles_to_linear(src[1], w, h >> 1, dst_stride[v], dst[u], dst_stride[v], dst[v]);
}
void pivra_csc_t64x32_to_yuv420(uint8_t **src, int32_t *width, int32_t *height, int32_t *,
                                int32_t *dst_stride, uint8_t **dst) {
  t64x32_to_planar(src, width[0], height[0], dst_stride, dst, 1, 2);
}
void pivra_csc_t64x32_to_yv12(uint8_t **src, int32_t *width, int32_t *height, int32_t *,
                              int32_t *dst_stride, uint8_t **dst) {
  t64x32_to_planar(src, width[0], height[0], dst_stride, dst, 2, 1);
}

void pivra_csc_t16x16_to_nv12(uint8_t **src, int32_t *width, int32_t *height, int32_t *,
                              int32_t *dst_stride, uint8_t **dst) {
  const int32_t w = width[0], h = height[0];
  pivra_csc_copy_16x16tiles_to_linear(src[0], w, h, dst_stride[0], dst[0]);
  pivra_csc_copy_16x8tiles_to_linear(src[1], w, h >> 1, dst_stride[1], dst[1]);
}
void pivra_csc_t16x16_to_yuv420(uint8_t **src, int32_t *width, int32_t *height, int32_t *,
                                int32_t *dst_stride, uint8_t **dst) {
  const int32_t w = width[0], h = height[0];
  pivra_csc_copy_16x16tiles_to_linear(src[0], w, h, dst_stride[0], dst[0]);
  pivra_csc_unpack_16x8tiles_to_linear(src[1], w, h >> 1, dst_stride[1], dst[1], dst_stride[2],
                                       dst[2]);
}

// An odd width still ends in a whole pair of chroma.
void pivra_csc_yuv420_to_t64x32(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
                                int32_t *, uint8_t **dst) {
  constexpr TileLayout kLayout = k64x32;
  const int32_t w = width[0], h = height[0];
  for_each_tile<kLayout>(w, h, [=](const Tile &tile) {
    copy_rows<kLayout.width>(src[0] + ptrdiff_t{tile.y} * src_stride[0] + tile.x, src_stride[0],
                             tile.columns, tile.rows, dst[0] + zigzag_offset(w, h, tile.x, tile.y),
                             kLayout.width);
  });
  const Repack &repack = chosen(repack_tables);
  for_each_tile<kLayout>(w, h >> 1, [=, &repack](const Tile &tile) {
    const uint8_t *u = src[1] + ptrdiff_t{tile.y} * src_stride[1] + tile.x / 2;
    const uint8_t *v = src[2] + ptrdiff_t{tile.y} * src_stride[2] + tile.x / 2;
    uint8_t *to = dst[1] + zigzag_offset(w, h >> 1, tile.x, tile.y);
    if (tile.columns == kLayout.width) {
      repack.interleave_tile(u, src_stride[1], v, src_stride[2], tile.rows, to);
    } else {
      for (ptrdiff_t row = 0; row < tile.rows; ++row)
        repack.interleave(u + row * src_stride[1], v + row * src_stride[2], (tile.columns + 1) / 2,
                          to + row * kLayout.width);
    }
  });
}
