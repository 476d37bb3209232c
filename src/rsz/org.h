// The generic bilinear resampler's steps.
#ifndef PIVRA_RSZ_ORG_H
#define PIVRA_RSZ_ORG_H

#include <stdint.h>

namespace pivra {

// The step words of pivra_rsz_8b_org that map sw x sh samples to dw x dh, which a
// rotation code of 1 or 2 turns afterwards: its axes change places.
void rsz_org_steps(int32_t sw, int32_t sh, int32_t dw, int32_t dh, int32_t rotation,
                   int32_t *step_x, int32_t *step_y);

}  // namespace pivra

#endif
