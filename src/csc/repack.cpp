// Rows of samples to rows of byte pairs and back. Compiled once per
// instruction-set level.
#include "csc/repack.h"

// Bytes that only move do so at the speed of the memory. Longer registers cross more of
// its lines.
#define PIVRA_AT_MOST_256_BITS 1
#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {
namespace {

#if PIVRA_VECTORS

// How many pairs, one at least and a block at most, to go from p to an address
// that suits whole vectors.
PIVRA_INLINE ptrdiff_t pairs_to_alignment(const uint8_t *p, ptrdiff_t bytes_per_pair) {
  const auto past = reinterpret_cast<uintptr_t>(p) % kBlock;
  return kBlock - static_cast<ptrdiff_t>(past) / bytes_per_pair;
}

// Each move: where it reads and writes, and kBlock pairs of it.
struct Interleave {
  const uint8_t *a, *b;
  uint8_t *dst;

  PIVRA_INLINE Pair<Whole> load() const { return {load_bytes(a), load_bytes(b)}; }
  PIVRA_INLINE void store(Pair<Whole> block) const { store_pairs(dst, block.even, block.odd); }
  PIVRA_INLINE ptrdiff_t to_alignment() const { return pairs_to_alignment(dst, 2); }
  PIVRA_INLINE void advance(ptrdiff_t pairs) {
    a += pairs;
    b += pairs;
    dst += 2 * pairs;
  }
};

struct Deinterleave {
  const uint8_t *src;
  uint8_t *a, *b;

  PIVRA_INLINE Pair<Whole> load() const { return load_pairs(src); }
  PIVRA_INLINE void store(Pair<Whole> block) const {
    store_bytes(a, block.even);
    store_bytes(b, block.odd);
  }
  PIVRA_INLINE ptrdiff_t to_alignment() const { return pairs_to_alignment(a, 1); }
  PIVRA_INLINE void advance(ptrdiff_t pairs) {
    src += 2 * pairs;
    a += pairs;
    b += pairs;
  }
};

struct SwapPairs {
  const uint8_t *src;
  uint8_t *dst;

  PIVRA_INLINE Pair<Whole> load() const { return {load_bytes(src), load_bytes(src + kBlock)}; }
  PIVRA_INLINE void store(Pair<Whole> block) const {
    store_bytes(dst, exchange_neighbours(block.even));
    store_bytes(dst + kBlock, exchange_neighbours(block.odd));
  }
  PIVRA_INLINE ptrdiff_t to_alignment() const { return pairs_to_alignment(dst, 2); }
  PIVRA_INLINE void advance(ptrdiff_t pairs) {
    src += 2 * pairs;
    dst += 2 * pairs;
  }
};

// A row in blocks: the first one, then those from where the destination is
// aligned, then the last one. They overlap; first and last are loaded before
// anything is stored, so that the destination may be the source. Whether there
// is a block: a shorter row is left to the caller.
template <class Move>
PIVRA_INLINE bool in_blocks(Move row, ptrdiff_t pairs) {
  if (pairs < kBlock) return false;
  const ptrdiff_t lead = row.to_alignment();
  Move end = row, at = row;
  end.advance(pairs - kBlock);
  at.advance(lead);
  Pair<Whole> first = row.load(), last = end.load();
#pragma GCC unroll 2
  for (ptrdiff_t left = pairs - kBlock - lead; left > 0; left -= kBlock) {
    at.store(at.load());
    at.advance(kBlock);
  }
  row.store(first);
  end.store(last);
  return true;
}

#endif

void interleave(const uint8_t *a, const uint8_t *b, ptrdiff_t pairs, uint8_t *dst) {
#if PIVRA_VECTORS
  if (in_blocks(Interleave{a, b, dst}, pairs)) return;
#endif
  for (ptrdiff_t x = 0; x < pairs; ++x) {
    dst[2 * x] = a[x];
    dst[2 * x + 1] = b[x];
  }
}

void deinterleave(const uint8_t *src, ptrdiff_t pairs, uint8_t *a, uint8_t *b) {
#if PIVRA_VECTORS
  if (in_blocks(Deinterleave{src, a, b}, pairs)) return;
#endif
  for (ptrdiff_t x = 0; x < pairs; ++x) {
    a[x] = src[2 * x];
    b[x] = src[2 * x + 1];
  }
}

void interleave_tile(const uint8_t *a, ptrdiff_t stride_a, const uint8_t *b, ptrdiff_t stride_b,
                     int32_t rows, uint8_t *dst) {
  for (; rows > 0; --rows, a += stride_a, b += stride_b, dst += 2 * kTilePairs) {
#if PIVRA_VECTORS
    for (int32_t x = 0; x < kTilePairs; x += kBlock)
      store_pairs(dst + 2 * x, load_bytes(a + x), load_bytes(b + x));
#else
    interleave(a, b, kTilePairs, dst);
#endif
  }
}

void deinterleave_tile(const uint8_t *src, int32_t rows, uint8_t *a, ptrdiff_t stride_a, uint8_t *b,
                       ptrdiff_t stride_b) {
  for (; rows > 0; --rows, src += 2 * kTilePairs, a += stride_a, b += stride_b) {
#if PIVRA_VECTORS
    for (int32_t x = 0; x < kTilePairs; x += kBlock) {
      Pair<Whole> planes = load_pairs(src + 2 * x);
      store_bytes(a + x, planes.even);
      store_bytes(b + x, planes.odd);
    }
#else
    deinterleave(src, kTilePairs, a, b);
#endif
  }
}

void swap_pairs(const uint8_t *src, ptrdiff_t pairs, uint8_t *dst) {
#if PIVRA_VECTORS
  if (in_blocks(SwapPairs{src, dst}, pairs)) return;
#endif
  for (ptrdiff_t x = 0; x < pairs; ++x) {
    const uint8_t first = src[2 * x];
    dst[2 * x] = src[2 * x + 1];
    dst[2 * x + 1] = first;
  }
}

}  // namespace

extern const Repack repack;
const Repack repack = {interleave, deinterleave, interleave_tile, deinterleave_tile, swap_pairs};

}  // namespace pivra::PIVRA_LEVEL
