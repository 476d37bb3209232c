// How a kernel walks a picture. The pixels that a kernel computes are the same
// everywhere; the kernels differ in what they do with odd sizes and in which
// strides they use, and callers rely on each of these differences.
#ifndef PIVRA_CSC_WALKS_H
#define PIVRA_CSC_WALKS_H

#include <stddef.h>
#include <stdint.h>

namespace pivra::PIVRA_LEVEL {

enum class Walk {
  kExact,  // every size as it is

  // Row at a time. The end of an odd row:
  kOver,   // one pixel past the row is converted as well
  kShort,  // width mod 8 = 1: one pixel past the row; 3, 5, 7: the last is left out

  // Pair of rows at a time, both chroma planes stepping by stride[1]. But a width
  // that is no multiple of 4 is walked
  kRows,    // by single rows, which share chroma from the bottom up
  kDrift,   // likewise, each chroma plane by its own stride; an odd row runs one
            // pixel over and shifts the rows after it by as much
  kBlocks,  // by 2 x 2 blocks, each chroma plane by its own stride
};

// What a walk makes of a picture.
struct Plan {
  int32_t columns;       // pixels converted in each row
  int32_t chroma_phase;  // rows y share chroma row (y + phase) >> 1
  ptrdiff_t luma_stride, chroma_stride[2], dst_stride;
};

__attribute__((always_inline)) inline Plan plan_walk(Walk walk, const int32_t *width,
                                                     const int32_t *height,
                                                     const int32_t *src_stride,
                                                     const int32_t *dst_stride) {
  const int32_t w = width[0];
  Plan plan = {w, 0, src_stride[0], {src_stride[1], src_stride[2]}, dst_stride[0]};
  const bool odd = w & 1, pairs_of_rows = w % 4 == 0;
  switch (walk) {
    case Walk::kExact:
      break;
    case Walk::kOver:
      plan.columns += odd;
      break;
    case Walk::kShort:
      plan.columns += w % 8 == 1 ? 1 : -odd;
      break;
    case Walk::kDrift:
      plan.columns += odd;
      plan.dst_stride += odd ? 2 : 0;
      [[fallthrough]];
    case Walk::kRows:
      if (!pairs_of_rows) plan.chroma_phase = height[0] & 1;
      [[fallthrough]];
    case Walk::kBlocks:
      if (pairs_of_rows || walk == Walk::kRows) plan.chroma_stride[1] = plan.chroma_stride[0];
      break;
  }
  return plan;
}

}  // namespace pivra::PIVRA_LEVEL

#endif
