// The generic bilinear resampler: eight phases on a grid thinned out by a power of two.
#include "rsz/org.h"

#include <stddef.h>

#include "pivra.h"
#include "rsz/rows.h"

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

constexpr int32_t wrap(uint32_t n) { return static_cast<int32_t>(n); }

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
  const ResizeRows &rows = chosen(resize_rows_tables);
  BilinearWalk walk(dw, step_x);
  Strip strip;
  while (walk.next(strip)) {
    rows.plan[k8b](strip);
    BilinearSteps down(step_y);
    for (ptrdiff_t line = 0; line < dh; ++line) {
      const GrowStep step = down.next();
      const uint8_t *upper = src + step.at * src_stride + strip.source;
      rows.bilinear(strip, upper, upper + ptrdiff_t{step.pair} * src_stride, step.mix.n,
                    dst + line * dst_stride + strip.first);
    }
  }
}
