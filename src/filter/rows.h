// Rows of samples as the filters process them, at one instruction-set level.
#ifndef PIVRA_FILTER_ROWS_H
#define PIVRA_FILTER_ROWS_H

#include <stddef.h>
#include <stdint.h>

#include "core/levels.h"

namespace pivra {

// A row of `count` bytes each; none if that is 0 or less. Rows do not overlap,
// unless it says so.
struct FilterRows {
  // Each byte through a table of 256; dst may be src.
  void (*look_up)(const uint8_t *table, const uint8_t *src, ptrdiff_t count, uint8_t *dst);
  // `height` rows of samples that have two more on each side, in rows and columns. Both
  // planes have the same stride.
  void (*sharpen)(const uint8_t *src, ptrdiff_t stride, ptrdiff_t count, ptrdiff_t height,
                  uint8_t *dst);
  // Every third byte of a, from the first on, the others of b.
  void (*merge_triples)(const uint8_t *a, const uint8_t *b, ptrdiff_t count, uint8_t *dst);
};

PIVRA_TABLES(FilterRows, filter_rows)

}  // namespace pivra

#endif
