// Detail enhancement of a plane.
#include <string.h>

#include "filter/rows.h"
#include "pivra.h"

namespace {

// How far the neighbours reach that a sample is compared with.
constexpr int32_t kReach = 2;

}  // namespace

void detail_enh(const uint8_t *src, int32_t width, int32_t height, uint8_t *dst) {
  if (width <= 0 || height <= 0) return;
  const auto sharpen = pivra::chosen(pivra::filter_rows_tables).sharpen;
  const ptrdiff_t stride = width;
  const size_t row_bytes = static_cast<size_t>(width);
  for (int32_t y = 0; y < height; ++y, src += stride, dst += stride) {
    if (width <= 2 * kReach || y < kReach || y >= height - kReach) {
      memcpy(dst, src, row_bytes);
      continue;
    }
    memcpy(dst, src, kReach);
    sharpen(src + kReach, stride, width - 2 * kReach, dst + kReach);
    memcpy(dst + width - kReach, src + width - kReach, kReach);
  }
}

int32_t pivra_vqe_de(void) { return PIVRA_REFUSED; }
int32_t pivra_vqe_dejagging(void) { return PIVRA_REFUSED; }
