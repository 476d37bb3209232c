// YUV to RGB: source x walk x target. Compiled once per instruction-set level.
#include "csc/yuv_to_rgb.h"

#include "csc/rows.h"
#include "csc/walks.h"

namespace pivra::PIVRA_LEVEL {
namespace {

// Rows that share chroma are converted together. A lone row (the first of an
// odd height paired from the bottom, the last of another) is a pair with
// itself, and so is every row where rows overlap in the destination.
template <class Source, class Target, Walk kWalk>
void convert(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
             int32_t *dst_stride, uint8_t **dst) {
  constexpr int kRows = Source::kRowsPerChroma;
  if (width[0] <= 0 || height[0] <= 0) return;
  Plan plan = plan_walk(kWalk, width, height, src_stride, dst_stride);
  const ptrdiff_t row_bytes = ptrdiff_t{plan.columns} * Target::kBytes;
  const bool overlap = rows_overlap(plan.dst_stride, row_bytes);

  for (int32_t y = 0; y < height[0];) {
    const bool lone = kRows == 1 || overlap || ((y + plan.chroma_phase) & 1) || y + 1 == height[0];
    SourceRows<kRows> in;
    TargetRows<kRows> out;
    for_each_row<kRows>([&](int row) {
      const ptrdiff_t line = y + (lone ? 0 : row);
      in.luma[row] = src[0] + line * plan.luma_stride;
      out.row[row] = dst[0] + line * plan.dst_stride;
    });
    const ptrdiff_t chroma_line = kRows == 1 ? y : (y + plan.chroma_phase) >> 1;
    for (int plane = 0; plane < 2; ++plane)
      in.chroma[plane] = Source::kChromaPlanes > plane
                             ? src[1 + plane] + chroma_line * plan.chroma_stride[plane]
                             : nullptr;
    convert_rows<Source, Target>(in, out, plan.columns);
    y += lone ? 1 : 2;
  }
}

}  // namespace

// Which kernel walks how.
#define PIVRA_EVERY_RGB(source, Source, rgb565, bgr565, rgb888, bgr888, rgba, bgra, argb, abgr) \
  .source##_to_rgb565 = convert<Source, Rgb565, Walk::k##rgb565>,                               \
  .source##_to_bgr565 = convert<Source, Bgr565, Walk::k##bgr565>,                               \
  .source##_to_rgb888 = convert<Source, Rgb888, Walk::k##rgb888>,                               \
  .source##_to_bgr888 = convert<Source, Bgr888, Walk::k##bgr888>,                               \
  .source##_to_rgba8888 = convert<Source, Rgba8888, Walk::k##rgba>,                             \
  .source##_to_bgra8888 = convert<Source, Bgra8888, Walk::k##bgra>,                             \
  .source##_to_argb8888 = convert<Source, Argb8888, Walk::k##argb>,                             \
  .source##_to_abgr8888 = convert<Source, Abgr8888, Walk::k##abgr>

// clang-format off
extern const YuvToRgb yuv_to_rgb;
const YuvToRgb yuv_to_rgb = {
    //                                 rgb565  bgr565  rgb888 bgr888 rgba8888 bgra8888 argb8888 abgr8888
    PIVRA_EVERY_RGB(yuv420,  Yuv420,   Drift,  Blocks, Short, Over,  Rows,    Rows,    Rows,    Over),
    PIVRA_EVERY_RGB(yuv422n, Yuv422n,  Over,   Over,   Short, Over,  Over,    Over,    Over,    Over),
    PIVRA_EVERY_RGB(yuv444,  Yuv444,   Exact,  Exact,  Exact, Exact, Exact,   Exact,   Exact,   Exact),
    PIVRA_EVERY_RGB(nv12,    Nv12,     Over,   Over,   Short, Over,  Over,    Over,    Over,    Over),
    PIVRA_EVERY_RGB(nv21,    Nv21,     Blocks, Blocks, Short, Over,  Over,    Over,    Over,    Over),
    PIVRA_EVERY_RGB(uyvy,    Uyvy,     Over,   Over,   Over,  Over,  Over,    Over,    Over,    Over),
    PIVRA_EVERY_RGB(yuyv,    Yuyv,     Over,   Over,   Over,  Over,  Over,    Over,    Over,    Over),
    .yuv400_to_rgb565  = convert<Yuv400,  Rgb565, Walk::kExact>,
    .yuv400_to_rgb888  = convert<Yuv400,  Rgb888, Walk::kExact>,
    .yuv422w_to_rgb565 = convert<Yuv422w, Rgb565, Walk::kExact>,
    .yuv422w_to_bgr565 = convert<Yuv422w, Bgr565, Walk::kExact>,
};
// clang-format on

}  // namespace pivra::PIVRA_LEVEL
