#include "dither/in_place.h"

#include <stddef.h>
#include <string.h>

#include "core/bounds.h"

namespace pivra {
namespace {

struct Row {
  const uint8_t *luma;
  uint8_t *chroma[2], *pixels;
};

// The rows of a picture, one at a time.
struct Rows {
  Chroma chroma;
  uint8_t **src, **dst;
  ptrdiff_t luma_stride, chroma_stride[2], pixel_stride;
  int32_t columns, chroma_phase;
  int32_t pair_columns = 0;  // that are read of two rows before anything is written; 0: singly

  bool halved() const { return chroma >= Chroma::kHalved; }
  int32_t pixels_a_step() const { return halved() ? 2 : 1; }

  Row row(ptrdiff_t y) const {
    const ptrdiff_t line = chroma == Chroma::kNone ? 0 : halved() ? (y + chroma_phase) >> 1 : y;
    return {src[0] + y * luma_stride,
            {src[1] + line * chroma_stride[0], src[2] + line * chroma_stride[1]},
            dst[0] + y * pixel_stride};
  }

  // Whether row y may be converted in any order, and together with the row above it.
  bool clear(ptrdiff_t y) const {
    return row(y).pixels + 2 * ptrdiff_t{columns} <= row(y > 0 ? y - 1 : 0).luma;
  }
};

Rows rows_of(Chroma chroma, uint8_t **src, int32_t width, int32_t height, const int32_t *src_stride,
             const int32_t *dst_stride, uint8_t **dst) {
  Rows rows = {chroma,        src,   dst, src_stride[0], {src_stride[1], src_stride[2]},
               dst_stride[0], width, 0};
  if (chroma == Chroma::kHalvedDrift) {
    const int32_t odd = width & 1;
    rows.columns += odd;
    rows.pixel_stride += 2 * odd;
    if (width % 4 != 0) rows.chroma_phase = height & 1;
  }
  if (rows.halved() && width % 4 == 0) {
    rows.chroma_stride[1] = rows.chroma_stride[0];
    rows.pair_columns = width % 8 == 0 ? 8 : 4;
  } else if (chroma == Chroma::kHalved) {
    rows.pair_columns = 2;
  }
  return rows;
}

// A row in pieces whose luma is put aside: as long as they may be without running
// into the luma behind them, and where they may not be, a step at a time.
void convert_row(pivra_csc_kernel *kernel, const Rows &rows, ptrdiff_t y) {
  const Row row = rows.row(y);
  const int32_t step = rows.pixels_a_step();
  uint8_t aside[256];
  int32_t no_stride[4] = {}, one_row = 1;
  for (int32_t x = 0, count; x < rows.columns; x += count) {
    const ptrdiff_t room = row.luma - row.pixels - x;
    count = static_cast<int32_t>(sizeof aside);
    if (count > room) count = static_cast<int32_t>(room > step ? room & -step : step);
    if (count > rows.columns - x) count = rows.columns - x;
    memcpy(aside, row.luma + x, static_cast<size_t>(count));
    const int32_t sample = rows.chroma == Chroma::kNone ? 0 : x / step;
    uint8_t *src[4] = {aside, row.chroma[0] + sample, row.chroma[1] + sample};
    uint8_t *dst[4] = {row.pixels + 2 * ptrdiff_t{x}};
    kernel(src, &count, &one_row, no_stride, no_stride, dst);
  }
}

// Two rows that run into their own luma, a few columns of both at a time.
void convert_pair(pivra_csc_kernel *kernel, const Rows &rows, ptrdiff_t y, int32_t *dst_stride) {
  constexpr int32_t kMost = 8;
  const Row row = rows.row(y);
  uint8_t aside[2][kMost];
  int32_t two_rows = 2, aside_stride[4] = {kMost};
  for (int32_t x = 0, count; x < rows.columns; x += count) {
    count = smaller(rows.pair_columns, rows.columns - x);
    for (ptrdiff_t i = 0; i < 2; ++i)
      memcpy(aside[i], row.luma + i * rows.luma_stride + x, static_cast<size_t>(count));
    uint8_t *src[4] = {aside[0], row.chroma[0] + x / 2, row.chroma[1] + x / 2};
    uint8_t *dst[4] = {row.pixels + 2 * ptrdiff_t{x}};
    kernel(src, &count, &two_rows, aside_stride, dst_stride, dst);
  }
}

}  // namespace

void convert_in_place(pivra_csc_kernel *kernel, Chroma chroma, uint8_t **src, int32_t *width,
                      int32_t height, int32_t *src_stride, int32_t *dst_stride, uint8_t **dst) {
  const Rows rows = rows_of(chroma, src, width[0], height, src_stride, dst_stride, dst);
  int32_t clear = height;
  while (clear > 0 && !rows.clear(clear - 1)) --clear;
  // Both parts pair their rows alike.
  if (rows.pair_columns > 0)
    clear &= ~1;
  else if (clear > 0)
    clear -= (height - clear) & 1;
  kernel(src, width, &clear, src_stride, dst_stride, dst);
  int32_t y = clear;
  for (; rows.pair_columns > 0 && y + 1 < height; y += 2) convert_pair(kernel, rows, y, dst_stride);
  for (; y < height; ++y) convert_row(kernel, rows, y);
}

}  // namespace pivra
