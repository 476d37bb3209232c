// How a strip's outputs come out of its samples by vectors: which bytes are looked up
// from where, and what they are weighed with. Worked out once for a strip.
//
// A block is kBlock bytes of output, out of two registers of taps. Each part of those
// is looked up in a window of the row; where the ratio is larger, in more windows.
#ifndef PIVRA_RSZ_TAPS_H
#define PIVRA_RSZ_TAPS_H

#include "rsz/samples.h"
#include "rsz/walk.h"

#if defined(PIVRA_GATHERS)

namespace pivra::PIVRA_LEVEL {

template <class Sample>
constexpr int32_t kBytesOf = Sample::kUnits *int32_t{sizeof(typename Sample::Unit)};

// Where the bytes of two registers of taps are found in a list of the first taps of a
// block's bytes and then their second ones.
struct TapList {
  uint8_t at[2 * kBlock];
};
template <int unit>
constexpr TapList kTapList = [] {
  TapList list{};
  for (int32_t i = 0; i < 2 * kBlock; ++i) {
    const TapPlace place = tap_place<unit>(i / kBlock, i % kBlock);
    list.at[i] = static_cast<uint8_t>(place.tap * kBlock + place.output);
  }
  return list;
}();

// Whether all bytes of outputs are within reach of so many windows.
template <class Sample, int windows>
static bool plan_windows(Strip &strip) {
  constexpr int32_t kBytes = kBytesOf<Sample>, kReach = kWindowBytes<windows>;
  constexpr int32_t kTapsOfWindow = kBlock / kWindowsOfTaps<windows>;
  const int32_t bytes = strip.count * kBytes, last = strip.samples * kBytes - kReach;
  if (bytes < kBlock || last < 0) return false;

  int32_t *from = strip.from;
  uint8_t *index = strip.index;
  for (int32_t x = 0; x < bytes; x += kBlock) {
    int32_t source[2 * kBlock];
    auto byte = static_cast<int32_t>(block_at(x, bytes));
    for (int32_t i = 0; i < kBlock; ++i, ++byte) {
      const int32_t sample = byte / kBytes;
      source[i] = strip.at[sample] * kBytes + byte % kBytes;
      source[kBlock + i] = source[i] + strip.pair[sample] * kBytes;
    }
    const uint8_t *tap = kTapList<sizeof(typename Sample::Unit)>.at;
    for (int32_t window = 0; window < 2 * kWindowsOfTaps<windows>; ++window) {
      int32_t first = last, within = 0;
      for (int32_t i = 0; i < kTapsOfWindow; ++i)
        first = source[tap[i]] < first ? source[tap[i]] : first;
      for (int32_t i = 0; i < kTapsOfWindow; ++i) {
        within |= source[tap[i]] - first;
        index[i] = static_cast<uint8_t>(source[tap[i]] - first);
      }
      if (within >= kReach) return false;
      *from++ = first;
      index += kTapsOfWindow;
      tap += kTapsOfWindow;
    }
  }
  strip.blocks = (bytes + kBlock - 1) / kBlock;
  strip.windows = windows;
  return true;
}
template <class Sample, int windows = 1>
static bool plan_gather(Strip &strip) {
  if (plan_windows<Sample, windows>(strip)) return true;
  if constexpr (windows < kMostWindows) return plan_gather<Sample, 2 * windows>(strip);
  return false;
}

// Whether the weights of all outputs suit vectors.
template <class Sample>
static bool plan_weights(Strip &strip) {
  bool ramp = true, small = true;
  for (int32_t i = 0; i < strip.count; ++i) {
    ramp &= is_ramp(strip.mix[i]);
    small &= is_small(strip.mix[i]);
  }
  strip.ramp = ramp;
  if (!ramp && !small) return false;

  constexpr int32_t kBytes = kBytesOf<Sample>;
  const int32_t bytes = strip.count * kBytes;
  uint8_t *weight = strip.weight;
  uint16_t *factor = strip.factor;
  for (int32_t x = 0; x < bytes; x += kBlock) {
    const auto first = static_cast<int32_t>(block_at(x, bytes));
    Sample::lay_weights([&](int32_t i) -> const Mix & { return strip.mix[(first + i) / kBytes]; },
                        weight, factor);
    weight += 2 * kBlock;
    factor += kBlock / int32_t{sizeof(typename Sample::Unit)};
  }
  return true;
}

template <int windows>
PIVRA_INLINE Pair<Taps> gather_block(const uint8_t *src, const int32_t *from,
                                     const uint8_t *index) {
  return {gather<windows>(src, from, load_bytes(index)),
          gather<windows>(src, from + kWindowsOfTaps<windows>, load_bytes(index + kBlock))};
}

}  // namespace pivra::PIVRA_LEVEL

#endif

#endif
