// The exported deblocking filter.
#include "deblock/edges.h"
#include "pivra.h"

void pivra_dbf8x8_h263_hor(uint8_t *plane, int32_t strength, int32_t stride, int32_t width,
                           int32_t height) {
  pivra::chosen(pivra::deblock_tables).horizontal(plane, strength, stride, width, height);
}

void pivra_dbf8x8_h263_ver(uint8_t *plane, int32_t strength, int32_t stride, int32_t width,
                           int32_t height) {
  pivra::chosen(pivra::deblock_tables).vertical(plane, strength, stride, width, height);
}

namespace {

constexpr int32_t kStrongest = 12;      // of a plane
constexpr uint32_t kStrongestYuv = 15;  // of a picture

void filter(uint8_t *plane, int32_t strength, int32_t stride, int32_t width, int32_t height) {
  pivra_dbf8x8_h263_hor(plane, strength, stride, width, height);
  pivra_dbf8x8_h263_ver(plane, strength, stride, width, height);
}

}  // namespace

void pivra_dbf8x8(uint8_t *plane, int32_t qp, int32_t stride, int32_t width, int32_t height) {
  filter(plane, qp < kStrongest ? qp : kStrongest, stride, width, height);
}

int32_t pivra_dbf8x8_yuv(ImageDesc *picture, uint32_t qp) {
  if (qp > kStrongestYuv) return PIVRA_REFUSED;
  for (int i = 0; i < 3; ++i)
    if (picture->plane[i] != nullptr)
      filter(picture->plane[i], static_cast<int32_t>(qp), picture->stride[i], picture->width[i],
             picture->height[i]);
  return PIVRA_OK;
}
