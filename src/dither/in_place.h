// Conversion to 16-bit RGB over the luma that it reads.
#ifndef PIVRA_DITHER_IN_PLACE_H
#define PIVRA_DITHER_IN_PLACE_H

#include "pivra.h"

namespace pivra {

enum class Chroma {
  kNone,
  kFull,
  kHalved,       // 4:2:0
  kHalvedDrift,  // likewise, but with the odd sizes of pivra_csc_yuv420_to_rgb565
};

// As `kernel` does, of the size width[0] x height, but the pixels may run into
// the luma: its rows lie behind those of the pixels and half as far apart, so that
// the pixels catch up with them. Each is made of what is there when the rows above
// it and the pixels on its left have been written.
void convert_in_place(pivra_csc_kernel *kernel, Chroma chroma, uint8_t **src, int32_t *width,
                      int32_t height, int32_t *src_stride, int32_t *dst_stride, uint8_t **dst);

}  // namespace pivra

#endif
