// The passes that a resize is made of. Each goes down one strip of columns after
// another, so that a strip is planned once and what lies between two passes stays
// in the cache.
#ifndef PIVRA_RSZ_PASSES_H
#define PIVRA_RSZ_PASSES_H

#include <stddef.h>
#include <stdint.h>

#include "rsz/axis.h"
#include "rsz/engine.h"
#include "rsz/place.h"
#include "rsz/shape.h"

namespace pivra {

// Both directions shrink: line t is made of the row at t x row_step, plus a stride for
// every carry before it, and of the row a stride below that; the quotient of `down` is
// not looked at.
void shrink_both(Shape shape, const Axis &across, const Axis &down, Source src, ptrdiff_t row_step,
                 const Place &place);

// Rows to rows, those of the destination without padding.
void resize_width(Shape shape, const Axis &across, Source src, int32_t rows, uint8_t *dst);

// Columns to lines.
void resize_height(Shape shape, const Axis &down, Source src, const Place &place);

// Both passes, by turns. A scratch that is kept receives all `rows` rows of the source;
// otherwise it is used up to that size.
struct Scratch {
  uint8_t *first;
  bool kept;
};
void resize_both(Shape shape, const Axis &across, const Axis &down, Source src, int32_t rows,
                 Scratch scratch, const Place &place);

}  // namespace pivra

#endif
