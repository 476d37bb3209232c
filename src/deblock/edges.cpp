// The edge filter. Compiled once per instruction-set level.
#include "deblock/edges.h"

#include <string.h>

#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {
namespace {

constexpr ptrdiff_t kSide = 8;  // of a block

// The samples across an edge, which lies between b and c.
template <class Sample>
struct Across {
  Sample a, b, c, d;
};

PIVRA_INLINE int32_t clamp(int32_t i, int32_t low, int32_t high) {
  return i < low ? low : i > high ? high : i;
}

PIVRA_INLINE Across<uint8_t> filter(Across<uint8_t> e, int32_t strength) {
  const int32_t d = (e.a - 4 * e.b + 4 * e.c - e.d) >> 3, size = d < 0 ? -d : d;
  const int32_t excess = size > strength ? size - strength : 0;
  const int32_t m = size > 2 * excess ? size - 2 * excess : 0;
  const int32_t d1 = d < 0 ? -m : m, d2 = clamp((e.a - e.d) >> 2, -(m >> 1), m >> 1);
  return {static_cast<uint8_t>(e.a - d2), static_cast<uint8_t>(clamp(e.b + d1, 0, 255)),
          static_cast<uint8_t>(clamp(e.c - d1, 0, 255)), static_cast<uint8_t>(e.d + d2)};
}

#if PIVRA_VECTORS

// With q = (a - d) >> 2 the step is (q + c - b) >> 1: all of it fits bytes, where a
// difference is a size and a sign, or has an offset.
PIVRA_INLINE Across<Whole> filter(Across<Whole> e, Whole strength) {
  const Whole q64 = halve(mean(e.a, ~e.d)), k64 = Whole{} + 64;  // q + 64
  const Whole falls = (Whole)(e.b > e.c);
  const Whole difference = subtract_saturated(e.b, e.c) | subtract_saturated(e.c, e.b);

  // d + 36, or 35 - d where b > c; 7 makes the average round down.
  const Whole biased = mean(difference, (q64 ^ (falls & 0x7F)) + 7), zero = falls + 36;
  const Whole size = subtract_saturated(biased, zero) | subtract_saturated(zero, biased);
  const Whole negative = (Whole)(biased < zero) ^ falls;

  const Whole excess = subtract_saturated(size, strength);
  const Whole m = subtract_saturated(subtract_saturated(size, excess), excess), half_m = halve(m);
  const Whole up = m & ~negative, down = m & negative;
  const Whole d2 =
      minimum(subtract_saturated(q64, k64), half_m) - minimum(subtract_saturated(k64, q64), half_m);
  return {e.a - d2, subtract_saturated(add_saturated(e.b, up), down),
          add_saturated(subtract_saturated(e.c, up), down), e.d + d2};
}

PIVRA_INLINE void filter_block(uint8_t *p, ptrdiff_t stride, Whole strength) {
  Across<Whole> e = {load_bytes(p - 2 * stride), load_bytes(p - stride), load_bytes(p),
                     load_bytes(p + stride)};
  e = filter(e, strength);
  store_bytes(p - 2 * stride, e.a);
  store_bytes(p - stride, e.b);
  store_bytes(p, e.c);
  store_bytes(p + stride, e.d);
}

// Eight rows of a kBlock of columns, from the second one before an edge on.
PIVRA_INLINE void filter_tile(uint8_t *p, ptrdiff_t stride, Whole strength) {
  Fours fours = load_fours(p, stride);
  Across<Whole> e = {fours.v[0], fours.v[1], fours.v[2], fours.v[3]};
  e = filter(e, strength);
  fours.v[0] = e.a;
  fours.v[1] = e.b;
  fours.v[2] = e.c;
  fours.v[3] = e.d;
  store_fours(p, stride, fours);
}

// The last block of a row overlaps the one before it, which a strength of 0 leaves alone.
struct LastStrength {
  uint8_t byte[kBlock];
  PIVRA_INLINE LastStrength(uint8_t strength, ptrdiff_t count) {
    memset(byte, 0, kBlock);
    memset(byte + kBlock - count, strength, static_cast<size_t>(count));
  }
};

#endif

// At p, the sample behind the edge; `across` leads over the edge.
PIVRA_INLINE void filter_one(uint8_t *p, ptrdiff_t across, int32_t strength) {
  const Across<uint8_t> e = filter({p[-2 * across], p[-across], p[0], p[across]}, strength);
  p[-2 * across] = e.a;
  p[-across] = e.b;
  p[0] = e.c;
  p[across] = e.d;
}

// The strength that does the same and fits a byte: sizes are up to 160.
PIVRA_INLINE uint8_t byte_strength(int32_t strength) {
  return static_cast<uint8_t>(clamp(static_cast<int16_t>(strength), 0, 255));
}

void horizontal(uint8_t *plane, int32_t given, int32_t stride, int32_t width, int32_t height) {
  const uint8_t strength = byte_strength(given);
#if PIVRA_VECTORS
  const ptrdiff_t rest = width > 0 ? width % kBlock : 0;
  const Whole last = load_bytes(LastStrength(strength, rest).byte);
#endif
  for (int32_t block = 1; block < height / kSide; ++block) {
    uint8_t *const row = plane + block * kSide * stride;
    ptrdiff_t x = 0;
#if PIVRA_VECTORS
    for (; x + kBlock <= width; x += kBlock) filter_block(row + x, stride, Whole{} + strength);
    if (x > 0) {
      if (rest > 0) filter_block(row + width - kBlock, stride, last);
      continue;
    }
#endif
    for (; x < width; ++x) filter_one(row + x, stride, strength);
  }
}

void vertical(uint8_t *plane, int32_t given, int32_t stride, int32_t width, int32_t height) {
  const uint8_t strength = byte_strength(given);
  const ptrdiff_t edges = width / kSide - 1;
  ptrdiff_t y = 0;
#if PIVRA_VECTORS
  constexpr ptrdiff_t kEdges = kBlock / kSide;
  if (edges >= kEdges) {
    const ptrdiff_t rest = edges % kEdges;
    const Whole last = load_fours(LastStrength(strength, rest * kSide).byte, 0).v[0];
    for (; y + kSide <= height; y += kSide) {
      uint8_t *const first = plane + y * stride + kSide - 2;
      for (ptrdiff_t edge = 0; edge + kEdges <= edges; edge += kEdges)
        filter_tile(first + edge * kSide, stride, Whole{} + strength);
      if (rest > 0) filter_tile(first + (edges - kEdges) * kSide, stride, last);
    }
  }
#endif
  for (; y < height; ++y)
    for (ptrdiff_t edge = 1; edge <= edges; ++edge)
      filter_one(plane + y * stride + edge * kSide, 1, strength);
}

}  // namespace

extern const Deblock deblock;
const Deblock deblock = {horizontal, vertical};

}  // namespace pivra::PIVRA_LEVEL
