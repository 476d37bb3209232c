// Rows of which only the first units of every few are kept, at one
// instruction-set level.
#ifndef PIVRA_TXC_FIXED_RATIO_H
#define PIVRA_TXC_FIXED_RATIO_H

#include <stddef.h>
#include <stdint.h>

#include "core/levels.h"

namespace pivra {

// Writes a row of `bytes` bytes, a multiple of the bytes that are kept together. Of
// the source whole groups are read, also the last one.
typedef void keep_units(const uint8_t *src, ptrdiff_t bytes, uint8_t *dst);

// For units of one byte and of two.
struct FixedRatio {
  keep_units *one_of_two[2], *two_of_three[2], *three_of_four[2];
};

PIVRA_TABLES(FixedRatio, fixed_ratio)

}  // namespace pivra

#endif
