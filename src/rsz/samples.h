// The fields of samples, averaged and mixed: one at a time and in vectors.
#ifndef PIVRA_RSZ_SAMPLES_H
#define PIVRA_RSZ_SAMPLES_H

#include <string.h>

#include "rsz/walk.h"
#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {

template <class Unit>
PIVRA_INLINE uint32_t load_unit(const uint8_t *p, ptrdiff_t index) {
  Unit unit;
  memcpy(&unit, p + index * ptrdiff_t{sizeof unit}, sizeof unit);
  return unit;
}
template <class Unit>
PIVRA_INLINE void store_unit(uint8_t *p, ptrdiff_t index, uint32_t value) {
  const Unit unit = static_cast<Unit>(value);
  memcpy(p + index * ptrdiff_t{sizeof unit}, &unit, sizeof unit);
}

// What both have in common and half of what they differ in: words of several fields
// are averaged at once, as bit 0 of a field, set in kLowest, does not enter the next.
template <uint16_t kLowest, class Word>
PIVRA_INLINE Word mean_of_fields(Word a, Word b) {
  return (a & b) + (((a ^ b) & static_cast<uint16_t>(~kLowest)) >> 1);
}
// Two truncated means have lost one more in four where both were of odd sums.
template <uint16_t kLowest, class Word>
PIVRA_INLINE Word mean_of_fields(Word a, Word b, Word c, Word d) {
  const Word ab = mean_of_fields<kLowest>(a, b), cd = mean_of_fields<kLowest>(c, d);
  return mean_of_fields<kLowest>(ab, cd) + ((a ^ b) & (c ^ d) & (ab ^ cd) & kLowest);
}

// The mix of one field of either; of the result, the lowest 8 bits or as many as the
// field has.
PIVRA_INLINE uint32_t mixed(const Mix &mix, uint32_t c, uint32_t n) {
  return ((c * mix.c + n * mix.n) & 0xFFFF) * mix.factor >> 24;
}

#if PIVRA_VECTORS

// Where the block at x begins in a row of so many: the last one overlaps the one before
// it rather than running past the end.
PIVRA_INLINE ptrdiff_t block_at(ptrdiff_t x, ptrdiff_t count) {
  return x < count - kBlock ? x : count - kBlock;
}

// Sums of ramps are divided by 64, others by their small divisors.
template <bool kRamp>
PIVRA_INLINE U16 quotient(U16 sum, U16 factor) {
  return kRamp ? sum >> 6 : divide(sum, factor);
}

#endif

// Of bytes each is a field.
template <int32_t kBytesOfSample>
struct OfBytes {
  typedef uint8_t Unit;
  static constexpr int32_t kUnits = kBytesOfSample;

  static PIVRA_INLINE uint32_t mean(uint32_t a, uint32_t b) { return (a + b) >> 1; }
  static PIVRA_INLINE uint32_t mean(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    return (a + b + c + d) >> 2;
  }
  static PIVRA_INLINE uint32_t mix(const Mix &mix, uint32_t c, uint32_t n) {
    return mixed(mix, c, n);
  }

#if PIVRA_VECTORS

  static PIVRA_INLINE Whole mean(Whole a, Whole b) { return truncated_mean(a, b); }
  static PIVRA_INLINE Whole mean(Pair<Taps> t) { return mean_of_taps(t.even, t.odd); }
  static PIVRA_INLINE Whole mean(Pair<Taps> t, Pair<Taps> u) {
    return mean_of_taps(t.even, t.odd, u.even, u.odd);
  }

  // Weights lie as the taps do; a factor goes with each output.
  struct Weights {
    Taps weight[2];
    U16 factor[2];
  };
  // Those of a block, whose byte i has the mix mix_of(i).
  template <class MixOf>
  static PIVRA_INLINE void lay_weights(MixOf mix_of, uint8_t *weight, uint16_t *factor) {
    for (int32_t i = 0; i < 2 * kBlock; ++i) {
      const TapPlace place = tap_place<1>(i / kBlock, i % kBlock);
      const Mix &mix = mix_of(place.output);
      weight[i] = static_cast<uint8_t>(place.tap == 0 ? mix.c : mix.n);
      if (place.tap == 0) *factor++ = small_factor(mix);
    }
  }
  static PIVRA_INLINE Weights load_weights(const uint8_t *weight, const uint16_t *factor) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(factor);
    return {{load_bytes(weight), load_bytes(weight + kBlock)},
            {(U16)load_bytes(bytes), (U16)load_bytes(bytes + kBlock)}};
  }
  template <bool kRamp>
  static PIVRA_INLINE Pair<U16> mix(Pair<Taps> t, Weights w) {
    return {quotient<kRamp>(weigh_taps(t.even, w.weight[0]), w.factor[0]),
            quotient<kRamp>(weigh_taps(t.odd, w.weight[1]), w.factor[1])};
  }
  template <bool kRamp>
  static PIVRA_INLINE Whole mix_taps(Pair<Taps> t, Weights w) {
    return join_taps(mix<kRamp>(t, w));
  }
  template <bool kRamp>
  static PIVRA_INLINE Whole mix_rows(Whole c, Whole n, Weights w) {
    return join_beside(mix<kRamp>(beside(c, n), w));
  }

#endif
};

struct Of565 {
  typedef uint16_t Unit;
  static constexpr int32_t kUnits = 1;
  static constexpr uint16_t kLowest = 1 << 11 | 1 << 5 | 1;

  static PIVRA_INLINE uint32_t mean(uint32_t a, uint32_t b) {
    return mean_of_fields<kLowest>(a, b);
  }
  static PIVRA_INLINE uint32_t mean(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    return mean_of_fields<kLowest>(a, b, c, d);
  }
  static PIVRA_INLINE uint32_t mix(const Mix &mix, uint32_t c, uint32_t n) {
    return (mixed(mix, c >> 11, n >> 11) & 31u) << 11 |
           (mixed(mix, c >> 5 & 63, n >> 5 & 63) & 63u) << 5 | (mixed(mix, c & 31, n & 31) & 31u);
  }

#if PIVRA_VECTORS

  static PIVRA_INLINE Whole mean(Whole a, Whole b) {
    return (Whole)mean_of_fields<kLowest>((U16)a, (U16)b);
  }
  static PIVRA_INLINE Whole mean(Pair<Taps> t) {
    const Pair<U16> words = word_taps(t.even, t.odd);
    return (Whole)mean_of_fields<kLowest>(words.even, words.odd);
  }
  static PIVRA_INLINE Whole mean(Pair<Taps> t, Pair<Taps> u) {
    const Pair<U16> top = word_taps(t.even, t.odd), bottom = word_taps(u.even, u.odd);
    return (Whole)mean_of_fields<kLowest>(top.even, top.odd, bottom.even, bottom.odd);
  }

  // A weight of either word and a factor for each output.
  struct Weights {
    U16 weight[2], factor;
  };
  template <class MixOf>
  static PIVRA_INLINE void lay_weights(MixOf mix_of, uint8_t *weight, uint16_t *factor) {
    for (int32_t i = 0; i < kBlock / 2; ++i) {
      const Mix &mix = mix_of(2 * i);
      store_unit<uint16_t>(weight, i, mix.c);
      store_unit<uint16_t>(weight + kBlock, i, mix.n);
      factor[i] = small_factor(mix);
    }
  }
  static PIVRA_INLINE Weights load_weights(const uint8_t *weight, const uint16_t *factor) {
    return {{(U16)load_bytes(weight), (U16)load_bytes(weight + kBlock)},
            (U16)load_bytes(reinterpret_cast<const uint8_t *>(factor))};
  }
  template <bool kRamp>
  static PIVRA_INLINE Whole mix(U16 c, U16 n, Weights w) {
    const auto mixed = [&](U16 of_c, U16 of_n) {
      return quotient<kRamp>(of_c * w.weight[0] + of_n * w.weight[1], w.factor);
    };
    return (Whole)(mixed(c >> 11, n >> 11) << 11 |
                   mixed(c >> 5 & uint16_t{63}, n >> 5 & uint16_t{63}) << 5 |
                   mixed(c & uint16_t{31}, n & uint16_t{31}));
  }
  template <bool kRamp>
  static PIVRA_INLINE Whole mix_taps(Pair<Taps> t, Weights w) {
    const Pair<U16> words = word_taps(t.even, t.odd);
    return mix<kRamp>(words.even, words.odd, w);
  }
  template <bool kRamp>
  static PIVRA_INLINE Whole mix_rows(Whole c, Whole n, Weights w) {
    return mix<kRamp>((U16)c, (U16)n, w);
  }

#endif
};

}  // namespace pivra::PIVRA_LEVEL

#endif
