// x86-64: the vocabulary out of operations within 128-bit lanes, which look the
// same at every register width. The widths differ in the names of the
// intrinsics and in how whole lanes are put in memory order (x86_128.h and so on).
//
// Lane L of a vector of 16-bit lanes holds pixels 16 L, 16 L + 2, ... (or the
// odd ones). Saturated to bytes, lane L holds its eight even pixels, then its
// eight odd ones.
#ifndef PIVRA_SIMD_X86_H
#define PIVRA_SIMD_X86_H

#include <immintrin.h>

#if defined(__AVX512BW__)
#include "simd/x86_512.h"
#elif defined(__AVX2__)
#include "simd/x86_256.h"
#else
#include "simd/x86_128.h"
#endif

namespace pivra::PIVRA_LEVEL {

constexpr int32_t kBlock = sizeof(U8);

typedef I16 Narrow;  // widened as it is loaded
typedef U8 Bytes;

template <class T>
struct Pair {
  T even, odd;
};

template <int16_t k>
PIVRA_INLINE I16 splat() {
  return I16{} + k;
}
PIVRA_INLINE Bytes splat_bytes(uint8_t k) { return U8{} + k; }
PIVRA_INLINE I16 low_bytes(U8 v) { return (I16)v & 0xFF; }
PIVRA_INLINE I16 high_bytes(U8 v) { return (I16)((U16)v >> 8); }

PIVRA_INLINE Pair<Narrow> load_pairs(const uint8_t *p) {
  const U8 v = load(p);
  return {low_bytes(v), high_bytes(v)};
}
PIVRA_INLINE Narrow load_narrow(const uint8_t *p) { return load_widened(p); }
PIVRA_INLINE void load_interleaved2(const uint8_t *p, Narrow (&v)[2]) {
  const U8 t = load(p);
  v[0] = low_bytes(t);
  v[1] = high_bytes(t);
}
PIVRA_INLINE void load_interleaved4(const uint8_t *p, Narrow (&v)[4]) {
  // In each 128-bit lane of `first` and `second` lie four of the lane's eight groups.
  U8 first, second;
  load_lane_pairs(p, first, second);
  const U8 a = unpack_low8(first, second), b = unpack_high8(first, second);
  const U8 c = unpack_low8(a, b), d = unpack_high8(a, b);
  const U8 low = unpack_low8(c, d), high = unpack_high8(c, d);
  const U8 zero{};
  v[0] = (I16)unpack_low8(low, zero);
  v[1] = (I16)unpack_high8(low, zero);
  v[2] = (I16)unpack_low8(high, zero);
  v[3] = (I16)unpack_high8(high, zero);
}

PIVRA_INLINE I16 widen(Narrow n) { return n; }
template <uint8_t k>
PIVRA_INLINE I16 subtract(Narrow n) {
  return n - k;
}
template <int16_t k>
PIVRA_INLINE I16 multiply(I16 i) {
  return i * k;
}
PIVRA_INLINE I16 add(I16 i, Narrow n) { return i + n; }
PIVRA_INLINE I16 add_high_byte(I16 i, I16 j) { return i + (j >> 8); }

// Clamped as they are joined: one instruction does both.
typedef I16 Clamped;
PIVRA_INLINE Clamped clamp(I16 i) { return i; }
PIVRA_INLINE Bytes join(Clamped even, Clamped odd) { return pack_unsigned(even, odd); }

// Vectors whose 128-bit lanes are to be stored in this order: lane 0 of each,
// then lane 1 of each, and so on.
template <int n>
struct Lanes {
  U8 v[n];
};

// Even pixels and odd pixels of each lane, as 32-bit groups, in memory order.
PIVRA_INLINE Lanes<4> pixels32(Bytes a, Bytes b, Bytes c, Bytes d) {
  const U8 ab_even = unpack_low8(a, b), ab_odd = unpack_high8(a, b);
  const U8 cd_even = unpack_low8(c, d), cd_odd = unpack_high8(c, d);
  const U8 even0 = unpack_low16(ab_even, cd_even), even1 = unpack_high16(ab_even, cd_even);
  const U8 odd0 = unpack_low16(ab_odd, cd_odd), odd1 = unpack_high16(ab_odd, cd_odd);
  return {{unpack_low32(even0, odd0), unpack_high32(even0, odd0), unpack_low32(even1, odd1),
           unpack_high32(even1, odd1)}};
}

struct Words565 {
  Clamped a, b, c;
};
PIVRA_INLINE Words565 clamp_565(I16 a, I16 b, I16 c) { return {a, b, c}; }
PIVRA_INLINE uint8_t *store_565(uint8_t *p, Words565 e, Words565 o) {
  const U8 top = join(e.a, o.a), middle = join(e.b, o.b), bottom = join(e.c, o.c);
  const U8 high = (top & 0xF8) | ((U8)((U16)middle >> 5) & 0x07);
  const U8 low = ((U8)((U16)middle << 3) & 0xE0) | ((U8)((U16)bottom >> 3) & 0x1F);
  const U8 even = unpack_low8(low, high), odd = unpack_high8(low, high);
  return store_lanes(p, Lanes<2>{{unpack_low16(even, odd), unpack_high16(even, odd)}}.v);
}
PIVRA_INLINE uint8_t *store_interleaved3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
  Lanes<4> q = pixels32(a, b, c, c);
  for (U8 &v : q.v) v = drop_fourth_bytes(v);
  return store_lanes(p, Lanes<3>{{q.v[0] | shift_up<12>(q.v[1]),
                           shift_down<4>(q.v[1]) | shift_up<8>(q.v[2]),
                           shift_down<8>(q.v[2]) | shift_up<4>(q.v[3])}}
                     .v);
}
PIVRA_INLINE uint8_t *store_interleaved4(uint8_t *p, Bytes a, Bytes b, Bytes c, Bytes d) {
  return store_lanes(p, pixels32(a, b, c, d).v);
}

}  // namespace pivra::PIVRA_LEVEL

#endif
