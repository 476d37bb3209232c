// x86-64: the vocabulary at three register widths. What differs between them is
// kept apart: loads, stores and steps across 128-bit lanes (x86_128.h and so on),
// and how the results of even and odd pixels become bytes in memory order, by
// unpacking within lanes (x86_lanes.h) or by byte permutations (x86_512.h).
#ifndef PIVRA_SIMD_X86_H
#define PIVRA_SIMD_X86_H

#include <immintrin.h>

// Sources that the longest registers make slower define PIVRA_AT_MOST_256_BITS.
#if defined(__AVX512VBMI__) && !defined(PIVRA_AT_MOST_256_BITS)
#define PIVRA_512_BITS 1
#endif

namespace pivra::PIVRA_LEVEL {

#if defined(PIVRA_512_BITS)
typedef __m512i Register;
typedef __m512 Floats;
#define PIVRA_INTRINSIC(name) _mm512_##name
#elif defined(__AVX2__)
typedef __m256i Register;
typedef __m256 Floats;
#define PIVRA_INTRINSIC(name) _mm256_##name
#else
typedef __m128i Register;
typedef __m128 Floats;
#define PIVRA_INTRINSIC(name) _mm_##name
#endif

constexpr int32_t kBlock = sizeof(Register);

typedef uint8_t U8 __attribute__((vector_size(kBlock)));
typedef int16_t I16 __attribute__((vector_size(kBlock)));
typedef uint16_t U16 __attribute__((vector_size(kBlock)));
typedef int32_t I32 __attribute__((vector_size(kBlock)));
typedef U16 TopBytes;  // not yet narrowed, in the order of pack_low_words

// RGB pixels, padded to four bytes.
struct Pixels {
  U8 v[4];
};
struct EvenPixels {
  U8 v[2];
};
struct Words {
  U16 v[2];
};

typedef U8 Samples;
typedef I16 Clamped;  // clamped as it is joined: one instruction does both
typedef U8 Words565;
typedef I16 Narrow;  // widened as it is loaded
typedef U8 Twos;     // side by side
typedef U8 Bytes;
typedef U8 Whole;
template <int n>
struct Shifted {
  Whole from[n];
};
typedef U8 Taps;

// In each 128-bit lane the bytes of its fours, row by row.
struct Fours {
  U8 v[4], others[4];
};

struct Packed422 {
  Samples luma;
  Twos chroma;
};

// Operations that exist at every width, within 128-bit lanes where they move bytes.
#define PIVRA_OPERATION(Result, name, T, intrinsic)                      \
  PIVRA_INLINE Result name(T a, T b) {                                   \
    return (Result)PIVRA_INTRINSIC(intrinsic)((Register)a, (Register)b); \
  }
PIVRA_OPERATION(U8, unpack_low8, U8, unpacklo_epi8)
PIVRA_OPERATION(U8, unpack_high8, U8, unpackhi_epi8)
PIVRA_OPERATION(U8, unpack_low16, U8, unpacklo_epi16)
PIVRA_OPERATION(U8, unpack_high16, U8, unpackhi_epi16)
#if !defined(PIVRA_512_BITS)
PIVRA_OPERATION(U8, unpack_low32, U8, unpacklo_epi32)
PIVRA_OPERATION(U8, unpack_high32, U8, unpackhi_epi32)
#endif
PIVRA_OPERATION(U8, pack_unsigned, I16, packus_epi16)
PIVRA_OPERATION(I16, pack_words, I32, packs_epi32)
PIVRA_OPERATION(I32, multiply_add, I16, madd_epi16)
PIVRA_OPERATION(I16, larger, I16, max_epi16)
PIVRA_OPERATION(I16, add_saturated, I16, adds_epi16)
PIVRA_OPERATION(U8, mean, U8, avg_epu8)
PIVRA_OPERATION(U8, add_saturated, U8, adds_epu8)
PIVRA_OPERATION(U8, subtract_saturated, U8, subs_epu8)
PIVRA_OPERATION(U16, multiply_high, U16, mulhi_epu16)
PIVRA_OPERATION(U8, minimum, U8, min_epu8)
PIVRA_OPERATION(U8, maximum, U8, max_epu8)
#if defined(__SSSE3__)
PIVRA_OPERATION(I16, multiply_add_bytes, U8, maddubs_epi16)
#endif
#undef PIVRA_OPERATION

// Of a 128-bit lane alone as well. GCC 12 warns of what unmasked 512-bit operations
// leave undefined, and drops a mask that is full.
constexpr int32_t kLane = 16;
typedef uint8_t Lane __attribute__((vector_size(kLane)));
#if defined(PIVRA_512_BITS)
#define PIVRA_WIDE(name, a, b) _mm512_maskz_##name(-1, (Register)a, (Register)b)
#else
#define PIVRA_WIDE(name, a, b) PIVRA_INTRINSIC(name)((Register)a, (Register)b)
#endif
#define PIVRA_UNPACK(name, intrinsic)                              \
  template <int unit>                                              \
  PIVRA_INLINE __m128i name(__m128i a, __m128i b) {                \
    if constexpr (unit == 1) return _mm_##intrinsic##_epi8(a, b);  \
    if constexpr (unit == 2) return _mm_##intrinsic##_epi16(a, b); \
    if constexpr (unit == 4) return _mm_##intrinsic##_epi32(a, b); \
  }                                                                \
  template <int unit, class V>                                     \
  PIVRA_INLINE V name(V a, V b) {                                  \
    if constexpr (sizeof(V) == kLane)                              \
      return (V)name<unit>((__m128i)a, (__m128i)b);                \
    else if constexpr (unit == 1)                                  \
      return (V)PIVRA_WIDE(intrinsic##_epi8, a, b);                \
    else if constexpr (unit == 2)                                  \
      return (V)PIVRA_WIDE(intrinsic##_epi16, a, b);               \
    else                                                           \
      return (V)PIVRA_WIDE(intrinsic##_epi32, a, b);               \
  }
PIVRA_UNPACK(unpack_low, unpacklo)
PIVRA_UNPACK(unpack_high, unpackhi)
#undef PIVRA_UNPACK
#undef PIVRA_WIDE

PIVRA_INLINE U8 halve(U8 v) { return (U8)((U16)v >> 1) & 0x7F; }
PIVRA_INLINE I16 low_bytes(U8 v) { return (I16)v & 0xFF; }
PIVRA_INLINE I16 high_bytes(U8 v) { return (I16)((U16)v >> 8); }
PIVRA_INLINE I16 pack_low_words(I32 a, I32 b) { return pack_words(a << 16 >> 16, b << 16 >> 16); }

}  // namespace pivra::PIVRA_LEVEL

#if defined(PIVRA_512_BITS)
#include "simd/x86_512.h"
#elif defined(__AVX2__)
#include "simd/x86_256.h"
#include "simd/x86_lanes.h"
#else
#include "simd/x86_128.h"
#include "simd/x86_lanes.h"
#endif

namespace pivra::PIVRA_LEVEL {

template <int16_t k>
PIVRA_INLINE I16 splat() {
  return I16{} + k;
}
PIVRA_INLINE I16 at_least_zero(I16 i) { return larger(i, I16{}); }
PIVRA_INLINE Bytes splat_bytes(uint8_t k) { return U8{} + k; }

PIVRA_INLINE Samples load_samples(const uint8_t *p) { return load(p); }
PIVRA_INLINE Whole load_bytes(const uint8_t *p) { return load(p); }
PIVRA_INLINE void store_bytes(uint8_t *p, Whole w) { store(p, w); }
PIVRA_INLINE Whole exchange_neighbours(Whole w) { return (U8)((U16)w << 8 | (U16)w >> 8); }
PIVRA_INLINE Narrow load_narrow(const uint8_t *p) { return load_widened(p); }
PIVRA_INLINE Twos load_twos(const uint8_t *p) { return load(p); }

template <int kY>
PIVRA_INLINE Packed422 load_packed422(const uint8_t *p) {
  Pair<U8> v = load_pairs(p);
  return {kY == 0 ? v.even : v.odd, kY == 0 ? v.odd : v.even};
}

PIVRA_INLINE Twos twos(Narrow first, Narrow second) { return (U8)(first | second << 8); }
PIVRA_INLINE Twos even_twos(Samples first, Samples second) {
  return (U8)(((I16)first & 0xFF) | (I16)second << 8);
}
PIVRA_INLINE Twos odd_twos(Samples first, Samples second) {
  return (U8)(((U16)first >> 8) | ((U16)second & uint16_t{0xFF00}));
}

// A multiplication by a constant, kept from becoming shifts and adds.
PIVRA_INLINE U16 times(I16 i, I16 k) {
  asm("" : "+x"(k));
  return (U16)i * (U16)k;
}

#if defined(__SSSE3__)

// Signed bytes side by side, weighed and added by one multiplication.
typedef U8 Centred;
PIVRA_INLINE Centred centre(Twos t) { return t ^ 0x80; }
template <uint8_t k0, uint8_t k1>
PIVRA_INLINE I16 weigh_both(Centred c) {
  return multiply_add_bytes((U8)splat<static_cast<int16_t>(k0 | k1 << 8)>(), c);
}
template <int which, uint8_t k>
PIVRA_INLINE I16 weigh(Centred c) {
  constexpr uint8_t k0 = which == 0 ? k : 0;
  return weigh_both<k0, k - k0>(c);
}
template <int which>
PIVRA_INLINE I16 add_half(I16 i, Centred c) {
  return i + ((which == 0 ? (I16)c << 8 : (I16)c) >> 9);
}

#else

struct Centred {
  I16 n[2];
};
PIVRA_INLINE Centred centre(Twos t) { return {{low_bytes(t) - 128, high_bytes(t) - 128}}; }
template <int which, int16_t k>
PIVRA_INLINE I16 weigh(Centred c) {
  return (I16)times(c.n[which], splat<k>());
}
template <int16_t k0, int16_t k1>
PIVRA_INLINE I16 weigh_both(Centred c) {
  return weigh<0, k0>(c) + weigh<1, k1>(c);
}
template <int which>
PIVRA_INLINE I16 add_half(I16 i, Centred c) {
  return i + (c.n[which] >> 1);
}

#endif

// Fours of two vectors, and of them the even ones or the odd ones.
template <int first>
PIVRA_INLINE U8 every_other_four(U8 a, U8 b) {
  return (U8)PIVRA_INTRINSIC(shuffle_ps)((Floats)a, (Floats)b,
                                         _MM_SHUFFLE(2 + first, first, 2 + first, first));
}
PIVRA_INLINE Fours load_fours(const uint8_t *p, ptrdiff_t stride) {
  U8 even[4], odd[4];
  for (int i = 0; i < 4; ++i, p += 2 * stride) {
    const U8 upper = load(p), lower = load(p + stride);
    even[i] = every_other_four<0>(upper, lower);
    odd[i] = every_other_four<1>(upper, lower);
  }
  // Bytes by their number modulo 4: apart by 8, by 4, by 2 and in order.
  const U8 r01 = unpack_low8(even[0], even[2]), r23 = unpack_high8(even[0], even[2]);
  const U8 r45 = unpack_low8(even[1], even[3]), r67 = unpack_high8(even[1], even[3]);
  const U8 r0 = unpack_low8(r01, r45), r1 = unpack_high8(r01, r45);
  const U8 r2 = unpack_low8(r23, r67), r3 = unpack_high8(r23, r67);
  const U8 even01 = unpack_low8(r0, r2), even23 = unpack_high8(r0, r2);
  const U8 odd01 = unpack_low8(r1, r3), odd23 = unpack_high8(r1, r3);
  return {{unpack_low8(even01, odd01), unpack_high8(even01, odd01), unpack_low8(even23, odd23),
           unpack_high8(even23, odd23)},
          {odd[0], odd[1], odd[2], odd[3]}};
}
PIVRA_INLINE void store_fours(uint8_t *p, ptrdiff_t stride, Fours f) {
  const U8 low01 = unpack_low8(f.v[0], f.v[1]), low23 = unpack_low8(f.v[2], f.v[3]);
  const U8 high01 = unpack_high8(f.v[0], f.v[1]), high23 = unpack_high8(f.v[2], f.v[3]);
  const U8 even[] = {unpack_low16(low01, low23), unpack_high16(low01, low23),
                     unpack_low16(high01, high23), unpack_high16(high01, high23)};
  for (int i = 0; i < 4; ++i, p += 2 * stride) {
    store(p, unpack_low32(even[i], f.others[i]));
    store(p + stride, unpack_high32(even[i], f.others[i]));
  }
}

template <uint8_t k, int16_t offset>
PIVRA_INLINE Pair<I16> scale(Samples s) {
#if defined(__SSSE3__)
  // One factor of this multiplication is signed: n - 128, made up for behind it.
  const U8 even = (U8)splat<k>(), odd = (U8)(splat<k>() << 8);
  const I16 rest = splat<128 * k - offset>();
  return {multiply_add_bytes(even, s ^ 0x80) + rest, multiply_add_bytes(odd, s ^ 0x80) + rest};
#else
  const U16 even = times(low_bytes(s), splat<k>()), odd = times(high_bytes(s), splat<k>());
  return {(I16)(even - uint16_t{offset}), (I16)(odd - uint16_t{offset})};
#endif
}

// In each 128-bit lane the bytes of eight even positions, then those between them.
PIVRA_INLINE Clamped clamp(I16 i) { return i >> 7; }
PIVRA_INLINE Bytes join(Clamped even, Clamped odd) { return pack_unsigned(even, odd); }

PIVRA_INLINE Words565 clamp_565(I16 a, I16 b, I16 c) {
  const U16 top = (U16)at_least_zero(a), middle = (U16)at_least_zero(b);
  const U16 bottom = (U16)at_least_zero(c);
  const U16 upper = (top << 1 & uint16_t{0xF800}) | (middle >> 4 & 0x07E0);
  return (Words565)(upper | bottom >> 10);
}

// RGB pixels of four bytes, weighed where they lie.

#if defined(__SSSE3__)

// The first factor of the byte multiplication is unsigned: the pixels, or weights above
// 127. With those go n - 128, made up for behind it. Two bytes' sum fits 16 bits, and so
// does the whole one.
#if defined(PIVRA_512_BITS)
PIVRA_INLINE I32 multiply_add_fours(U8 a, U8 b) {
  return (I32)_mm512_dpbusd_epi32(__m512i{}, (__m512i)a, (__m512i)b);
}
#else
PIVRA_INLINE I32 multiply_add_fours(U8 a, U8 b) {
  return multiply_add(multiply_add_bytes(a, b), splat<1>());
}
#endif
template <class W>
constexpr bool kCentre =
    W::k.byte[0] > 127 || W::k.byte[1] > 127 || W::k.byte[2] > 127 || W::k.byte[3] > 127;
template <class W>
PIVRA_INLINE I32 weigh_pixels(U8 v) {
  constexpr uint32_t pattern = (W::k.byte[0] & 0xFFu) | (W::k.byte[1] & 0xFFu) << 8 |
                               (W::k.byte[2] & 0xFFu) << 16 | (W::k.byte[3] & 0xFFu) << 24;
  const U8 weights = (U8)(I32{} + static_cast<int32_t>(pattern));
  return kCentre<W> ? multiply_add_fours(weights, v ^ 0x80) : multiply_add_fours(v, weights);
}
template <class W>
PIVRA_INLINE TopBytes weigh(U8 a, U8 b) {
  constexpr int32_t centre =
      kCentre<W> ? 128 * (W::k.byte[0] + W::k.byte[1] + W::k.byte[2] + W::k.byte[3]) : 0;
  return (U16)pack_words(weigh_pixels<W>(a), weigh_pixels<W>(b)) +
         static_cast<uint16_t>(W::k.offset + centre);
}

#else

// For the bytes `first` and first + 2.
template <class W, int first>
PIVRA_INLINE I16 two_weights() {
  return (I16)(I32{} + ((W::k.byte[first] & 0xFFFF) | W::k.byte[first + 2] << 16));
}
template <class W>
PIVRA_INLINE I32 weigh_pixels(U8 v) {
  return multiply_add(low_bytes(v), two_weights<W, 0>()) +
         multiply_add(high_bytes(v), two_weights<W, 1>());
}
template <class W>
PIVRA_INLINE TopBytes weigh(U8 a, U8 b) {
  return (U16)pack_low_words(weigh_pixels<W>(a), weigh_pixels<W>(b)) +
         static_cast<uint16_t>(W::k.offset);
}

#endif

template <int n>
PIVRA_INLINE Pixels load_pixels(const uint8_t *p) {
  if constexpr (n == 3) return load_triples(p);
  return {{load(p), load(p + kBlock), load(p + 2 * kBlock), load(p + 3 * kBlock)}};
}
PIVRA_INLINE EvenPixels even_pixels(Pixels p) {
  return {{even_pixels(p.v[0], p.v[1]), even_pixels(p.v[2], p.v[3])}};
}
template <class W>
PIVRA_INLINE TopBytes top_bytes(EvenPixels p) {
  return weigh<W>(p.v[0], p.v[1]);
}
template <class W>
PIVRA_INLINE void store_top_bytes(uint8_t *p, Pixels block) {
  const U16 a = weigh<W>(block.v[0], block.v[1]), b = weigh<W>(block.v[2], block.v[3]);
  store(p, in_turn32(pack_unsigned((I16)(a >> 8), (I16)(b >> 8))));
}
PIVRA_INLINE uint8_t *store_top_bits_565(uint8_t *p, Pixels block) {
  for (int i = 0; i < 2; ++i, p += kBlock) {
    const auto word = [](U8 v) {
      const I32 pixel = (I32)v;
      return (pixel << 8 & 0xF800) | (pixel >> 5 & 0x07E0) | (pixel >> 19 & 0x001F);
    };
    store(p, in_turn64((U8)pack_low_words(word(block.v[2 * i]), word(block.v[2 * i + 1]))));
  }
  return p;
}

PIVRA_INLINE Words load_words(const uint8_t *p) { return {{(U16)load(p), (U16)load(p + kBlock)}}; }
PIVRA_INLINE U16 even_pixels(Words w) { return (U16)pack_low_words((I32)w.v[0], (I32)w.v[1]); }
template <class W>
PIVRA_INLINE TopBytes top_bytes(U16 word) {
  const U16 whole = times((I16)word, splat<static_cast<int16_t>(W::k.whole)>());
  const U16 from5 = times((I16)(word >> 5), splat<static_cast<int16_t>(W::k.from5)>());
  const U16 from11 = times((I16)(word >> 11), splat<static_cast<int16_t>(W::k.from11)>());
  return whole + from5 + (from11 + static_cast<uint16_t>(W::k.offset));
}
template <class W>
PIVRA_INLINE void store_top_bytes(uint8_t *p, Words block) {
  const U16 a = top_bytes<W>(block.v[0]), b = top_bytes<W>(block.v[1]);
  store(p, in_turn64(pack_unsigned((I16)(a >> 8), (I16)(b >> 8))));
}

PIVRA_INLINE Lane load_lane(const uint8_t *p) { return (Lane)_mm_loadu_si128((const __m128i *)p); }
PIVRA_INLINE void store_eights(uint8_t *p, ptrdiff_t step, Lane l) {
  _mm_storel_epi64((__m128i *)p, (__m128i)l);
  _mm_storel_epi64((__m128i *)(p + step), _mm_unpackhi_epi64((__m128i)l, (__m128i)l));
}

// The number of a register and the number of a unit in it are one index. A round of
// unpacking register i with register i + n / 2 turns its bits round by one place;
// as many rounds as a register's number has bits exchange the two.
template <int unit, class V, int n>
PIVRA_INLINE void transpose(V (&v)[n]) {
#pragma GCC unroll 4
  for (int round = 1; round < n; round *= 2) {
    V turned[n];
#pragma GCC unroll 8
    for (int i = 0; i < n / 2; ++i) {
      turned[2 * i] = unpack_low<unit>(v[i], v[i + n / 2]);
      turned[2 * i + 1] = unpack_high<unit>(v[i], v[i + n / 2]);
    }
#pragma GCC unroll 16
    for (int i = 0; i < n; ++i) v[i] = turned[i];
  }
}

template <int unit>
constexpr int32_t kMirrored = unit == 3 ? 3 * kBlock : kBlock;
template <int unit>
PIVRA_INLINE void copy_mirrored(const uint8_t *src, uint8_t *dst) {
  if constexpr (unit == 3) {
    copy_reversed_triples(src, dst);
  } else {
    store(dst, reverse<unit>(load(src)));
  }
}

template <int unit>
PIVRA_INLINE uint8_t *copy_mirrored_far(const uint8_t *&, uint8_t *dst_end, ptrdiff_t) {
  return dst_end;
}

template <int kept>
constexpr int32_t kKept = kept == 3 ? kBlock / 4 * 3 : kBlock;

PIVRA_INLINE void store_planes(uint8_t *p, uint8_t *q, TopBytes a, TopBytes b) {
  store_halves(p, q, in_turn32(pack_unsigned((I16)(a >> 8), (I16)(b >> 8))));
}
PIVRA_INLINE void store_twos(uint8_t *p, TopBytes a, TopBytes b) {
  store(p, in_turn64((U8)(a >> 8 | (b & uint16_t{0xFF00}))));
}

// In each lane taps lie by turns. Parts of a lane have windows of their own.
constexpr int32_t kMostWindows = 4;
template <int windows>
constexpr int32_t kWindowBytes = kTapLane;
template <int windows>
constexpr int32_t kWindowsOfTaps = kBlock / kTapLane *windows;
template <int unit>
constexpr TapPlace tap_place(int32_t which, int32_t i) {
  const int32_t lane = i / kTapLane, within = i % kTapLane;
  return {lane * kTapLane + which * kTapLane / 2 + within / (2 * unit) * unit + within % unit,
          within / unit % 2};
}

// Sums of bytes come from taps of which each 16-bit lane has two side by side.
PIVRA_INLINE U16 weigh_taps(Taps t, U8 weights) {
#if defined(__SSSE3__)
  return (U16)multiply_add_bytes(t, weights);
#else
  return ((U16)t & 0xFF) * ((U16)weights & 0xFF) + ((U16)t >> 8) * ((U16)weights >> 8);
#endif
}
PIVRA_INLINE U16 add_taps(Taps t) {
#if defined(__SSSE3__)
  return (U16)multiply_add_bytes(t, U8{} + 1);
#else
  return ((U16)t & 0xFF) + ((U16)t >> 8);
#endif
}
PIVRA_INLINE U16 divide(U16 sum, U16 factor) { return multiply_high(sum, factor) >> 2; }
PIVRA_INLINE U8 pack_sums(Pair<U16> sums) { return pack_unsigned((I16)sums.even, (I16)sums.odd); }
PIVRA_INLINE Whole join_taps(Pair<U16> sums) { return taps_in_turn(pack_sums(sums)); }

PIVRA_INLINE Whole truncated_mean(Whole a, Whole b) { return mean(a, b) - ((a ^ b) & 1); }
PIVRA_INLINE Whole mean_of_taps(Taps t0, Taps t1) {
  return join_taps({add_taps(t0) >> 1, add_taps(t1) >> 1});
}
PIVRA_INLINE Whole mean_of_taps(Taps t0, Taps t1, Taps u0, Taps u1) {
  return join_taps({(add_taps(t0) + add_taps(u0)) >> 2, (add_taps(t1) + add_taps(u1)) >> 2});
}
constexpr int32_t kHalves = kBlock;
template <int unit>
PIVRA_INLINE U16 add_neighbours(const uint8_t *p) {
  if constexpr (unit == 1)
    return add_taps(load(p));
  else
    return add_taps(units_beside<unit>(load(p)));
}
template <int unit>
PIVRA_INLINE void halve(const uint8_t *&p, uint8_t *&dst) {
  const U16 first = add_neighbours<unit>(p), second = add_neighbours<unit>(p + kBlock);
  store(dst, in_turn64(pack_sums({first >> 1, second >> 1})));
  p += 2 * kBlock;
  dst += kBlock;
}
template <int unit>
PIVRA_INLINE U16 mean_of_rows(const uint8_t *p, ptrdiff_t below) {
  return (add_neighbours<unit>(p) + add_neighbours<unit>(p + below)) >> 2;
}
template <int unit, int bytes = kHalves>
PIVRA_INLINE void halve(const uint8_t *&p, ptrdiff_t below, uint8_t *&dst) {
  if constexpr (bytes < kBlock) {
    const U16 means = mean_of_rows<unit>(p, below);
    const U8 both = in_turn64(pack_sums({means, means}));
    memcpy(dst, &both, bytes);
    p += 2 * bytes;
    dst += bytes;
  } else {
    for (int i = 0; i < bytes; i += kBlock) {
      const U16 first = mean_of_rows<unit>(p, below);
      store(dst, in_turn64(pack_sums({first, mean_of_rows<unit>(p + kBlock, below)})));
      p += 2 * kBlock;
      dst += kBlock;
    }
  }
}

#if !defined(PIVRA_512_BITS)  // which does it in one step
PIVRA_INLINE Pair<U16> word_taps(Taps t0, Taps t1) {
  const I32 a = (I32)t0, b = (I32)t1;
  return {(U16)taps_in_turn((U8)pack_low_words(a, b)),
          (U16)taps_in_turn((U8)pack_words(a >> 16, b >> 16))};
}
#endif

// Bytes side by side without crossing lanes, and their sums' bytes back in order.
PIVRA_INLINE Pair<Taps> beside(Whole a, Whole b) { return {unpack_low8(a, b), unpack_high8(a, b)}; }
PIVRA_INLINE Whole join_beside(Pair<U16> sums) { return pack_sums(sums); }

// Turned round in every odd lane, a decision hangs on the one before as a carry does:
// sure ones make a carry, possible ones pass it on. One sum lets it run through all.
typedef uint64_t LastDecision;
PIVRA_INLINE LastDecision last_decision(bool yes) { return !yes; }
PIVRA_INLINE U16 decisions_before(U16 sure, U16 possible, LastDecision &last) {
  const uint64_t s = lane_bits(sure), p = lane_bits(possible);
  const uint64_t makes = (s & ~kOddLaneBits) | (~p & kOddLaneBits);
  const uint64_t passes = (p & ~kOddLaneBits) | (~s & kOddLaneBits);
  const uint64_t sum = makes + passes + last;
  last = sum >> kLaneBits;
  return lanes_of_bits(static_cast<uint32_t>(makes ^ passes ^ sum ^ ~kOddLaneBits));
}

}  // namespace pivra::PIVRA_LEVEL

#endif
