// Turns and mirrors of planes: the exported kernels, their tables and the dispatcher.
#include "pivra.h"
#include "turn/turn.h"

namespace {

template <int code, int unit>
void turn_plane(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                int32_t dst_stride, uint8_t *dst) {
  // Quarter turns of 16-bit units count their rows' distance in units.
  if (unit == 2 && pivra::is_quarter_turn(code)) {
    src_stride &= ~1;
    dst_stride &= ~1;
  }
  pivra::turn<code, unit>(pivra::chosen(pivra::turns_tables), src, width, height, src_stride,
                          dst_stride, dst);
}

constexpr int k8b = 1, k16b = 2, k24b = 3;  // bytes of a unit

}  // namespace

#define PIVRA_DEFINE(bits, turn, CODE)                                                      \
  void PIVRA_ROT_NAME(bits, turn)(const uint8_t *src, int32_t width, int32_t height,        \
                                  int32_t src_stride, int32_t dst_stride, uint8_t *dst) {   \
    turn_plane<PIVRA_ROT_##CODE, k##bits>(src, width, height, src_stride, dst_stride, dst); \
  }
#define PIVRA_ENTRY(bits, turn, CODE) PIVRA_ROT_NAME(bits, turn),
#define PIVRA_TABLE(bits)                                              \
  PIVRA_ROT_KERNELS(PIVRA_DEFINE, bits)                                \
  pivra_rot_kernel *const pivra_tbl_fn_rot_##bits[PIVRA_ROT_CODES] = { \
      pivra_cpy_##bits, PIVRA_ROT_KERNELS(PIVRA_ENTRY, bits)};
PIVRA_TABLE(8b)
PIVRA_TABLE(16b)
PIVRA_TABLE(24b)
#undef PIVRA_TABLE
#undef PIVRA_ENTRY
#undef PIVRA_DEFINE

namespace {

void turn_planes(pivra_rot_kernel *kernel, const ImageDesc &src, const ImageDesc &dst, int first,
                 int count) {
  for (int plane = first; plane < first + count; ++plane)
    kernel(src.plane[plane], src.width[plane], src.height[plane], src.stride[plane],
           dst.stride[plane], dst.plane[plane]);
}

// Formats come in groups of a hundred.
bool in_group(int32_t format, int32_t first) { return format >= first && format <= first + 99; }

}  // namespace

int32_t pivra_rot(const ImageDesc *src, int32_t rotation, ImageDesc *dst) {
  if (rotation < 0 || rotation >= PIVRA_ROT_CODES) return PIVRA_UNSUPPORTED;
  const int32_t format = src->format;
  if (format == PIVRA_FORMAT_T64X32) return PIVRA_UNSUPPORTED;
  if (format == PIVRA_FORMAT_NV12) {
    turn_planes(pivra_tbl_fn_rot_8b[rotation], *src, *dst, 0, 1);
    turn_planes(pivra_tbl_fn_rot_16b[rotation], *src, *dst, 1, 1);
  } else if (in_group(format, PIVRA_FORMAT_YUV400)) {
    turn_planes(pivra_tbl_fn_rot_8b[rotation], *src, *dst, 0,
                format == PIVRA_FORMAT_YUV400 ? 1 : 3);
  } else if (in_group(format, PIVRA_FORMAT_RGB565)) {
    turn_planes(pivra_tbl_fn_rot_16b[rotation], *src, *dst, 0, 1);
  } else if (in_group(format, PIVRA_FORMAT_RGB888)) {
    turn_planes(pivra_tbl_fn_rot_24b[rotation], *src, *dst, 0, 1);
  } else {
    return PIVRA_UNSUPPORTED;
  }
  return PIVRA_OK;
}
