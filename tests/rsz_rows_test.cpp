// The rows of the resizers, strip by strip, at every level and as scalar code.
#include <gtest/gtest.h>

#include "compare.h"
#include "resize_model.h"

namespace pivra::test {
namespace {

const std::string kNames[kShapes] = {"8b", "8b8b", "5b6b5b", "8b8b8b", "8b8b8b8b"};
using Row = std::vector<uint8_t>;

Row random_row(ptrdiff_t bytes) { return random_bytes(static_cast<size_t>(bytes)); }

// Samples of the rows one behind the other, `below` bytes apart.
Row model(Shape shape, const Row &rows, const Taps &columns, const Tap &row, ptrdiff_t below) {
  ResizeModel m = {kNames[shape], "", false, 1, 1, 1, 1, 1, 1};
  m.in.bytes = rows;
  m.to_rows(columns, rows_at({row}, below / m.unit), m.samples());
  return m.out.bytes;
}
constexpr Tap kOne = {0, 1, 1, 0, 1}, kTwo = {0, 1, 1, 1, 2};

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {
 protected:
  const ResizeRows &rows = GetParam().resize_rows;
};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

// Moves rows strip by strip; the strip's samples and outputs alone are in memory.
template <class Walk, class Move>
Row by_strips(const ResizeRows &rows, Shape shape, Walk walk, const Row &top, const Row &bottom,
              Move move) {
  const ptrdiff_t bytes = kSampleBytes[shape];
  const bool at_end = random_in(0, 1);
  GuardedPlane upper, lower, out;
  Row row;
  Strip strip;
  while (walk.next(strip)) {
    rows.plan[shape](strip);
    const auto samples = [&](const Row &from) {
      const auto first = from.begin() + strip.source * bytes;
      return Row(first, first + strip.samples * bytes);
    };
    out.place(random_row(strip.count * bytes), at_end);
    move(strip, upper.place(samples(top), at_end), lower.place(samples(bottom), at_end),
         out.data());
    const Row made = out.content();
    row.insert(row.end(), made.begin(), made.end());
  }
  return row;
}

// Sizes around a block and around a strip, of ratios around small ones and of any.
std::pair<int32_t, int32_t> random_ratio() {
  const int32_t smaller = random_in(0, 2) ? random_in(1, 160) : random_in(1, 2100);
  const int32_t most = std::max(1, std::min(40, 20000 / smaller));
  switch (random_in(0, 2)) {
    case 0:
      return {smaller * random_in(1, most), smaller};
    case 1:
      return {smaller * random_in(4, 17) / 4, smaller};
    default:
      return {random_in(smaller, smaller * most), smaller};
  }
}

TEST_P(EveryLevel, ShrinksRows) {
  for (int round = 0; round < 1200; ++round) {
    const auto shape = static_cast<Shape>(round % kShapes);
    const auto [sw, dw] = random_ratio();
    const int32_t q = sw / dw, r = sw % dw, bytes = sw * kSampleBytes[shape];
    const bool always = r == 0 && q > 1, two = random_in(0, 1);
    const Row both = random_row(2 * bytes), top(both.begin(), both.begin() + bytes),
              bottom(both.begin() + bytes, both.end());
    const Row made =
        by_strips(rows, shape, ShrinkWalk(dw, q, r, always, strip_outputs(shape)), top, bottom,
                  [&](const Strip &strip, uint8_t *upper, uint8_t *lower, uint8_t *dst) {
                    rows.shrink[shape](strip, upper, two ? lower : nullptr, dst);
                  });
    ASSERT_EQ(made, model(shape, both, shrink(dw, q, r, always), two ? kTwo : kOne, bytes))
        << kNames[shape] << ", " << sw << " to " << dw << (two ? ", two rows" : "");
  }
}

// Also by ratios whose weights wrap or whose divisors are large; and to more outputs than
// the samples give.
TEST_P(EveryLevel, GrowsRows) {
  for (int round = 0; round < 1500; ++round) {
    const auto shape = static_cast<Shape>(round % kShapes);
    const bool ramp = random_in(0, 1);
    auto [dw, sw] = random_ratio();
    int32_t u = dw / sw, r = dw % sw;
    if (round % 6 == 0) sw = random_in(1, 5), u = random_in(40, 1000), r = random_in(0, sw - 1);
    if (round % 6 == 0) dw = sw * u + r;
    if (round % 6 == 1) sw = random_in(5, 100), u = 2, r = random_in(0, 4), dw = 5 * sw;
    const Row src = random_row(sw * kSampleBytes[shape]);
    const Row made =
        by_strips(rows, shape, GrowWalk(dw, sw, u, r, ramp, strip_outputs(shape)), src, src,
                  [&](const Strip &strip, uint8_t *upper, uint8_t *, uint8_t *dst) {
                    rows.grow[shape](strip, upper, dst);
                  });
    ASSERT_EQ(made, model(shape, src, grow(dw, sw, uint32_t(u), r, ramp), kOne, 0))
        << kNames[shape] << ", " << sw << " to " << dw << (ramp ? ", ramp" : "");
  }
}

// Several rows at once are those rows one by one.
TEST_P(EveryLevel, ResizesRowsMadeAlike) {
  GuardedPlane src, dst;
  Strip strip;
  for (int round = 0; round < 200; ++round) {
    const auto shape = static_cast<Shape>(random_in(0, kShapes - 1));
    const int32_t bytes = kSampleBytes[shape], count = random_in(1, 4), ratio = random_in(1, 3);
    const bool grows = random_in(0, 1), two = !grows && random_in(0, 1);
    const int32_t dw = random_in(ratio, strip_outputs(shape));
    if (grows)
      GrowWalk(dw, dw / ratio, ratio, dw % ratio, false, strip_outputs(shape)).next(strip);
    else
      ShrinkWalk(dw, ratio, 0, ratio > 1, strip_outputs(shape)).next(strip);
    rows.plan[shape](strip);
    const int32_t from = strip.samples * bytes + random_in(0, 9), to = dw * bytes + random_in(0, 9);
    const int32_t step = two ? 2 * from : from;
    src.place(random_row((count - 1) * step + two * from + strip.samples * bytes), true);
    Row expected = random_row((count - 1) * to + dw * bytes);
    dst.place(expected, true);
    for (int32_t row = 0; row < count; ++row) {
      const uint8_t *line = src.data() + row * step;
      if (grows)
        rows.grow[shape](strip, line, expected.data() + row * to);
      else
        rows.shrink[shape](strip, line, two ? line + from : nullptr, expected.data() + row * to);
    }
    if (grows)
      rows.grow_rows[shape](strip, src.data(), step, count, dst.data(), to);
    else
      rows.shrink_rows[shape](strip, src.data(), two ? from : 0, step, count, dst.data(), to);
    ASSERT_EQ(dst.content(), expected) << kNames[shape] << ", " << ratio << " to " << dw;
  }
}

TEST_P(EveryLevel, MixesRows) {
  GuardedPlane a, b, out;
  for (int round = 0; round < 800; ++round) {
    const Shape shape = round % 2 ? k5b6b5b : k8b;
    const Fields fields = fields_of(shape);
    const int32_t samples = random_in(0, 3) ? random_in(0, 200) : random_in(0, 3000),
                  bytes = samples * kSampleBytes[shape];
    const int32_t u = random_in(0, 3) ? random_in(1, 20) : random_in(1, 255),
                  phase = random_in(0, u);
    const bool in_place = random_in(0, 1), mean = random_in(0, 1), at_end = random_in(0, 1);
    Tap tap = grow(phase + 1, 2, uint32_t(u), random_in(1, 2), random_in(0, 1)).back();
    if (mean) tap = kTwo;
    tap.c = 0, tap.n = 1;

    const Row both = random_row(2 * bytes);
    a.place({both.begin(), both.begin() + bytes}, at_end);
    b.place({both.begin() + bytes, both.end()}, at_end);
    out.place(random_row(bytes), at_end);
    GuardedPlane &to = in_place ? a : out;
    if (mean)
      rows.mean[fields](a.data(), b.data(), bytes, to.data());
    else
      rows.mix[fields](a.data(), b.data(), make_mix(tap.weight_c, tap.weight_n, tap.divisor), bytes,
                       to.data());
    ASSERT_EQ(to.content(), model(shape, both, each(samples), tap, bytes)) << tap.divisor;
  }
}

}  // namespace
}  // namespace pivra::test
