// Two views side by side to one picture in red and cyan.
#include "filter/rows.h"
#include "pivra.h"

namespace {

void pack_rows(const uint8_t *a, const uint8_t *b, ptrdiff_t row_bytes, int32_t rows,
               ptrdiff_t src_step, ptrdiff_t dst_step, uint8_t *dst) {
  const auto merge_triples = pivra::chosen(pivra::filter_rows_tables).merge_triples;
  for (; rows > 0; --rows, a += src_step, b += src_step, dst += dst_step)
    merge_triples(a, b, row_bytes, dst);
}

// The views lie side by side, and neither picture has padding.
bool views_fit(const ImageDesc &src, const ImageDesc &dst) {
  const int64_t width = dst.width[0], stride = dst.stride[0];
  return src.format == dst.format && src.format == PIVRA_FORMAT_RGB888 &&
         src.width[0] == 2 * width && src.height[0] == dst.height[0] &&
         src.stride[0] == 2 * stride && src.stride[0] == 4 * width + src.width[0];
}

}  // namespace

int32_t pivra_fpa(const ImageDesc *src, ImageDesc *dst, int32_t order) {
  if (!views_fit(*src, *dst) || order < 1 || order > 2) return PIVRA_REFUSED;
  const ptrdiff_t row_bytes = dst->stride[0];
  const uint8_t *left = src->plane[0], *right = left + row_bytes;
  pack_rows(order == 1 ? left : right, order == 1 ? right : left, row_bytes, src->height[0],
            src->stride[0], row_bytes, dst->plane[0]);
  return PIVRA_OK;
}

void pivra_fpa_frm_pack(const uint8_t *a, const uint8_t *b, uint8_t *dst, int32_t rows, int32_t,
                        int32_t, int32_t src_step, int32_t length, int32_t) {
  pack_rows(a, b, length, rows, src_step >> 1, length >> 1, dst);
}
