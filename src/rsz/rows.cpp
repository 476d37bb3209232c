// Rows resized along a strip, and whole rows made of two. Compiled once per
// instruction-set level.
#include "rsz/rows.h"

#include "rsz/samples.h"
#include "rsz/taps.h"

namespace pivra::PIVRA_LEVEL {
namespace {

// --- Single samples ---

// Units of the outputs from `first` on, made of those at `at` and at `next`.
template <class Sample, class Action>
PIVRA_INLINE void for_each_unit(const Strip &strip, int32_t first, Action action) {
  for (int32_t i = first; i < strip.count; ++i)
    for (int32_t unit = 0; unit < Sample::kUnits; ++unit) {
      const ptrdiff_t at = ptrdiff_t{strip.at[i]} * Sample::kUnits + unit;
      action(i, ptrdiff_t{i} * Sample::kUnits + unit, at, at + strip.pair[i] * Sample::kUnits);
    }
}

template <class Sample>
void mean_singly(const Strip &strip, int32_t first, const uint8_t *src, uint8_t *dst) {
  typedef typename Sample::Unit Unit;
  for_each_unit<Sample>(strip, first, [=](int32_t, ptrdiff_t to, ptrdiff_t at, ptrdiff_t next) {
    store_unit<Unit>(dst, to, Sample::mean(load_unit<Unit>(src, at), load_unit<Unit>(src, next)));
  });
}
template <class Sample>
void mean_singly(const Strip &strip, int32_t first, const uint8_t *top, const uint8_t *bottom,
                 uint8_t *dst) {
  typedef typename Sample::Unit Unit;
  for_each_unit<Sample>(strip, first, [=](int32_t, ptrdiff_t to, ptrdiff_t at, ptrdiff_t next) {
    store_unit<Unit>(dst, to,
                     Sample::mean(load_unit<Unit>(top, at), load_unit<Unit>(top, next),
                                  load_unit<Unit>(bottom, at), load_unit<Unit>(bottom, next)));
  });
}
template <class Sample>
void mix_singly(const Strip &strip, const uint8_t *src, uint8_t *dst) {
  typedef typename Sample::Unit Unit;
  for_each_unit<Sample>(strip, 0, [&](int32_t output, ptrdiff_t to, ptrdiff_t at, ptrdiff_t next) {
    store_unit<Unit>(
        dst, to,
        Sample::mix(strip.mix[output], load_unit<Unit>(src, at), load_unit<Unit>(src, next)));
  });
}

// --- Blocks of gathered taps ---

#if defined(PIVRA_GATHERS)

// Calls `block` with each block's part of the plan, and where it goes.
template <class Sample, int windows, class Block>
PIVRA_INLINE void for_each_block(const Strip &strip, uint8_t *dst, Block block) {
  const int32_t *from = strip.from;
  const uint8_t *index = strip.index;
  const ptrdiff_t bytes = ptrdiff_t{strip.count} * kBytesOf<Sample>;
  for (ptrdiff_t x = 0, i = 0; x < bytes; x += kBlock, ++i) {
    store_bytes(dst + block_at(x, bytes), block(from, index, i));
    from += 2 * kWindowsOfTaps<windows>;
    index += 2 * kBlock;
  }
}

template <class Sample, int windows>
void mean_blocks(const Strip &strip, const uint8_t *src, uint8_t *dst) {
  for_each_block<Sample, windows>(strip, dst,
                                  [=](const int32_t *from, const uint8_t *index, ptrdiff_t) {
                                    return Sample::mean(gather_block<windows>(src, from, index));
                                  });
}
template <class Sample, int windows>
void mean_blocks(const Strip &strip, const uint8_t *top, const uint8_t *bottom, uint8_t *dst) {
  for_each_block<Sample, windows>(strip, dst,
                                  [=](const int32_t *from, const uint8_t *index, ptrdiff_t) {
                                    return Sample::mean(gather_block<windows>(top, from, index),
                                                        gather_block<windows>(bottom, from, index));
                                  });
}
template <class Sample, bool kRamp>
void mix_blocks(const Strip &strip, const uint8_t *src, uint8_t *dst) {
  for_each_block<Sample, 1>(
      strip, dst, [&](const int32_t *from, const uint8_t *index, ptrdiff_t i) {
        return Sample::template mix_taps<kRamp>(
            gather_block<1>(src, from, index),
            Sample::load_weights(
                strip.weight + i * 2 * kBlock,
                strip.factor + i * kBlock / ptrdiff_t{sizeof(typename Sample::Unit)}));
      });
}

#endif

// --- Halved rows, and doubled ones of bytes ---

#if PIVRA_VECTORS

template <class Sample>
constexpr bool kDoubles = false;
template <>
constexpr bool kDoubles<OfBytes<1>> = true;

// Of how many bytes a sample that is halved in steps is, or 0.
template <class Sample>
constexpr int kHalvedUnit = 0;
template <>
constexpr int kHalvedUnit<OfBytes<1>> = 1;
template <>
constexpr int kHalvedUnit<OfBytes<2>> = 2;
template <>
constexpr int kHalvedUnit<OfBytes<4>> = 4;

// How many outputs are the mean of the next two samples: all, if they fill a step.
int32_t halved_outputs(const Strip &strip, int unit) {
  return strip.even && strip.whole == 2 && strip.count * unit >= kHalves ? strip.count : 0;
}
// And how many are a sample and its mean with the next one by turns: all but those of
// the last sample, which has none.
int32_t doubled_outputs(const Strip &strip) {
  int32_t outputs = strip.count / 2 * 2;
  if (strip.even || strip.whole != 2 || strip.count < 2 || strip.pair[0] || strip.at[1] != 0)
    return 0;
  while (outputs > 0 && !strip.pair[outputs - 1]) outputs -= 2;
  return outputs < 2 * kBlock ? 0 : outputs;
}

// Rows in steps of kHalves bytes, unless they are whole ones the last one over the one
// before it.
template <int unit, bool kTwoRows, bool kWholeSteps>
void halve_rows(uint32_t bytes, const uint8_t *p, ptrdiff_t below, ptrdiff_t src_step,
                uint32_t rows, uint8_t *dst, ptrdiff_t dst_step) {
  const uint32_t in_whole_steps = bytes / kHalves * kHalves;
  const auto last_step = static_cast<ptrdiff_t>(bytes % kHalves) - kHalves;
  src_step -= 2 * static_cast<ptrdiff_t>(bytes);
  dst_step -= static_cast<ptrdiff_t>(bytes);
  for (; rows != 0; --rows) {
    const uint8_t *const end = dst + in_whole_steps;
    do kTwoRows ? halve<unit>(p, below, dst) : halve<unit>(p, dst);
    while (dst != end);
    if (!kWholeSteps) {
      p += 2 * last_step;
      dst += last_step;
      kTwoRows ? halve<unit>(p, below, dst) : halve<unit>(p, dst);
    }
    p += src_step;
    dst += dst_step;
  }
}

// Whether the strip was one to be halved.
template <class Sample>
bool halve_strips(const Strip &strip, const uint8_t *top, ptrdiff_t below, ptrdiff_t src_step,
                  int32_t rows, uint8_t *dst, ptrdiff_t dst_step) {
  constexpr int unit = kHalvedUnit<Sample>;
  if constexpr (unit != 0) {
    if (strip.plain != 0 && rows > 0) {
      const auto bytes = static_cast<uint32_t>(strip.count * unit);
      static constexpr decltype(&halve_rows<unit, false, false>) kHalve[2][2] = {
          {halve_rows<unit, false, false>, halve_rows<unit, false, true>},
          {halve_rows<unit, true, false>, halve_rows<unit, true, true>}};
      kHalve[below != 0][bytes % kHalves == 0](bytes, top, below, src_step,
                                               static_cast<uint32_t>(rows), dst, dst_step);
      return true;
    }
  }
  return false;
}

PIVRA_INLINE void double_row(const uint8_t *src, ptrdiff_t samples, uint8_t *dst) {
  for (ptrdiff_t x = 0; x < samples; x += kBlock) {
    const ptrdiff_t at = block_at(x, samples);
    const Whole c = load_bytes(src + at);
    store_pairs(dst + 2 * at, c, truncated_mean(c, load_bytes(src + at + 1)));
  }
}

#endif

// --- Strips ---

void list_even(Strip &strip) {
  for (int32_t i = 0; i < strip.count; ++i) {
    strip.at[i] = i * strip.whole;
    strip.pair[i] = true;
  }
}

template <class Sample>
void plan(Strip &strip) {
  strip.blocks = strip.plain = 0;
#if PIVRA_VECTORS
  if constexpr (kHalvedUnit<Sample> != 0) strip.plain = halved_outputs(strip, kHalvedUnit<Sample>);
  if constexpr (kDoubles<Sample>)
    if (strip.plain == 0) strip.plain = doubled_outputs(strip);
  if (strip.plain != 0) return;
#endif
  if (strip.even) list_even(strip);
#if defined(PIVRA_GATHERS)
  if (plan_gather<Sample>(strip) && !strip.all_means &&
      !(strip.windows == 1 && plan_weights<Sample>(strip)))
    strip.blocks = 0;
#endif
}

template <class Sample>
void shrink(const Strip &strip, const uint8_t *top, const uint8_t *bottom, uint8_t *dst) {
#if PIVRA_VECTORS
  if (halve_strips<Sample>(strip, top, bottom == nullptr ? 0 : bottom - top, 0, 1, dst, 0)) return;
#endif
#if defined(PIVRA_GATHERS)
  const int windows = strip.blocks > 0 ? strip.windows : 0;
  if (bottom == nullptr) {
    if (windows == 1) return mean_blocks<Sample, 1>(strip, top, dst);
    if (windows == 2) return mean_blocks<Sample, 2>(strip, top, dst);
    if constexpr (kMostWindows == 4)
      if (windows == 4) return mean_blocks<Sample, 4>(strip, top, dst);
  } else {
    if (windows == 1) return mean_blocks<Sample, 1>(strip, top, bottom, dst);
    if (windows == 2) return mean_blocks<Sample, 2>(strip, top, bottom, dst);
    if constexpr (kMostWindows == 4)
      if (windows == 4) return mean_blocks<Sample, 4>(strip, top, bottom, dst);
  }
#endif
  if (bottom == nullptr) return mean_singly<Sample>(strip, 0, top, dst);
  mean_singly<Sample>(strip, 0, top, bottom, dst);
}

template <class Sample>
void grow(const Strip &strip, const uint8_t *src, uint8_t *dst) {
#if PIVRA_VECTORS
  if constexpr (kDoubles<Sample>)
    if (strip.plain != 0) {
      double_row(src, strip.plain / 2, dst);
      return mean_singly<Sample>(strip, strip.plain, src, dst);
    }
#endif
  if (strip.all_means) return shrink<Sample>(strip, src, nullptr, dst);
#if defined(PIVRA_GATHERS)
  if (strip.blocks > 0)
    return strip.ramp ? mix_blocks<Sample, true>(strip, src, dst)
                      : mix_blocks<Sample, false>(strip, src, dst);
#endif
  mix_singly<Sample>(strip, src, dst);
}

template <class Sample>
void shrink_rows(const Strip &strip, const uint8_t *top, ptrdiff_t below, ptrdiff_t src_step,
                 int32_t rows, uint8_t *dst, ptrdiff_t dst_step) {
#if PIVRA_VECTORS
  if (halve_strips<Sample>(strip, top, below, src_step, rows, dst, dst_step)) return;
#endif
  for (; rows > 0; --rows, top += src_step, dst += dst_step)
    shrink<Sample>(strip, top, below == 0 ? nullptr : top + below, dst);
}
template <class Sample>
void grow_rows(const Strip &strip, const uint8_t *src, ptrdiff_t src_step, int32_t rows,
               uint8_t *dst, ptrdiff_t dst_step) {
  for (; rows > 0; --rows, src += src_step, dst += dst_step) grow<Sample>(strip, src, dst);
}

// --- Whole rows ---

#if PIVRA_VECTORS

// In blocks, the last one over the one before it. How many bytes are done: all, or
// none of a row that is shorter than a block. The last block is loaded first, so that
// the destination may be one of the rows.
template <class Block>
PIVRA_INLINE ptrdiff_t rows_in_blocks(const uint8_t *a, const uint8_t *b, ptrdiff_t bytes,
                                      uint8_t *dst, Block block) {
  const ptrdiff_t last = bytes - kBlock;
  if (last < 0) return 0;
  const Whole end = block(load_bytes(a + last), load_bytes(b + last));
  uint8_t *const to_end = dst + last;
#pragma GCC unroll 2
  for (ptrdiff_t left = last; left > 0; left -= kBlock) {
    store_bytes(dst, block(load_bytes(a), load_bytes(b)));
    a += kBlock;
    b += kBlock;
    dst += kBlock;
  }
  store_bytes(to_end, end);
  return bytes;
}

template <class Sample, bool kRamp>
ptrdiff_t mix_rows_in_blocks(const uint8_t *c, const uint8_t *n, const Mix &mix, ptrdiff_t bytes,
                             uint8_t *dst) {
  uint8_t weight[2 * kBlock];
  uint16_t factor[kBlock];
  Sample::lay_weights([&](int32_t) -> const Mix & { return mix; }, weight, factor);
  const auto weights = Sample::load_weights(weight, factor);
  return rows_in_blocks(c, n, bytes, dst, [=](Whole of_c, Whole of_n) {
    return Sample::template mix_rows<kRamp>(of_c, of_n, weights);
  });
}

#endif

template <class Sample>
void mean_of_rows(const uint8_t *a, const uint8_t *b, ptrdiff_t bytes, uint8_t *dst) {
  typedef typename Sample::Unit Unit;
  ptrdiff_t done = 0;
#if PIVRA_VECTORS
  done = rows_in_blocks(a, b, bytes, dst,
                        [](Whole of_a, Whole of_b) { return Sample::mean(of_a, of_b); });
#endif
  for (ptrdiff_t x = done; x < bytes; x += ptrdiff_t{sizeof(Unit)})
    store_unit<Unit>(dst + x, 0,
                     Sample::mean(load_unit<Unit>(a + x, 0), load_unit<Unit>(b + x, 0)));
}

template <class Sample>
void mix_of_rows(const uint8_t *c, const uint8_t *n, const Mix &mix, ptrdiff_t bytes,
                 uint8_t *dst) {
  typedef typename Sample::Unit Unit;
  if (is_copy(mix)) {
    if (c != dst) memcpy(dst, c, static_cast<size_t>(bytes));
    return;
  }
  if (is_mean(mix)) return mean_of_rows<Sample>(c, n, bytes, dst);
  ptrdiff_t done = 0;
#if PIVRA_VECTORS
  if (is_ramp(mix))
    done = mix_rows_in_blocks<Sample, true>(c, n, mix, bytes, dst);
  else if (is_small(mix))
    done = mix_rows_in_blocks<Sample, false>(c, n, mix, bytes, dst);
#endif
  for (ptrdiff_t x = done; x < bytes; x += ptrdiff_t{sizeof(Unit)})
    store_unit<Unit>(dst + x, 0,
                     Sample::mix(mix, load_unit<Unit>(c + x, 0), load_unit<Unit>(n + x, 0)));
}

// --- Between two rows ---

void bilinear(const Strip &strip, const uint8_t *top, const uint8_t *bottom, int32_t phase,
              uint8_t *dst) {
  typedef OfBytes<1> Sample;
  const auto of_top = static_cast<uint16_t>(8 - phase), of_bottom = static_cast<uint16_t>(phase);
#if defined(PIVRA_GATHERS)
  if (strip.blocks > 0)
    return for_each_block<Sample, 1>(
        strip, dst, [=, &strip](const int32_t *from, const uint8_t *index, ptrdiff_t i) {
          const uint8_t *weight = strip.weight + i * 2 * kBlock;
          const Taps even = load_bytes(weight), odd = load_bytes(weight + kBlock);
          const Pair<Taps> t = gather_block<1>(top, from, index),
                           b = gather_block<1>(bottom, from, index);
          return join_taps(
              {(weigh_taps(t.even, even) * of_top + weigh_taps(b.even, even) * of_bottom) >> 6,
               (weigh_taps(t.odd, odd) * of_top + weigh_taps(b.odd, odd) * of_bottom) >> 6});
        });
#endif
  for_each_unit<Sample>(strip, 0, [=, &strip](int32_t i, ptrdiff_t to, ptrdiff_t c, ptrdiff_t n) {
    const Mix &mix = strip.mix[i];
    dst[to] = static_cast<uint8_t>(((top[c] * mix.c + top[n] * mix.n) * of_top +
                                    (bottom[c] * mix.c + bottom[n] * mix.n) * of_bottom) >>
                                   6);
  });
}

}  // namespace

#define PIVRA_EVERY_SHAPE(function)                                                    \
  {                                                                                    \
    function<OfBytes<1>>, function<OfBytes<2>>, function<Of565>, function<OfBytes<3>>, \
        function<OfBytes<4>>                                                           \
  }
#define PIVRA_EVERY_FIELDS(function) \
  { function<OfBytes<1>>, function<Of565> }

extern const ResizeRows resize_rows;
const ResizeRows resize_rows = {
    PIVRA_EVERY_SHAPE(plan),         PIVRA_EVERY_SHAPE(shrink),
    PIVRA_EVERY_SHAPE(grow),         PIVRA_EVERY_SHAPE(shrink_rows),
    PIVRA_EVERY_SHAPE(grow_rows),    PIVRA_EVERY_FIELDS(mean_of_rows),
    PIVRA_EVERY_FIELDS(mix_of_rows), bilinear,
};

}  // namespace pivra::PIVRA_LEVEL
