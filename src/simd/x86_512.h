// AVX-512 with its byte permutations (VBMI) and dot products (VNNI): any byte of two
// registers to any place, so that memory order takes one or two steps and no lanes show.
#ifndef PIVRA_SIMD_X86_512_H
#define PIVRA_SIMD_X86_512_H

namespace pivra::PIVRA_LEVEL {

PIVRA_INLINE U8 load(const uint8_t *p) { return (U8)_mm512_loadu_si512(p); }
PIVRA_INLINE void store(uint8_t *p, U8 v) { _mm512_storeu_si512(p, (__m512i)v); }
PIVRA_INLINE I16 load_widened(const uint8_t *p) {
  return (I16)_mm512_cvtepu8_epi16(_mm256_loadu_si256((const __m256i *)p));
}

// Three bits give a position in the truth table.
template <int truth>
PIVRA_INLINE U8 bitwise(U8 a, U8 b, U8 c) {
  return (U8)_mm512_ternarylogic_epi64((__m512i)a, (__m512i)b, (__m512i)c, truth);
}
PIVRA_INLINE U8 select(U8 mask, U8 a, U8 b) { return bitwise<0xCA>(mask, a, b); }
PIVRA_INLINE U8 parity(U8 a, U8 b, U8 c) { return bitwise<0x96>(a, b, c); }
PIVRA_INLINE U8 majority(U8 a, U8 b, U8 c) { return bitwise<0xE8>(a, b, c); }
// Masked: GCC 12 takes the plain ones to read something uninitialised.
PIVRA_INLINE U8 unpack_low32(U8 a, U8 b) {
  return (U8)_mm512_maskz_unpacklo_epi32(~__mmask16{0}, (__m512i)a, (__m512i)b);
}
PIVRA_INLINE U8 unpack_high32(U8 a, U8 b) {
  return (U8)_mm512_maskz_unpackhi_epi32(~__mmask16{0}, (__m512i)a, (__m512i)b);
}

// Where each byte of a result comes from: 0-63 the first register, 64-127 the second.
struct alignas(64) Order {
  uint8_t from[64];
};
template <class Rule>
constexpr Order make_order(Rule rule) {
  Order order{};
  for (int i = 0; i < 64; ++i) order.from[i] = static_cast<uint8_t>(rule(i));
  return order;
}
PIVRA_INLINE U8 permute(U8 a, const Order &order, U8 b) {
  return (U8)_mm512_permutex2var_epi8((__m512i)a, _mm512_load_si512(&order), (__m512i)b);
}

// Loads that cross cache lines cost less than permutations.
template <int n>
PIVRA_INLINE Shifted<n> load_shifted(const uint8_t *&p) {
  Shifted<n> s;
  for (int k = 0; k < n; ++k) {
    s.from[k] = load(p + k);
    asm("" : "+v"(s.from[k]));  // else GCC loads once for each use
  }
  p += kBlock;
  return s;
}

// Every other byte of two registers.
template <int first>
constexpr Order kEveryOther = make_order([](int i) { return 2 * i + first; });
PIVRA_INLINE Pair<U8> load_pairs(const uint8_t *p) {
  const U8 a = load(p), b = load(p + 64);
  return {permute(a, kEveryOther<0>, b), permute(a, kEveryOther<1>, b)};
}

// Two registers in turn, from byte 0 and from byte 32 on.
template <int first>
constexpr Order kInTurn = make_order([](int i) { return first + i / 2 + 64 * (i % 2); });
PIVRA_INLINE void store_pairs(uint8_t *p, U8 even, U8 odd) {
  store(p, permute(even, kInTurn<0>, odd));
  store(p + 64, permute(even, kInTurn<32>, odd));
}

// Where packing the even and the odd half of a block leaves pixel x.
constexpr int packed(int x) { return x / 16 * 16 + x % 2 * 8 + x % 16 / 2; }

// Two registers in turn, from pixel 0 and from the pixel in the middle on: packed
// bytes, and words as they are.
constexpr Order kBytesInTurn[] = {
    make_order([](int i) { return packed(i / 2) + 64 * (i % 2); }),
    make_order([](int i) { return packed(32 + i / 2) + 64 * (i % 2); })};
constexpr Order kWordsInTurn[] = {
    make_order([](int i) { return i / 4 * 2 + i % 2 + 64 * (i / 2 % 2); }),
    make_order([](int i) { return 32 + i / 4 * 2 + i % 2 + 64 * (i / 2 % 2); })};

PIVRA_INLINE uint8_t *store_in_turn(uint8_t *p, U8 a, U8 b) {
  store(p, permute(a, kWordsInTurn[0], b));
  store(p + 64, permute(a, kWordsInTurn[1], b));
  return p + 128;
}

PIVRA_INLINE uint8_t *store_interleaved4(uint8_t *p, Bytes a, Bytes b, Bytes c, Bytes d) {
  p = store_in_turn(p, permute(a, kBytesInTurn[0], b), permute(c, kBytesInTurn[0], d));
  return store_in_turn(p, permute(a, kBytesInTurn[1], b), permute(c, kBytesInTurn[1], d));
}

// Byte i of part k of the stored triples is byte t % 3 of triple t / 3, t = 64 k + i.
template <int k>
constexpr Order kFirstTwoOfTriples = make_order([](int i) {
  const int t = 64 * k + i;
  return packed(t / 3) + 64 * (t % 3);
});
template <int k>
constexpr uint64_t third_of_triples() {
  uint64_t mask = 0;
  for (int i = 0; i < 64; ++i) mask |= uint64_t{(64 * k + i) % 3 == 2} << i;
  return mask;
}
template <int k>
PIVRA_INLINE void store_triples(uint8_t *p, Bytes a, Bytes b, Bytes c) {
  const __m512i order = _mm512_load_si512(&kFirstTwoOfTriples<k>);
  const __m512i ab = _mm512_permutex2var_epi8((__m512i)a, order, (__m512i)b);
  store(p + 64 * k, (U8)_mm512_mask_permutexvar_epi8(ab, third_of_triples<k>(), order, (__m512i)c));
}
PIVRA_INLINE uint8_t *store_interleaved3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
  store_triples<0>(p, a, b, c);
  store_triples<1>(p, a, b, c);
  store_triples<2>(p, a, b, c);
  return p + 192;
}

PIVRA_INLINE uint8_t *store_565(uint8_t *p, Words565 even, Words565 odd) {
  return store_in_turn(p, even, odd);
}

// The lanes' first 32 or 64 bits in turn, then their next ones, and so on.
PIVRA_INLINE U8 in_turn32(U8 v) {
  const I32 d = (I32)v;
  return (U8)__builtin_shufflevector(d, d, 0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
}
PIVRA_INLINE U8 in_turn64(U8 v) {
  const __m512i q = (__m512i)v;
  return (U8)__builtin_shufflevector(q, q, 0, 2, 4, 6, 1, 3, 5, 7);
}
PIVRA_INLINE void store_halves(uint8_t *p, uint8_t *q, U8 v) {
  memcpy(p, &v, kBlock / 2);
  memcpy(q, (const uint8_t *)&v + kBlock / 2, kBlock / 2);
}
PIVRA_INLINE U8 even_pixels(U8 a, U8 b) {
  return (U8)__builtin_shufflevector((I32)a, (I32)b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24,
                                     26, 28, 30);
}

// Triples from byte `first` on, moved apart.
template <int first>
constexpr Order kTriplesApart = make_order([](int i) {
  return first + i / 4 * 3 + (i % 4 < 3 ? i % 4 : 0);
});
template <int first>
PIVRA_INLINE U8 load_triples_apart(const uint8_t *p) {
  const __m512i order = _mm512_load_si512(&kTriplesApart<first>);
  return (U8)_mm512_maskz_permutexvar_epi8(~__mmask64{0}, order, (__m512i)load(p));
}
PIVRA_INLINE Pixels load_triples(const uint8_t *p) {
  return {{load_triples_apart<0>(p), load_triples_apart<0>(p + 48), load_triples_apart<0>(p + 96),
           load_triples_apart<16>(p + 128)}};
}

// --- Units that change places ---

template <int lane>
PIVRA_INLINE __m512i insert_lane(__m512i v, const uint8_t *p) {
  const __m128i bytes = _mm_loadu_si128((const __m128i *)p);
  return _mm512_maskz_inserti32x4(~__mmask16{0}, v, bytes, lane);
}
PIVRA_INLINE U8 load_lanes(const uint8_t *p, ptrdiff_t step) {
  __m512i v = _mm512_zextsi128_si512(_mm_loadu_si128((const __m128i *)p));
  v = insert_lane<1>(v, p + step);
  v = insert_lane<2>(v, p + 2 * step);
  return (U8)insert_lane<3>(v, p + 3 * step);
}
PIVRA_INLINE U8 permute(U8 v, const Order &order) {
  return (U8)_mm512_maskz_permutexvar_epi8(~__mmask64{0}, _mm512_load_si512(&order), (__m512i)v);
}

template <int unit>
constexpr Order kReversed = make_order([](int i) {
  return 64 - unit - i / unit * unit + i % unit;
});
template <int unit>
PIVRA_INLINE U8 reverse(U8 v) {
  return permute(v, kReversed<unit>);
}

// Triples of three registers, the last one first: of the middle register a byte each
// comes from all three. Bytes of the first register are counted from the second on.
template <int k>
constexpr Order kTriplesReversed = make_order([](int i) {
  const int t = 64 * k + i;
  return 189 - t / 3 * 3 + t % 3 - (k == 0 ? 64 : 0);
});
constexpr __mmask64 kFromThird = 2;
PIVRA_INLINE void copy_reversed_triples(const uint8_t *src, uint8_t *dst) {
  const U8 a = load(src), b = load(src + 64), c = load(src + 128);
  const __m512i order = _mm512_load_si512(&kTriplesReversed<1>);
  store(dst, permute(b, kTriplesReversed<0>, c));
  store(dst + 64, (U8)_mm512_mask_permutexvar_epi8((__m512i)permute(a, kTriplesReversed<1>, b),
                                                   kFromThird, order, (__m512i)c));
  store(dst + 128, permute(a, kTriplesReversed<2>, b));
}

template <int first>
constexpr Order kLanesApart = make_order([](int i) {
  return first + i / 16 * 16 + i % 16 / 4 * 3 + (i % 4 < 3 ? i % 4 : 0);
});
template <int first>
PIVRA_INLINE U8 move_apart(U8 v) {
  return permute(v, kLanesApart<first>);
}
constexpr Order kTriplesTogether = make_order([](int i) { return i < 48 ? i / 3 * 4 + i % 3 : 0; });
PIVRA_INLINE void store_triples(uint8_t *p, U8 v) {
  const U8 bytes = permute(v, kTriplesTogether);
  memcpy(p, &bytes, 48);
}

// The last ones come from a register that ends with the last byte which is read.
template <int kept, int of, int unit>
constexpr Order kKeptBytes = make_order([](int i) {
  const int from = kept_byte<kept, of, unit>(i), last = 64 * of / kept - 64;
  return from < 64 ? from : from - last + 64;
});
template <int kept, int of, int unit>
PIVRA_INLINE void copy_kept(const uint8_t *src, uint8_t *dst) {
  if constexpr (of == 4) {
    const U8 v = permute(load(src), kKeptBytes<kept, of, unit>);
    memcpy(dst, &v, 48);
  } else {
    const U8 last = load(src + 64 * of / kept - 64);
    store(dst, permute(load(src), kKeptBytes<kept, of, unit>, last));
  }
}

// Four registers of entries; an index picks of two at once, and its top bit which two.
#define PIVRA_TABLES_IN_REGISTERS 1
struct Table {
  U8 v[4];
};
PIVRA_INLINE Table load_table(const uint8_t *p) {
  return {{load(p), load(p + 64), load(p + 128), load(p + 192)}};
}
PIVRA_INLINE U8 look_up(Table t, U8 index) {
  const __m512i i = (__m512i)index;
  const __m512i low = _mm512_permutex2var_epi8((__m512i)t.v[0], i, (__m512i)t.v[1]);
  const __m512i high = _mm512_permutex2var_epi8((__m512i)t.v[2], i, (__m512i)t.v[3]);
  return (U8)_mm512_mask_mov_epi8(low, _mm512_movepi8_mask(i), high);
}
// One for each lane.
constexpr int kLaneBits = 32;
constexpr uint64_t kOddLaneBits = 0xAAAAAAAA;
PIVRA_INLINE uint32_t lane_bits(U16 lanes) { return _mm512_movepi16_mask((__m512i)lanes); }
PIVRA_INLINE U16 lanes_of_bits(uint32_t bits) { return (U16)_mm512_movm_epi16(bits); }

// Taps: windows are as wide as the register.
#define PIVRA_GATHERS 1
constexpr int32_t kTapLane = 64;
PIVRA_INLINE U8 taps_in_turn(U8 v) { return in_turn64(v); }

template <int unit>
constexpr Order kBeside = make_order(beside_byte<unit>);
template <int unit>
PIVRA_INLINE Taps units_beside(U8 v) {
  return permute(v, kBeside<unit>);
}

template <int first>
constexpr Order kEveryOtherWord = make_order([](int i) { return i / 2 * 4 + 2 * first + i % 2; });
PIVRA_INLINE Pair<U16> word_taps(Taps t0, Taps t1) {
  return {(U16)permute(t0, kEveryOtherWord<0>, t1), (U16)permute(t0, kEveryOtherWord<1>, t1)};
}

template <int windows>
PIVRA_INLINE Taps gather(const uint8_t *src, const int32_t *from, U8 index) {
  constexpr __mmask64 kSlice = ~__mmask64{0} >> (64 - 64 / windows);
  __m512i v =
      _mm512_maskz_permutexvar_epi8(~__mmask64{0}, (__m512i)index, (__m512i)load(src + from[0]));
  for (int i = 1; i < windows; ++i)
    v = _mm512_mask_permutexvar_epi8(v, kSlice << (64 / windows * i), (__m512i)index,
                                     (__m512i)load(src + from[i]));
  return (U8)v;
}

}  // namespace pivra::PIVRA_LEVEL

#endif
