// Memory order by unpacking within 128-bit lanes, at any register width.
//
// Lane L of the even vector holds pixels 16 L, 16 L + 2, ..., of the odd vector
// those between.
#ifndef PIVRA_SIMD_X86_LANES_H
#define PIVRA_SIMD_X86_LANES_H

namespace pivra::PIVRA_LEVEL {

template <int n>
PIVRA_INLINE Shifted<n> load_shifted(const uint8_t *&p) {
  Shifted<n> s;
  for (int k = 0; k < n; ++k) s.from[k] = load(p + k);
  p += kBlock;
  return s;
}

PIVRA_INLINE U8 select(U8 mask, U8 a, U8 b) { return (a & mask) | (b & ~mask); }
PIVRA_INLINE U8 parity(U8 a, U8 b, U8 c) { return a ^ b ^ c; }
PIVRA_INLINE U8 majority(U8 a, U8 b, U8 c) { return (a & b) | ((a ^ b) & c); }

// Words packed from these two vectors are in memory order.
PIVRA_INLINE Pair<U8> load_pairs(const uint8_t *p) {
  U8 a, b;
  load_lane_pairs(p, a, b);
  return {pack_unsigned(low_bytes(a), low_bytes(b)), pack_unsigned(high_bytes(a), high_bytes(b))};
}
PIVRA_INLINE void store_pairs(uint8_t *p, U8 even, U8 odd) {
  const U8 bytes[] = {unpack_low8(even, odd), unpack_high8(even, odd)};
  store_lanes(p, bytes);
}

// Even pixels and odd pixels of each lane, as 32-bit groups, in memory order.
struct Pixels32 {
  U8 v[4];
};
PIVRA_INLINE Pixels32 pixels32(Bytes a, Bytes b, Bytes c, Bytes d) {
  const U8 ab_even = unpack_low8(a, b), ab_odd = unpack_high8(a, b);
  const U8 cd_even = unpack_low8(c, d), cd_odd = unpack_high8(c, d);
  const U8 even0 = unpack_low16(ab_even, cd_even), even1 = unpack_high16(ab_even, cd_even);
  const U8 odd0 = unpack_low16(ab_odd, cd_odd), odd1 = unpack_high16(ab_odd, cd_odd);
  return {{unpack_low32(even0, odd0), unpack_high32(even0, odd0), unpack_low32(even1, odd1),
           unpack_high32(even1, odd1)}};
}

PIVRA_INLINE uint8_t *store_interleaved4(uint8_t *p, Bytes a, Bytes b, Bytes c, Bytes d) {
  return store_lanes(p, pixels32(a, b, c, d).v);
}
PIVRA_INLINE uint8_t *store_interleaved3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
  Pixels32 q = pixels32(a, b, c, c);
  for (U8 &v : q.v) v = drop_fourth_bytes(v);
  const U8 packed[] = {q.v[0] | shift_up<12>(q.v[1]), shift_down<4>(q.v[1]) | shift_up<8>(q.v[2]),
                       shift_down<8>(q.v[2]) | shift_up<4>(q.v[3])};
  return store_lanes(p, packed);
}

PIVRA_INLINE uint8_t *store_565(uint8_t *p, Words565 even, Words565 odd) {
  const U8 words[] = {unpack_low16(even, odd), unpack_high16(even, odd)};
  return store_lanes(p, words);
}

PIVRA_INLINE void copy_reversed_triples(const uint8_t *src, uint8_t *dst) {
  Pixels p = load_triples(src);
  for (int i = 0; i < 4; ++i) store_triples(dst + (3 - i) * (kBlock / 4 * 3), reverse<4>(p.v[i]));
}

}  // namespace pivra::PIVRA_LEVEL

#endif
