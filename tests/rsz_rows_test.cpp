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
  m.unit = 1;
  m.in.bytes = rows;
  m.to_rows(columns, rows_at({row}, below), m.samples());
  return m.out.bytes;
}
constexpr Tap kOne = {0, 1, 1, 0, 1}, kTwo = {0, 1, 1, 1, 2};

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {
 protected:
  const ResizeRows &rows = GetParam().resize_rows;
};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

// Sizes around a block and around a strip, of ratios around small ones and of any.
std::pair<int32_t, int32_t> random_ratio() {
  const int32_t smaller = random_in(0, 2) ? random_in(1, 160) : random_in(1, 2100);
  const int32_t most = std::max(1, std::min(40, 20000 / smaller));
  const std::array larger = {smaller * random_in(1, most), smaller * random_in(4, 17) / 4,
                             random_in(smaller, smaller * most)};
  return {larger[static_cast<size_t>(random_in(0, 2))], smaller};
}

// Also by ratios whose weights wrap or whose divisors are large, and to more outputs than
// the samples give. A single row, or several that are made alike, each of one or of two;
// the strip's samples and outputs alone are in memory.
TEST_P(EveryLevel, ResizesRowsStripByStrip) {
  GuardedPlane src, dst;
  Strip strip;
  for (int round = 0; round < 3000 && !HasFatalFailure(); ++round) {
    const auto shape = static_cast<Shape>(round % kShapes);
    const bool ramp = random_in(0, 1), grows = random_in(0, 1), two = !grows && random_in(0, 1);
    auto [more, few] = random_ratio();
    int32_t q = more / few, r = more % few;
    if (grows && round % 6 == 0) {
      few = random_in(1, 5), q = random_in(40, 1000), r = random_in(0, few - 1);
      more = few * q + r;
    }
    if (grows && round % 6 == 1)
      few = random_in(5, 100), q = 2, r = random_in(0, 4), more = 5 * few;
    const bool single = random_in(0, 9) != 0, always = r == 0 && q > 1, at_end = random_in(0, 1);
    const int32_t bytes = kSampleBytes[shape], count = single ? 1 : random_in(1, 4);
    const int32_t samples = grows ? few : more, outputs = grows ? more : few;
    const int32_t below = samples * bytes + random_in(0, 9), step = two ? 2 * below : below;
    const int32_t pitch = outputs * bytes + random_in(0, 9);
    const Row lines = random_row((count - 1) * step + two * below + samples * bytes);
    const Taps columns = grows ? grow(outputs, samples, static_cast<uint32_t>(q), r, ramp)
                               : shrink(outputs, q, r, always);
    std::vector<Row> expected;
    for (int32_t row = 0; row < count; ++row)
      expected.push_back(model(shape, {lines.begin() + row * step, lines.end()}, columns,
                               two ? kTwo : kOne, below));

    const auto resize = [&](auto walk) {
      while (walk.next(strip)) {
        rows.plan[shape](strip);
        const ptrdiff_t first = strip.source * bytes,
                        last = (samples - strip.source - strip.samples) * bytes;
        uint8_t *const from = src.place({lines.begin() + first, lines.end() - last}, at_end);
        Row made = noise(static_cast<size_t>((count - 1) * pitch + strip.count * bytes));
        uint8_t *const to = dst.place(made, at_end);
        if (single && grows)
          rows.grow[shape](strip, from, to);
        else if (single)
          rows.shrink[shape](strip, from, two ? from + below : nullptr, to);
        else if (grows)
          rows.grow_rows[shape](strip, from, step, count, to, pitch);
        else
          rows.shrink_rows[shape](strip, from, two ? below : 0, step, count, to, pitch);
        for (int32_t row = 0; row < count; ++row)
          std::copy_n(expected[static_cast<size_t>(row)].begin() + strip.first * bytes,
                      strip.count * bytes, made.begin() + row * pitch);
        ASSERT_EQ(dst.content(), made)
            << kNames[shape] << ", " << samples << " to " << outputs << ", " << count
            << (single ? " row" : " rows") << (two ? " of two" : "") << (ramp ? ", ramp" : "");
      }
    };
    if (grows)
      resize(GrowWalk(outputs, samples, q, r, ramp, strip_outputs(shape)));
    else
      resize(ShrinkWalk(outputs, q, r, always, strip_outputs(shape)));
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
