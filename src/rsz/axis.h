// One direction of a resize, and its walks, whichever way it goes.
#ifndef PIVRA_RSZ_AXIS_H
#define PIVRA_RSZ_AXIS_H

#include <stddef.h>
#include <stdint.h>

#include "rsz/walk.h"

namespace pivra {

// `outputs` are made by steps of `quotient` and `remainder`, which need not be those of
// the division: planes of chroma may be given what suits luma.
struct Axis {
  enum Rule {
    kCarries,  // shrinks; the mean of two where the remainder carries
    kPairs,    // shrinks by an integer ratio; the mean of two everywhere
    kRepeats,  // grows; one value repeated
    kRamps,    // grows by mode 1
  };

  Rule rule;
  int32_t outputs, samples /* of growth */, quotient, remainder;

  constexpr bool grows() const { return rule >= kRepeats; }
  constexpr bool copies() const {
    return quotient == 1 && remainder == 0 && rule != kPairs && (!grows() || outputs <= samples);
  }
};

// A single direction: an integer ratio has means everywhere.
constexpr Axis shrink_axis(int32_t outputs, int32_t quotient, int32_t remainder) {
  const bool pairs = remainder == 0 && quotient > 1;
  return {pairs ? Axis::kPairs : Axis::kCarries, outputs, 0, quotient, remainder};
}

constexpr Axis grow_axis(int32_t outputs, int32_t samples, int32_t quotient, int32_t remainder,
                         bool mode1) {
  return {mode1 ? Axis::kRamps : Axis::kRepeats, outputs, samples, quotient, remainder};
}

// From so many samples to so many.
constexpr Axis axis_between(int32_t samples, int32_t outputs, bool mode1) {
  return outputs < samples
             ? shrink_axis(outputs, samples / outputs, samples % outputs)
             : grow_axis(outputs, samples, outputs / samples, outputs % samples, mode1);
}

// The outputs one by one.
class AxisSteps {
 public:
  explicit AxisSteps(const Axis &axis)
      : grows_(axis.grows()),
        shrink_(axis.outputs, axis.quotient, axis.remainder, axis.rule == Axis::kPairs),
        grow_(axis.samples, axis.quotient, axis.remainder, axis.rule == Axis::kRamps) {}

  GrowStep next() {
    if (grows_) return grow_.next();
    const ShrinkStep step = shrink_.next();
    return {step.at, step.pair, step.pair ? kMean : kCopy};
  }

 private:
  bool grows_;
  ShrinkSteps shrink_;
  GrowSteps grow_;
};

// The outputs strip by strip, at most `limit` in each, or in whole rows.
class AxisWalk {
 public:
  AxisWalk(const Axis &axis, int32_t limit)
      : grows_(axis.grows()),
        shrink_(axis.outputs, axis.quotient, axis.remainder, axis.rule == Axis::kPairs, limit),
        grow_(axis.outputs, axis.samples, axis.quotient, axis.remainder, axis.rule == Axis::kRamps,
              limit) {}

  bool next(Strip &strip) { return grows_ ? grow_.next(strip) : shrink_.next(strip); }
  bool next(Row &row) { return grows_ ? grow_.next(row) : shrink_.next(row); }
  void take(Strip &strip) { grows_ ? grow_.take(strip) : shrink_.take(strip); }

 private:
  bool grows_;
  ShrinkWalk shrink_;
  GrowWalk grow_;
};

}  // namespace pivra

#endif
