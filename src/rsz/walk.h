// How the outputs of a resized row, or the rows of a resized picture, are made of
// their sources: worked out from the sizes alone, once for all rows.
//
// Every output is made of one source sample and perhaps the one behind it. A walk
// steps through the outputs by an accumulator of the division's remainder; a strip
// is a piece of the walk, short enough to lie on the stack, by which one row after
// another is moved (rsz/rows.h):
//
//   for (ShrinkWalk walk(dw, q, r, q > 1 && r == 0, strip_outputs(shape)); walk.next(strip);) {
//     rows.plan[shape](strip);
//     for each row: rows.shrink[shape](strip, row + strip.source * bytes, nullptr,
//                                      out + strip.first * bytes);
//   }
//
// Where rows are walked, the steps are used without strips.
#ifndef PIVRA_RSZ_WALK_H
#define PIVRA_RSZ_WALK_H

#include <stddef.h>
#include <stdint.h>

#include "pivra.h"
#include "rsz/shape.h"

namespace pivra {

// The weighted mean of a sample c and the next one n, truncated. Sums are taken
// modulo 65536 and of the quotient the lowest bits are kept: weights of mode 1 may
// pass 64, and then wrap.
//
// Divisors of 16 or less are multiplied, with the weights, to one of 9 to 16: then
// 2^18 / divisor fits 16 bits and does as well, with one shift for all of them.
//
// The functions of it are static: those of a level must not be merged with others.
struct Mix {
  uint16_t c, n;
  uint32_t factor;  // 2^24 / divisor, rounded up: the quotient is (sum * factor) >> 24
};

static inline bool is_copy(const Mix &mix) { return mix.n == 0; }
static inline bool is_mean(const Mix &mix) { return mix.c == mix.n; }
// The divisor is the sum of the weights, unless those have wrapped.
static inline bool is_small(const Mix &mix) { return mix.c + mix.n <= 16; }
static inline bool is_ramp(const Mix &mix) {
  return mix.c + mix.n == 64 && mix.factor == (1 << 24) / 64;
}
static inline uint16_t small_factor(const Mix &mix) {
  return static_cast<uint16_t>((mix.factor + 63) / 64);
}

constexpr Mix make_mix(uint32_t c, uint32_t n, uint32_t divisor) {
  for (; divisor <= 8; divisor *= 2) c *= 2, n *= 2;
  return {static_cast<uint16_t>(c), static_cast<uint16_t>(n), ((1 << 24) + divisor - 1) / divisor};
}
constexpr Mix kCopy = make_mix(1, 0, 1), kMean = make_mix(1, 1, 2);

// Multiplying by the rounded quotient 2^bits / divisor in place of dividing is exact
// for every sum up to 255 divisor: its error stays below 1 / divisor. And the product
// fits 32 bits.
constexpr bool divisors_multiply_exactly(uint64_t first, uint64_t last, int bits) {
  const uint64_t one = uint64_t{1} << bits;
  for (uint64_t divisor = first; divisor <= last; ++divisor) {
    const uint64_t factor = (one + divisor - 1) / divisor;
    if (255 * divisor * (factor * divisor - one) >= one || 255 * divisor * factor >> 32 != 0)
      return false;
  }
  return true;
}
// Growing by more than 255 differs by nothing: n - c, divided, is 0 or -1 there.
constexpr uint32_t kLastDivisor = 256;
static_assert(divisors_multiply_exactly(9, kLastDivisor, 24));
static_assert(divisors_multiply_exactly(9, 16, 18));

static constexpr int64_t common_divisor(int64_t a, int64_t b) {
  while (b != 0) {
    const int64_t rest = a % b;
    a = b;
    b = rest;
  }
  return a;
}

// What an output is made of: sample `at` and, if `pair`, the next one.
struct ShrinkStep {
  ptrdiff_t at;
  bool pair;
};

// Outputs are `quotient` samples apart, and one more wherever the remainder has added
// up to the number of outputs; there the output is the mean of two. With all_pairs,
// as for integer ratios, it is that everywhere.
class ShrinkSteps {
 public:
  static constexpr bool kSkips = true;

  ShrinkSteps(int32_t outputs, int32_t quotient, int32_t remainder, bool all_pairs)
      : outputs_(outputs), quotient_(quotient), remainder_(remainder), all_pairs_(all_pairs) {}

  static bool all_means() { return true; }
  // The ratio, where every output is the mean of the first two of so many samples.
  int32_t whole() const { return all_pairs_ && remainder_ == 0 ? quotient_ : 0; }

  ShrinkStep next() {
    accumulator_ += remainder_;
    const bool carry = accumulator_ >= outputs_;
    const ShrinkStep step = {at_, all_pairs_ || carry};
    if (carry) accumulator_ -= outputs_;
    at_ += quotient_ + carry;
    return step;
  }
  // Of a whole ratio: goes so many outputs on from the place that it returns.
  ptrdiff_t skip(int32_t outputs) {
    const ptrdiff_t from = at_;
    at_ += ptrdiff_t{outputs} * quotient_;
    return from;
  }

  // After so many outputs, and as many samples as they take, all is as at the start; 0: never.
  int64_t period() const {
    const bool known = 0 <= remainder_ && remainder_ < outputs_;
    return known ? outputs_ / common_divisor(outputs_, remainder_) : 0;
  }
  ptrdiff_t at() const { return at_; }
  void move_on(ptrdiff_t samples) { at_ += samples; }
  // How often so many samples may be gone through alike.
  static ptrdiff_t repeats(ptrdiff_t) { return PTRDIFF_MAX; }

 private:
  int32_t outputs_, quotient_, remainder_;
  bool all_pairs_;
  int64_t accumulator_ = 0;
  ptrdiff_t at_ = 0;
};

// Sample `at` and, unless `pair` is 0, the one so many behind it.
struct GrowStep {
  ptrdiff_t at;
  uint8_t pair;
  Mix mix;
};

// Each sample is written, then the gap to the next one is filled: `quotient` - 1
// outputs, and one more wherever the remainder has added up to the number of samples.
// The last sample has no next one and repeats itself, as long as it is asked.
class GrowSteps {
 public:
  static constexpr bool kSkips = false;

  GrowSteps(int32_t samples, int32_t quotient, int32_t remainder, bool ramp)
      : last_(samples > 0 ? samples - 1 : 0),
        samples_(samples),
        quotient_(quotient < 0 ? 0 : quotient),
        remainder_(remainder),
        ramp_(ramp),
        copy_(ramp ? Mix{64, 0, (1 << 24) / 64} : kCopy) {
    if (last_ == 0) return;  // nothing to mix; axes that shrink come here, too
    repeated_[0] = weighed(quotient_ - 1, 1);
    repeated_[1] = weighed(quotient_, 1);
    extra_ = weighed(1, quotient_);
  }

  // Whether every output is a sample or the plain mean of two.
  bool all_means() const { return quotient_ == 1 || whole() == 2; }
  // The ratio, where every sample but the last becomes so many.
  int32_t whole() const { return remainder_ == 0 ? static_cast<int32_t>(quotient_) : 0; }

  GrowStep next() {
    if (at_ >= last_) return {last_, false, copy_};
    if (phase_ == 0) begin_group();
    const Mix mix = phase_ == 0          ? copy_
                    : ramp_              ? ramp()
                    : phase_ < quotient_ ? repeated_[carry_]
                                         : extra_;
    const GrowStep step = {at_, phase_ != 0, mix};
    if (++phase_ >= quotient_ + carry_) {
      phase_ = 0;
      ++at_;
    }
    return step;
  }

  // As of ShrinkSteps; the last sample is not like the others.
  int64_t period() const {
    if (remainder_ < 0 || remainder_ >= samples_) return 0;
    const int64_t divisor = common_divisor(samples_, remainder_);
    return samples_ / divisor * quotient_ + remainder_ / divisor;
  }
  ptrdiff_t at() const { return at_; }
  void move_on(ptrdiff_t samples) { at_ += samples; }
  ptrdiff_t repeats(ptrdiff_t samples) const { return samples > 0 ? last_ / samples : 0; }

 private:
  void begin_group() {
    accumulator_ += remainder_;
    carry_ = accumulator_ >= samples_;
    if (carry_) accumulator_ -= samples_;
    const int64_t group = quotient_ + carry_;
    step_ = quotient_ > 1 ? scale[group < 33 ? group : 33] : 32;
  }
  Mix ramp() const {
    const uint32_t n = static_cast<uint32_t>(phase_) * step_;
    return {static_cast<uint16_t>(64 - n), static_cast<uint16_t>(n), copy_.factor};
  }
  // So many parts of c and of n, one of them being 1.
  static Mix weighed(int64_t c, int64_t n) {
    const auto most = [](int64_t parts) {
      return static_cast<uint32_t>(parts < 0 ? 0 : parts < kLastDivisor ? parts : kLastDivisor - 1);
    };
    return make_mix(most(c), most(n), most(c) + most(n));
  }

  ptrdiff_t last_;
  int64_t samples_, quotient_, remainder_;
  bool ramp_, carry_ = false;
  Mix copy_;
  Mix repeated_[2]{}, extra_{};  // what gaps are filled with, by whether they have one more
  uint32_t step_ = 0;
  int64_t accumulator_ = 0, phase_ = 0;
  ptrdiff_t at_ = 0;
};

constexpr int32_t kStripOutputs = 1024, kStripBytes = 2048;

// How many outputs of a shape a strip may have.
constexpr int32_t strip_outputs(Shape shape) {
  const int32_t outputs = kStripBytes / kSampleBytes[shape];
  return outputs < kStripOutputs ? outputs & ~63 : kStripOutputs;
}

// Outputs first .. first + count - 1 of a row, made of the samples source ..
// source + samples - 1. The members from `at` on are for the row engine.
struct Strip {
  ptrdiff_t first, source;
  int32_t count, samples;

  bool all_means;  // no output is weighed
  int32_t whole;   // the ratio, if it has no remainder
  // Every output is the mean of the first two of `whole` samples. Until plan() finds that
  // it takes them, `at` and `pair` are not listed then.
  bool even;
  int32_t at[kStripOutputs];  // from `source` on
  uint8_t pair[kStripOutputs];
  Mix mix[kStripOutputs];  // unless all_means

  // What plan() makes of it for the vectors of a level (rsz/taps.h).
  int32_t blocks;   // of outputs; 0: no vectors
  int32_t windows;  // of a register's part
  bool ramp;        // every mix is out of 64
  int32_t plain;    // so many first outputs are halved or doubled in steps
  int32_t from[kStripBytes / 2];
  alignas(64) uint8_t index[2 * kStripBytes];
  alignas(64) uint8_t weight[2 * kStripBytes];
  alignas(64) uint16_t factor[kStripBytes];
};

// The outputs of a row as strips of nearly the same length, in 64s.
class StripCutter {
 public:
  StripCutter(ptrdiff_t outputs, int32_t limit) : outputs_(outputs), length_(limit) {
    if (outputs <= limit) return;
    const ptrdiff_t strips = (outputs + limit - 1) / limit;
    const ptrdiff_t even = ((outputs + strips - 1) / strips + 63) / 64 * 64;
    if (even < limit) length_ = static_cast<int32_t>(even);
  }
  // The next strip's outputs; whether there are any.
  bool cut(Strip &strip) {
    const ptrdiff_t left = outputs_ - done_;
    if (left <= 0) return false;
    strip.first = done_;
    strip.count = static_cast<int32_t>(left < length_ ? left : length_);
    done_ += strip.count;
    return true;
  }
  bool at_start() const { return done_ == 0; }
  void finish() { done_ = outputs_; }

 private:
  ptrdiff_t outputs_, done_ = 0;
  int32_t length_;
};

// A strip, or a whole row: `repeats` strips that are alike, each `advance` samples behind
// the one before, and perhaps one for what is left.
struct Row {
  Strip body, tail;
  int32_t repeats;
  ptrdiff_t advance;

  ptrdiff_t count() const { return ptrdiff_t{repeats} * body.count + tail.count; }
};

// Steps as strips.
template <class Steps>
class Walk {
 public:
  // Fills in the next strip; whether there is one.
  bool next(Strip &strip) {
    if (!cutter_.cut(strip)) return false;
    take(strip);
    return true;
  }

  // The same, or at once the whole row if two strips do for it.
  bool next(Row &row) {
    if (cutter_.at_start() && fill_whole_row(row)) return true;
    row.repeats = 1;
    row.advance = 0;
    row.tail.count = 0;
    return next(row.body);
  }

  // A strip that was cut elsewhere.
  void take(Strip &strip) {
    Steps steps = steps_;
    strip.all_means = steps.all_means();
    strip.whole = steps.whole();
    fill(strip, steps);
    steps_ = steps;
  }

 protected:
  Walk(int32_t outputs, int32_t limit, const Steps &steps)
      : outputs_(outputs), limit_(limit), cutter_(outputs, limit), steps_(steps) {}

 private:
  // Whether the row repeats itself soon enough.
  bool fill_whole_row(Row &row) {
    if (outputs_ <= limit_) return false;
    const int64_t period = steps_.period(), in_64s = period * 64 / common_divisor(period, 64);
    if (period <= 0 || in_64s > limit_) return false;
    const Steps start = steps_;
    const int64_t strips = (outputs_ + limit_ - 1) / limit_;
    const int64_t even = (outputs_ + strips * in_64s - 1) / (strips * in_64s) * in_64s;
    const auto length = static_cast<int32_t>(even <= limit_ ? even : limit_ / in_64s * in_64s);
    row.body.first = 0;
    row.body.count = length;
    take(row.body);
    row.advance = steps_.at() - row.body.source;
    const ptrdiff_t most = steps_.repeats(row.advance), fits = outputs_ / length;
    row.repeats = static_cast<int32_t>(fits < most ? fits : most);
    row.tail.first = ptrdiff_t{row.repeats} * length;
    row.tail.count = static_cast<int32_t>(outputs_ - row.tail.first);
    if (row.repeats < 1 || row.tail.count > limit_) {
      steps_ = start;
      return false;
    }
    steps_.move_on((row.repeats - 1) * row.advance);
    if (row.tail.count > 0) take(row.tail);
    cutter_.finish();
    return true;
  }

  static void fill(Strip &strip, Steps &steps) {
    strip.even = Steps::kSkips && strip.whole != 0;
    if constexpr (Steps::kSkips)
      if (strip.even) return fill_even(strip, steps);
    auto step = steps.next();
    strip.source = step.at;
    for (int32_t i = 0;; step = steps.next()) {
      strip.at[i] = static_cast<int32_t>(step.at - strip.source);
      strip.pair[i] = step.pair;
      if (!strip.all_means) keep_mix(strip, i, step);
      if (++i == strip.count) break;
    }
    strip.samples = static_cast<int32_t>(step.at + step.pair + 1 - strip.source);
  }
  // Nothing is left over that would have to be carried on.
  static void fill_even(Strip &strip, Steps &steps) {
    strip.source = steps.skip(strip.count);
    strip.samples = (strip.count - 1) * strip.whole + 2;
  }
  static void keep_mix(Strip &, int32_t, const ShrinkStep &) {}
  static void keep_mix(Strip &strip, int32_t i, const GrowStep &step) { strip.mix[i] = step.mix; }

  int32_t outputs_, limit_;
  StripCutter cutter_;
  Steps steps_;
};

struct ShrinkWalk : Walk<ShrinkSteps> {
  ShrinkWalk(int32_t outputs, int32_t quotient, int32_t remainder, bool all_pairs, int32_t limit)
      : Walk(outputs, limit, ShrinkSteps(outputs, quotient, remainder, all_pairs)) {}
};
struct GrowWalk : Walk<GrowSteps> {
  GrowWalk(int32_t outputs, int32_t samples, int32_t quotient, int32_t remainder, bool ramp,
           int32_t limit)
      : Walk(outputs, limit, GrowSteps(samples, quotient, remainder, ramp)) {}
};

}  // namespace pivra

#endif
