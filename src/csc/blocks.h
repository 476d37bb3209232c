// A row of pixels in blocks: what every conversion of rows does around its rule.
#ifndef PIVRA_CSC_BLOCKS_H
#define PIVRA_CSC_BLOCKS_H

#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {

#if PIVRA_VECTORS

// Converts the pixels from where `row` stands, and the last block overlaps the one
// before it where they are no multiple of a block. Leaves the row behind the
// pixels done and returns how many those are: all, or none if there is no block
// of them. `row.block()` converts a block and steps behind it, `row.advance(n)`
// only steps. (A type and no lambda: GCC 12 keeps what a lambda captures in memory.)
template <class Row>
PIVRA_INLINE ptrdiff_t convert_blocks(Row &row, ptrdiff_t pixels) {
  if (pixels < kBlock) return 0;
  ptrdiff_t blocks = pixels / kBlock, rest = pixels % kBlock;
  for (;;) {
    do row.block();
    while (--blocks > 0);
    if (rest == 0) return pixels;
    row.advance(rest - kBlock);
    blocks = 1;
    rest = 0;
  }
}

#endif

}  // namespace pivra::PIVRA_LEVEL

#endif
