// The perturbation of luma before it is cut to 5 and 6 bits, at one
// instruction-set level.
#ifndef PIVRA_DITHER_PERTURB_H
#define PIVRA_DITHER_PERTURB_H

#include "core/levels.h"
#include "pivra.h"

namespace pivra {

struct Dither {
  pivra_cpy_kernel *perturb;
};

PIVRA_TABLES(Dither, dither)

}  // namespace pivra

#endif
