// Detail enhancement of a plane.
#include <string.h>

#include "filter/rows.h"
#include "pivra.h"

namespace {

// How far the neighbours reach that a sample is compared with.
constexpr int32_t kReach = 2;

// Rows whose edges are copied while the rest of them is at hand.
constexpr int32_t kBand = 16;

}  // namespace

void detail_enh(const uint8_t *src, int32_t width, int32_t height, uint8_t *dst) {
  if (width <= 0 || height <= 0) return;
  const ptrdiff_t stride = width;
  if (width <= 2 * kReach || height <= 2 * kReach) {
    memcpy(dst, src, static_cast<size_t>(stride * height));
    return;
  }
  // The last two samples of a row and the first two of the next one lie side by side.
  constexpr int32_t kEdges = 2 * kReach;
  const ptrdiff_t outer = kReach * stride + kReach, inner = stride - kEdges;
  memcpy(dst, src, static_cast<size_t>(outer));
  src += outer;
  dst += outer;
  const auto sharpen = pivra::chosen(pivra::filter_rows_tables).sharpen;
  for (int32_t left = height - 2 * kReach; left > 0; left -= kBand) {
    const int32_t rows = left < kBand ? left : kBand;
    sharpen(src, stride, inner, rows, dst);
    for (int32_t y = 0; y < rows; ++y, src += stride, dst += stride)
      memcpy(dst + inner, src + inner, kEdges);
  }
  memcpy(dst, src, static_cast<size_t>(outer - kEdges));
}

int32_t pivra_vqe_de(void) { return PIVRA_REFUSED; }
int32_t pivra_vqe_dejagging(void) { return PIVRA_REFUSED; }
