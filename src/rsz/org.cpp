// The generic bilinear resampler: eight phases on a grid thinned out by a power of two.
#include "rsz/org.h"

#include <stddef.h>

#include "pivra.h"

// Four weights for each pair of phases, (8 - i)(8 - j), i (8 - j), (8 - i) j and i j.
#define PIVRA_WEIGHTS(i, j) (8 - (i)) * (8 - (j)), (i) * (8 - (j)), (8 - (i)) * (j), (i) * (j)
#define PIVRA_WEIGHTS_OF(i)                                                           \
  PIVRA_WEIGHTS(i, 0), PIVRA_WEIGHTS(i, 1), PIVRA_WEIGHTS(i, 2), PIVRA_WEIGHTS(i, 3), \
      PIVRA_WEIGHTS(i, 4), PIVRA_WEIGHTS(i, 5), PIVRA_WEIGHTS(i, 6), PIVRA_WEIGHTS(i, 7)
const uint8_t pivra_tbl_rsz_weight[256] = {
    PIVRA_WEIGHTS_OF(0), PIVRA_WEIGHTS_OF(1), PIVRA_WEIGHTS_OF(2), PIVRA_WEIGHTS_OF(3),
    PIVRA_WEIGHTS_OF(4), PIVRA_WEIGHTS_OF(5), PIVRA_WEIGHTS_OF(6), PIVRA_WEIGHTS_OF(7)};
#undef PIVRA_WEIGHTS_OF
#undef PIVRA_WEIGHTS

namespace pivra {
namespace {

// Positions are 14.18 fixed point and wrap.
constexpr int32_t wrap(uint32_t n) { return static_cast<int32_t>(n); }

// A step word: how far to shift, and in bits 3 and up the step on the thinned-out grid.
struct Step {
  int32_t shift;
  uint32_t step;

  explicit Step(int32_t word) : shift(word & 7), step(static_cast<uint32_t>(word >> 3)) {}
};

// One axis at one output: the sample, how far its neighbour is, and the phase
// between them. A neighbour without weight may lie outside: it is the sample itself.
struct Tap {
  int32_t sample, neighbour, phase;

  Tap() = default;
  Tap(uint32_t position, int32_t shift)
      : sample((wrap(position) >> 18) * (1 << shift)),
        neighbour(1 << shift),
        phase(wrap(position) >> 15 & 7) {
    if (phase == 0) neighbour = 0;
  }
};

// By how much a ratio of lengths thins the grid out.
int32_t shift_for(int32_t ratio) {
  static constexpr uint8_t kShift[32] = {0, 0, 0, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3,
                                         3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};
  return kShift[ratio < 31 ? ratio : 31];
}

int32_t step_for(int32_t source, int32_t destination) {
  const int32_t shift = shift_for(source / destination);
  const int32_t last = wrap(static_cast<uint32_t>((source - 1) >> shift) << 18);
  return wrap(static_cast<uint32_t>(last / destination) << 3) | shift;
}

}  // namespace

void rsz_org_steps(int32_t sw, int32_t sh, int32_t dw, int32_t dh, int32_t rotation,
                   int32_t *step_x, int32_t *step_y) {
  const bool turned = rotation == 1 || rotation == 2;
  *step_x = step_for(sw, turned ? dh : dw);
  *step_y = step_for(sh, turned ? dw : dh);
}

}  // namespace pivra

void pivra_rsz_8b_org(const uint8_t *src, int32_t src_stride, int32_t dw, int32_t dh,
                      int32_t dst_stride, uint8_t *dst, int32_t step_x, int32_t step_y) {
  using namespace pivra;
  const Step across(step_x), down(step_y);
  constexpr int32_t kStrip = 256;
  Tap taps[kStrip];
  uint32_t x = 0;
  for (int32_t first = 0; first < dw; first += kStrip) {
    const int32_t count = dw - first < kStrip ? dw - first : kStrip;
    for (int32_t i = 0; i < count; ++i, x += across.step) taps[i] = Tap(x, across.shift);
    uint32_t y = 0;
    for (int32_t row = 0; row < dh; ++row, y += down.step) {
      const Tap line(y, down.shift);
      const uint8_t *upper = src + ptrdiff_t{line.sample} * src_stride;
      const uint8_t *lower = upper + ptrdiff_t{line.neighbour} * src_stride;
      uint8_t *out = dst + ptrdiff_t{row} * dst_stride + first;
      for (int32_t i = 0; i < count; ++i) {
        const Tap &tap = taps[i];
        const uint8_t *weights = pivra_tbl_rsz_weight + 4 * (8 * tap.phase + line.phase);
        const uint8_t *a = upper + tap.sample, *b = lower + tap.sample;
        out[i] = static_cast<uint8_t>((weights[0] * a[0] + weights[1] * a[tap.neighbour] +
                                       weights[2] * b[0] + weights[3] * b[tap.neighbour]) >>
                                      6);
      }
    }
  }
}
