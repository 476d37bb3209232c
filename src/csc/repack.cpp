// Rows of samples to rows of byte pairs and back. Compiled once per
// instruction-set level: blocks of kBlock pairs, of which the last overlaps the
// one before it, or single pairs in a row that is shorter than a block.
#include "csc/repack.h"

#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {
namespace {

#if PIVRA_VECTORS

// Calls block(x) for the first pair x of each block. Whether there were any: a
// row shorter than a block is left to the caller.
template <class Block>
PIVRA_INLINE bool for_each_block(ptrdiff_t pairs, Block block) {
  if (pairs < kBlock) return false;
  ptrdiff_t x = 0;
  for (; x <= pairs - kBlock; x += kBlock) block(x);
  if (x < pairs) block(pairs - kBlock);
  return true;
}

#endif

void interleave(const uint8_t *a, const uint8_t *b, ptrdiff_t pairs, uint8_t *dst) {
#if PIVRA_VECTORS
  if (for_each_block(pairs, [=](ptrdiff_t x) {
        store_pairs(dst + 2 * x, load_bytes(a + x), load_bytes(b + x));
      }))
    return;
#endif
  for (ptrdiff_t x = 0; x < pairs; ++x) {
    dst[2 * x] = a[x];
    dst[2 * x + 1] = b[x];
  }
}

void deinterleave(const uint8_t *src, ptrdiff_t pairs, uint8_t *a, uint8_t *b) {
#if PIVRA_VECTORS
  if (for_each_block(pairs, [=](ptrdiff_t x) {
        Pair<Whole> block = load_pairs(src + 2 * x);
        store_bytes(a + x, block.even);
        store_bytes(b + x, block.odd);
      }))
    return;
#endif
  for (ptrdiff_t x = 0; x < pairs; ++x) {
    a[x] = src[2 * x];
    b[x] = src[2 * x + 1];
  }
}

void swap_pairs(const uint8_t *src, ptrdiff_t pairs, uint8_t *dst) {
  ptrdiff_t bytes = 2 * pairs;
#if PIVRA_VECTORS
  if (bytes >= kBlock) {
    // Loaded first: where dst is src, the blocks before the last exchange some of its bytes.
    const ptrdiff_t end = bytes - kBlock;
    Whole last = load_bytes(src + end);
    for (ptrdiff_t x = 0; x < end; x += kBlock)
      store_bytes(dst + x, exchange_neighbours(load_bytes(src + x)));
    store_bytes(dst + end, exchange_neighbours(last));
    return;
  }
#endif
  for (ptrdiff_t x = 0; x < bytes; x += 2) {
    const uint8_t first = src[x];
    dst[x] = src[x + 1];
    dst[x + 1] = first;
  }
}

}  // namespace

extern const Repack repack;
const Repack repack = {interleave, deinterleave, swap_pairs};

}  // namespace pivra::PIVRA_LEVEL
