// RGB to YUV: source x target. Compiled once per instruction-set level.
#include "csc/rgb_to_yuv.h"

#include "csc/blocks.h"
#include "csc/rgb_walk.h"
#include "csc/yuv_targets.h"

namespace pivra::PIVRA_LEVEL {
namespace {

enum class Part { kLuma, kChroma, kBoth };

// The row being converted, at the pixels that are next.
template <class Source, class Target, Part kPart>
struct RowToYuv {
  const uint8_t *in;
  YuvRow out;

  PIVRA_INLINE void advance(ptrdiff_t pixels) {
    in += pixels * Source::kBytes;
    if constexpr (kPart != Part::kChroma) out.luma += pixels;
    for (int plane = 0; plane < Target::kPlanes && kPart != Part::kLuma; ++plane)
      out.chroma[plane] += pixels * Target::kSampleBytes / Target::kPixelsPerSample;
  }

#if PIVRA_VECTORS
  PIVRA_INLINE void block() {
    auto block = Source::load(in);
    if constexpr (kPart != Part::kChroma)
      store_top_bytes<typename Source::template Weights<kLuma>>(out.luma, block);
    if constexpr (kPart != Part::kLuma) Target::template store<Source>(out, block);
    advance(kBlock);
  }
#endif
};

template <class Source, class Target, Part kPart>
PIVRA_INLINE void convert_row(const uint8_t *in, YuvRow out, ptrdiff_t columns) {
  RowToYuv<Source, Target, kPart> row = {in, out};
#if PIVRA_VECTORS
  columns -= convert_blocks(row, columns & ~ptrdiff_t{1});
#endif
  if constexpr (kPart != Part::kChroma)
    for (ptrdiff_t x = 0; x < columns; ++x)
      row.out.luma[x] = Source::template sample<kLuma>(row.in + x * Source::kBytes);
  if constexpr (kPart != Part::kLuma)
    for (ptrdiff_t i = 0; i < columns / Target::kPixelsPerSample; ++i)
      Target::template sample<Source>(row.out, i,
                                      row.in + i * Target::kPixelsPerSample * Source::kBytes);
}

template <class Source>
void convert_luma(const uint8_t *in, ptrdiff_t src_stride, uint8_t *out, ptrdiff_t dst_stride,
                  int32_t width, int32_t height) {
  for (ptrdiff_t y = 0; y < height; ++y)
    convert_row<Source, ToYuv444, Part::kLuma>(in + y * src_stride, {out + y * dst_stride, {}},
                                               width);
}

// Each source byte is read once if chroma comes from the even rows.
template <class Source, class Target>
void convert(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
             int32_t *dst_stride, uint8_t **dst) {
  const int32_t w = width[0], h = height[0];
  if (w <= 0 || h <= 0) return;
  const RgbPlan plan = plan_rgb_walk<Source, Target>(w, h, src_stride, dst_stride, dst);
  const auto chroma_row = [&](ptrdiff_t j) {
    YuvRow row{};
    for (int plane = 0; plane < Target::kPlanes; ++plane)
      row.chroma[plane] = dst[1 + plane] + j * plan.chroma_stride[plane];
    return row;
  };
  if (!plan.one_pass) {
    convert_luma<Source>(src[0], plan.src_stride, dst[0], plan.luma_stride, w, h);
    for (ptrdiff_t j = 0; j < h / 2; ++j)
      convert_row<Source, Target, Part::kChroma>(src[0] + j * plan.chroma_src_stride, chroma_row(j),
                                                 w);
    return;
  }
  for (ptrdiff_t y = 0; y < h; ++y) {
    const uint8_t *in = src[0] + y * plan.src_stride;
    YuvRow row = chroma_row(y / 2);
    row.luma = dst[0] + y * plan.luma_stride;
    if (y % 2 == 0 && y + 1 < h)
      convert_row<Source, Target, Part::kBoth>(in, row, w);
    else
      convert_row<Source, Target, Part::kLuma>(in, row, w);
  }
}

// Y alone; U and V are left as they are.
template <class Source>
void convert_luma_only(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
                       int32_t *dst_stride, uint8_t **dst) {
  convert_luma<Source>(src[0], src_stride[0], dst[0], dst_stride[0], width[0], height[0]);
}

// Rows packed on both sides, whatever the strides say: one long row.
template <class Source>
void convert_packed(uint8_t **src, int32_t *width, int32_t *height, int32_t *, int32_t *,
                    uint8_t **dst) {
  if (width[0] <= 0 || height[0] <= 0) return;
  convert_row<Source, ToYuv444, Part::kBoth>(src[0], {dst[0], {dst[1], dst[2]}},
                                             ptrdiff_t{width[0]} * height[0]);
}

}  // namespace

#define PIVRA_EVERY_YUV(source, Source)                  \
  .source##_to_yuv420 = convert<From##Source, ToYuv420>, \
  .source##_to_yv12 = convert<From##Source, ToYv12>,     \
  .source##_to_nv12 = convert<From##Source, ToNv12>,     \
  .source##_to_nv21 = convert<From##Source, ToNv21>

extern const RgbToYuv rgb_to_yuv;
const RgbToYuv rgb_to_yuv = {
    PIVRA_EVERY_YUV(rgb565, Rgb565),
    PIVRA_EVERY_YUV(bgr565, Bgr565),
    PIVRA_EVERY_YUV(rgb888, Rgb888),
    PIVRA_EVERY_YUV(bgr888, Bgr888),
    PIVRA_EVERY_YUV(rgba8888, Rgba8888),
    PIVRA_EVERY_YUV(bgra8888, Bgra8888),
    PIVRA_EVERY_YUV(argb8888, Argb8888),
    PIVRA_EVERY_YUV(abgr8888, Abgr8888),
    .rgba8888_to_yuv444 = convert_luma_only<FromRgba8888>,
    .argb8888_to_yuv444 = convert_packed<FromArgb8888>,
};

}  // namespace pivra::PIVRA_LEVEL
