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

// A sum of bytes without its carries, and the carries, which count twice.
struct Sum {
  Whole digits, carries;
};
PIVRA_INLINE Sum sum(Whole a, Whole b, Whole c) { return {parity(a, b, c), majority(a, b, c)}; }

// The rows around a sample, each from the first neighbour on that it has there.
struct Rows {
  const uint8_t *above2, *above, *row, *below, *below2;

  PIVRA_INLINE Rows(const uint8_t *p, ptrdiff_t stride)
      : above2(p - 2 * stride),
        above(p - stride - 1),
        row(p - 2),
        below(p + stride - 1),
        below2(p + 2 * stride) {}
};

// 16 P less the weighed sum, shifted down by 4, is P less a sixteenth of the sum
// rounded up, and rounding halves up again and again is rounding up in the end: it
// all stays in bytes, once carry-save adders have left few of them.
PIVRA_INLINE Whole sharpen_block(Rows &at) {
  Shifted<1> above2 = load_shifted<1>(at.above2);
  Shifted<5> row = load_shifted<5>(at.row);
  Shifted<3> above = load_shifted<3>(at.above), below = load_shifted<3>(at.below);
  Sum far = sum(row.from[0], row.from[4], above2.from[0]);
  Sum diagonal = sum(above.from[0], above.from[2], below.from[0]);
  Sum ones = sum(far.digits, diagonal.digits, below.from[2]);
  Sum beside = sum(row.from[1], row.from[3], above.from[1]);
  Sum others = sum(below.from[1], far.carries, diagonal.carries);
  Sum twos = sum(beside.digits, others.digits, ones.carries);
  Sum fours = sum(beside.carries, others.carries, twos.carries);
  Whole half = mean(ones.digits, load_shifted<1>(at.below2).from[0]);
  Whole mean16 = mean(mean(mean(half, twos.digits), fours.digits), fours.carries);
  Whole sample = row.from[2];
  return subtract_saturated(add_saturated(sample, subtract_saturated(sample, mean16)),
                            subtract_saturated(mean16, sample));
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
    const ptrdiff_t end = count - kBlock;
    Rows at(src, stride), last(src + end, stride);
    for (ptrdiff_t x = 0; x < end; x += kBlock) store_bytes(dst + x, sharpen_block(at));
    store_bytes(dst + end, sharpen_block(last));
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
