// How the RGB to YUV kernels of 4:2:0 walk a picture. The steps between rows are
// peculiar, and callers rely on them.
#ifndef PIVRA_CSC_RGB_WALK_H
#define PIVRA_CSC_RGB_WALK_H

#include <stddef.h>
#include <stdint.h>

namespace pivra::PIVRA_LEVEL {

struct RgbPlan {
  ptrdiff_t src_stride, chroma_src_stride;  // from a row of luma, of chroma to the next
  ptrdiff_t luma_stride, chroma_stride[2];
  bool one_pass;  // luma and chroma of a row may be made at once
};

// What `rows` rows cover from plane on, if they step forwards or backwards.
struct Extent {
  uintptr_t first, end;
};
inline Extent extent(const uint8_t *plane, ptrdiff_t stride, ptrdiff_t row_bytes, ptrdiff_t rows) {
  const auto first = reinterpret_cast<uintptr_t>(plane);
  if (rows == 0) return {first, first};
  const auto last = first + static_cast<uintptr_t>(stride * (rows - 1));
  const auto bytes = static_cast<uintptr_t>(row_bytes);
  return stride < 0 ? Extent{last, first + bytes} : Extent{first, last + bytes};
}
inline bool meet(Extent a, Extent b) { return a.first < b.end && b.first < a.end; }

// Chroma row j comes from the row that begins j times a stride and a row's bytes
// into the source: row 2j where rows are packed, ahead of it where they are padded.
// 16-bit sources put four times the padding between the destination's rows. Luma is
// complete before chroma begins, which shows only where such rows run into the
// planes of chroma.
template <class Source, class Target>
inline RgbPlan plan_rgb_walk(int32_t width, int32_t height, const int32_t *src_stride,
                             const int32_t *dst_stride, uint8_t *const *dst) {
  const ptrdiff_t samples = width / 2, stride = src_stride[0];
  const auto step = [](ptrdiff_t dst, ptrdiff_t row_bytes) {
    return Source::kWords ? row_bytes + 4 * (dst - row_bytes) : dst;
  };
  RgbPlan plan = {
      stride, stride + 2 * Source::kBytes * samples, step(dst_stride[0], width), {}, {}};
  plan.one_pass = plan.chroma_src_stride == 2 * stride;
  const Extent luma = extent(dst[0], plan.luma_stride, width, height);
  for (int plane = 0; plane < Target::kPlanes; ++plane) {
    const ptrdiff_t row_bytes = Target::kSampleBytes * samples;
    plan.chroma_stride[plane] = step(dst_stride[1 + plane], row_bytes);
    if (meet(luma, extent(dst[1 + plane], plan.chroma_stride[plane], row_bytes, height / 2)))
      plan.one_pass = false;
  }
  return plan;
}

}  // namespace pivra::PIVRA_LEVEL

#endif
