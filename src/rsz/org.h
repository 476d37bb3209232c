// The generic bilinear resampler's steps.
#ifndef PIVRA_RSZ_ORG_H
#define PIVRA_RSZ_ORG_H

#include <stdint.h>

#include "rsz/walk.h"

namespace pivra {

// The outputs one by one, at positions of 14.18 bits on a grid thinned out by a power of
// two. A neighbour without weight is not looked at: it may lie outside.
class BilinearSteps {
 public:
  static constexpr bool kSkips = false;

  // By a step word.
  explicit BilinearSteps(int32_t word)
      : shift_(word & 7), step_(static_cast<uint32_t>(word >> 3)) {}

  static bool all_means() { return false; }
  static int32_t whole() { return 0; }

  GrowStep next() {
    const auto position = static_cast<int32_t>(position_);
    const auto phase = static_cast<uint16_t>(position_ >> 15 & 7);
    position_ += step_;
    return {ptrdiff_t{position >> 18} * (1 << shift_),
            static_cast<uint8_t>(phase == 0 ? 0 : 1 << shift_),
            {static_cast<uint16_t>(8 - phase), phase, (1 << 24) / 8}};
  }

 private:
  int32_t shift_;
  uint32_t step_, position_ = 0;
};

struct BilinearWalk : Walk<BilinearSteps> {
  BilinearWalk(int32_t outputs, int32_t word) : Walk(outputs, kStripOutputs, BilinearSteps(word)) {}
};

// The step words of pivra_rsz_8b_org that map sw x sh samples to dw x dh, which a
// rotation code of 1 or 2 turns afterwards: its axes change places.
void rsz_org_steps(int32_t sw, int32_t sh, int32_t dw, int32_t dh, int32_t rotation,
                   int32_t *step_x, int32_t *step_y);

}  // namespace pivra

#endif
