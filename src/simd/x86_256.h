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

// The lanes' first 32 or 64 bits in turn, then their next ones, and so on.
PIVRA_INLINE U8 in_turn32(U8 v) {
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  return (U8)_mm256_permutevar8x32_epi32((__m256i)v, order);
}
PIVRA_INLINE U8 in_turn64(U8 v) {
  return (U8)_mm256_permute4x64_epi64((__m256i)v, _MM_SHUFFLE(3, 1, 2, 0));
}
PIVRA_INLINE void store_halves(uint8_t *p, uint8_t *q, U8 v) {
  _mm256_storeu2_m128i((__m128i *)q, (__m128i *)p, (__m256i)v);
}
PIVRA_INLINE U8 even_pixels(U8 a, U8 b) {
  return in_turn64((U8)_mm256_shuffle_ps((__m256)a, (__m256)b, _MM_SHUFFLE(2, 0, 2, 0)));
}

// Four triples from either address, moved apart; in the second lane from byte `first` on.
template <int8_t first>
PIVRA_INLINE U8 spread_triples(const uint8_t *low, const uint8_t *high) {
  constexpr int8_t s = first;
  const __m256i order =
      _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, s, s + 1, s + 2, -1,
                       s + 3, s + 4, s + 5, -1, s + 6, s + 7, s + 8, -1, s + 9, s + 10, s + 11, -1);
  return (U8)_mm256_shuffle_epi8(_mm256_loadu2_m128i((const __m128i *)high, (const __m128i *)low),
                                 order);
}
PIVRA_INLINE Pixels load_triples(const uint8_t *p) {
  return {{spread_triples<0>(p, p + 12), spread_triples<0>(p + 24, p + 36),
           spread_triples<0>(p + 48, p + 60), spread_triples<4>(p + 72, p + 80)}};
}

// --- Units that change places ---

PIVRA_INLINE U8 load_lanes(const uint8_t *p, ptrdiff_t step) {
  return (U8)_mm256_loadu2_m128i((const __m128i *)(p + step), (const __m128i *)p);
}
PIVRA_INLINE U8 shuffle_lanes(U8 v, __m128i order) {
  return (U8)_mm256_shuffle_epi8((__m256i)v, _mm256_broadcastsi128_si256(order));
}

template <int unit>
PIVRA_INLINE U8 reverse(U8 v) {
  U8 lanes;
  if constexpr (unit == 1)
    lanes = shuffle_lanes(v, _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
  else if constexpr (unit == 2)
    lanes = shuffle_lanes(v, _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1));
  else
    lanes = (U8)_mm256_shuffle_epi32((__m256i)v, _MM_SHUFFLE(0, 1, 2, 3));
  return (U8)_mm256_permute4x64_epi64((__m256i)lanes, _MM_SHUFFLE(1, 0, 3, 2));
}

template <int first>
PIVRA_INLINE U8 move_apart(U8 v) {
  constexpr int8_t s = first;
  return shuffle_lanes(v, _mm_setr_epi8(s, s + 1, s + 2, -1, s + 3, s + 4, s + 5, -1, s + 6, s + 7,
                                        s + 8, -1, s + 9, s + 10, s + 11, -1));
}
// The first 12 bytes of each lane.
PIVRA_INLINE void store_twelves(uint8_t *p, U8 v) {
  const __m256i order = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
  const __m256i bytes = _mm256_permutevar8x32_epi32((__m256i)v, order);
  _mm_storeu_si128((__m128i *)p, _mm256_castsi256_si128(bytes));
  _mm_storel_epi64((__m128i *)(p + 16), _mm256_extracti128_si256(bytes, 1));
}
PIVRA_INLINE void store_triples(uint8_t *p, U8 v) { store_twelves(p, drop_fourth_bytes(v)); }

// Where each byte of a result comes from, within its lane; negative: it is zero.
struct alignas(32) LaneOrder {
  int8_t from[32];
};
template <class Rule>
constexpr LaneOrder make_lane_order(Rule rule) {
  LaneOrder order{};
  for (int i = 0; i < 32; ++i) order.from[i] = static_cast<int8_t>(rule(i / 16, i % 16));
  return order;
}
PIVRA_INLINE U8 shuffle(U8 v, const LaneOrder &order) {
  const __m256i from = _mm256_load_si256((const __m256i *)&order);
  return (U8)_mm256_shuffle_epi8((__m256i)v, from);
}

// How many bytes become a quarter of a register.
template <int kept, int of>
constexpr int kQuarter = 8 * of / kept;
// Even quarters go to the lower halves of lanes, odd ones to the upper halves. The
// last one ends its lane, so that nothing behind it is loaded.
template <int kept, int of, int unit, int odd>
constexpr LaneOrder kKeptQuarters = make_lane_order([](int lane, int i) {
  const int behind = odd && lane == 1 ? 16 - kQuarter<kept, of> : 0;
  return i / 8 == odd ? behind + kept_byte<kept, of, unit>(i % 8) : -1;
});
template <int unit>
constexpr LaneOrder kKeptTwelves = make_lane_order([](int, int i) {
  return i < 12 ? kept_byte<3, 4, unit>(i) : -1;
});
template <int kept, int of, int unit>
PIVRA_INLINE void copy_kept(const uint8_t *src, uint8_t *dst) {
  if constexpr (of == 4) {
    store_twelves(dst, shuffle(load(src), kKeptTwelves<unit>));
  } else {
    constexpr int q = kQuarter<kept, of>;
    const auto lanes = [src](int low, int high) {
      return (U8)_mm256_loadu2_m128i((const __m128i *)(src + high), (const __m128i *)(src + low));
    };
    store(dst, shuffle(lanes(0, 2 * q), kKeptQuarters<kept, of, unit, 0>) |
                   shuffle(lanes(q, 4 * q - 16), kKeptQuarters<kept, of, unit, 1>));
  }
}

// Taps: every lane has windows of its own. Packing two registers leaves their
// outputs in turn, if the lanes' windows are chosen so.
#define PIVRA_GATHERS 1
constexpr int32_t kTapLane = 16;
PIVRA_INLINE U8 taps_in_turn(U8 v) { return v; }
template <int unit>
constexpr LaneOrder kBeside = make_lane_order([](int, int i) { return beside_byte<unit>(i); });
template <int unit>
PIVRA_INLINE Taps units_beside(U8 v) {
  return shuffle(v, kBeside<unit>);
}

template <int windows>
PIVRA_INLINE Taps gather(const uint8_t *src, const int32_t *from, U8 index) {
  const auto window = [=](int i) {
    const __m256i both = _mm256_loadu2_m128i((const __m128i *)(src + from[windows + i]),
                                             (const __m128i *)(src + from[i]));
    return _mm256_shuffle_epi8(both, (__m256i)index);
  };
  __m256i v = window(0);
  if constexpr (windows == 2) v = _mm256_blend_epi32(v, window(1), 0xCC);
  if constexpr (windows == 4) {
    v = _mm256_blend_epi32(v, window(1), 0x22);
    v = _mm256_blend_epi32(v, window(2), 0x44);
    v = _mm256_blend_epi32(v, window(3), 0x88);
  }
  return (U8)v;
}

// Two for each lane.
constexpr int kLaneBits = 32;
constexpr uint64_t kOddLaneBits = 0xCCCCCCCC;
PIVRA_INLINE uint32_t lane_bits(U16 lanes) {
  return static_cast<uint32_t>(_mm256_movemask_epi8((__m256i)lanes));
}
PIVRA_INLINE U16 lanes_of_bits(uint32_t bits) {
  const U16 own = {1, 1 << 2, 1 << 4, 1 << 6, 1 << 8, 1 << 10, 1 << 12, 1 << 14,
                   1, 1 << 2, 1 << 4, 1 << 6, 1 << 8, 1 << 10, 1 << 12, 1 << 14};
  const __m256i half = _mm256_set_epi64x(0x0302030203020302, 0x0302030203020302, 0x0100010001000100,
                                         0x0100010001000100);
  const __m256i all = _mm256_set1_epi32(static_cast<int32_t>(bits));
  return (U16)(((U16)_mm256_shuffle_epi8(all, half) & own) == own);
}

}  // namespace pivra::PIVRA_LEVEL

#endif
