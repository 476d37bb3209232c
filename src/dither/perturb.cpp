// The perturbation of luma. Compiled once per instruction-set level.
//
// Told step by step it changes a sample two columns ahead and two samples below.
// Told by rows, each row comes of its source and of the two finished rows above:
// from above, samples x and x + 1 of even x go up by 1 if the rows fall at x and
// down by 1 if not; then, along the row, even samples go up by 2 if the two before
// the last one, as they are by then, fall, and down by 2 if not.
#include "dither/perturb.h"

#include <string.h>

#include "core/copy.h"
#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {
namespace {

// What a row takes part in: the first has no two above it, the last steps nowhere.
enum class Steps { kAlong, kBoth, kFromAbove };

struct Rows {
  const uint8_t *src, *second_above, *above;
  uint8_t *dst;
};

#if PIVRA_VECTORS

PIVRA_INLINE U16 rows_fall(const Rows &row, ptrdiff_t x) {
  return (U16)(load_bytes(row.second_above + x) > load_bytes(row.above + x));
}

// For a block from an odd column on, where each lane ends with an even one.
PIVRA_INLINE Whole step_from_above(const Rows &row, ptrdiff_t x, Whole samples) {
  const U16 odd_columns = rows_fall(row, x - 1) & uint16_t{0x00FF};
  const Whole up = (Whole)(odd_columns | (rows_fall(row, x) & uint16_t{0xFF00}));
  return subtract_saturated(add_saturated(samples, up & uint8_t{1}), ~up & uint8_t{1});
}

// Each lane steps by the fall of the lane before. It falls itself if it does so even
// raised; or if it does so lowered, and the one before does not fall.
PIVRA_INLINE Whole step_along(Whole lanes, LastDecision &fall) {
  const Whole two = (Whole)(U16{} + uint16_t{0x0200});
  const Whole raised = add_saturated(lanes, two), lowered = subtract_saturated(lanes, two);
  const U16 first = (U16)lanes << 8;
  const U16 up = decisions_before((U16)(first > (U16)raised), (U16)(first > (U16)lowered), fall);
  return maximum(lowered, raised & (Whole)up);
}

// Whole blocks from column x on, an odd one, before column `end`. Returns where they end.
template <Steps kSteps>
PIVRA_INLINE ptrdiff_t step_blocks(const Rows &row, ptrdiff_t x, ptrdiff_t end) {
  LastDecision fall = last_decision(row.dst[x - 2] > row.dst[x - 1]);
  for (; x + kBlock <= end; x += kBlock) {
    Whole block = load_bytes(row.src + x);
    if constexpr (kSteps != Steps::kAlong) block = step_from_above(row, x, block);
    if constexpr (kSteps != Steps::kFromAbove) block = step_along(block, fall);
    store_bytes(row.dst + x, block);
  }
  return x;
}

#endif

PIVRA_INLINE uint8_t step(int32_t sample, bool up, int32_t by) {
  sample += up ? by : -by;
  return static_cast<uint8_t>(sample < 0 ? 0 : sample > 255 ? 255 : sample);
}

template <Steps kSteps>
PIVRA_INLINE uint8_t from_above(const Rows &row, ptrdiff_t x) {
  if constexpr (kSteps == Steps::kAlong) return row.src[x];
  const ptrdiff_t even = x & ~ptrdiff_t{1};
  return step(row.src[x], row.second_above[even] > row.above[even], 1);
}

template <Steps kSteps>
PIVRA_INLINE uint8_t along(const Rows &row, ptrdiff_t x, uint8_t sample) {
  if constexpr (kSteps == Steps::kFromAbove) return sample;
  return step(sample, row.dst[x - 3] > row.dst[x - 2], 2);
}

// A row of five samples at least. Steps are made from the columns 2, 4, ..., `last`.
template <Steps kSteps>
void step_row(const Rows &row, ptrdiff_t width) {
  const ptrdiff_t last = (width - 3) & ~ptrdiff_t{1};
  row.dst[0] = row.src[0];
  row.dst[1] = row.src[1];
  row.dst[2] = from_above<kSteps>(row, 2);
  ptrdiff_t x = 3;
#if PIVRA_VECTORS
  x = step_blocks<kSteps>(row, x, last + 1);
#endif
  for (; x < last; x += 2) {
    row.dst[x] = from_above<kSteps>(row, x);
    row.dst[x + 1] = along<kSteps>(row, x + 1, from_above<kSteps>(row, x + 1));
  }
  row.dst[x] = from_above<kSteps>(row, x);
  row.dst[x + 1] = along<kSteps>(row, x + 1, row.src[x + 1]);
  if (x + 2 < width) row.dst[x + 2] = row.src[x + 2];
}

void perturb(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
             int32_t dst_stride, uint8_t *dst) {
  if (width <= 0) return;
  const bool whole_copy = height <= 2 || width <= 4;
  copy_rows(src, static_cast<size_t>(width), whole_copy ? height : 1, src_stride, dst_stride, dst);
  if (whole_copy) return;
  Rows row = {src + src_stride, nullptr, dst, dst + dst_stride};
  step_row<Steps::kAlong>(row, width);
  for (int32_t y = 2; y < height; ++y) {
    row = {row.src + src_stride, row.above, row.dst, row.dst + dst_stride};
    if (y < height - 1)
      step_row<Steps::kBoth>(row, width);
    else
      step_row<Steps::kFromAbove>(row, width);
  }
}

}  // namespace

extern const Dither dither;
const Dither dither = {perturb};

}  // namespace pivra::PIVRA_LEVEL
