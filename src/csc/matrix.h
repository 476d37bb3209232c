// The YUV to RGB matrix: ITU-R BT.601, video range, 8-bit fixed point.
//
//   y = 298 (Y - 16) + 128    u = U - 128    v = V - 128
//   R = (y         + 409 v) >> 8
//   G = (y - 100 u - 208 v) >> 8
//   B = (y + 516 u        ) >> 8      each then clamped to 0..255
//
// The sums need 19 bits, yet 16-bit lanes are enough. All terms but 409 v are
// even, so that halving before the shift loses nothing. Then 255 lies at the top
// of the range, and a sum that saturates there is one that the clamp cuts off:
//
//   R = (149 Y - 2320 + (409 v >> 1)) >> 7
//   G = (149 Y - 2320 - 50 u - 104 v) >> 7
//   B = (149 Y - 2320 + 129 u + 129 u) >> 7
//
// 258 u would not fit; as two terms the sum may saturate on the way, but then the
// second term has the sign of the first. A shift k from luma to chroma makes each
// term fit. The chroma terms are worked out once for the pixels that share a
// chroma sample.
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

// Half a block: 128 times each channel before the clamp, saturated.
struct RgbLanes {
  I16 r, g, b;
};

struct ChromaTerms {
  I16 r, g, half_b;
};

// Luma is between -5376 and 32619, the chroma terms between -23120 and 29027.
constexpr int16_t kShift = 3056;
constexpr uint8_t kLumaScale = 149;
constexpr int16_t kLumaOffset = 2320 + kShift;

// kU is 0 where the first of the two chroma bytes is U, and 1 where it is V.
template <int kU>
PIVRA_INLINE ChromaTerms chroma_terms(Twos chroma) {
  constexpr int kV = 1 - kU;
  constexpr uint8_t kFirst = kU == 0 ? 50 : 104, kSecond = 50 + 104 - kFirst;
  Centred c = centre(chroma);
  return {add_half<kV>(splat<kShift>() + weigh<kV, 204>(c), c),
          splat<kShift>() - weigh_both<kFirst, kSecond>(c),
          splat<kShift / 2>() + weigh<kU, 129>(c)};
}

PIVRA_INLINE RgbLanes apply_matrix(I16 luma, ChromaTerms c) {
  return {add_saturated(luma, c.r), add_saturated(luma, c.g),
          add_saturated(add_saturated(luma, c.half_b), c.half_b)};
}

#endif

}  // namespace pivra::PIVRA_LEVEL

#endif
