// Plane copy: the four copy kernels and the dispatcher over formats.
#include "core/copy.h"

#include <string.h>

#include "pivra.h"

namespace {

using pivra::copy_rows;

// Bytes at which a tail stops being copied in whole blocks of 16 samples.
constexpr ptrdiff_t whole_blocks(ptrdiff_t samples) { return samples & ~ptrdiff_t{15}; }

bool empty(int32_t width, int32_t height) { return width <= 0 || height <= 0; }

// The tail of a contiguous run, behind `copied` of `bound` samples. Each sample
// becomes the bound as it is copied, and the position moves on by a byte
// whatever the sample's size; callers rely on the bytes this leaves.
template <class Sample>
void copy_tail(const uint8_t *src, uint8_t *dst, ptrdiff_t copied, ptrdiff_t bound) {
  for (; copied < bound; ++copied, ++src, ++dst) {
    Sample sample;
    memcpy(&sample, src, sizeof sample);
    memcpy(dst, &sample, sizeof sample);
    bound = sample;
  }
}

template <class Sample>
void copy_run(const uint8_t *src, uint8_t *dst, ptrdiff_t samples) {
  const ptrdiff_t blocks = whole_blocks(samples);
  const size_t bytes = static_cast<size_t>(blocks) * sizeof(Sample);
  memcpy(dst, src, bytes);
  copy_tail<Sample>(src + bytes, dst + bytes, blocks, samples);
}

// Whole pixels, with nothing peculiar about any size.
template <size_t kBytes>
void copy_pixels(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                 int32_t dst_stride, uint8_t *dst) {
  if (empty(width, height)) return;
  const size_t row_bytes = static_cast<size_t>(width) * kBytes;
  if (src_stride == dst_stride && static_cast<size_t>(src_stride) == row_bytes)
    memcpy(dst, src, row_bytes * static_cast<size_t>(height));
  else
    copy_rows(src, row_bytes, height, src_stride, dst_stride, dst);
}

}  // namespace

void pivra_cpy_8b(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                  int32_t dst_stride, uint8_t *dst) {
  if (empty(width, height)) return;
  if (width == src_stride && width == dst_stride)
    copy_run<uint8_t>(src, dst, ptrdiff_t{width} * height);
  else
    copy_rows(src, static_cast<size_t>(width), height, src_stride, dst_stride, dst);
}

void pivra_cpy_16b(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                   int32_t dst_stride, uint8_t *dst) {
  if (empty(width, height)) return;
  const int32_t src_step = src_stride >> 1, dst_step = dst_stride >> 1;
  if (width == src_step && width == dst_step) {
    copy_run<uint16_t>(src, dst, ptrdiff_t{width} * height);
    return;
  }
  // A tail of n samples moves on by a byte each: n + 1 bytes. Rows lie half a stride apart.
  const ptrdiff_t blocks = whole_blocks(width), tail = width - blocks;
  const ptrdiff_t row_bytes = 2 * blocks + (tail == 0 ? 0 : tail + 1);
  copy_rows(src, static_cast<size_t>(row_bytes), height, src_step, dst_step, dst);
}

void pivra_cpy_24b(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                   int32_t dst_stride, uint8_t *dst) {
  copy_pixels<3>(src, width, height, src_stride, dst_stride, dst);
}

void pivra_cpy_32b(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                   int32_t dst_stride, uint8_t *dst) {
  copy_pixels<4>(src, width, height, src_stride, dst_stride, dst);
}

namespace {

void copy_plane(pivra_cpy_kernel *kernel, const ImageDesc &src, const ImageDesc &dst, int plane) {
  kernel(src.plane[plane], src.width[plane], src.height[plane], src.stride[plane],
         dst.stride[plane], dst.plane[plane]);
}

// Formats come in groups of a hundred.
bool in_group(int32_t format, int32_t first) { return format >= first && format <= first + 99; }

}  // namespace

int32_t pivra_cpy(const ImageDesc *src, ImageDesc *dst) {
  const int32_t format = src->format;
  if (format != dst->format) return PIVRA_REFUSED;
  if (in_group(format, PIVRA_FORMAT_RGB565)) {
    copy_plane(pivra_cpy_16b, *src, *dst, 0);
    return PIVRA_OK;
  }
  if (!in_group(format, PIVRA_FORMAT_YUV400) || format == PIVRA_FORMAT_T64X32)
    return PIVRA_UNSUPPORTED;
  copy_plane(pivra_cpy_8b, *src, *dst, 0);
  if (format == PIVRA_FORMAT_NV12) {
    copy_plane(pivra_cpy_16b, *src, *dst, 1);
  } else if (format != PIVRA_FORMAT_YUV400) {
    copy_plane(pivra_cpy_8b, *src, *dst, 1);
    copy_plane(pivra_cpy_8b, *src, *dst, 2);
  }
  return PIVRA_OK;
}
