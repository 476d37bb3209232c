// Quarter turns, half turns and mirrors of planes and of blocks of them, in units of
// 1 to 4 bytes that move as they are.
//
// Every turn is a transposition, a mirror or a copy with the rows of one side taken
// from the last to the first. The moves are those of one instruction-set level; the
// geometry is told here, once.
#ifndef PIVRA_TURN_TURN_H
#define PIVRA_TURN_TURN_H

#include <stddef.h>
#include <stdint.h>

#include "core/levels.h"
#include "pivra.h"
#include "simd/copy.h"

namespace pivra {

// Moves `height` rows of `width` units, neither of them 0. Strides are bytes and may
// be negative; nothing but the units is read or written. Source and destination
// do not overlap. Blocks of at least 8 bytes by 16 go through registers at every level.
typedef void TurnMove(const uint8_t *src, ptrdiff_t width, ptrdiff_t height, ptrdiff_t src_stride,
                      ptrdiff_t dst_stride, uint8_t *dst);

// Each by the bytes of a unit, less one.
struct Turns {
  TurnMove *transpose[4];  // unit x of row y becomes unit y of row x
  TurnMove *mirror[4];     // unit x of row y becomes unit width - 1 - x of row y
};

PIVRA_TABLES(Turns, turns)

constexpr bool is_quarter_turn(int code) { return code == PIVRA_ROT_90L || code == PIVRA_ROT_90R; }

// Turns width x height units of `unit` bytes by a rotation code. Of a turned plane,
// `dst` is the first byte; of a block, where turned_block says.
template <int code, int unit>
static inline void turn(const Turns &level, const uint8_t *src, ptrdiff_t width, ptrdiff_t height,
                        ptrdiff_t src_stride, ptrdiff_t dst_stride, uint8_t *dst) {
  if (width <= 0 || height <= 0) return;
  if (code == PIVRA_ROT_90R) {  // the last row first
    src += (height - 1) * src_stride;
    src_stride = -src_stride;
  }
  if (code == PIVRA_ROT_90L || code == PIVRA_ROT_180 || code == PIVRA_ROT_VERT) {
    dst += ((code == PIVRA_ROT_90L ? width : height) - 1) * dst_stride;
    dst_stride = -dst_stride;
  }
  if (is_quarter_turn(code)) {
    level.transpose[unit - 1](src, width, height, src_stride, dst_stride, dst);
  } else if (code == PIVRA_ROT_180 || code == PIVRA_ROT_HORI) {
    level.mirror[unit - 1](src, width, height, src_stride, dst_stride, dst);
  } else {
    for (; height > 0; --height, src += src_stride, dst += dst_stride)
      copy_bytes(src, static_cast<size_t>(width * unit), dst);
  }
}

// A rectangle of units: its first column and row, and its size.
struct Block {
  ptrdiff_t x, y, width, height;
};

// Where in the turned plane `dst` the block of a plane of width x height units lands.
template <int code, int unit>
static inline uint8_t *turned_block(Block block, ptrdiff_t width, ptrdiff_t height,
                                    ptrdiff_t dst_stride, uint8_t *dst) {
  const ptrdiff_t from_right = width - block.x - block.width;
  const ptrdiff_t from_bottom = height - block.y - block.height;
  ptrdiff_t column = block.x, row = block.y;
  if (code == PIVRA_ROT_90L) column = block.y, row = from_right;
  if (code == PIVRA_ROT_90R) column = from_bottom, row = block.x;
  if (code == PIVRA_ROT_180 || code == PIVRA_ROT_HORI) column = from_right;
  if (code == PIVRA_ROT_180 || code == PIVRA_ROT_VERT) row = from_bottom;
  return dst + row * dst_stride + column * unit;
}

}  // namespace pivra

#endif
