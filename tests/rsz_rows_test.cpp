#include <gtest/gtest.h>

#include <numeric>

#include "guarded.h"
#include "levels.h"

namespace pivra::test {
namespace {

// --- The rule, told literally ---

// An output is the first sample, or so much of it and of the one behind it.
struct Output {
  int64_t at;
  uint32_t c, n, divisor;
};

std::vector<Output> shrunk(int32_t outputs, int32_t quotient, int32_t remainder) {
  std::vector<Output> made;
  int64_t at = 0, accumulator = 0;
  for (int32_t i = 0; i < outputs; ++i) {
    const bool integer = remainder == 0 && quotient > 1;
    accumulator += remainder;
    const bool carry = accumulator >= outputs;
    made.push_back({at, 1, carry || integer, 1u + (carry || integer)});
    if (carry) accumulator -= outputs, ++at;
    at += quotient;
  }
  return made;
}

// The divisor 64 stands for a shift by 6 of a sum that wraps at 2^32.
std::vector<Output> grown(int32_t outputs, int32_t samples, int32_t u, int32_t remainder,
                          bool ramp) {
  const std::array<uint32_t, 34> steps = {0, 0, 32, 21, 16, 13, 11, 9, 8, 7, 6, 6, 5, 5, 4, 4, 4,
                                          3, 3, 3,  3,  3,  3,  2,  2, 2, 2, 2, 2, 2, 2, 2, 2, 1};
  std::vector<Output> made;
  int64_t accumulator = 0;
  for (int32_t i = 0; made.size() < static_cast<size_t>(outputs); ++i) {
    made.push_back({std::min(i, samples - 1), 1, 0, 1});
    if (i >= samples - 1) continue;
    accumulator += remainder;
    const bool carry = accumulator >= samples;
    const auto k = static_cast<uint32_t>(u - 1 + carry), extra = static_cast<uint32_t>(u);
    const uint32_t w = steps[std::min(k + 1, 33u)];
    for (uint32_t m = 1; m < extra; ++m)
      made.push_back(ramp ? Output{i, 64 - m * w, m * w, 64} : Output{i, k, 1, k + 1});
    if (carry) {
      const uint32_t weight = u > 1 ? extra * w : 32;
      made.push_back(ramp ? Output{i, 64 - weight, weight, 64} : Output{i, 1, extra, extra + 1});
      accumulator -= samples;
    }
  }
  made.resize(static_cast<size_t>(outputs));
  return made;
}

uint32_t mixed(const Output &o, uint32_t c, uint32_t n) { return (c * o.c + n * o.n) / o.divisor; }

typedef std::vector<uint8_t> Row;

// `fields` of the samples at an output, of each row, put together by `rule`.
template <class Rule>
Row by_fields(Shape shape, const std::vector<Output> &outputs, Rule rule) {
  const auto bytes = static_cast<size_t>(kSampleBytes[shape]);
  Row row(outputs.size() * bytes);
  for (size_t i = 0; i < outputs.size(); ++i) {
    const auto c = static_cast<size_t>(outputs[i].at) * bytes, n = c + bytes;
    if (shape == k5b6b5b) {
      uint32_t word = 0;
      for (const auto &[shift, mask] : {std::pair{11, 31}, {5, 63}, {0, 31}})
        word |= (rule(outputs[i],
                      [=, shift = shift, mask = mask](const Row &from, bool next) {
                        const size_t at = next ? n : c;
                        return static_cast<uint32_t>((from.at(at) | from.at(at + 1) << 8) >> shift &
                                                     mask);
                      }) &
                 static_cast<uint32_t>(mask))
                << shift;
      row[2 * i] = static_cast<uint8_t>(word);
      row[2 * i + 1] = static_cast<uint8_t>(word >> 8);
    } else {
      for (size_t b = 0; b < bytes; ++b)
        row[bytes * i + b] =
            static_cast<uint8_t>(rule(outputs[i], [=](const Row &from, bool next) -> uint32_t {
              return from.at((next ? n : c) + b);
            }));
    }
  }
  return row;
}

Row model_shrink(Shape shape, const std::vector<Output> &outputs, const Row &top,
                 const Row *bottom) {
  return by_fields(shape, outputs, [&](const Output &o, auto field) {
    uint32_t sum = field(top, false), count = 1;
    if (o.n != 0) sum += field(top, true), ++count;
    if (bottom != nullptr) {
      sum += field(*bottom, false), ++count;
      if (o.n != 0) sum += field(*bottom, true), ++count;
    }
    return sum / count;
  });
}

Row model_grow(Shape shape, const std::vector<Output> &outputs, const Row &src) {
  return by_fields(shape, outputs, [&](const Output &o, auto field) {
    return mixed(o, field(src, false), o.n != 0 ? field(src, true) : 0);
  });
}

// --- The engine against it ---

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

// Moves a row strip by strip; the strip's samples and outputs alone are in memory.
template <class Walk, class Move>
Row by_strips(const ResizeRows &rows, Shape shape, Walk walk, size_t outputs, Move move) {
  const auto bytes = static_cast<ptrdiff_t>(kSampleBytes[shape]);
  Row row(outputs * static_cast<size_t>(bytes));
  GuardedPlane out;
  Strip strip;
  while (walk.next(strip)) {
    rows.plan[shape](strip);
    out.place(random_bytes(static_cast<size_t>(strip.count * bytes)), random_in(0, 1));
    move(strip, strip.source * bytes, (strip.source + strip.samples) * bytes, out.data());
    const Row made = out.content();
    std::copy(made.begin(), made.end(), row.begin() + strip.first * bytes);
  }
  return row;
}

Row slice(const Row &row, ptrdiff_t from, ptrdiff_t to) {
  return {row.begin() + from, row.begin() + to};
}

// Sizes around a block and around a strip, of ratios around small ones and of any.
struct Ratio {
  int32_t larger, smaller;
};
Ratio random_ratio() {
  const int32_t smaller = random_in(0, 2) ? random_in(1, 160) : random_in(1, 2100);
  const int32_t most = std::min(40, 20000 / smaller);
  switch (random_in(0, 2)) {
    case 0:
      return {smaller * random_in(1, std::max(1, most)), smaller};
    case 1:
      return {smaller * random_in(4, 17) / 4, smaller};
    default:
      return {random_in(smaller, smaller * std::max(1, most)), smaller};
  }
}

TEST_P(EveryLevel, ShrinksRows) {
  const ResizeRows &rows = GetParam().resize_rows;
  GuardedPlane top, bottom;
  for (int round = 0; round < 600; ++round) {
    const auto shape = static_cast<Shape>(round % kShapes);
    const auto [sw, dw] = random_ratio();
    const int32_t q = sw / dw, r = sw % dw;
    const std::vector<Output> outputs = shrunk(dw, q, r);
    const auto bytes = static_cast<size_t>(sw * kSampleBytes[shape]);
    const Row above = random_bytes(bytes), below = random_bytes(bytes);
    for (const bool both : {false, true}) {
      const Row made = by_strips(
          rows, shape, ShrinkWalk(dw, q, r, r == 0 && q > 1, strip_outputs(shape)), outputs.size(),
          [&](const Strip &strip, ptrdiff_t from, ptrdiff_t to, uint8_t *dst) {
            top.place(slice(above, from, to), round % 2);
            bottom.place(slice(below, from, to), round % 2);
            rows.shrink[shape](strip, top.data(), both ? bottom.data() : nullptr, dst);
          });
      ASSERT_EQ(made, model_shrink(shape, outputs, above, both ? &below : nullptr))
          << "shape " << shape << ", " << sw << " to " << dw << (both ? ", two rows" : "");
    }
  }
}

// Several rows at once are those rows one by one.
TEST_P(EveryLevel, ResizesRowsMadeAlike) {
  const ResizeRows &rows = GetParam().resize_rows;
  GuardedPlane src, dst;
  Strip strip;
  for (int round = 0; round < 200; ++round) {
    const auto shape = static_cast<Shape>(random_in(0, kShapes - 1));
    const int32_t bytes = kSampleBytes[shape], count = random_in(1, 4), ratio = random_in(1, 3);
    const bool grows = random_in(0, 1), two = random_in(0, 1);
    const int32_t dw = random_in(ratio, strip_outputs(shape));
    if (grows)
      GrowWalk(dw, dw / ratio, ratio, dw % ratio, false, strip_outputs(shape)).next(strip);
    else
      ShrinkWalk(dw, ratio, 0, ratio > 1, strip_outputs(shape)).next(strip);
    rows.plan[shape](strip);
    const int32_t from = strip.samples * bytes + random_in(0, 9), to = dw * bytes + random_in(0, 9);
    const int32_t lines = grows || !two ? count : 2 * count;
    src.place(random_bytes(static_cast<size_t>((lines - 1) * from + strip.samples * bytes)), true);
    Row expected = random_bytes(static_cast<size_t>((count - 1) * to + dw * bytes));
    dst.place(expected, true);
    for (int32_t row = 0; row < count; ++row) {
      const uint8_t *line = src.data() + row * (lines / count) * from;
      if (grows)
        rows.grow[shape](strip, line, expected.data() + row * to);
      else
        rows.shrink[shape](strip, line, two ? line + from : nullptr, expected.data() + row * to);
    }
    if (grows)
      rows.grow_rows[shape](strip, src.data(), from, count, dst.data(), to);
    else
      rows.shrink_rows[shape](strip, src.data(), two ? from : 0, lines / count * from, count,
                              dst.data(), to);
    ASSERT_EQ(dst.content(), expected) << "shape " << shape << ", " << ratio << " to " << dw;
  }
}

void expect_growth(const ResizeRows &rows, Shape shape, int32_t sw, int32_t dw, int32_t u,
                   int32_t r, bool ramp) {
  GuardedPlane memory;
  const std::vector<Output> outputs = grown(dw, sw, u, r, ramp);
  const Row src = random_bytes(static_cast<size_t>(sw * kSampleBytes[shape]));
  const bool at_end = random_in(0, 1);
  const Row made =
      by_strips(rows, shape, GrowWalk(dw, sw, u, r, ramp, strip_outputs(shape)), outputs.size(),
                [&](const Strip &strip, ptrdiff_t from, ptrdiff_t to, uint8_t *dst) {
                  rows.grow[shape](strip, memory.place(slice(src, from, to), at_end), dst);
                });
  ASSERT_EQ(made, model_grow(shape, outputs, src))
      << "shape " << shape << ", " << sw << " to " << dw << (ramp ? ", ramp" : "");
}

TEST_P(EveryLevel, GrowsRows) {
  for (int round = 0; round < 1000 && !HasFatalFailure(); ++round) {
    const auto shape = static_cast<Shape>(round % kShapes);
    const auto [dw, sw] = random_ratio();
    expect_growth(GetParam().resize_rows, shape, sw, dw, dw / sw, dw % sw, random_in(0, 1));
  }
}

// Ratios whose weights wrap or whose divisors are large; and more outputs than the
// samples give.
TEST_P(EveryLevel, GrowsRowsFarAndBeyondTheirEnd) {
  for (int round = 0; round < 60 && !HasFatalFailure(); ++round) {
    const auto shape = static_cast<Shape>(round % kShapes);
    const int32_t sw = random_in(1, 5), u = random_in(40, 1000);
    const int32_t r = random_in(0, sw - 1);
    for (const bool ramp : {false, true}) {
      expect_growth(GetParam().resize_rows, shape, sw, sw * u + r, u, r, ramp);
      expect_growth(GetParam().resize_rows, shape, 20 * sw, 100 * sw, 2, r, ramp);
    }
  }
}

TEST_P(EveryLevel, MixesRows) {
  const ResizeRows &rows = GetParam().resize_rows;
  GuardedPlane a, b, out;
  for (int round = 0; round < 400; ++round) {
    const Shape shape = round % 2 ? k5b6b5b : k8b;
    const Fields fields = fields_of(shape);
    const size_t samples =
        static_cast<size_t>(random_in(0, 3) ? random_in(0, 200) : random_in(0, 3000));
    const size_t bytes = samples * static_cast<size_t>(kSampleBytes[shape]);
    const auto count = static_cast<ptrdiff_t>(bytes);
    const bool ramp = random_in(0, 1);
    const int32_t u = random_in(0, 3) ? random_in(1, 20) : random_in(1, 255),
                  phase = random_in(0, u);
    const Output weights =
        grown(phase + 1, 2, u, random_in(1, 2), ramp)[static_cast<size_t>(phase)];
    const bool in_place = random_in(0, 1);

    Row c = random_bytes(bytes), n = random_bytes(bytes);
    a.place(c, round % 3 == 0);
    b.place(n, round % 3 == 0);
    out.place(random_bytes(bytes), round % 3 == 0);
    c.insert(c.end(), n.begin(), n.end());  // in one row, one behind the other
    const auto of_both = [&](const Output &o) {
      std::vector<Output> outputs(samples, o);
      Row row;
      for (size_t i = 0; i < samples; ++i) {
        Row two;
        const auto size = static_cast<size_t>(kSampleBytes[shape]);
        for (const size_t from : {i * size, bytes + i * size})
          two.insert(two.end(), c.begin() + static_cast<ptrdiff_t>(from),
                     c.begin() + static_cast<ptrdiff_t>(from + size));
        const Row one = model_grow(shape, {{0, o.c, o.n, o.divisor}}, two);
        row.insert(row.end(), one.begin(), one.end());
      }
      return row;
    };
    GuardedPlane &to = in_place ? a : out;
    rows.mix[fields](a.data(), b.data(), make_mix(weights.c, weights.n, weights.divisor), count,
                     to.data());
    ASSERT_EQ(to.content(), of_both(weights)) << weights.divisor;
    a.place({c.begin(), c.begin() + count}, round % 3 == 0);
    rows.mean[fields](a.data(), b.data(), count, to.data());
    ASSERT_EQ(to.content(), of_both({0, 1, 1, 2}));
  }
}

}  // namespace
}  // namespace pivra::test
