// The conversion dispatcher, and the exported kernels that it chooses among.
#include "csc/rgb_to_rgb.h"
#include "csc/rgb_to_yuv.h"
#include "csc/yuv_to_rgb.h"
#include "pivra.h"
#include "tile/tiled_to_rgb.h"

// Exported kernels of a family: handed on to the chosen level.
#define PIVRA_HAND_ON(family, source, destination)                                            \
  void PIVRA_CSC_NAME(source, destination)(uint8_t * *src, int32_t * width, int32_t * height, \
                                           int32_t * src_stride, int32_t * dst_stride,        \
                                           uint8_t * *dst) {                                  \
    pivra::chosen(pivra::family##_tables)                                                     \
        .source##_to_##destination(src, width, height, src_stride, dst_stride, dst);          \
  }
#define PIVRA_DEFINE(SOURCE, source, DESTINATION, destination) \
  PIVRA_HAND_ON(yuv_to_rgb, source, destination)
PIVRA_YUV_TO_RGB_DIRECT(PIVRA_DEFINE)
#undef PIVRA_DEFINE
#define PIVRA_DEFINE(SOURCE, source, DESTINATION, destination) \
  PIVRA_HAND_ON(rgb_to_yuv, source, destination)
PIVRA_RGB_TO_YUV(PIVRA_DEFINE)
#undef PIVRA_DEFINE
#define PIVRA_DEFINE(SOURCE, source, DESTINATION, destination) \
  PIVRA_HAND_ON(rgb_to_rgb, source, destination)
PIVRA_RGB_TO_RGB(PIVRA_DEFINE)
#undef PIVRA_DEFINE
#define PIVRA_DEFINE(SOURCE, source, DESTINATION, destination) \
  PIVRA_HAND_ON(tiled_to_rgb, source, destination)
PIVRA_TILED_TO_RGB(PIVRA_DEFINE)
#undef PIVRA_DEFINE

namespace {

template <class T>
void exchange(T &a, T &b) {
  const T t = a;
  a = b;
  b = t;
}

// Exchanged in the caller's descriptor and left so: callers rely on finding U first.
void put_u_first(uint8_t **planes, int32_t *strides) {
  exchange(planes[1], planes[2]);
  exchange(strides[1], strides[2]);
}

}  // namespace

#define PIVRA_DEFINE(SOURCE, source, DESTINATION, destination)                                \
  void PIVRA_CSC_NAME(source, destination)(uint8_t * *src, int32_t * width, int32_t * height, \
                                           int32_t * src_stride, int32_t * dst_stride,        \
                                           uint8_t * *dst) {                                  \
    put_u_first(src, src_stride);                                                             \
    PIVRA_CSC_NAME(yuv420, destination)(src, width, height, src_stride, dst_stride, dst);     \
  }
PIVRA_YV12_TO_RGB(PIVRA_DEFINE)
#undef PIVRA_DEFINE

namespace {

struct Pair {
  int32_t source, destination;
  pivra_csc_kernel *kernel;
};

#define PIVRA_PAIR(SOURCE, source, DESTINATION, destination) \
  {PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION, PIVRA_CSC_NAME(source, destination)},
constexpr Pair kPairs[] = {PIVRA_CSC_PAIRS(PIVRA_PAIR)};
#undef PIVRA_PAIR

constexpr int32_t kSmallest = 8;

bool too_small(const ImageDesc &image) {
  return image.width[0] < kSmallest || image.height[0] < kSmallest;
}

// The 256x16 layout is that of high-definition frames only.
constexpr int32_t kSmallestWidth256x16 = 1281;

bool too_narrow(const ImageDesc &src) {
  return src.format == PIVRA_FORMAT_T256X16 && src.width[0] < kSmallestWidth256x16;
}

}  // namespace

int32_t pivra_csc(ImageDesc *src, ImageDesc *dst) {
  if (src->format == dst->format) return PIVRA_REFUSED;
  if (too_small(*src) || too_small(*dst) || too_narrow(*src)) return PIVRA_UNSUPPORTED;
  for (const Pair &pair : kPairs) {
    if (pair.source != src->format || pair.destination != dst->format) continue;
    pair.kernel(src->plane, src->width, src->height, src->stride, dst->stride, dst->plane);
    return PIVRA_OK;
  }
  return PIVRA_UNSUPPORTED;
}
