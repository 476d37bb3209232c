// NEON, one source for 32-bit ARM and AArch64: only operations that both have.
#ifndef PIVRA_SIMD_NEON_H
#define PIVRA_SIMD_NEON_H

#include <arm_neon.h>

namespace pivra::PIVRA_LEVEL {

constexpr int32_t kBlock = 16;

typedef int16x8_t I16;
typedef uint8x8_t Narrow;

template <class T>
struct Pair {
  T even, odd;
};

// Both halves in memory order.
struct Bytes {
  uint8x8_t low, high;
};

PIVRA_INLINE Pair<Narrow> load_pairs(const uint8_t *p) {
  const uint8x8x2_t v = vld2_u8(p);
  return {v.val[0], v.val[1]};
}
PIVRA_INLINE Narrow load_narrow(const uint8_t *p) { return vld1_u8(p); }
PIVRA_INLINE void load_interleaved2(const uint8_t *p, Narrow (&v)[2]) {
  const uint8x8x2_t t = vld2_u8(p);
  for (int i = 0; i < 2; ++i) v[i] = t.val[i];
}
PIVRA_INLINE void load_interleaved4(const uint8_t *p, Narrow (&v)[4]) {
  const uint8x8x4_t t = vld4_u8(p);
  for (int i = 0; i < 4; ++i) v[i] = t.val[i];
}

PIVRA_INLINE I16 splat(int16_t k) { return vdupq_n_s16(k); }
PIVRA_INLINE I16 widen(Narrow n) { return vreinterpretq_s16_u16(vmovl_u8(n)); }
PIVRA_INLINE I16 subtract(Narrow n, uint8_t k) {
  return vreinterpretq_s16_u16(vsubl_u8(n, vdup_n_u8(k)));
}
PIVRA_INLINE I16 multiply(Narrow n, uint8_t k) {
  return vreinterpretq_s16_u16(vmull_u8(n, vdup_n_u8(k)));
}
PIVRA_INLINE I16 multiply(I16 i, int16_t k) { return vmulq_n_s16(i, k); }
PIVRA_INLINE I16 add(I16 i, Narrow n) {
  return vreinterpretq_s16_u16(vaddw_u8(vreinterpretq_u16_s16(i), n));
}
PIVRA_INLINE I16 add_high_byte(I16 i, I16 j) { return vsraq_n_s16(i, j, 8); }

PIVRA_INLINE Bytes saturate(Pair<I16> p) {
  const uint8x8x2_t v = vzip_u8(vqmovun_s16(p.even), vqmovun_s16(p.odd));
  return {v.val[0], v.val[1]};
}
PIVRA_INLINE Bytes splat_bytes(uint8_t k) { return {vdup_n_u8(k), vdup_n_u8(k)}; }

// The saturating shift leaves the clamped value in the top byte, where
// shift-right-insert picks the bits that the field keeps.
PIVRA_INLINE uint16x8_t pack_565(I16 a, I16 b, I16 c) {
  const uint16x8_t ab = vsriq_n_u16(vqshluq_n_s16(a, 8), vqshluq_n_s16(b, 8), 5);
  return vsriq_n_u16(ab, vqshluq_n_s16(c, 8), 11);
}
PIVRA_INLINE void store_565(uint8_t *p, Pair<I16> a, Pair<I16> b, Pair<I16> c) {
  const uint16x8x2_t v = {{pack_565(a.even, b.even, c.even), pack_565(a.odd, b.odd, c.odd)}};
  vst2q_u16(reinterpret_cast<uint16_t *>(p), v);
}
PIVRA_INLINE void store_interleaved3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
  vst3_u8(p, uint8x8x3_t{{a.low, b.low, c.low}});
  vst3_u8(p + 24, uint8x8x3_t{{a.high, b.high, c.high}});
}
PIVRA_INLINE void store_interleaved4(uint8_t *p, Bytes a, Bytes b, Bytes c, Bytes d) {
  vst4_u8(p, uint8x8x4_t{{a.low, b.low, c.low, d.low}});
  vst4_u8(p + 32, uint8x8x4_t{{a.high, b.high, c.high, d.high}});
}

}  // namespace pivra::PIVRA_LEVEL

#endif
