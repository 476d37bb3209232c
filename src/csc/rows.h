// Rows of YUV to rows of RGB: blocks of pixels, then single ones for what is left.
#ifndef PIVRA_CSC_ROWS_H
#define PIVRA_CSC_ROWS_H

#include "csc/sources.h"
#include "csc/targets.h"

namespace pivra::PIVRA_LEVEL {

template <int kRows>
struct TargetRows {
  uint8_t *row[kRows];
};

// Whether rows so far apart run into each other: then the later one has to win,
// and they are not converted together.
PIVRA_INLINE bool rows_overlap(ptrdiff_t distance, ptrdiff_t row_bytes) {
  return distance < row_bytes && -distance < row_bytes;
}

// Written out for one row or two, so that the row pointers stay in registers.
template <int kRows, class Action>
PIVRA_INLINE void for_each_row(Action action) {
  action(0);
  if constexpr (kRows == 2) action(1);
}

template <class Source, class Target, int kRows>
PIVRA_INLINE void advance(SourceRows<kRows> &in, TargetRows<kRows> &out, int32_t pixels) {
  advance<Source>(in, pixels);
  for_each_row<kRows>([&](int row) { out.row[row] += pixels * Target::kBytes; });
}

#if PIVRA_VECTORS

template <class Target, class Block>
PIVRA_INLINE uint8_t *convert_block(Block block, Pair<I16> luma, uint8_t *out) {
  auto even = Target::half(block.even(luma.even));
  auto odd = Target::half(block.odd(luma.odd));
  return Target::store(out, even, odd);
}

// The rows' pixels in blocks, to the last whole pair. The last block overlaps
// the one before it where the row is no multiple of a block. Leaves the
// pointers behind the pixels done and returns how many those are.
template <class Source, class Target, int kRows>
PIVRA_INLINE int32_t convert_blocks(SourceRows<kRows> &in, TargetRows<kRows> &out,
                                    int32_t columns) {
  const int32_t pairs = columns & ~1;
  if (pairs < kBlock) return 0;
  int32_t blocks = pairs / kBlock, rest = pairs % kBlock;
  for (;;) {
    do {
      auto block = Source::block(in);
      out.row[0] = convert_block<Target>(block, block.luma(in, 0), out.row[0]);
      if constexpr (kRows == 2)
        out.row[1] = convert_block<Target>(block, block.luma(in, 1), out.row[1]);
      advance<Source>(in, kBlock);
    } while (--blocks > 0);
    if (rest == 0) return pairs;
    advance<Source, Target>(in, out, rest - kBlock);
    blocks = 1;
    rest = 0;
  }
}

#endif

template <class Source, class Target, int kRows>
PIVRA_INLINE void convert_rows(SourceRows<kRows> in, TargetRows<kRows> out, int32_t columns) {
#if PIVRA_VECTORS
  columns -= convert_blocks<Source, Target>(in, out, columns);
#endif
  for_each_row<kRows>([&](int row) {
    for (ptrdiff_t x = 0; x < columns; ++x)
      Target::pixel(out.row[row] + x * Target::kBytes, Source::pixel(in, row, x));
  });
}

}  // namespace pivra::PIVRA_LEVEL

#endif
