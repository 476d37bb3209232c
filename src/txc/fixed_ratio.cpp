// The resizers between the common broadcast sizes, which drop columns and rows.
#include "txc/fixed_ratio.h"

#include "pivra.h"

using pivra::FixedRatio;

namespace {

// The first `kept` of every `of` columns and rows; `step` bytes of a row at a time.
struct Ratio {
  int32_t kept, of, step;
  decltype(FixedRatio::one_of_two) FixedRatio::*rows;
};
constexpr Ratio k3To2 = {2, 3, 32, &FixedRatio::two_of_three};
constexpr Ratio k2To1 = {1, 2, 32, &FixedRatio::one_of_two};
constexpr Ratio k4To3 = {3, 4, 24, &FixedRatio::three_of_four};

// What is left of a row or of the rows, short of a step, is not made.
void decimate(const Ratio &ratio, int32_t unit, const uint8_t *src, uint8_t *dst, int32_t width,
              int32_t height, ptrdiff_t src_stride, ptrdiff_t dst_stride) {
  pivra::keep_units *keep = (pivra::chosen(pivra::fixed_ratio_tables).*ratio.rows)[unit - 1];
  const ptrdiff_t row_bytes = ptrdiff_t{width} * unit / ratio.step * ratio.step;
  for (; height >= ratio.kept; height -= ratio.kept) {
    for (int32_t row = 0; row < ratio.kept; ++row, dst += dst_stride)
      keep(src + row * src_stride, row_bytes, dst);
    src += ratio.of * src_stride;
  }
}

constexpr int32_t kLuma = 1, kChroma = 2;  // bytes of a sample and of a pair

constexpr int32_t kQhdWidth = 960, kQhdHeight = 540;

}  // namespace

void pivra_txc_rsz_1080p_720p_luma(const uint8_t *src, uint8_t *dst, int32_t width, int32_t height,
                                   int32_t src_stride, int32_t dst_stride) {
  decimate(k3To2, kLuma, src, dst, width, height, src_stride, dst_stride);
}
void pivra_txc_rsz_1080p_720p_chroma(const uint8_t *src, uint8_t *dst, int32_t width,
                                     int32_t height, int32_t src_stride, int32_t dst_stride) {
  decimate(k3To2, kChroma, src, dst, width, height, src_stride, dst_stride);
}
void pivra_txc_rsz_720p_qhd_luma(const uint8_t *src, uint8_t *dst, int32_t width, int32_t height,
                                 int32_t src_stride, int32_t dst_stride) {
  decimate(k4To3, kLuma, src, dst, width, height, src_stride, dst_stride);
}
void pivra_txc_rsz_720p_qhd_chroma(const uint8_t *src, uint8_t *dst, int32_t width, int32_t height,
                                   int32_t src_stride, int32_t dst_stride) {
  decimate(k4To3, kChroma, src, dst, width, height, src_stride, dst_stride);
}
void pivra_txc_rsz_1080p_qhd_luma(const uint8_t *src, uint8_t *dst, int32_t src_stride,
                                  int32_t dst_stride) {
  decimate(k2To1, kLuma, src, dst, kQhdWidth, kQhdHeight, src_stride, dst_stride);
}
void pivra_txc_rsz_1080p_qhd_chroma(const uint8_t *src, uint8_t *dst, int32_t src_stride,
                                    int32_t dst_stride) {
  decimate(k2To1, kChroma, src, dst, kQhdWidth / 2, kQhdHeight / 2, src_stride, dst_stride);
}

int32_t pivra_txc_rsz_1080p_720p(const ImageDesc *src, ImageDesc *dst) {
  pivra_txc_rsz_1080p_720p_luma(src->plane[0], dst->plane[0], dst->width[0], dst->height[0],
                                src->stride[0], dst->stride[0]);
  pivra_txc_rsz_1080p_720p_chroma(src->plane[1], dst->plane[1], dst->width[1], dst->height[1],
                                  src->stride[1], dst->stride[1]);
  return PIVRA_OK;
}
int32_t pivra_txc_rsz_720p_qhd(const ImageDesc *src, ImageDesc *dst) {
  pivra_txc_rsz_720p_qhd_luma(src->plane[0], dst->plane[0], dst->width[0], dst->height[0],
                              src->stride[0], dst->stride[0]);
  pivra_txc_rsz_720p_qhd_chroma(src->plane[1], dst->plane[1], dst->width[1], dst->height[1],
                                src->stride[1], dst->stride[1]);
  return PIVRA_OK;
}
int32_t pivra_txc_rsz_1080p_qhd(const ImageDesc *src, ImageDesc *dst) {
  pivra_txc_rsz_1080p_qhd_luma(src->plane[0], dst->plane[0], src->stride[0], dst->stride[0]);
  pivra_txc_rsz_1080p_qhd_chroma(src->plane[1], dst->plane[1], src->stride[1], dst->stride[1]);
  return PIVRA_OK;
}
