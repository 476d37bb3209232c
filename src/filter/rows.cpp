// Rows of the filters: look-ups, sharpening and the merging of two views. Compiled
// once per instruction-set level.
#include "filter/rows.h"

#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {
namespace {

void look_up_each(const uint8_t *table, const uint8_t *src, ptrdiff_t count, uint8_t *dst) {
#if PIVRA_TABLES_IN_REGISTERS
  if (count >= kBlock) {
    Table t = load_table(table);
    // Loaded first, as the row may be mapped in place.
    const ptrdiff_t end = count - kBlock;
    const Whole last = load_bytes(src + end);
    for (ptrdiff_t x = 0; x < end; x += kBlock)
      store_bytes(dst + x, look_up(t, load_bytes(src + x)));
    store_bytes(dst + end, look_up(t, last));
    return;
  }
#endif
#pragma GCC unroll 4
  for (ptrdiff_t x = 0; x < count; ++x) dst[x] = table[src[x]];
}

#if PIVRA_VECTORS

PIVRA_INLINE Pair<Narrow> samples_at(const uint8_t *p) { return split(load_samples(p)); }

// Every other sample of a block, given four neighbours beside it and eight around those.
PIVRA_INLINE Clamped sharpened(Narrow sample, I16 beside, I16 around) {
  return clamp<4>(widened<5>(sample) - beside - beside - around);
}

// Samples at even positions have those at odd positions of one load as neighbours,
// and the other way round.
PIVRA_INLINE void sharpen_block(const uint8_t *p, ptrdiff_t stride, uint8_t *dst) {
  const uint8_t *up = p - stride, *down = p + stride;
  Pair<Narrow> a = samples_at(up - 1), b = samples_at(down - 1);
  const I16 even0 = sum(a.even, b.even), odd0 = sum(a.odd, b.odd);
  Pair<Narrow> c = samples_at(up + 1), d = samples_at(down + 1);
  const I16 even1 = sum(c.even, d.even), odd1 = sum(c.odd, d.odd);
  Pair<Narrow> above = samples_at(up - stride), below = samples_at(down + stride);
  Pair<Narrow> left = samples_at(p - 2), mid = samples_at(p), right = samples_at(p + 2);

  const I16 around_even = even0 + even1 + sum(above.even, below.even) + sum(left.even, right.even);
  const I16 around_odd = odd0 + odd1 + sum(above.odd, below.odd) + sum(left.odd, right.odd);
  store_samples(dst, sharpened(mid.even, odd0 + sum(left.odd, mid.odd), around_even),
                sharpened(mid.odd, even1 + sum(mid.even, right.even), around_odd));
}

#endif

PIVRA_INLINE uint8_t sharpened(const uint8_t *p, ptrdiff_t stride) {
  const uint8_t *up = p - stride, *down = p + stride;
  const int32_t beside = p[-1] + p[1] + up[0] + down[0];
  const int32_t around =
      p[-2] + p[2] + up[-1] + up[1] + down[-1] + down[1] + up[-stride] + down[stride];
  const int32_t sum = (32 * p[0] - 2 * beside - around) >> 4;
  return static_cast<uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
}

void sharpen(const uint8_t *src, ptrdiff_t stride, ptrdiff_t count, uint8_t *dst) {
#if PIVRA_VECTORS
  if (count >= kBlock) {
    for (ptrdiff_t x = 0; x < count - kBlock; x += kBlock) sharpen_block(src + x, stride, dst + x);
    const ptrdiff_t end = count - kBlock;
    sharpen_block(src + end, stride, dst + end);
    return;
  }
#endif
  for (ptrdiff_t x = 0; x < count; ++x) dst[x] = sharpened(src + x, stride);
}

#if PIVRA_VECTORS

// Which bytes are the first ones of triples, from any byte of a triple on.
struct FirstOfTriples {
  uint8_t mask[kBlock + 2];
};
constexpr FirstOfTriples make_first_of_triples() {
  FirstOfTriples t{};
  for (int i = 0; i < kBlock + 2; i += 3) t.mask[i] = 0xFF;
  return t;
}
constexpr FirstOfTriples kFirstOfTriples = make_first_of_triples();

#endif

void merge_triples(const uint8_t *a, const uint8_t *b, ptrdiff_t count, uint8_t *dst) {
  ptrdiff_t x = 0;
#if PIVRA_VECTORS
  constexpr ptrdiff_t kStep = 3 * kBlock;
  const Whole mask0 = load_bytes(kFirstOfTriples.mask);
  const Whole mask1 = load_bytes(kFirstOfTriples.mask + kBlock % 3);
  const Whole mask2 = load_bytes(kFirstOfTriples.mask + 2 * kBlock % 3);
  for (; x <= count - kStep; x += kStep) {
    const uint8_t *p = a + x, *q = b + x;
    uint8_t *to = dst + x;
    store_bytes(to, select(mask0, load_bytes(p), load_bytes(q)));
    store_bytes(to + kBlock, select(mask1, load_bytes(p + kBlock), load_bytes(q + kBlock)));
    store_bytes(to + 2 * kBlock,
                select(mask2, load_bytes(p + 2 * kBlock), load_bytes(q + 2 * kBlock)));
  }
#endif
  for (; x < count; ++x) dst[x] = x % 3 == 0 ? a[x] : b[x];
}

}  // namespace

extern const FilterRows filter_rows;
const FilterRows filter_rows = {look_up_each, sharpen, merge_triples};

}  // namespace pivra::PIVRA_LEVEL
