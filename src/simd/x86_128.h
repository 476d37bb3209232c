// SSE2, which every x86-64 processor has: one lane, already in memory order.
#ifndef PIVRA_SIMD_X86_128_H
#define PIVRA_SIMD_X86_128_H

namespace pivra::PIVRA_LEVEL {

typedef uint32_t U32 __attribute__((vector_size(16)));
typedef uint64_t U64 __attribute__((vector_size(16)));

PIVRA_INLINE U8 load(const uint8_t *p) { return (U8)_mm_loadu_si128((const __m128i *)p); }
PIVRA_INLINE void store(uint8_t *p, U8 v) { _mm_storeu_si128((__m128i *)p, (__m128i)v); }
PIVRA_INLINE I16 load_widened(const uint8_t *p) {
  return (I16)_mm_unpacklo_epi8(_mm_loadl_epi64((const __m128i *)p), _mm_setzero_si128());
}
// The vectors whose lanes, taken in turn, are the bytes at p.
PIVRA_INLINE void load_lane_pairs(const uint8_t *p, U8 &first, U8 &second) {
  first = load(p);
  second = load(p + 16);
}

template <int bytes>
PIVRA_INLINE U8 shift_up(U8 v) {
  return (U8)_mm_slli_si128((__m128i)v, bytes);
}
template <int bytes>
PIVRA_INLINE U8 shift_down(U8 v) {
  return (U8)_mm_srli_si128((__m128i)v, bytes);
}

// Bytes 0-2, 4-6, 8-10 and 12-14 moved together, the top four bytes cleared.
// SSE2 has no byte shuffle: first within 64 bits, then across them.
PIVRA_INLINE U8 drop_fourth_bytes(U8 v) {
  const U64 pixels = (U64)v;
  const U64 six = (pixels & 0xFFFFFF) | ((pixels >> 8) & 0xFFFFFF000000);
  const U64 lower = {~uint64_t{0}, 0};
  return (U8)(six & lower) | shift_down<2>((U8)(six & ~lower));
}

template <int n>
PIVRA_INLINE uint8_t *store_lanes(uint8_t *p, const U8 (&v)[n]) {
  for (int i = 0; i < n; ++i) store(p + 16 * i, v[i]);
  return p + 16 * n;
}

// The lanes' first 32 or 64 bits in turn, then their next ones, and so on.
PIVRA_INLINE U8 in_turn32(U8 v) { return v; }
PIVRA_INLINE U8 in_turn64(U8 v) { return v; }
// There is no byte shuffle to gather taps with, but rows are weighed as they are.
constexpr int32_t kTapLane = 16;
PIVRA_INLINE U8 taps_in_turn(U8 v) { return v; }
template <int unit>
PIVRA_INLINE Taps units_beside(U8 v) {
  if constexpr (unit == 4) {
    const __m128i words = _mm_shufflelo_epi16((__m128i)v, _MM_SHUFFLE(3, 1, 2, 0));
    return units_beside<2>((U8)_mm_shufflehi_epi16(words, _MM_SHUFFLE(3, 1, 2, 0)));
  } else {
    const U32 d = (U32)v;
    return (U8)((d & 0xFF0000FF) | (d >> 8 & 0xFF00) | (d << 8 & 0xFF0000));
  }
}

PIVRA_INLINE void store_halves(uint8_t *p, uint8_t *q, U8 v) {
  _mm_storel_epi64((__m128i *)p, (__m128i)v);
  _mm_storel_epi64((__m128i *)q, _mm_unpackhi_epi64((__m128i)v, (__m128i)v));
}
PIVRA_INLINE U8 even_pixels(U8 a, U8 b) {
  return (U8)_mm_shuffle_ps((__m128)a, (__m128)b, _MM_SHUFFLE(2, 0, 2, 0));
}

// Bytes 0-2, 3-5, 6-8 and 9-11 moved apart.
PIVRA_INLINE U8 spread_triples(U8 v) {
  const U64 lower = {~uint64_t{0}, 0};
  const U64 six = ((U64)v & lower) | ((U64)shift_up<2>(v) & ~lower);
  return (U8)((six & 0xFFFFFF) | (six << 8 & 0xFFFFFF00000000));
}
PIVRA_INLINE Pixels load_triples(const uint8_t *p) {
  return {{spread_triples(load(p)), spread_triples(load(p + 12)), spread_triples(load(p + 24)),
           spread_triples(shift_down<4>(load(p + 32)))}};
}

// --- Units that change places ---

PIVRA_INLINE U8 load_lanes(const uint8_t *p, ptrdiff_t) { return load(p); }

template <int unit>
PIVRA_INLINE U8 reverse(U8 v) {
  if constexpr (unit == 4) return (U8)_mm_shuffle_epi32((__m128i)v, _MM_SHUFFLE(0, 1, 2, 3));
  if constexpr (unit == 1) v = (U8)((U16)v << 8 | (U16)v >> 8);
  const __m128i low = _mm_shufflelo_epi16((__m128i)v, _MM_SHUFFLE(0, 1, 2, 3));
  const __m128i both = _mm_shufflehi_epi16(low, _MM_SHUFFLE(0, 1, 2, 3));
  return (U8)_mm_shuffle_epi32(both, _MM_SHUFFLE(1, 0, 3, 2));
}

template <int first>
PIVRA_INLINE U8 move_apart(U8 v) {
  return spread_triples(shift_down<first>(v));
}
PIVRA_INLINE void store_twelve(uint8_t *p, U8 v) {
  _mm_storel_epi64((__m128i *)p, (__m128i)v);
  const int32_t last = _mm_cvtsi128_si32((__m128i)shift_down<8>(v));
  memcpy(p + 8, &last, sizeof last);
}
PIVRA_INLINE void store_triples(uint8_t *p, U8 v) { store_twelve(p, drop_fourth_bytes(v)); }

template <int kept, int of, int unit>
PIVRA_INLINE void copy_kept(const uint8_t *src, uint8_t *dst) {
  if constexpr (of == 2 && unit == 1) {
    store(dst, pack_unsigned(low_bytes(load(src)), low_bytes(load(src + 16))));
  } else if constexpr (of == 2) {
    store(dst, (U8)pack_low_words((I32)load(src), (I32)load(src + 16)));
  } else if constexpr (of == 4 && unit == 1) {
    store_triples(dst, load(src));
  } else if constexpr (of == 4) {
    const U8 v = load(src);
    const U64 low = {0xFFFFFFFFFFFF, 0}, high = {0, 0xFFFFFFFFFFFF};
    store_twelve(dst, (U8)(((U64)v & low) | (U64)shift_down<2>((U8)((U64)v & high))));
  } else {
    // SSE2 moves bytes through memory as well as it does in registers.
#pragma GCC unroll 8
    for (int i = 0; i < 16; i += kept * unit)
      memcpy(dst + i, src + kept_byte<kept, of, unit>(i), kept * unit);
  }
}

// Two for each lane.
constexpr int kLaneBits = 16;
constexpr uint64_t kOddLaneBits = 0xCCCC;
PIVRA_INLINE uint32_t lane_bits(U16 lanes) {
  return static_cast<uint32_t>(_mm_movemask_epi8((__m128i)lanes));
}
PIVRA_INLINE U16 lanes_of_bits(uint32_t bits) {
  const U16 own = {1, 1 << 2, 1 << 4, 1 << 6, 1 << 8, 1 << 10, 1 << 12, 1 << 14};
  return (U16)(((U16)_mm_set1_epi16(static_cast<int16_t>(bits)) & own) == own);
}

}  // namespace pivra::PIVRA_LEVEL

#endif
