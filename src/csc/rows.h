// Rows of YUV to rows of RGB: blocks of pixels, then single ones for what is left.
#ifndef PIVRA_CSC_ROWS_H
#define PIVRA_CSC_ROWS_H

#include "csc/blocks.h"
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

// The rows being converted, at the pixels that are next.
template <class Source, class Target, int kRows>
struct RowsToRgb {
  SourceRows<kRows> in;
  TargetRows<kRows> out;

  PIVRA_INLINE void advance(ptrdiff_t pixels) {
    pivra::PIVRA_LEVEL::advance<Source>(in, pixels);
    for_each_row<kRows>([&](int row) { out.row[row] += pixels * Target::kBytes; });
  }

#if PIVRA_VECTORS
  template <class Block>
  PIVRA_INLINE void store(Block block, int row) {
    Pair<I16> luma = block.luma(in, row);
    auto even = Target::half(block.even(luma.even));
    auto odd = Target::half(block.odd(luma.odd));
    out.row[row] = Target::store(out.row[row], even, odd);
  }
  PIVRA_INLINE void block() {
    auto block = Source::block(in);
    store(block, 0);
    if constexpr (kRows == 2) store(block, 1);
    pivra::PIVRA_LEVEL::advance<Source>(in, kBlock);
  }
#endif
};

template <class Source, class Target, int kRows>
PIVRA_INLINE void convert_rows(SourceRows<kRows> in, TargetRows<kRows> out, ptrdiff_t columns) {
  RowsToRgb<Source, Target, kRows> rows = {in, out};
#if PIVRA_VECTORS
  columns -= convert_blocks(rows, columns & ~ptrdiff_t{1});
#endif
  for_each_row<kRows>([&](int row) {
    for (ptrdiff_t x = 0; x < columns; ++x)
      Target::pixel(rows.out.row[row] + x * Target::kBytes, Source::pixel(rows.in, row, x));
  });
}

}  // namespace pivra::PIVRA_LEVEL

#endif
