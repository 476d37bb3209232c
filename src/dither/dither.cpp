// Dithered conversion: the kernels and their dispatcher.
#include "dither/in_place.h"
#include "dither/perturb.h"
#include "pivra.h"

void pivra_dit_8b(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                  int32_t dst_stride, uint8_t *dst) {
  pivra::chosen(pivra::dither_tables).perturb(src, width, height, src_stride, dst_stride, dst);
}

namespace {

using pivra::Chroma;

// A picture at its beginning, with perturbed luma in the lower half of the destination.
struct Picture {
  uint8_t **src;
  int32_t *width, *src_stride, *dst_stride;
  uint8_t **dst;
  uint8_t *perturbed;
  int32_t perturbed_stride;
};

// The first rows of a picture.
typedef void ConvertRows(const Picture &picture, int32_t rows);

template <pivra_csc_kernel *kKernel, Chroma kChroma>
void dithered(const Picture &p, int32_t rows) {
  uint8_t *src[4] = {p.perturbed, p.src[1], p.src[2]};
  int32_t stride[4] = {p.perturbed_stride, p.src_stride[1], p.src_stride[2]};
  pivra::convert_in_place(kKernel, kChroma, src, p.width, rows, stride, p.dst_stride, p.dst);
}

// Of the source's own luma, but at the stride of the perturbed one: callers rely on it.
template <pivra_csc_kernel *kKernel>
void undithered(const Picture &p, int32_t rows) {
  int32_t stride[4] = {p.perturbed_stride, p.src_stride[1], p.src_stride[2]};
  kKernel(p.src, p.width, &rows, stride, p.dst_stride, p.dst);
}

// The margin is the rows at the bottom that are converted from the source as they are.
struct Kernel {
  ConvertRows *above;
  pivra_csc_kernel *margin;
  int32_t margin_rows, margin_chroma_rows;
};

// Callers know the margin of yuv444 to rgb565 in the other order of colours and
// with its chroma taken for that of 4:2:0.
constexpr pivra_csc_kernel *kMarginOfYuv444ToRgb565 = pivra_csc_yuv420_to_bgr565;

struct Kernels {
#define PIVRA_MEMBER(source, destination) Kernel source##_to_##destination;
  PIVRA_DITHER(PIVRA_MEMBER)
#undef PIVRA_MEMBER
};

// clang-format off
constexpr Kernels kKernels = {
    {dithered<pivra_csc_yuv400_to_rgb565, Chroma::kNone>,        nullptr,                     0, 0},
    {dithered<pivra_csc_yuv420_to_rgb565, Chroma::kHalvedDrift>, pivra_csc_yuv420_to_rgb565,  4, 2},
    {dithered<pivra_csc_yuv420_to_bgr565, Chroma::kHalved>,      pivra_csc_yuv420_to_bgr565,  4, 2},
    {undithered<pivra_csc_yuv422n_to_rgb565>,                    pivra_csc_yuv422n_to_rgb565, 4, 4},
    {undithered<pivra_csc_yuv422n_to_bgr565>,                    pivra_csc_yuv422n_to_bgr565, 4, 4},
    {undithered<pivra_csc_yuv422w_to_rgb565>,                    pivra_csc_yuv422w_to_rgb565, 4, 2},
    {undithered<pivra_csc_yuv422w_to_bgr565>,                    pivra_csc_yuv422w_to_bgr565, 4, 2},
    {dithered<pivra_csc_yuv444_to_rgb565, Chroma::kFull>,        kMarginOfYuv444ToRgb565,     4, 4},
    {dithered<pivra_csc_yuv444_to_bgr565, Chroma::kFull>,        pivra_csc_yuv444_to_bgr565,  4, 4},
};
// clang-format on

// A picture that is lower than the margin is all margin, with all of its chroma.
void convert_margin(const Kernel &kernel, const Picture &p, const int32_t *height) {
  const bool low = height[0] < kernel.margin_rows;
  int32_t rows = low ? height[0] : kernel.margin_rows;
  const ptrdiff_t above = height[0] - rows;
  const auto plane_below = [&](int plane, ptrdiff_t row) {
    return p.src[plane] + row * p.src_stride[plane];
  };
  const auto chroma_above = [&](int plane) {
    return low ? 0 : ptrdiff_t{height[plane]} - kernel.margin_chroma_rows;
  };
  uint8_t *src[4] = {plane_below(0, above), plane_below(1, chroma_above(1)),
                     plane_below(2, chroma_above(2))};
  uint8_t *dst[4] = {p.dst[0] + above * p.dst_stride[0]};
  kernel.margin(src, p.width, &rows, p.src_stride, p.dst_stride, dst);
}

void convert(const Kernel &kernel, uint8_t **src, int32_t *width, const int32_t *height,
             int32_t *src_stride, int32_t *dst_stride, uint8_t **dst) {
  if (width[0] <= 0 || height[0] <= 0) return;
  const auto half = static_cast<ptrdiff_t>((int64_t{height[0]} * dst_stride[0]) >> 1);
  const Picture picture = {src, width,         src_stride,        dst_stride,
                           dst, dst[0] + half, dst_stride[0] >> 1};
  const int32_t above = height[0] - kernel.margin_rows;
  if (above > 0) {
    pivra_dit_8b(src[0], width[0], above, src_stride[0], picture.perturbed_stride,
                 picture.perturbed);
    kernel.above(picture, above);
  }
  if (kernel.margin_rows > 0) convert_margin(kernel, picture, height);
}

}  // namespace

#define PIVRA_DEFINE(source, destination)                                                         \
  void PIVRA_DITHER_NAME(source, destination)(uint8_t * *src, int32_t * width, int32_t * height,  \
                                              int32_t * src_stride, int32_t * dst_stride,         \
                                              uint8_t * *dst) {                                   \
    convert(kKernels.source##_to_##destination, src, width, height, src_stride, dst_stride, dst); \
  }
PIVRA_DITHER(PIVRA_DEFINE)
#undef PIVRA_DEFINE

namespace {

// A yuv420 picture with its luma perturbed.
void copy(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride, int32_t *dst_stride,
          uint8_t **dst) {
  for (int plane = 0; plane < 3; ++plane) {
    pivra_cpy_kernel *const kernel = plane == 0 ? pivra_dit_8b : pivra_cpy_8b;
    kernel(src[plane], width[plane], height[plane], src_stride[plane], dst_stride[plane],
           dst[plane]);
  }
}

struct Pair {
  int32_t source, destination;
  pivra_csc_kernel *kernel;
};

// Callers know 4:2:2 to bgr565 in the order of rgb565.
constexpr Pair kPairs[] = {
    {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_RGB565, pivra_csc_yuv400_to_rgb565_dither},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565, pivra_csc_yuv420_to_rgb565_dither},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_BGR565, pivra_csc_yuv420_to_bgr565_dither},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV420, copy},
    {PIVRA_FORMAT_YV12, PIVRA_FORMAT_RGB565, pivra_csc_yuv420_to_rgb565_dither},
    {PIVRA_FORMAT_YV12, PIVRA_FORMAT_BGR565, pivra_csc_yuv420_to_bgr565_dither},
    {PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_RGB565, pivra_csc_yuv422n_to_rgb565_dither},
    {PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_BGR565, pivra_csc_yuv422n_to_rgb565_dither},
    {PIVRA_FORMAT_YUV422W, PIVRA_FORMAT_RGB565, pivra_csc_yuv422w_to_rgb565_dither},
    {PIVRA_FORMAT_YUV422W, PIVRA_FORMAT_BGR565, pivra_csc_yuv422w_to_rgb565_dither},
    {PIVRA_FORMAT_YUV444, PIVRA_FORMAT_RGB565, pivra_csc_yuv444_to_rgb565_dither},
    {PIVRA_FORMAT_YUV444, PIVRA_FORMAT_BGR565, pivra_csc_yuv444_to_bgr565_dither},
};

}  // namespace

int32_t pivra_csc_dither(const ImageDesc *src, ImageDesc *dst) {
  for (const Pair &pair : kPairs) {
    if (pair.source != src->format || pair.destination != dst->format) continue;
    ImageDesc from = *src;
    if (from.format == PIVRA_FORMAT_YV12) {  // its planes, but not their strides
      from.plane[1] = src->plane[2];
      from.plane[2] = src->plane[1];
    }
    pair.kernel(from.plane, from.width, from.height, from.stride, dst->stride, dst->plane);
    return PIVRA_OK;
  }
  return PIVRA_UNSUPPORTED;
}
