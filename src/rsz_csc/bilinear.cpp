// yuv420 to rgb888 in one pass: lines between samples.
#include "pivra.h"
#include "rsz/org.h"
#include "rsz_csc/planes.h"

namespace pivra {
namespace {

// By step words.
struct Bilinear {
  int32_t across[2], down[2];

  static int32_t limit(const Plane &, const Engine &engine, int) { return engine.limit; }
  BilinearWalk walk(int which) const { return {0, across[which]}; }

  class Lines {
   public:
    Lines(const Bilinear &resize, const Engine &, const Plane &plane, Strip &strip, int which)
        : engine_rows_(chosen(resize_rows_tables)),
          strip_(strip),
          rows_(plane, strip, 1),
          down_(resize.down[which]) {}

    const uint8_t *next() {
      const GrowStep step = down_.next();
      uint8_t *const line = line_[odd_ = !odd_].byte;
      engine_rows_.bilinear(strip_, rows_(step.at), rows_(step.at + step.pair), step.mix.n, line);
      return line;
    }

   private:
    const ResizeRows &engine_rows_;
    const Strip &strip_;
    StripRows rows_;
    BilinearSteps down_;
    bool odd_ = false;
    LineBuffer line_[2];
  };
};

}  // namespace
}  // namespace pivra

void pivra_rsz_csc_yuv420_to_rgb888(uint8_t **src, int32_t *src_width, int32_t *src_height,
                                    int32_t *src_stride, int32_t *dst_width, int32_t *dst_height,
                                    int32_t *dst_stride, uint8_t **dst) {
  using namespace pivra;
  const int32_t width = dst_width[0], height = dst_height[0];
  if (width < 1 || height < 1) return;
  Bilinear steps;
  rsz_org_steps(src_width[0], src_height[0], width, height, 0, &steps.across[0], &steps.down[0]);
  // A picture of one column or row may have no chroma: it is grey.
  const bool grey = src_width[1] < 1 || src_height[1] < 1;
  constexpr uint8_t kGrey = 128;
  // The only chroma sample of a single column is the first one, whatever the step.
  rsz_org_steps(grey ? 1 : src_width[1], grey ? 1 : src_height[1], larger(width >> 1, 1),
                (height + 1) >> 1, 0, &steps.across[1], &steps.down[1]);
  const Plane planes[] = {linear_plane(src[0], src_stride[0], 0),
                          linear_plane(grey ? &kGrey : src[1], src_stride[1], 0),
                          linear_plane(grey ? &kGrey : src[2], src_stride[2], 0)};
  const ptrdiff_t stride = dst_stride[0];
  convert_resized(
      steps, planes, 3,
      {chosen(pairs_to_rgb_tables).yuv420_to_rgb888, 3, dst[0], 2 * stride, stride, width, height});
}
