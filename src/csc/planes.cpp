// YUV planes moved from one layout to another, without a change to any sample.
#include "core/copy.h"
#include "csc/repack.h"
#include "pivra.h"

namespace {

const pivra::Repack &rows() { return pivra::chosen(pivra::repack_tables); }

// Rows without padding on any side are one long row.
struct Runs {
  ptrdiff_t length, count;
};
Runs runs(int32_t width, int32_t height, bool packed) {
  if (packed && height > 0) return {ptrdiff_t{width} * height, 1};
  return {width, height};
}

}  // namespace

void pivra_csc_1x1_to_1x2(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                          int32_t dst_stride, uint8_t *dst) {
  if (width <= 0) return;
  const ptrdiff_t twice = 2 * ptrdiff_t{dst_stride};
  for (ptrdiff_t y = 0; y < height; ++y)
    pivra::copy_rows(src + y * src_stride, static_cast<size_t>(width), 2, 0, dst_stride,
                     dst + y * twice);
}

void pivra_csc_1x2_to_1x1(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                          int32_t dst_stride, uint8_t *dst) {
  if (width <= 0) return;
  pivra::copy_rows(src, static_cast<size_t>(width), height - height / 2, 2 * ptrdiff_t{src_stride},
                   dst_stride, dst);
}

void pivra_csc_8b8b_pck(const uint8_t *a, const uint8_t *b, int32_t width, int32_t height,
                        int32_t a_stride, int32_t b_stride, int32_t dst_stride, uint8_t *dst) {
  const bool packed = a_stride == width && b_stride == width && dst_stride / 2 == width;
  const Runs run = runs(width, height, packed && dst_stride % 2 == 0);
  const auto interleave = rows().interleave;
  for (ptrdiff_t y = 0; y < run.count; ++y)
    interleave(a + y * a_stride, b + y * b_stride, run.length, dst + y * dst_stride);
}

void pivra_csc_8b8b_unpck(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                          int32_t a_stride, int32_t b_stride, uint8_t *a, uint8_t *b) {
  if (width <= 0) return;
  const int32_t pairs = width / 2;
  const bool packed = src_stride == 2 * pairs && a_stride == pairs && b_stride == pairs;
  const Runs run = runs(pairs, height, packed && width == src_stride);
  const auto deinterleave = rows().deinterleave;
  for (ptrdiff_t y = 0; y < run.count; ++y) {
    const uint8_t *row = src + y * src_stride;
    deinterleave(row, run.length, a + y * a_stride, b + y * b_stride);
    if (width & 1) a[y * a_stride + pairs] = row[2 * pairs];
  }
}

namespace {

// The arrays of a kernel.
struct Planes {
  uint8_t **src;
  const int32_t *width, *height, *src_stride, *dst_stride;
  uint8_t **dst;

  // Source plane `from`, walked by the stride of source plane `stride_of`, to
  // destination plane `to`.
  void move(pivra_cpy_kernel *kernel, int from, int to, int stride_of) const {
    kernel(src[from], width[from], height[from], src_stride[stride_of], dst_stride[to], dst[to]);
  }
  void move(pivra_cpy_kernel *kernel, int from, int to) const { move(kernel, from, to, from); }
};

// What becomes of chroma. Samples that come first in a pair are those of plane kFirst.

template <pivra_cpy_kernel *kernel>
void straight(const Planes &p) {
  p.move(kernel, 1, 1);
  p.move(kernel, 2, 2);
}

template <pivra_cpy_kernel *kernel>
void crossed(const Planes &p) {
  p.move(kernel, 1, 2);
  p.move(kernel, 2, 1);
}

// Callers rely on the source strides being crossed together with the planes.
void crossed_with_strides(const Planes &p) {
  p.move(pivra_cpy_8b, 1, 2, 2);
  p.move(pivra_cpy_8b, 2, 1, 1);
}

template <int kFirst>
void packed(const Planes &p) {
  constexpr int kSecond = 3 - kFirst;
  pivra_csc_8b8b_pck(p.src[kFirst], p.src[kSecond], p.width[1], p.height[1], p.src_stride[kFirst],
                     p.src_stride[kSecond], p.dst_stride[1], p.dst[1]);
}

template <int kFirst>
void unpacked(const Planes &p) {
  constexpr int kSecond = 3 - kFirst;
  pivra_csc_8b8b_unpck(p.src[1], 2 * p.width[1], p.height[1], p.src_stride[1], p.dst_stride[kFirst],
                       p.dst_stride[kSecond], p.dst[kFirst], p.dst[kSecond]);
}

}  // namespace

#define PIVRA_DEFINE(source, destination, chroma)                                             \
  void PIVRA_CSC_NAME(source, destination)(uint8_t * *src, int32_t * width, int32_t * height, \
                                           int32_t * src_stride, int32_t * dst_stride,        \
                                           uint8_t * *dst) {                                  \
    const Planes planes = {src, width, height, src_stride, dst_stride, dst};                  \
    planes.move(pivra_cpy_8b, 0, 0);                                                          \
    chroma(planes);                                                                           \
  }
// clang-format off
PIVRA_DEFINE(yuv420,  yv12,    crossed_with_strides)
PIVRA_DEFINE(yuv420,  yuv422n, straight<pivra_csc_1x1_to_1x2>)
PIVRA_DEFINE(yuv420,  nv12,    packed<1>)
PIVRA_DEFINE(yuv420,  nv21,    packed<2>)
PIVRA_DEFINE(yuv422n, yuv420,  straight<pivra_csc_1x2_to_1x1>)
PIVRA_DEFINE(yuv422n, yv12,    crossed<pivra_csc_1x2_to_1x1>)
PIVRA_DEFINE(yv16,    yuv420,  crossed<pivra_csc_1x2_to_1x1>)
PIVRA_DEFINE(yv16,    yv12,    straight<pivra_csc_1x2_to_1x1>)
PIVRA_DEFINE(nv12,    yuv420,  unpacked<1>)
PIVRA_DEFINE(nv12,    yv12,    unpacked<2>)
PIVRA_DEFINE(nv21,    yuv420,  unpacked<2>)
PIVRA_DEFINE(nv21,    yv12,    unpacked<1>)
// clang-format on
#undef PIVRA_DEFINE

// Both planes as one run each, whatever the strides say.
void pivra_csc_nv21_to_nv12(uint8_t **src, int32_t *width, int32_t *height, int32_t *, int32_t *,
                            uint8_t **dst) {
  const int32_t w = width[0], h = height[0];
  if (w <= 0) return;
  pivra_cpy_8b(src[0], w, h, w, w, dst[0]);
  rows().swap_pairs(src[1], (ptrdiff_t{w} * (h >> 1) + 1) / 2, dst[1]);
}
