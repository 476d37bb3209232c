// The RGB to RGB kernels of one instruction-set level.
#ifndef PIVRA_CSC_RGB_TO_RGB_H
#define PIVRA_CSC_RGB_TO_RGB_H

#include "core/levels.h"
#include "pivra.h"

namespace pivra {

#define PIVRA_MEMBER(SOURCE, source, DESTINATION, destination) \
  pivra_csc_kernel *source##_to_##destination;
struct RgbToRgb {
  PIVRA_RGB_TO_RGB(PIVRA_MEMBER)
};
#undef PIVRA_MEMBER

PIVRA_TABLES(RgbToRgb, rgb_to_rgb)

}  // namespace pivra

#endif
