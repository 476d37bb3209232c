// Rows resized along a strip of a walk, and whole rows made of two, at one
// instruction-set level.
#ifndef PIVRA_RSZ_ROWS_H
#define PIVRA_RSZ_ROWS_H

#include <stddef.h>
#include <stdint.h>

#include "core/levels.h"
#include "rsz/shape.h"
#include "rsz/walk.h"

namespace pivra {

// Sources are read from the first sample of the strip to its last one and nowhere
// else; destinations are written from its first output to its last one. They do not
// overlap, at any alignment.
struct ResizeRows {
  // Once for a strip out of a walk, before its rows.
  void (*plan[kShapes])(Strip &strip);
  // Every output the mean of its one sample or two and, unless `bottom` is null, of
  // those under them: truncated once, whether two or four.
  void (*shrink[kShapes])(const Strip &strip, const uint8_t *top, const uint8_t *bottom,
                          uint8_t *dst);
  // Every output its sample, or mixed out of that and the next one.
  void (*grow[kShapes])(const Strip &strip, const uint8_t *src, uint8_t *dst);

  // The same for several rows that are all made alike: those under the top ones lie
  // `below` bytes further, unless that is 0.
  void (*shrink_rows[kShapes])(const Strip &strip, const uint8_t *top, ptrdiff_t below,
                               ptrdiff_t src_step, int32_t rows, uint8_t *dst, ptrdiff_t dst_step);
  void (*grow_rows[kShapes])(const Strip &strip, const uint8_t *src, ptrdiff_t src_step,
                             int32_t rows, uint8_t *dst, ptrdiff_t dst_step);

  // Whole rows, field by field; the count is in bytes, even for 5-6-5 words. Rows may
  // be the same, but do not overlap otherwise. A mix that is a copy or a mean is as
  // fast as that.
  void (*mean[kFields])(const uint8_t *a, const uint8_t *b, ptrdiff_t bytes, uint8_t *dst);
  void (*mix[kFields])(const uint8_t *c, const uint8_t *n, const Mix &mix, ptrdiff_t bytes,
                       uint8_t *dst);

  // Bytes between four samples: mixed along both rows as the strip says, by eighths,
  // then `phase` eighths of the way down.
  void (*bilinear)(const Strip &strip, const uint8_t *top, const uint8_t *bottom, int32_t phase,
                   uint8_t *dst);
};

PIVRA_TABLES(ResizeRows, resize_rows)

}  // namespace pivra

#endif
