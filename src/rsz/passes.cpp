#include "rsz/passes.h"

#include <string.h>

#include "core/bounds.h"
#include "rsz/engine.h"

namespace pivra {
namespace {

// Rows that lie there.
class PlaneRows {
 public:
  PlaneRows(Source src, ptrdiff_t offset) : src_(src), offset_(offset) {}
  const uint8_t *operator()(ptrdiff_t row) const {
    return src_.first + row * src_.stride + offset_;
  }

 private:
  Source src_;
  ptrdiff_t offset_;
};

// Rows of a strip that the first pass makes when the second one asks for them: by rising
// numbers, but for the one before the last.
class MadeRows {
 public:
  MadeRows(const Engine &engine, const Axis &across, const Row &strip, Source src, Scratch scratch,
           int32_t lines_at_once)
      : engine_(engine),
        across_(across),
        strip_(strip),
        src_(src, strip.body.source * engine.bytes),
        kept_(scratch.kept),
        first_(scratch.first + (kept_ ? strip.body.first * engine.bytes : 0)),
        pitch_((kept_ ? across.outputs : strip.count()) * engine.bytes),
        mask_(kept_ ? INT32_MAX : 2 * lines_at_once - 1) {}

  const uint8_t *operator()(ptrdiff_t row) {
    if (!kept_ && row > next_) next_ = row;
    make_until(row);
    return slot(made_ - (next_ - row));
  }

  void make_until(ptrdiff_t row) {
    for (; next_ <= row; ++next_) engine_.resize(across_, strip_, src_(next_), slot(made_++));
  }

 private:
  uint8_t *slot(ptrdiff_t n) const { return first_ + (n & mask_) * pitch_; }

  const Engine &engine_;
  const Axis &across_;
  const Row &strip_;
  PlaneRows src_;
  bool kept_;
  uint8_t *first_;
  ptrdiff_t pitch_, mask_;
  ptrdiff_t next_ = 0, made_ = 0;  // row to make next, and how many were made
};

struct Line {
  const uint8_t *upper, *lower;
  Mix mix;

  bool operator==(const Line &other) const {
    return upper == other.upper && lower == other.lower && mix.c == other.mix.c &&
           mix.n == other.mix.n && mix.factor == other.mix.factor;
  }
};

// Columns x .. x + width - 1 of every line, out of such rows.
template <class Rows>
void make_lines(const Engine &engine, const Axis &down, Rows &rows, const Place &place, ptrdiff_t x,
                ptrdiff_t width) {
  AxisSteps steps(down);
  Line lines[Place::kLines];
  for (int32_t first = 0, count; first < down.outputs; first += count) {
    count = smaller(place.band(), down.outputs - first);
    for (int32_t i = 0; i < count; ++i) {
      const GrowStep step = steps.next();
      const uint8_t *upper = rows(step.at);
      lines[i] = {upper, step.pair ? rows(step.at + 1) : upper, step.mix};
    }
    place.write(first, count, x, width, [&](int32_t i, uint8_t *out, const uint8_t *before) {
      if (i > 0 && lines[i] == lines[i - 1])
        memcpy(out, before, static_cast<size_t>(width * engine.bytes));
      else
        engine.mix(lines[i].upper, lines[i].lower, lines[i].mix, width, out);
    });
  }
}

}  // namespace

void shrink_both(Shape shape, const Axis &across, const Axis &down, Source src, ptrdiff_t row_step,
                 const Place &place) {
  const Engine engine(shape);
  ShrinkWalk walk(across.outputs, across.quotient, across.remainder, across.rule == Axis::kPairs,
                  place.strip(engine.limit));
  Row strip;
  while (engine.next(walk, strip, place.whole_rows())) {
    const uint8_t *columns = src.first + strip.body.source * engine.bytes;
    if (down.rule == Axis::kPairs) {
      place.write_alike(strip.body.first, strip.count(),
                        [&](int32_t first, int32_t count, uint8_t *out, ptrdiff_t stride) {
                          engine.shrink_lines(strip, {columns + first * row_step, row_step},
                                              src.stride, count, out, stride);
                        });
      continue;
    }
    ShrinkSteps steps(down.outputs, 0, down.remainder, false);
    for (int32_t first = 0, count; first < down.outputs; first += count) {
      count = smaller(place.band(), down.outputs - first);
      place.write(first, count, strip.body.first, strip.count(),
                  [&](int32_t line, uint8_t *out, const uint8_t *) {
                    const ShrinkStep step = steps.next();
                    const uint8_t *top = columns + (first + line) * row_step + step.at * src.stride;
                    engine.shrink(strip, top, step.pair ? src.stride : 0, out);
                  });
    }
  }
}

void resize_width(Shape shape, const Axis &across, Source src, int32_t rows, uint8_t *dst) {
  const Engine engine(shape);
  AxisWalk walk(across, engine.limit);
  Row strip;
  while (engine.next(walk, strip, true))
    engine.resize_lines(across, strip, {src.first + strip.body.source * engine.bytes, src.stride},
                        rows, dst + strip.body.first * engine.bytes, across.outputs * engine.bytes);
}

void resize_height(Shape shape, const Axis &down, Source src, const Place &place) {
  const Engine engine(shape);
  const int32_t columns = place.columns(), limit = place.strip(columns);
  for (int32_t x = 0; x < columns; x += limit) {
    PlaneRows rows(src, x * engine.bytes);
    make_lines(engine, down, rows, place, x, smaller(limit, columns - x));
  }
}

void resize_both(Shape shape, const Axis &across, const Axis &down, Source src, int32_t rows,
                 Scratch scratch, const Place &place) {
  if (across.copies() && !scratch.kept) return resize_height(shape, down, src, place);
  const Engine engine(shape);
  AxisWalk walk(across, place.strip(engine.limit));
  Row strip;
  while (engine.next(walk, strip, place.whole_rows())) {
    MadeRows made(engine, across, strip, src, scratch, place.band());
    make_lines(engine, down, made, place, strip.body.first, strip.count());
    if (scratch.kept) made.make_until(rows - 1);
  }
}

}  // namespace pivra
