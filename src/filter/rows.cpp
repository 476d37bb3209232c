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

// How many rows are sharpened at once. They share the loads of their neighbours, which
// cross cache lines at long registers.
constexpr int kBand = kBlock >= 32 ? 4 : 1;

// A sample and its neighbours in its row, two on each side at most.
struct Neighbours {
  Whole from[5];
};
template <int reach>
PIVRA_INLINE Neighbours load_neighbours(const uint8_t *&p) {
  Shifted<2 *reach + 1> s = load_shifted<2 * reach + 1>(p);
  Neighbours n{};
#pragma GCC unroll 5
  for (int k = 0; k <= 2 * reach; ++k) n.from[2 - reach + k] = s.from[k];
  return n;
}

// Rows that are sharpened, from the third on, and the two above and below them. Each
// is followed from the first neighbour on that counts in it.
template <int rows>
struct Band {
  const uint8_t *row[rows + 4];

  static constexpr int reach(int k) {
    const int far = k < rows + 3 - k ? k : rows + 3 - k;
    return far < 2 ? far : 2;
  }
  PIVRA_INLINE Band(const uint8_t *p, ptrdiff_t stride) {
#pragma GCC unroll 8
    for (int k = 0; k < rows + 4; ++k) row[k] = p + (k - 2) * stride - reach(k);
  }
  template <int k>
  PIVRA_INLINE Neighbours load() {
    return load_neighbours<reach(k)>(row[k]);
  }
};

// 16 P less the weighed sum, shifted down by 4, is P less a sixteenth of the sum
// rounded up, and rounding halves up again and again is rounding up in the end: it
// all stays in bytes, once carry-save adders have left few of them.
PIVRA_INLINE Whole sharpened(Neighbours above2, Neighbours above, Neighbours row, Neighbours below,
                             Neighbours below2) {
  Sum far = sum(row.from[0], row.from[4], above2.from[2]);
  Sum diagonal = sum(above.from[1], above.from[3], below.from[1]);
  Sum ones = sum(far.digits, diagonal.digits, below.from[3]);
  Sum beside = sum(row.from[1], row.from[3], above.from[2]);
  Sum others = sum(below.from[2], far.carries, diagonal.carries);
  Sum twos = sum(beside.digits, others.digits, ones.carries);
  Sum fours = sum(beside.carries, others.carries, twos.carries);
  Whole half = mean(ones.digits, below2.from[2]);
  Whole mean16 = mean(mean(mean(half, twos.digits), fours.digits), fours.carries);
  Whole sample = row.from[2];
  return subtract_saturated(add_saturated(sample, subtract_saturated(sample, mean16)),
                            subtract_saturated(mean16, sample));
}

// Row k of the band and those below it, given the four around it that are loaded.
template <int rows, int k = 0>
PIVRA_INLINE void sharpen_blocks(Band<rows> &band, Neighbours above2, Neighbours above,
                                 Neighbours row, Neighbours below, ptrdiff_t stride, uint8_t *dst) {
  Neighbours below2 = band.template load<k + 4>();
  store_bytes(dst, sharpened(above2, above, row, below, below2));
  if constexpr (k + 1 < rows)
    sharpen_blocks<rows, k + 1>(band, above, row, below, below2, stride, dst + stride);
}
template <int rows>
PIVRA_INLINE void sharpen_blocks(Band<rows> &band, ptrdiff_t stride, uint8_t *dst) {
  Neighbours above2 = band.template load<0>(), above = band.template load<1>();
  Neighbours row = band.template load<2>(), below = band.template load<3>();
  sharpen_blocks<rows>(band, above2, above, row, below, stride, dst);
}

template <int rows>
void sharpen_band(const uint8_t *src, ptrdiff_t stride, ptrdiff_t count, uint8_t *dst) {
  const ptrdiff_t end = count - kBlock;
  Band<rows> band(src, stride), last(src + end, stride);
  for (ptrdiff_t x = 0; x < end; x += kBlock) sharpen_blocks(band, stride, dst + x);
  sharpen_blocks(last, stride, dst + end);
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

void sharpen(const uint8_t *src, ptrdiff_t stride, ptrdiff_t count, ptrdiff_t height,
             uint8_t *dst) {
  ptrdiff_t y = 0;
#if PIVRA_VECTORS
  if (count >= kBlock) {
    for (; y <= height - kBand; y += kBand)
      sharpen_band<kBand>(src + y * stride, stride, count, dst + y * stride);
    for (; y < height; ++y) sharpen_band<1>(src + y * stride, stride, count, dst + y * stride);
  }
#endif
  for (; y < height; ++y)
    for (ptrdiff_t x = 0; x < count; ++x)
      dst[y * stride + x] = sharpened(src + y * stride + x, stride);
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
