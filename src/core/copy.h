// Rows of bytes, for whoever copies planes or parts of them.
#ifndef PIVRA_CORE_COPY_H
#define PIVRA_CORE_COPY_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace pivra {

inline void copy_rows(const uint8_t *src, size_t row_bytes, ptrdiff_t height, ptrdiff_t src_stride,
                      ptrdiff_t dst_stride, uint8_t *dst) {
  for (ptrdiff_t y = 0; y < height; ++y)
    memcpy(dst + y * dst_stride, src + y * src_stride, row_bytes);
}

}  // namespace pivra

#endif
