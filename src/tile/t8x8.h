// The arithmetic of the 8x8 layout, to which no other kernel keeps: a matrix of its
// own, and of its result only the bits that rgb565 would keep.
//
//   R = (298 Y         + 408 V - 57059) >> 8
//   G = (298 Y - 100 U - 208 V + 34713) >> 8
//   B = (298 Y + 516 U         - 70887) >> 8      each then clamped to 0..255
//
// Halved, with u = U - 128 and v = V - 128, that is the matrix of csc/matrix.h but
// for a few constants, and what is said there of 16-bit lanes holds:
//
//   R = (149 Y - 2320 + 204 v - 98) >> 7
//   G = (149 Y - 2320 - 50 u - 104 v - 36) >> 7
//   B = (149 Y - 2320 + 129 u - 50 + 129 u - 50) >> 7
#ifndef PIVRA_TILE_T8X8_H
#define PIVRA_TILE_T8X8_H

#include "csc/sources.h"
#include "csc/targets.h"

namespace pivra::PIVRA_LEVEL {

// Rows like those of nv12.
struct Nv12Of8x8 : Nv12 {
#if PIVRA_VECTORS
  static PIVRA_INLINE HalfChromaBlock block(const SourceRows<2> &rows) {
    Centred c = centre(load_twos(rows.chroma[0]));
    return HalfChromaBlock({splat<kShift - 98>() + weigh<1, 204>(c),
                            splat<kShift - 36>() - weigh_both<50, 104>(c),
                            splat<kShift / 2 - 50>() + weigh<0, 129>(c)});
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<2> &rows, int row, ptrdiff_t x) {
    const uint8_t *pair = rows.chroma[0] + (x & ~ptrdiff_t{1});
    const int32_t y = 298 * rows.luma[row][x], u = pair[0], v = pair[1];
    return {clamp_byte((y + 408 * v - 57059) >> 8),
            clamp_byte((y - 100 * u - 208 * v + 34713) >> 8),
            clamp_byte((y + 516 * u - 70887) >> 8)};
  }
};

// The lower bits are cleared before the clamp, which leaves no sum negative that was not.
struct Rgba8888Of565 : Rgba8888 {
#if PIVRA_VECTORS
  static PIVRA_INLINE Colours half(const RgbLanes &c) {
    I16 five = splat<~(7 << 7 | 127)>(), six = splat<~(3 << 7 | 127)>();
    return Rgba8888::half({c.r & five, c.g & six, c.b & five});
  }
#endif
  static PIVRA_INLINE void pixel(uint8_t *p, const Rgb &c) {
    Rgba8888::pixel(p, {c.r & 0xF8, c.g & 0xFC, c.b & 0xF8});
  }
};

}  // namespace pivra::PIVRA_LEVEL

#endif
