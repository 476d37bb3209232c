// AVX2: two 128-bit lanes.
#ifndef PIVRA_SIMD_X86_256_H
#define PIVRA_SIMD_X86_256_H

namespace pivra::PIVRA_LEVEL {

PIVRA_INLINE U8 load(const uint8_t *p) { return (U8)_mm256_loadu_si256((const __m256i *)p); }
PIVRA_INLINE void store(uint8_t *p, U8 v) { _mm256_storeu_si256((__m256i *)p, (__m256i)v); }
PIVRA_INLINE I16 load_widened(const uint8_t *p) {
  return (I16)_mm256_cvtepu8_epi16(_mm_loadu_si128((const __m128i *)p));
}
// The vectors whose lanes, taken in turn, are the bytes at p.
PIVRA_INLINE void load_lane_pairs(const uint8_t *p, U8 &first, U8 &second) {
  const __m128i *lane = (const __m128i *)p;
  first = (U8)_mm256_loadu2_m128i(lane + 2, lane);
  second = (U8)_mm256_loadu2_m128i(lane + 3, lane + 1);
}

#define PIVRA_LANE_OPERATION(Result, name, T, intrinsic) \
  PIVRA_INLINE Result name(T a, T b) { return (Result)intrinsic((__m256i)a, (__m256i)b); }
PIVRA_LANE_OPERATION(U8, unpack_low8, U8, _mm256_unpacklo_epi8)
PIVRA_LANE_OPERATION(U8, unpack_high8, U8, _mm256_unpackhi_epi8)
PIVRA_LANE_OPERATION(U8, unpack_low16, U8, _mm256_unpacklo_epi16)
PIVRA_LANE_OPERATION(U8, unpack_high16, U8, _mm256_unpackhi_epi16)
PIVRA_LANE_OPERATION(U8, unpack_low32, U8, _mm256_unpacklo_epi32)
PIVRA_LANE_OPERATION(U8, unpack_high32, U8, _mm256_unpackhi_epi32)
PIVRA_LANE_OPERATION(U8, pack_unsigned, I16, _mm256_packus_epi16)
PIVRA_LANE_OPERATION(I16, larger, I16, _mm256_max_epi16)
PIVRA_LANE_OPERATION(I16, add_saturated, I16, _mm256_adds_epi16)
PIVRA_LANE_OPERATION(I16, multiply_add_bytes, U8, _mm256_maddubs_epi16)
#undef PIVRA_LANE_OPERATION

template <int bytes>
PIVRA_INLINE U8 shift_up(U8 v) {
  return (U8)_mm256_slli_si256((__m256i)v, bytes);
}
template <int bytes>
PIVRA_INLINE U8 shift_down(U8 v) {
  return (U8)_mm256_srli_si256((__m256i)v, bytes);
}

// In each lane bytes 0-2, 4-6, 8-10 and 12-14 moved together, the top four cleared.
PIVRA_INLINE U8 drop_fourth_bytes(U8 v) {
  const __m128i order = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  return (U8)_mm256_shuffle_epi8((__m256i)v, _mm256_broadcastsi128_si256(order));
}

// Lane 0 of every vector, then lane 1 of every vector: the halves to be stored
// together are half 2i and half 2i + 1 of that sequence.
template <int n>
PIVRA_INLINE uint8_t *store_lanes(uint8_t *p, const U8 (&v)[n]) {
  for (int i = 0; i < n; ++i) {
    const int a = 2 * i, b = 2 * i + 1;
    const __m256i va = (__m256i)v[a % n], vb = (__m256i)v[b % n];
    const __m256i joined = b < n    ? _mm256_permute2x128_si256(va, vb, 0x20)
                           : a >= n ? _mm256_permute2x128_si256(va, vb, 0x31)
                                    : _mm256_permute2x128_si256(va, vb, 0x30);
    store(p + 32 * i, (U8)joined);
  }
  return p + 32 * n;
}

}  // namespace pivra::PIVRA_LEVEL

#endif
