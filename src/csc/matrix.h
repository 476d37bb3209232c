// The YUV to RGB matrix: ITU-R BT.601, video range, 8-bit fixed point.
//
//   y = 298 (Y - 16) + 128    u = U - 128    v = V - 128
//   R = (y         + 409 v) >> 8
//   G = (y - 100 u - 208 v) >> 8
//   B = (y + 516 u        ) >> 8      each then clamped to 0..255
//
// The sums need 19 bits, yet 16-bit lanes are enough: a multiple of 256 passes
// through the shift unchanged, so each channel splits into a whole part and a
// fraction that both fit. With 298 = 256 + 42, 409 = 256 + 153, -208 = -256 + 48
// and 516 = 512 + 4:
//
//   R = Y +  v + ((42 Y + 153 v         + k) >> 8)
//   G = Y -  v + ((42 Y - 100 u + 48 v  + k) >> 8)     k = 128 - 298 x 16
//   B = Y + 2u + ((42 Y +   4 u         + k) >> 8)
//
// Everything that does not hold Y is worked out once for the pixels that share
// a chroma sample.
#ifndef PIVRA_CSC_MATRIX_H
#define PIVRA_CSC_MATRIX_H

#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {

struct Rgb {
  int32_t r, g, b;
};

PIVRA_INLINE int32_t clamp_byte(int32_t x) { return x < 0 ? 0 : x > 255 ? 255 : x; }

PIVRA_INLINE Rgb apply_matrix(int32_t luma, int32_t cb, int32_t cr) {
  const int32_t y = 298 * (luma - 16) + 128, u = cb - 128, v = cr - 128;
  return {clamp_byte((y + 409 * v) >> 8), clamp_byte((y - 100 * u - 208 * v) >> 8),
          clamp_byte((y + 516 * u) >> 8)};
}

#if PIVRA_VECTORS

// Half a block, before the clamp.
struct RgbLanes {
  I16 r, g, b;
};

struct ChromaTerms {
  I16 r_whole, r_fraction, g_whole, g_fraction, b_whole, b_fraction;
};

PIVRA_INLINE ChromaTerms chroma_terms(Narrow cb, Narrow cr) {
  const I16 u = subtract<128>(cb), v = subtract<128>(cr), k = splat<128 - 298 * 16>();
  return {v,     multiply<153>(v) + k,                   //
          -v,    multiply<48>(v) - multiply<100>(u) + k,  //
          u + u, (u << 2) + k};
}

PIVRA_INLINE RgbLanes apply_matrix(Narrow luma, ChromaTerms c) {
  const I16 y42 = multiply<42>(luma);
  return {add_high_byte(add(c.r_whole, luma), y42 + c.r_fraction),
          add_high_byte(add(c.g_whole, luma), y42 + c.g_fraction),
          add_high_byte(add(c.b_whole, luma), y42 + c.b_fraction)};
}

#endif

}  // namespace pivra::PIVRA_LEVEL

#endif
