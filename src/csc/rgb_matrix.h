// The RGB to YUV matrix: ITU-R BT.601, video range, 8-bit fixed point.
//
//   Y = 16  + (( 66 R + 129 G +  25 B      ) >> 8)
//   U = 128 + ((-38 R -  74 G + 112 B + 128) >> 8)
//   V = 128 + ((112 R -  94 G -  18 B + 128) >> 8)
//
// The constant in front goes into the sum as a multiple of 256. Then the sum of Y
// lies between 4096 and 60196 and those of U and V between 4336 and 61456: none is
// negative, each fits 16 unsigned bits, and the sample is the upper byte. So sums
// may be worked out modulo 65536, whatever the steps on the way leave that range.
#ifndef PIVRA_CSC_RGB_MATRIX_H
#define PIVRA_CSC_RGB_MATRIX_H

#include <stdint.h>

namespace pivra::PIVRA_LEVEL {

struct MatrixRow {
  int32_t r, g, b, offset;
};

constexpr MatrixRow kLuma = {66, 129, 25, 16 * 256};
constexpr MatrixRow kCb = {-38, -74, 112, 128 * 256 + 128};
constexpr MatrixRow kCr = {112, -94, -18, 128 * 256 + 128};

}  // namespace pivra::PIVRA_LEVEL

#endif
