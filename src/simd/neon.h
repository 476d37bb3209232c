// NEON, one source for 32-bit ARM and AArch64: only operations that both have.
#ifndef PIVRA_SIMD_NEON_H
#define PIVRA_SIMD_NEON_H

#include <arm_neon.h>

namespace pivra::PIVRA_LEVEL {

constexpr int32_t kBlock = 16;

typedef int16x8_t I16;
typedef uint16x8_t U16;
typedef uint8x8_t Narrow;

typedef uint8x16_t Whole;
template <int n>
struct Shifted {
  Whole from[n];
};

typedef Pair<Narrow> Samples;
struct Twos {
  Narrow first, second;
};
struct Packed422 {
  Samples luma;
  Twos chroma;
};

// Both halves in memory order.
struct Bytes {
  uint8x8_t low, high;
};

PIVRA_INLINE Samples load_samples(const uint8_t *p) {
  uint8x8x2_t v = vld2_u8(p);
  return {v.val[0], v.val[1]};
}
PIVRA_INLINE Narrow load_narrow(const uint8_t *p) { return vld1_u8(p); }
PIVRA_INLINE Twos load_twos(const uint8_t *p) {
  uint8x8x2_t v = vld2_u8(p);
  return {v.val[0], v.val[1]};
}
template <int kY>
PIVRA_INLINE Packed422 load_packed422(const uint8_t *p) {
  uint8x8x4_t v = vld4_u8(p);
  return {{v.val[kY], v.val[kY + 2]}, {v.val[1 - kY], v.val[3 - kY]}};
}

PIVRA_INLINE Whole load_bytes(const uint8_t *p) { return vld1q_u8(p); }
PIVRA_INLINE void store_bytes(uint8_t *p, Whole w) { vst1q_u8(p, w); }
PIVRA_INLINE Pair<Whole> load_pairs(const uint8_t *p) {
  uint8x16x2_t v = vld2q_u8(p);
  return {v.val[0], v.val[1]};
}
PIVRA_INLINE void store_pairs(uint8_t *p, Whole even, Whole odd) {
  vst2q_u8(p, uint8x16x2_t{{even, odd}});
}
PIVRA_INLINE Whole exchange_neighbours(Whole w) { return vrev16q_u8(w); }
#if defined(__arm__)
// GCC knows steps by the size of a register only.
PIVRA_INLINE Whole load_and_step(const uint8_t *&p, ptrdiff_t step) {
  Whole w;
  const uint8_t *from = p;
  asm("vld1.8 {%e[w], %f[w]}, [%[p]], %[step]"
      : [w] "=w"(w), [p] "+r"(p)
      : [step] "r"(step), "m"(*(const uint8_t(*)[kBlock])from));
  return w;
}
PIVRA_INLINE void store_and_step(uint8_t *&p, ptrdiff_t step, Whole w) {
  uint8_t *to = p;
  asm("vst1.8 {%e[w], %f[w]}, [%[p]], %[step]"
      : [p] "+r"(p), "=m"(*(uint8_t(*)[kBlock])to)
      : [w] "w"(w), [step] "r"(step));
}
#else
PIVRA_INLINE Whole load_and_step(const uint8_t *&p, ptrdiff_t step) {
  const Whole w = vld1q_u8(p);
  p += step;
  return w;
}
PIVRA_INLINE void store_and_step(uint8_t *&p, ptrdiff_t step, Whole w) {
  vst1q_u8(p, w);
  p += step;
}
#endif
template <int n>
PIVRA_INLINE Shifted<n> load_shifted(const uint8_t *&p) {
  Shifted<n> s;
  for (int k = 0; k < n; ++k) s.from[k] = load_and_step(p, k + 1 < n ? 1 : kBlock - k);
  return s;
}
PIVRA_INLINE Whole select(Whole mask, Whole a, Whole b) { return vbslq_u8(mask, a, b); }
PIVRA_INLINE Whole parity(Whole a, Whole b, Whole c) { return veorq_u8(veorq_u8(a, b), c); }
PIVRA_INLINE Whole majority(Whole a, Whole b, Whole c) { return vbslq_u8(veorq_u8(a, b), c, a); }
PIVRA_INLINE Whole mean(Whole a, Whole b) { return vrhaddq_u8(a, b); }
PIVRA_INLINE Whole add_saturated(Whole a, Whole b) { return vqaddq_u8(a, b); }
PIVRA_INLINE Whole subtract_saturated(Whole a, Whole b) { return vqsubq_u8(a, b); }

#if defined(__aarch64__)
// An index beyond a quarter of the table leaves what the other quarters gave.
#define PIVRA_TABLES_IN_REGISTERS 1
struct Table {
  uint8x16x4_t quarter[4];
};
PIVRA_INLINE Table load_table(const uint8_t *p) {
  return {{vld1q_u8_x4(p), vld1q_u8_x4(p + 64), vld1q_u8_x4(p + 128), vld1q_u8_x4(p + 192)}};
}
PIVRA_INLINE Whole look_up(Table t, Whole index) {
  Whole found = vqtbl4q_u8(t.quarter[0], index);
  found = vqtbx4q_u8(found, t.quarter[1], vsubq_u8(index, vdupq_n_u8(64)));
  found = vqtbx4q_u8(found, t.quarter[2], vsubq_u8(index, vdupq_n_u8(128)));
  return vqtbx4q_u8(found, t.quarter[3], vsubq_u8(index, vdupq_n_u8(192)));
}
#endif

PIVRA_INLINE Whole minimum(Whole a, Whole b) { return vminq_u8(a, b); }
PIVRA_INLINE Whole maximum(Whole a, Whole b) { return vmaxq_u8(a, b); }
PIVRA_INLINE Whole halve(Whole a) { return vshrq_n_u8(a, 1); }

struct Fours {
  Whole v[4], others[4];
};
// Fours of two rows: the even ones, the odd ones.
PIVRA_INLINE Pair<Whole> load_two_rows(const uint8_t *p, ptrdiff_t stride) {
  uint32x4x2_t fours =
      vuzpq_u32(vreinterpretq_u32_u8(load_bytes(p)), vreinterpretq_u32_u8(load_bytes(p + stride)));
  return {vreinterpretq_u8_u32(fours.val[0]), vreinterpretq_u8_u32(fours.val[1])};
}
PIVRA_INLINE void store_two_rows(uint8_t *p, ptrdiff_t stride, Whole even, Whole odd) {
  uint32x4x2_t rows = vzipq_u32(vreinterpretq_u32_u8(even), vreinterpretq_u32_u8(odd));
  store_bytes(p, vreinterpretq_u8_u32(rows.val[0]));
  store_bytes(p + stride, vreinterpretq_u8_u32(rows.val[1]));
}
PIVRA_INLINE Fours load_fours(const uint8_t *p, ptrdiff_t stride) {
  Pair<Whole> r0 = load_two_rows(p, stride), r2 = load_two_rows(p + 2 * stride, stride);
  p += 4 * stride;
  Pair<Whole> r4 = load_two_rows(p, stride), r6 = load_two_rows(p + 2 * stride, stride);
  uint8x16x2_t upper = vuzpq_u8(r0.even, r2.even), lower = vuzpq_u8(r4.even, r6.even);
  uint8x16x2_t even = vuzpq_u8(upper.val[0], lower.val[0]);
  uint8x16x2_t odd = vuzpq_u8(upper.val[1], lower.val[1]);
  return {{even.val[0], odd.val[0], even.val[1], odd.val[1]}, {r0.odd, r2.odd, r4.odd, r6.odd}};
}
PIVRA_INLINE void store_fours(uint8_t *p, ptrdiff_t stride, Fours f) {
  uint8x16x2_t even = vzipq_u8(f.v[0], f.v[2]), odd = vzipq_u8(f.v[1], f.v[3]);
  uint8x16x2_t upper = vzipq_u8(even.val[0], odd.val[0]);
  uint8x16x2_t lower = vzipq_u8(even.val[1], odd.val[1]);
  store_two_rows(p, stride, upper.val[0], f.others[0]);
  store_two_rows(p + 2 * stride, stride, upper.val[1], f.others[1]);
  p += 4 * stride;
  store_two_rows(p, stride, lower.val[0], f.others[2]);
  store_two_rows(p + 2 * stride, stride, lower.val[1], f.others[3]);
}

PIVRA_INLINE Twos twos(Narrow first, Narrow second) { return {first, second}; }
PIVRA_INLINE Twos even_twos(Samples first, Samples second) { return {first.even, second.even}; }
PIVRA_INLINE Twos odd_twos(Samples first, Samples second) { return {first.odd, second.odd}; }

template <int16_t k>
PIVRA_INLINE I16 splat() {
  return vdupq_n_s16(k);
}

struct Centred {
  I16 n[2];
};
PIVRA_INLINE I16 subtract_128(Narrow n) {
  return vreinterpretq_s16_u16(vsubl_u8(n, vdup_n_u8(128)));
}
PIVRA_INLINE Centred centre(Twos t) { return {{subtract_128(t.first), subtract_128(t.second)}}; }
template <int which, int16_t k>
PIVRA_INLINE I16 weigh(Centred c) {
  return vmulq_s16(c.n[which], splat<k>());
}
template <int16_t k0, int16_t k1>
PIVRA_INLINE I16 weigh_both(Centred c) {
  return vmlaq_s16(weigh<0, k0>(c), c.n[1], splat<k1>());
}
template <int which>
PIVRA_INLINE I16 add_half(I16 i, Centred c) {
  return vsraq_n_s16(i, c.n[which], 1);
}

template <uint8_t k, int16_t offset>
PIVRA_INLINE Pair<I16> scale(Samples s) {
  const auto one = [](Narrow n) {
    const uint16x8_t scaled = vmull_u8(n, vdup_n_u8(k));
    return vreinterpretq_s16_u16(vsubq_u16(scaled, vdupq_n_u16(offset)));
  };
  return {one(s.even), one(s.odd)};
}
PIVRA_INLINE I16 add_saturated(I16 a, I16 b) { return vqaddq_s16(a, b); }

typedef uint8x8_t Clamped;
PIVRA_INLINE Clamped clamp(I16 i) { return vqshrun_n_s16(i, 7); }

#if defined(__arm__) && !defined(__clang__)
// The intrinsic costs GCC a zip for each of the two results.
PIVRA_INLINE Bytes join(Clamped even, Clamped odd) {
  asm("vzip.8 %P0, %P1" : "+w"(even), "+w"(odd));
  return {even, odd};
}
#else
PIVRA_INLINE Bytes join(Clamped even, Clamped odd) {
  uint8x8x2_t v = vzip_u8(even, odd);
  return {v.val[0], v.val[1]};
}
#endif
PIVRA_INLINE Bytes splat_bytes(uint8_t k) { return {vdup_n_u8(k), vdup_n_u8(k)}; }

// Doubled with saturation the clamped value fills 16 bits, and shift-right-insert
// gives each field its top bits from there.
typedef uint16x8_t Words565;
PIVRA_INLINE Words565 clamp_565(I16 a, I16 b, I16 c) {
  const uint16x8_t ab = vsriq_n_u16(vqshluq_n_s16(a, 1), vqshluq_n_s16(b, 1), 5);
  return vsriq_n_u16(ab, vqshluq_n_s16(c, 1), 11);
}

#if defined(__arm__) && !defined(__clang__)

// GCC puts the register lists of VST2 to VST4 together by moves on 32-bit ARM,
// those of VST3 and VST4 even in memory.
// Naming the registers spares it that.
#define PIVRA_IN_REGISTER(name, value) register auto name asm(#name) = value

template <int bytes>
struct Stored {
  uint8_t byte[bytes];
};

PIVRA_INLINE uint8_t *store_565(uint8_t *p, Words565 even, Words565 odd) {
  uint8_t *end = p;
  PIVRA_IN_REGISTER(q0, even);
  PIVRA_IN_REGISTER(q1, odd);
  asm("vst2.16 {d0-d3}, [%[end]]!" : [end] "+r"(end), "=m"(*(Stored<32> *)p) : "w"(q0), "w"(q1));
  return end;
}
PIVRA_INLINE uint8_t *store_interleaved3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
  uint8_t *end = p;
  PIVRA_IN_REGISTER(d0, a.low);
  PIVRA_IN_REGISTER(d1, b.low);
  PIVRA_IN_REGISTER(d2, c.low);
  PIVRA_IN_REGISTER(d4, a.high);
  PIVRA_IN_REGISTER(d5, b.high);
  PIVRA_IN_REGISTER(d6, c.high);
  asm("vst3.8 {d0-d2}, [%[end]]!\n\tvst3.8 {d4-d6}, [%[end]]!"
      : [end] "+r"(end), "=m"(*(Stored<48> *)p)
      : "w"(d0), "w"(d1), "w"(d2), "w"(d4), "w"(d5), "w"(d6));
  return end;
}
PIVRA_INLINE uint8_t *store_interleaved4(uint8_t *p, Bytes a, Bytes b, Bytes c, Bytes d) {
  uint8_t *end = p;
  PIVRA_IN_REGISTER(d0, a.low);
  PIVRA_IN_REGISTER(d1, b.low);
  PIVRA_IN_REGISTER(d2, c.low);
  PIVRA_IN_REGISTER(d3, d.low);
  PIVRA_IN_REGISTER(d4, a.high);
  PIVRA_IN_REGISTER(d5, b.high);
  PIVRA_IN_REGISTER(d6, c.high);
  PIVRA_IN_REGISTER(d7, d.high);
  asm("vst4.8 {d0-d3}, [%[end]]!\n\tvst4.8 {d4-d7}, [%[end]]!"
      : [end] "+r"(end), "=m"(*(Stored<64> *)p)
      : "w"(d0), "w"(d1), "w"(d2), "w"(d3), "w"(d4), "w"(d5), "w"(d6), "w"(d7));
  return end;
}
#undef PIVRA_IN_REGISTER

#else

PIVRA_INLINE uint8_t *store_565(uint8_t *p, Words565 even, Words565 odd) {
  vst2q_u16(reinterpret_cast<uint16_t *>(p), uint16x8x2_t{{even, odd}});
  return p + 2 * kBlock;
}
PIVRA_INLINE uint8_t *store_interleaved3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
  vst3_u8(p, uint8x8x3_t{{a.low, b.low, c.low}});
  vst3_u8(p + 24, uint8x8x3_t{{a.high, b.high, c.high}});
  return p + 48;
}
PIVRA_INLINE uint8_t *store_interleaved4(uint8_t *p, Bytes a, Bytes b, Bytes c, Bytes d) {
  vst4_u8(p, uint8x8x4_t{{a.low, b.low, c.low, d.low}});
  vst4_u8(p + 32, uint8x8x4_t{{a.high, b.high, c.high, d.high}});
  return p + 64;
}

#endif

// RGB: one vector for each byte of the pixels. Written out for three and four, as
// loops over them would keep them in memory.
template <class T, int n>
struct Channels {
  T byte[n];
};
template <class To, int n, class From, class Action>
PIVRA_INLINE Channels<To, n> for_each_channel(Channels<From, n> c, Action action) {
  if constexpr (n == 3)
    return {{action(c.byte[0]), action(c.byte[1]), action(c.byte[2])}};
  else
    return {{action(c.byte[0]), action(c.byte[1]), action(c.byte[2]), action(c.byte[3])}};
}
template <int n>
PIVRA_INLINE Channels<uint8x16_t, n> load_pixels(const uint8_t *p) {
  if constexpr (n == 3) {
    uint8x16x3_t v = vld3q_u8(p);
    return {{v.val[0], v.val[1], v.val[2]}};
  } else {
    uint8x16x4_t v = vld4q_u8(p);
    return {{v.val[0], v.val[1], v.val[2], v.val[3]}};
  }
}
template <int n>
PIVRA_INLINE Channels<Narrow, n> even_pixels(Channels<uint8x16_t, n> block) {
  return for_each_channel<Narrow>(block,
                                  [](uint8x16_t c) { return vmovn_u16(vreinterpretq_u16_u8(c)); });
}

typedef Narrow TopBytes;

template <int32_t weight>
PIVRA_INLINE uint16x8_t add_weighed(uint16x8_t sum, Narrow n) {
  if constexpr (weight < 0) return vmlsl_u8(sum, n, vdup_n_u8(-weight));
  return vmlal_u8(sum, n, vdup_n_u8(weight));
}
// The first product is one of those to be added: it needs no sum to begin with.
constexpr int first_positive(ByteWeights w) {
  int i = 0;
  while (w.byte[i] <= 0) ++i;
  return i;
}
template <class W, int i, int n>
PIVRA_INLINE uint16x8_t add_others(uint16x8_t sum, Channels<Narrow, n> c) {
  if constexpr (i == n) {
    return sum;
  } else {
    if constexpr (i != first_positive(W::k) && W::k.byte[i] != 0)
      sum = add_weighed<W::k.byte[i]>(sum, c.byte[i]);
    return add_others<W, i + 1>(sum, c);
  }
}
template <class W, int n>
PIVRA_INLINE TopBytes top_bytes(Channels<Narrow, n> c) {
  constexpr int first = first_positive(W::k);
  uint16x8_t sum = add_others<W, 0>(vmull_u8(c.byte[first], vdup_n_u8(W::k.byte[first])), c);
  return vaddhn_u16(sum, vdupq_n_u16(W::k.offset));
}
template <class W, int n>
PIVRA_INLINE void store_top_bytes(uint8_t *p, Channels<uint8x16_t, n> block) {
  const auto low = [](uint8x16_t c) { return vget_low_u8(c); };
  const auto high = [](uint8x16_t c) { return vget_high_u8(c); };
  vst1q_u8(p, vcombine_u8(top_bytes<W>(for_each_channel<Narrow>(block, low)),
                          top_bytes<W>(for_each_channel<Narrow>(block, high))));
}
template <int n>
PIVRA_INLINE uint8_t *store_top_bits_565(uint8_t *p, Channels<uint8x16_t, n> block) {
  const auto words = [](uint8x8_t a, uint8x8_t b, uint8x8_t c) {
    const uint16x8_t ab = vsriq_n_u16(vshll_n_u8(a, 8), vshll_n_u8(b, 8), 5);
    return vreinterpretq_u8_u16(vsriq_n_u16(ab, vshll_n_u8(c, 8), 11));
  };
  vst1q_u8(
      p, words(vget_low_u8(block.byte[0]), vget_low_u8(block.byte[1]), vget_low_u8(block.byte[2])));
  vst1q_u8(p + 16, words(vget_high_u8(block.byte[0]), vget_high_u8(block.byte[1]),
                         vget_high_u8(block.byte[2])));
  return p + 32;
}

struct Words {
  uint16x8_t v[2];
};
PIVRA_INLINE Words load_words(const uint8_t *p) {
  return {{vreinterpretq_u16_u8(vld1q_u8(p)), vreinterpretq_u16_u8(vld1q_u8(p + 16))}};
}
PIVRA_INLINE uint16x8_t even_pixels(Words w) {
  return vcombine_u16(vmovn_u32(vreinterpretq_u32_u16(w.v[0])),
                      vmovn_u32(vreinterpretq_u32_u16(w.v[1])));
}
template <class W>
PIVRA_INLINE TopBytes top_bytes(uint16x8_t word) {
  const auto splat_word = [](int32_t k) { return vdupq_n_u16(static_cast<uint16_t>(k)); };
  uint16x8_t sum = vmulq_u16(word, splat_word(W::k.whole));
  sum = vmlaq_u16(sum, vshrq_n_u16(word, 5), splat_word(W::k.from5));
  sum = vmlaq_u16(sum, vshrq_n_u16(word, 11), splat_word(W::k.from11));
  return vaddhn_u16(sum, splat_word(W::k.offset));
}
template <class W>
PIVRA_INLINE void store_top_bytes(uint8_t *p, Words block) {
  vst1q_u8(p, vcombine_u8(top_bytes<W>(block.v[0]), top_bytes<W>(block.v[1])));
}

// --- Units that change places ---

constexpr int32_t kLane = 8;
typedef uint8x8_t Lane;

PIVRA_INLINE Lane load_lane(const uint8_t *p) { return vld1_u8(p); }
PIVRA_INLINE void store_eights(uint8_t *p, ptrdiff_t, Lane l) { vst1_u8(p, l); }
PIVRA_INLINE Whole load_lanes(const uint8_t *p, ptrdiff_t step) {
  return vcombine_u8(vld1_u8(p), vld1_u8(p + step));
}

#define PIVRA_TRANSPOSES_SQUARES 1

// Elements of some bytes as 2 x 2 matrices, whose rows are in a and b, transposed.
#if defined(__arm__) && !defined(__clang__)
// The intrinsics cost GCC moves.
template <int bytes, class V>
PIVRA_INLINE void transpose_twos(V &a, V &b) {
  if constexpr (sizeof(V) == 16)
    asm("vtrn.%c[bits] %q[a], %q[b]" : [a] "+w"(a), [b] "+w"(b) : [bits] "i"(8 * bytes));
  else
    asm("vtrn.%c[bits] %P[a], %P[b]" : [a] "+w"(a), [b] "+w"(b) : [bits] "i"(8 * bytes));
}
PIVRA_INLINE void transpose_halves(Whole &a, Whole &b) {
  asm("vswp %f[a], %e[b]" : [a] "+w"(a), [b] "+w"(b));
}
#else
#define PIVRA_TRANSPOSE_TWOS(Vector, q)                                                       \
  template <int bytes>                                                                        \
  PIVRA_INLINE void transpose_twos(Vector &a, Vector &b) {                                    \
    if constexpr (bytes == 1) {                                                               \
      const auto v = vtrn##q##_u8(a, b);                                                      \
      a = v.val[0], b = v.val[1];                                                             \
    } else if constexpr (bytes == 2) {                                                        \
      const auto v = vtrn##q##_u16(vreinterpret##q##_u16_u8(a), vreinterpret##q##_u16_u8(b)); \
      a = vreinterpret##q##_u8_u16(v.val[0]), b = vreinterpret##q##_u8_u16(v.val[1]);         \
    } else {                                                                                  \
      const auto v = vtrn##q##_u32(vreinterpret##q##_u32_u8(a), vreinterpret##q##_u32_u8(b)); \
      a = vreinterpret##q##_u8_u32(v.val[0]), b = vreinterpret##q##_u8_u32(v.val[1]);         \
    }                                                                                         \
  }
PIVRA_TRANSPOSE_TWOS(uint8x8_t, )
PIVRA_TRANSPOSE_TWOS(uint8x16_t, q)
#undef PIVRA_TRANSPOSE_TWOS
PIVRA_INLINE void transpose_halves(Whole &a, Whole &b) {
  const Whole high = vcombine_u8(vget_high_u8(a), vget_high_u8(b));
  a = vcombine_u8(vget_low_u8(a), vget_low_u8(b));
  b = high;
}
#endif

// A matrix of n x n units, first as 2 x 2 matrices of its quarters, then these.
template <int unit, int half, class V, int n>
PIVRA_INLINE void transpose_quarters(V (&v)[n]) {
#pragma GCC unroll 16
  for (int i = 0; i < n; ++i)
    if ((i & half) == 0) {
      if constexpr (half * unit == 8)
        transpose_halves(v[i], v[i + half]);
      else
        transpose_twos<half * unit>(v[i], v[i + half]);
    }
  if constexpr (half > 1) transpose_quarters<unit, half / 2>(v);
}
template <int unit, class V, int n>
PIVRA_INLINE void transpose(V (&v)[n]) {
  transpose_quarters<unit, n / 2>(v);
}

template <int unit>
PIVRA_INLINE Whole reverse(Whole w) {
  if constexpr (unit == 1) w = vrev64q_u8(w);
  if constexpr (unit == 2) w = vreinterpretq_u8_u16(vrev64q_u16(vreinterpretq_u16_u8(w)));
  if constexpr (unit == 4) w = vreinterpretq_u8_u32(vrev64q_u32(vreinterpretq_u32_u8(w)));
  return vcombine_u8(vget_high_u8(w), vget_low_u8(w));
}

template <int unit>
constexpr int32_t kMirrored = unit == 3 ? 3 * kBlock : kBlock;
template <int unit>
PIVRA_INLINE void copy_mirrored(const uint8_t *src, uint8_t *dst) {
  if constexpr (unit == 3) {
    Channels<uint8x16_t, 3> p = load_pixels<3>(src);
    const auto reversed = [](uint8x16_t c) {
      return Bytes{vrev64_u8(vget_high_u8(c)), vrev64_u8(vget_low_u8(c))};
    };
    store_interleaved3(dst, reversed(p.byte[0]), reversed(p.byte[1]), reversed(p.byte[2]));
  } else {
    store_bytes(dst, reverse<unit>(load_bytes(src)));
  }
}

#if defined(__arm__) && !defined(__clang__)
// As much as goes 64 bytes at a time, half of the registers or a quarter of them at
// once, between words: these instructions need the alignment.
template <int unit>
PIVRA_INLINE uint8_t *copy_mirrored_far(const uint8_t *&src, uint8_t *dst_end, ptrdiff_t bytes) {
  const auto address = reinterpret_cast<uintptr_t>(src) | reinterpret_cast<uintptr_t>(dst_end);
  if (unit == 3 || address % 4 != 0) return dst_end;
#define PIVRA_REVERSE(to, from) "vrev64.%c[bits] " #to ", " #from "\n\t"
#define PIVRA_REVERSE_FOUR(a, b, c, d, w, x, y, z) \
  PIVRA_REVERSE(a, z) PIVRA_REVERSE(b, y) PIVRA_REVERSE(c, x) PIVRA_REVERSE(d, w)
  if (bytes & 64)
    asm volatile(
        "vldmia %[src]!, {d0-d7}\n\t" PIVRA_REVERSE_FOUR(d16, d17, d18, d19, d4, d5, d6, d7)
            PIVRA_REVERSE_FOUR(d20, d21, d22, d23, d0, d1, d2, d3) "vstmdb %[dst]!, {d16-d23}"
        : [src] "+r"(src), [dst] "+r"(dst_end)
        : [bits] "i"(8 * unit)
        : "q0", "q1", "q2", "q3", "q8", "q9", "q10", "q11", "memory");
  if (ptrdiff_t count = bytes >> 7)
    asm volatile(
        "1: vldmia %[src]!, {d0-d15}\n\t"
        "subs %[count], %[count], #1\n\t"
        PIVRA_REVERSE_FOUR(d16, d17, d18, d19, d12, d13, d14, d15)
        PIVRA_REVERSE_FOUR(d20, d21, d22, d23, d8, d9, d10, d11)
        PIVRA_REVERSE_FOUR(d24, d25, d26, d27, d4, d5, d6, d7)
        PIVRA_REVERSE_FOUR(d28, d29, d30, d31, d0, d1, d2, d3)
        "vstmdb %[dst]!, {d16-d31}\n\t"
        "bne 1b"
        : [src] "+r"(src), [dst] "+r"(dst_end), [count] "+r"(count)
        : [bits] "i"(8 * unit)
        : "q0", "q1", "q2", "q3", "q4", "q5", "q6", "q7", "q8", "q9", "q10", "q11", "q12", "q13",
          "q14", "q15", "memory", "cc");
#undef PIVRA_REVERSE_FOUR
#undef PIVRA_REVERSE
  return dst_end;
}
#else
template <int unit>
PIVRA_INLINE uint8_t *copy_mirrored_far(const uint8_t *&, uint8_t *dst_end, ptrdiff_t) {
  return dst_end;
}
#endif

template <int first>
PIVRA_INLINE Whole move_apart(Whole w) {
  constexpr uint8_t s = first;
  const uint8x8_t order = {s, s + 1, s + 2, 255, s + 3, s + 4, s + 5, 255};
  return vcombine_u8(vtbl1_u8(vget_low_u8(w), order), vtbl1_u8(vget_high_u8(w), order));
}
PIVRA_INLINE void store_triples(uint8_t *p, Whole w) {
  const uint8x8x2_t table = {{vget_low_u8(w), vget_high_u8(w)}};
  const uint8x8_t first = {0, 1, 2, 4, 5, 6, 8, 9}, last = {10, 12, 13, 14, 255, 255, 255, 255};
  vst1_u8(p, vtbl2_u8(table, first));
  const uint32_t four = vget_lane_u32(vreinterpret_u32_u8(vtbl2_u8(table, last)), 0);
  memcpy(p + 8, &four, sizeof four);
}

template <int kept>
constexpr int32_t kKept = kept == 3 ? 24 : 16 * kept;
template <int kept, int of, int unit>
PIVRA_INLINE void copy_kept(const uint8_t *src, uint8_t *dst) {
  const auto *src16 = reinterpret_cast<const uint16_t *>(src);
  auto *dst16 = reinterpret_cast<uint16_t *>(dst);
  if constexpr (of == 2 && unit == 1) {
    vst1q_u8(dst, vld2q_u8(src).val[0]);
  } else if constexpr (of == 2) {
    vst1q_u16(dst16, vld2q_u16(src16).val[0]);
  } else if constexpr (of == 3 && unit == 1) {
    const uint8x16x3_t v = vld3q_u8(src);
    vst2q_u8(dst, uint8x16x2_t{{v.val[0], v.val[1]}});
  } else if constexpr (of == 3) {
    const uint16x8x3_t v = vld3q_u16(src16);
    vst2q_u16(dst16, uint16x8x2_t{{v.val[0], v.val[1]}});
  } else if constexpr (unit == 1) {
    const uint8x8x4_t v = vld4_u8(src);
    vst3_u8(dst, uint8x8x3_t{{v.val[0], v.val[1], v.val[2]}});
  } else {
    const uint16x4x4_t v = vld4_u16(src16);
    vst3_u16(dst16, uint16x4x3_t{{v.val[0], v.val[1], v.val[2]}});
  }
}

// Turned round in every odd lane, a decision hangs on the one before as a carry does:
// sure ones make a carry, possible ones pass it on. One sum, with a byte for each lane,
// lets it run through all.
typedef uint64x1_t LastDecision;
PIVRA_INLINE LastDecision last_decision(bool yes) { return vdup_n_u64(!yes); }
PIVRA_INLINE U16 decisions_before(U16 sure, U16 possible, LastDecision &last) {
  const uint8x8_t odd = vreinterpret_u8_u16(vdup_n_u16(0xFF00));
  const uint8x8_t s = vmovn_u16(sure), p = vmovn_u16(possible);
  const uint8x8_t makes = vbsl_u8(odd, vmvn_u8(p), s), passes = vbsl_u8(odd, vmvn_u8(s), p);
  const uint64x1_t both = vadd_u64(vreinterpret_u64_u8(makes), vreinterpret_u64_u8(passes));
  const uint8x8_t sum = vreinterpret_u8_u64(vadd_u64(both, last));
  const uint8x8_t carries = vtst_u8(veor_u8(veor_u8(makes, passes), sum), vdup_n_u8(1));
  last = vshr_n_u64(vreinterpret_u64_u8(vorr_u8(makes, vand_u8(passes, carries))), 63);
  const uint8x8_t before = veor_u8(carries, vmvn_u8(odd));
  return vreinterpretq_u16_s16(vmovl_s8(vreinterpret_s8_u8(before)));
}

PIVRA_INLINE void store_planes(uint8_t *p, uint8_t *q, TopBytes a, TopBytes b) {
  vst1_u8(p, a);
  vst1_u8(q, b);
}
PIVRA_INLINE void store_twos(uint8_t *p, TopBytes a, TopBytes b) {
  vst2_u8(p, uint8x8x2_t{{a, b}});
}

// Taps: the first ones in the lower half, the second ones in the upper. One window,
// of as many registers as there are to be windows.
#define PIVRA_GATHERS 1
typedef uint8x16_t Taps;
constexpr int32_t kMostWindows = 2;
template <int windows>
constexpr int32_t kWindowBytes = 16 * windows;
template <int windows>
constexpr int32_t kWindowsOfTaps = 1;
template <int unit>
constexpr TapPlace tap_place(int32_t which, int32_t i) {
  return {which * 8 + i % 8, i / 8};
}

#if defined(__arm__) && !defined(__clang__)
// The intrinsic moves the window to another pair of registers.
PIVRA_INLINE uint8x8_t look_up(uint8x16_t window, uint8x8_t index) {
  uint8x8_t found;
  asm("vtbl.8 %P0, {%e1, %f1}, %P2" : "=w"(found) : "w"(window), "w"(index));
  return found;
}
#else
PIVRA_INLINE uint8x8_t look_up(uint8x16_t window, uint8x8_t index) {
  return vtbl2_u8(uint8x8x2_t{{vget_low_u8(window), vget_high_u8(window)}}, index);
}
#endif
template <int windows>
PIVRA_INLINE Taps gather(const uint8_t *src, const int32_t *from, Whole index) {
  const uint8x16_t low = vld1q_u8(src + *from);
  if constexpr (windows == 1) {
    return vcombine_u8(look_up(low, vget_low_u8(index)), look_up(low, vget_high_u8(index)));
  } else {
    const uint8x16_t high = vld1q_u8(src + *from + 16);
    const uint8x8x4_t window = {
        {vget_low_u8(low), vget_high_u8(low), vget_low_u8(high), vget_high_u8(high)}};
    return vcombine_u8(vtbl4_u8(window, vget_low_u8(index)), vtbl4_u8(window, vget_high_u8(index)));
  }
}

PIVRA_INLINE U16 add_taps(Taps t) { return vaddl_u8(vget_low_u8(t), vget_high_u8(t)); }
PIVRA_INLINE U16 weigh_taps(Taps t, Whole weights) {
  return vmlal_u8(vmull_u8(vget_low_u8(t), vget_low_u8(weights)), vget_high_u8(t),
                  vget_high_u8(weights));
}
// Sums and factors stay below 2^15.
PIVRA_INLINE U16 divide(U16 sum, U16 factor) {
  const int16x8_t high = vqdmulhq_s16(vreinterpretq_s16_u16(sum), vreinterpretq_s16_u16(factor));
  return vshrq_n_u16(vreinterpretq_u16_s16(high), 3);
}
PIVRA_INLINE Whole join_taps(Pair<U16> sums) {
  return vcombine_u8(vmovn_u16(sums.even), vmovn_u16(sums.odd));
}

PIVRA_INLINE Whole truncated_mean(Whole a, Whole b) { return vhaddq_u8(a, b); }
PIVRA_INLINE Whole mean_of_taps(Taps t0, Taps t1) {
  return vcombine_u8(vhadd_u8(vget_low_u8(t0), vget_high_u8(t0)),
                     vhadd_u8(vget_low_u8(t1), vget_high_u8(t1)));
}
PIVRA_INLINE Whole mean_of_taps(Taps t0, Taps t1, Taps u0, Taps u1) {
  return vcombine_u8(vshrn_n_u16(add_taps(t0) + add_taps(u0), 2),
                     vshrn_n_u16(add_taps(t1) + add_taps(u1), 2));
}

// Units 2n and 2n + 1 of 32 bytes.
template <int unit>
PIVRA_INLINE Pair<Whole> load_unit_pairs(const uint8_t *p) {
  if constexpr (unit == 1) {
    return load_pairs(p);
  } else if constexpr (unit == 2) {
    const uint16x8x2_t v = vld2q_u16(reinterpret_cast<const uint16_t *>(p));
    return {vreinterpretq_u8_u16(v.val[0]), vreinterpretq_u8_u16(v.val[1])};
  } else {
    const uint32x4x2_t v = vld2q_u32(reinterpret_cast<const uint32_t *>(p));
    return {vreinterpretq_u8_u32(v.val[0]), vreinterpretq_u8_u32(v.val[1])};
  }
}

#if defined(__arm__) && !defined(__clang__)

// No intrinsic of GCC 12 moves more than two registers at once as they are.
constexpr int32_t kHalves = 64;
template <int bytes>
PIVRA_INLINE void halve_bytes(const uint8_t *&p, ptrdiff_t below, uint8_t *&dst) {
#pragma GCC unroll 2
  for (int i = 0; i < bytes; i += 32)
    asm volatile(
        "vld1.8 {d0-d3}, [%[p]], %[below]\n\t"
        "vld1.8 {d4-d7}, [%[p]], %[back]\n\t"
        "vld1.8 {d16-d19}, [%[p]], %[below]\n\t"
        "vpaddl.u8 q0, q0\n\t"
        "vpaddl.u8 q1, q1\n\t"
        "vld1.8 {d20-d23}, [%[p]], %[back]\n\t"
        "vpadal.u8 q0, q2\n\t"
        "vpadal.u8 q1, q3\n\t"
        "vpaddl.u8 q8, q8\n\t"
        "vpaddl.u8 q9, q9\n\t"
        "vpadal.u8 q8, q10\n\t"
        "vpadal.u8 q9, q11\n\t"
        "vshrn.u16 d0, q0, #2\n\t"
        "vshrn.u16 d1, q1, #2\n\t"
        "vshrn.u16 d2, q8, #2\n\t"
        "vshrn.u16 d3, q9, #2\n\t"
        "vst1.8 {d0-d3}, [%[dst]]!\n\t"
        : [p] "+r"(p), [dst] "+r"(dst)
        : [below] "r"(below), [back] "r"(32 - below)
        : "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "d16", "d17", "d18", "d19", "d20", "d21",
          "d22", "d23", "memory");
}

#else

constexpr int32_t kHalves = 16;
template <int bytes>
PIVRA_INLINE void halve_bytes(const uint8_t *&p, ptrdiff_t below, uint8_t *&dst) {
  for (int i = 0; i < bytes; i += 16) {
    const uint8_t *q = p + below;
    const uint16x8_t first = vpadalq_u8(vpaddlq_u8(vld1q_u8(p)), vld1q_u8(q));
    const uint16x8_t second = vpadalq_u8(vpaddlq_u8(vld1q_u8(p + 16)), vld1q_u8(q + 16));
    vst1q_u8(dst, vcombine_u8(vshrn_n_u16(first, 2), vshrn_n_u16(second, 2)));
    p += 32;
    dst += 16;
  }
}

#endif

template <int unit, int bytes = kHalves>
PIVRA_INLINE void halve(const uint8_t *&p, ptrdiff_t below, uint8_t *&dst) {
  if constexpr (unit == 1) return halve_bytes<bytes>(p, below, dst);
  for (int i = 0; i < bytes; i += 16) {
    Pair<Whole> t = load_unit_pairs<unit>(p), b = load_unit_pairs<unit>(p + below);
    const uint16x8_t low = vaddl_u8(vget_low_u8(t.even), vget_low_u8(t.odd)) +
                           vaddl_u8(vget_low_u8(b.even), vget_low_u8(b.odd));
    const uint16x8_t high = vaddl_u8(vget_high_u8(t.even), vget_high_u8(t.odd)) +
                            vaddl_u8(vget_high_u8(b.even), vget_high_u8(b.odd));
    vst1q_u8(dst, vcombine_u8(vshrn_n_u16(low, 2), vshrn_n_u16(high, 2)));
    p += 32;
    dst += 16;
  }
}
template <int unit>
PIVRA_INLINE void halve(const uint8_t *&p, uint8_t *&dst) {
  for (int i = 0; i < kHalves; i += 16) {
    Pair<Whole> v = load_unit_pairs<unit>(p);
    vst1q_u8(dst, truncated_mean(v.even, v.odd));
    p += 32;
    dst += 16;
  }
}

PIVRA_INLINE Pair<U16> word_taps(Taps t0, Taps t1) {
  return {vreinterpretq_u16_u8(vcombine_u8(vget_low_u8(t0), vget_low_u8(t1))),
          vreinterpretq_u16_u8(vcombine_u8(vget_high_u8(t0), vget_high_u8(t1)))};
}

PIVRA_INLINE Pair<Taps> beside(Whole a, Whole b) {
  return {vcombine_u8(vget_low_u8(a), vget_low_u8(b)),
          vcombine_u8(vget_high_u8(a), vget_high_u8(b))};
}
PIVRA_INLINE Whole join_beside(Pair<U16> sums) { return join_taps(sums); }

}  // namespace pivra::PIVRA_LEVEL

#endif
