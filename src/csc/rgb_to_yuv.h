// The RGB to YUV kernels of one instruction-set level.
#ifndef PIVRA_CSC_RGB_TO_YUV_H
#define PIVRA_CSC_RGB_TO_YUV_H

#include "core/levels.h"
#include "pivra.h"

namespace pivra {

#define PIVRA_MEMBER(SOURCE, source, DESTINATION, destination) \
  pivra_csc_kernel *source##_to_##destination;
struct RgbToYuv {
  PIVRA_RGB_TO_YUV(PIVRA_MEMBER)
};
#undef PIVRA_MEMBER

PIVRA_TABLES(RgbToYuv, rgb_to_yuv)

}  // namespace pivra

#endif
