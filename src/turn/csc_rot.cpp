// Conversions that turn the picture as well.
#include "core/bounds.h"
#include "csc/yuv_to_rgb.h"
#include "pivra.h"
#include "turn/turn.h"

namespace {

using pivra::Block;
using pivra::smaller;

// Of every two rows the first.
template <int code>
void turn_even_rows(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                    int32_t dst_stride, uint8_t *dst) {
  pivra::turn<code, 1>(pivra::chosen(pivra::turns_tables), src, width, height / 2,
                       2 * ptrdiff_t{src_stride}, dst_stride, dst);
}

// Converted block by block into a buffer that stays in the cache, and turned from there.
// Rows of a block make whole cache lines of a quarter turn.
template <int code>
void convert_and_turn(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
                      int32_t *dst_stride, uint8_t **dst) {
  constexpr int32_t kPixel = 4, kRows = 16, kColumns = 64;
  alignas(64) uint8_t pixels[kRows * kColumns * kPixel];
  uint8_t *buffer[] = {pixels};
  int32_t buffer_stride[] = {kColumns * kPixel};
  const auto convert = pivra::chosen(pivra::yuv_to_rgb_tables).yuyv_to_bgra8888;
  const pivra::Turns &turns = pivra::chosen(pivra::turns_tables);
  for (int32_t y = 0; y < height[0]; y += kRows)
    for (int32_t x = 0; x < width[0]; x += kColumns) {
      int32_t columns = smaller(kColumns, width[0] - x), rows = smaller(kRows, height[0] - y);
      uint8_t *block[] = {src[0] + ptrdiff_t{y} * src_stride[0] + ptrdiff_t{x} * 2};
      convert(block, &columns, &rows, src_stride, buffer_stride, buffer);
      pivra::turn<code, kPixel>(
          turns, pixels, columns, rows, buffer_stride[0], dst_stride[0],
          pivra::turned_block<code, kPixel>(Block{x, y, columns, rows}, width[0], height[0],
                                            dst_stride[0], dst[0]));
    }
}

}  // namespace

#define PIVRA_DEFINE(turn, CODE)                                                               \
  void pivra_csc_1x2_to_1x1_rot_##turn(const uint8_t *src, int32_t width, int32_t height,      \
                                       int32_t src_stride, int32_t dst_stride, uint8_t *dst) { \
    turn_even_rows<PIVRA_ROT_##CODE>(src, width, height, src_stride, dst_stride, dst);         \
  }
PIVRA_DEFINE(90l, 90L)
PIVRA_DEFINE(90r, 90R)
#undef PIVRA_DEFINE

#define PIVRA_DEFINE(turn, CODE)                                                         \
  void pivra_csc_yuyv_to_bgra8888_##turn(uint8_t **src, int32_t *width, int32_t *height, \
                                         int32_t *src_stride, int32_t *dst_stride,       \
                                         uint8_t **dst) {                                \
    convert_and_turn<PIVRA_ROT_##CODE>(src, width, height, src_stride, dst_stride, dst); \
  }
PIVRA_DEFINE(90l, 90L)
PIVRA_DEFINE(90r, 90R)
PIVRA_DEFINE(180, 180)
#undef PIVRA_DEFINE

pivra_rot_kernel *const pivra_tbl_fn_csc_1x2_to_1x1_rot[PIVRA_ROT_CODES] = {
    pivra_csc_1x2_to_1x1, pivra_csc_1x2_to_1x1_rot_90l, pivra_csc_1x2_to_1x1_rot_90r};

pivra_csc_kernel *const pivra_csc_rot_yuyv2bgra8888[PIVRA_ROT_CODES] = {
    pivra_csc_yuyv_to_bgra8888, pivra_csc_yuyv_to_bgra8888_90l, pivra_csc_yuyv_to_bgra8888_90r,
    pivra_csc_yuyv_to_bgra8888_180};

namespace {

void turn_plane(pivra_rot_kernel *kernel, const ImageDesc &src, int from, const ImageDesc &dst,
                int to) {
  kernel(src.plane[from], src.width[from], src.height[from], src.stride[from], dst.stride[to],
         dst.plane[to]);
}

// Where planar YUV has U; V is in the other one of planes 1 and 2.
int plane_of_u(int32_t format) {
  return format == PIVRA_FORMAT_YV12 || format == PIVRA_FORMAT_YV16 ? 2 : 1;
}

}  // namespace

int32_t pivra_csc_rot(const ImageDesc *src, int32_t rotation, ImageDesc *dst) {
  const int32_t from = src->format, to = dst->format;
  if (from == to) return PIVRA_REFUSED;
  if (rotation < 0 || rotation >= PIVRA_ROT_CODES) return PIVRA_UNSUPPORTED;
  if ((from == PIVRA_FORMAT_YUV422N || from == PIVRA_FORMAT_YV16) &&
      (to == PIVRA_FORMAT_YUV420 || to == PIVRA_FORMAT_YV12)) {
    const auto chroma = pivra_tbl_fn_csc_1x2_to_1x1_rot[rotation];
    if (!chroma) return PIVRA_UNSUPPORTED;
    const bool crossed = plane_of_u(from) != plane_of_u(to);
    turn_plane(pivra_tbl_fn_rot_8b[rotation], *src, 0, *dst, 0);
    turn_plane(chroma, *src, 1, *dst, crossed ? 2 : 1);
    turn_plane(chroma, *src, 2, *dst, crossed ? 1 : 2);
    return PIVRA_OK;
  }
  if (from == PIVRA_FORMAT_YUYV && to == PIVRA_FORMAT_BGRA8888) {
    const auto convert = pivra_csc_rot_yuyv2bgra8888[rotation];
    if (!convert) return PIVRA_UNSUPPORTED;
    ImageDesc in = *src;  // whose arrays the kernels take as they are, but do not write
    convert(in.plane, in.width, in.height, in.stride, dst->stride, dst->plane);
    return PIVRA_OK;
  }
  return PIVRA_UNSUPPORTED;
}
