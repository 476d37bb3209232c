// The row engine for samples of one shape, as passes see it: strips of a row that
// resize along an axis.
#ifndef PIVRA_RSZ_ENGINE_H
#define PIVRA_RSZ_ENGINE_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "rsz/axis.h"
#include "rsz/rows.h"

namespace pivra {

// What rows of a shape are resized by.
class Engine {
 public:
  explicit Engine(Shape shape)
      : bytes(kSampleBytes[shape]),
        limit(strip_outputs(shape)),
        shape_(shape),
        rows_(chosen(resize_rows_tables)) {}

  const ptrdiff_t bytes;  // of a sample
  const int32_t limit;    // outputs of a strip

  // Once for a strip of a walk, before its rows.
  void plan(Strip &strip) const { rows_.plan[shape_](strip); }

  bool next(AxisWalk &walk, Strip &strip) const {
    if (!walk.next(strip)) return false;
    plan(strip);
    return true;
  }

  // Sources are taken from the first sample of the strip on.

  void resize(const Axis &axis, const Strip &strip, const uint8_t *src, uint8_t *dst) const {
    if (axis.copies())
      memcpy(dst, src, static_cast<size_t>(strip.count * bytes));
    else if (axis.grows())
      rows_.grow[shape_](strip, src, dst);
    else
      shrink(strip, src, nullptr, dst);
  }

  void shrink(const Strip &strip, const uint8_t *top, const uint8_t *bottom, uint8_t *dst) const {
    rows_.shrink[shape_](strip, top, bottom, dst);
  }

  // Whole rows.
  void mix(const uint8_t *upper, const uint8_t *lower, const Mix &weights, ptrdiff_t count,
           uint8_t *dst) const {
    rows_.mix[fields_of(shape_)](upper, lower, weights, count * bytes, dst);
  }

 private:
  Shape shape_;
  const ResizeRows &rows_;
};

}  // namespace pivra

#endif
