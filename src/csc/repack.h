// Rows of single samples and rows of byte pairs made of each other, at one
// instruction-set level: what the semi-planar layouts are packed and unpacked by.
#ifndef PIVRA_CSC_REPACK_H
#define PIVRA_CSC_REPACK_H

#include <stddef.h>
#include <stdint.h>

#include "core/levels.h"

namespace pivra {

// In a row of a 64x32 tile.
constexpr int32_t kTilePairs = 32;

// A row of `pairs` byte pairs each; none if that is 0 or less. Rows do not
// overlap, unless it says so.
struct Repack {
  // Two rows of `pairs` bytes into one of pairs a, b.
  void (*interleave)(const uint8_t *a, const uint8_t *b, ptrdiff_t pairs, uint8_t *dst);
  // The first bytes of the pairs to a, the second ones to b.
  void (*deinterleave)(const uint8_t *src, ptrdiff_t pairs, uint8_t *a, uint8_t *b);
  // The same with so many rows of a tile, whose pairs lie row behind row.
  void (*interleave_tile)(const uint8_t *a, ptrdiff_t stride_a, const uint8_t *b,
                          ptrdiff_t stride_b, int32_t rows, uint8_t *dst);
  void (*deinterleave_tile)(const uint8_t *src, int32_t rows, uint8_t *a, ptrdiff_t stride_a,
                            uint8_t *b, ptrdiff_t stride_b);
  // The bytes of each pair exchanged; dst may be src.
  void (*swap_pairs)(const uint8_t *src, ptrdiff_t pairs, uint8_t *dst);
};

PIVRA_TABLES(Repack, repack)

}  // namespace pivra

#endif
