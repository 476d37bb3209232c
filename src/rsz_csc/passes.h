// The resizers to rgb565, as the dispatcher sees them.
#ifndef PIVRA_RSZ_CSC_PASSES_H
#define PIVRA_RSZ_CSC_PASSES_H

#include <stdint.h>

#include "pivra.h"

namespace pivra {

// Bytes of scratch: what callers know it to be, and for odd sizes what that comes short of.
int64_t rgb565_scratch(const ImageDesc &src, ImageDesc &dst);

// Of yuv420 or t64x32. The scratch is for this call alone; what can show of it is cleared.
// It may be null if both axes shrink.
int32_t resize_to_rgb565(const ImageDesc &src, ImageDesc &dst, uint8_t *scratch);

}  // namespace pivra

#endif
