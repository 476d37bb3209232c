// How the tiled layouts lie in memory: the one description that every kernel
// with a tiled picture walks by.
//
// A plane is cut into bands, a band into tiles. The rows of a tile follow one
// another, and so do the tiles of a band and the bands. Most layouts take the
// tiles of a band from left to right; in the 64x32 layout two tile rows make a
// band, walked in a Z over two columns and a mirrored Z over the next two:
//
//     tile column    0    1     2    3     4    5     6    7
//                  +----+----+----+----+----+----+----+----+
//     even row     |  0    1 |  6    7 |  8    9 | 14   15 |
//     odd row      |  2    3 |  4    5 | 10   11 | 12   13 |
//                  +----+----+----+----+----+----+----+----+
//     lone last    |  0    1    2    3    4    5    6    7 |
//                  +----+----+----+----+----+----+----+----+
//
// An even row that is the last has no partner to alternate with, and its tiles
// simply run from left to right.
#ifndef PIVRA_TILE_LAYOUT_H
#define PIVRA_TILE_LAYOUT_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/bounds.h"

namespace pivra {

struct TileLayout {
  int32_t width, rows;  // of a tile, width in bytes
  int32_t slot;         // bytes from a tile to the next
  int32_t group;        // a band holds whole groups of tiles, so many bytes wide
  bool zigzag = false;
};

constexpr TileLayout k64x32 = {64, 32, 2048, 128, true};
constexpr TileLayout k16x16 = {16, 16, 256, 16};
constexpr TileLayout k16x8 = {16, 8, 128, 16};
constexpr TileLayout k8x8 = {8, 8, 64, 8};
constexpr TileLayout k8x4 = {8, 4, 64, 8};  // the second half of a slot is never read
// Macroblocks of two strips each: t8x8.
constexpr TileLayout kLumaStrips = {8, 16, 128, 16}, kChromaStrips = {8, 8, 64, 16};
// A band always holds eight tiles.
constexpr TileLayout k256x16 = {256, 16, 4096, 2048};

// Functions here are static: code of two instruction-set levels must not be merged.

// Shifts, not divisions, for arguments outside the plane count too.
static constexpr int32_t zigzag_offset(int32_t width, int32_t height, int32_t x, int32_t y) {
  const int32_t column = x >> 6, row = y >> 5, last_row = (height - 1) >> 5;
  const bool mirrored = ((column >> 1) & 1) != (row & 1);
  const bool lone = height <= y + 32 && !(last_row & 1) && !(row & 1);
  const int32_t tile = (column & 1) | (mirrored ? 2 : 0);
  const int32_t group = (y >> 6) * ((width + 127) >> 7) + (x >> (lone ? 8 : 7));
  return group << 13 | tile << 11 | (y & 31) << 6 | (x & 63);
}

// From the start of a plane of width x height bytes to the byte at (x, y).
static constexpr ptrdiff_t tile_offset(const TileLayout &layout, int32_t width, int32_t height,
                                       int32_t x, int32_t y) {
  if (layout.zigzag) return zigzag_offset(width, height, x, y);
  const int32_t groups = (width + layout.group - 1) / layout.group;
  const ptrdiff_t band = ptrdiff_t{groups} * (layout.group / layout.width) * layout.slot;
  return y / layout.rows * band + ptrdiff_t{x / layout.width} * layout.slot +
         y % layout.rows * layout.width + x % layout.width;
}

// A tile's first byte in the picture, and how much of the tile lies in it.
struct Tile {
  int32_t x, y, columns, rows;
};

template <TileLayout kLayout, class Action>
__attribute__((always_inline)) static inline void for_each_tile(int32_t width, int32_t height,
                                                                Action action) {
  for (int32_t y = 0; y < height; y += kLayout.rows)
    for (int32_t x = 0; x < width; x += kLayout.width)
      action(Tile{x, y, smaller(kLayout.width, width - x), smaller(kLayout.rows, height - y)});
}

// Copies bytes x .. x + bytes - 1 of row y of a plane.
template <TileLayout kLayout>
static void read_row(const uint8_t *plane, int32_t width, int32_t height, int32_t x, int32_t y,
                     int32_t bytes, uint8_t *dst) {
  for (int32_t count; bytes > 0; bytes -= count, x += count, dst += count) {
    count = smaller(bytes, kLayout.width - x % kLayout.width);
    memcpy(dst, plane + tile_offset(kLayout, width, height, x, y), static_cast<size_t>(count));
  }
}

}  // namespace pivra

#endif
