// Rows of single samples and rows of byte pairs made of each other, at one
// instruction-set level: what the semi-planar layouts are packed and unpacked by.
#ifndef PIVRA_CSC_REPACK_H
#define PIVRA_CSC_REPACK_H

#include <stddef.h>
#include <stdint.h>

#include "core/levels.h"

namespace pivra {

// A row of `pairs` byte pairs each; none if that is 0 or less. Rows do not
// overlap, unless it says so.
struct Repack {
  // Two rows of `pairs` bytes into one of pairs a, b.
  void (*interleave)(const uint8_t *a, const uint8_t *b, ptrdiff_t pairs, uint8_t *dst);
  // The first bytes of the pairs to a, the second ones to b.
  void (*deinterleave)(const uint8_t *src, ptrdiff_t pairs, uint8_t *a, uint8_t *b);
  // The bytes of each pair exchanged; dst may be src.
  void (*swap_pairs)(const uint8_t *src, ptrdiff_t pairs, uint8_t *dst);
};

PIVRA_TABLES(Repack, repack)

}  // namespace pivra

#endif
