// The dispatcher of resizing with conversion.
#include <stdlib.h>
#include <string.h>

#include "pivra.h"
#include "rsz/org.h"
#include "rsz_csc/passes.h"

namespace pivra {
namespace {

uint8_t *allocate(int64_t bytes) {
  if (bytes < 1) bytes = 1;
  return bytes > PTRDIFF_MAX ? nullptr : static_cast<uint8_t *>(malloc(static_cast<size_t>(bytes)));
}

int32_t through_scratch(const ImageDesc &src, ImageDesc &dst) {
  uint8_t *scratch = allocate(rgb565_scratch(src, dst));
  const int32_t result = resize_to_rgb565(src, dst, scratch);
  // The scratch of an empty picture stays allocated, as callers know it to.
  if (result != PIVRA_OK) return result;  // NOLINT(clang-analyzer-unix.Malloc)
  free(scratch);
  return PIVRA_OK;
}

bool empty(const ImageDesc &image) { return image.width[0] < 1 || image.height[0] < 1; }

int32_t to_rgb888(const ImageDesc &src, ImageDesc &dst) {
  if (empty(src) || empty(dst)) return PIVRA_OK;
  ImageDesc from = src;
  pivra_rsz_csc_yuv420_to_rgb888(from.plane, from.width, from.height, from.stride, dst.width,
                                 dst.height, dst.stride, dst.plane);
  return PIVRA_OK;
}

int32_t luma_alone(const ImageDesc &src, ImageDesc &dst) {
  if (empty(src) || empty(dst)) return PIVRA_OK;
  int32_t step_x, step_y;
  rsz_org_steps(src.width[0], src.height[0], dst.width[0], dst.height[0], 0, &step_x, &step_y);
  pivra_rsz_8b_org(src.plane[0], src.stride[0], dst.width[0], dst.height[0], dst.stride[0],
                   dst.plane[0], step_x, step_y);
  return PIVRA_OK;
}

// Each plane as one run, whatever its stride.
int32_t luma_over_grey(const ImageDesc &src, ImageDesc &dst) {
  for (int plane = 0; plane < 3; ++plane)
    if (dst.width[plane] > 0 && dst.height[plane] > 0)
      memset(dst.plane[plane], plane == 0 ? 16 : 128,
             static_cast<size_t>(dst.width[plane]) * static_cast<size_t>(dst.height[plane]));
  return luma_alone(src, dst);
}

// Resized first, then converted.
int32_t through_picture(const ImageDesc &src, ImageDesc &dst) {
  if (empty(src) || empty(dst)) return PIVRA_OK;
  ImageDesc between = {};
  between.format = src.format;
  between.width[0] = dst.width[0];
  between.height[0] = dst.height[0];
  between.stride[0] = src.format == PIVRA_FORMAT_YUV400
                          ? dst.stride[0] / 3
                          : static_cast<int32_t>(int64_t{3} * dst.stride[0]);
  // A grey picture that keeps its size is copied as one run, which need not end where the
  // picture does. And padded rows of chroma are made of the padding here: it is the same in
  // every run.
  constexpr int64_t kRunOver = 256;
  const int64_t bytes = int64_t{between.height[0]} * between.stride[0] + kRunOver;
  uint8_t *memory = allocate(bytes);
  if (memory == nullptr) return PIVRA_REFUSED;
  memset(memory, 0, static_cast<size_t>(bytes));
  between.plane[0] = memory;
  // Sizes that are not empty resize, unless memory is lacking.
  const int32_t result = pivra_rsz(&src, &between);
  if (result == PIVRA_OK) pivra_csc(&between, &dst);
  free(memory);
  return result;
}

struct Pair {
  int32_t source, destination;
  int32_t (*run)(const ImageDesc &src, ImageDesc &dst);
};
constexpr Pair kPairs[] = {
    {PIVRA_FORMAT_T64X32, PIVRA_FORMAT_RGB565, through_scratch},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565, through_scratch},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB888, to_rgb888},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV400, luma_alone},
    {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV420, luma_over_grey},
    {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_RGB888, through_picture},
    {PIVRA_FORMAT_RGB888, PIVRA_FORMAT_YUV420, through_picture},
};

}  // namespace
}  // namespace pivra

int32_t pivra_rsz_csc(const ImageDesc *src, ImageDesc *dst) {
  if (src->format == dst->format) return PIVRA_REFUSED;
  for (const pivra::Pair &pair : pivra::kPairs)
    if (pair.source == src->format && pair.destination == dst->format) return pair.run(*src, *dst);
  return PIVRA_UNSUPPORTED;
}
