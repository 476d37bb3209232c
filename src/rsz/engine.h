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

// A plane that is read; the stride is bytes.
struct Source {
  const uint8_t *first;
  ptrdiff_t stride;
};

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

  // The next strip of a walk, or its whole row, ready to be moved by.
  template <class AnyWalk>
  bool next(AnyWalk &walk, Strip &strip) const {
    if (!walk.next(strip)) return false;
    plan(strip);
    return true;
  }
  template <class AnyWalk>
  bool next(AnyWalk &walk, Row &row, bool whole) const {
    row.repeats = 1;
    row.advance = 0;
    row.tail.count = 0;
    if (!(whole ? walk.next(row) : walk.next(row.body))) return false;
    plan(row.body);
    if (row.tail.count > 0) plan(row.tail);
    return true;
  }
  void plan(Strip &strip) const { rows_.plan[shape_](strip); }

  // Sources are taken from the first sample of the strip or row on.

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

  // Of a row the strips that are alike are lines behind one another.

  void resize(const Axis &axis, const Row &row, const uint8_t *src, uint8_t *dst) const {
    if (axis.copies()) {
      memcpy(dst, src, static_cast<size_t>(row.count() * bytes));
    } else if (axis.grows()) {
      rows_.grow_rows[shape_](row.body, src, row.advance * bytes, row.repeats, dst,
                              row.body.count * bytes);
      if (row.tail.count > 0)
        resize(axis, row.tail, src + tail_source(row), dst + row.tail.first * bytes);
    } else {
      shrink(row, src, 0, dst);
    }
  }
  // With the line so far below it, unless that is 0.
  void shrink(const Row &row, const uint8_t *top, ptrdiff_t below, uint8_t *dst) const {
    rows_.shrink_rows[shape_](row.body, top, below, row.advance * bytes, row.repeats, dst,
                              row.body.count * bytes);
    if (row.tail.count == 0) return;
    top += tail_source(row);
    shrink(row.tail, top, below == 0 ? nullptr : top + below, dst + row.tail.first * bytes);
  }

  // Lines that are all made alike.

  void resize_lines(const Axis &axis, const Row &row, Source src, int32_t lines, uint8_t *dst,
                    ptrdiff_t dst_stride) const {
    if (axis.grows() && !axis.copies() && is_strip(row))
      rows_.grow_rows[shape_](row.body, src.first, src.stride, lines, dst, dst_stride);
    else
      for (ptrdiff_t line = 0; line < lines; ++line)
        resize(axis, row, src.first + line * src.stride, dst + line * dst_stride);
  }
  void shrink_lines(const Row &row, Source top, ptrdiff_t below, int32_t lines, uint8_t *dst,
                    ptrdiff_t dst_stride) const {
    if (is_strip(row))
      rows_.shrink_rows[shape_](row.body, top.first, below, top.stride, lines, dst, dst_stride);
    else
      for (ptrdiff_t line = 0; line < lines; ++line)
        shrink(row, top.first + line * top.stride, below, dst + line * dst_stride);
  }

  // Whole rows.
  void mix(const uint8_t *upper, const uint8_t *lower, const Mix &weights, ptrdiff_t count,
           uint8_t *dst) const {
    rows_.mix[fields_of(shape_)](upper, lower, weights, count * bytes, dst);
  }

 private:
  static bool is_strip(const Row &row) { return row.count() == row.body.count; }
  ptrdiff_t tail_source(const Row &row) const {
    return (row.tail.source - row.body.source) * bytes;
  }

  Shape shape_;
  const ResizeRows &rows_;
};

}  // namespace pivra

#endif
