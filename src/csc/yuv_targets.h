// How the chroma of the YUV layouts is written, vector and scalar side by side.
//
// `store` writes the chroma of a block of pixels, `sample` chroma sample i of a row
// from its pixel. Luma is the same everywhere, a plane of its own.
#ifndef PIVRA_CSC_YUV_TARGETS_H
#define PIVRA_CSC_YUV_TARGETS_H

#include "csc/rgb_sources.h"

namespace pivra::PIVRA_LEVEL {

// A row of each plane; the interleaved plane is the first of chroma.
struct YuvRow {
  uint8_t *luma, *chroma[2];
};

// 4:2:0 in planes of their own, U in the first or in the second.
template <int kU>
struct ToPlanes {
  static constexpr int kPixelsPerSample = 2, kPlanes = 2, kSampleBytes = 1;

#if PIVRA_VECTORS
  template <class Source, class Block>
  static PIVRA_INLINE void store(YuvRow out, Block block) {
    auto even = even_pixels(block);
    store_planes(out.chroma[kU], out.chroma[1 - kU],
                 top_bytes<typename Source::template Weights<kCb>>(even),
                 top_bytes<typename Source::template Weights<kCr>>(even));
  }
#endif
  template <class Source>
  static PIVRA_INLINE void sample(YuvRow out, ptrdiff_t i, const uint8_t *pixel) {
    out.chroma[kU][i] = Source::template sample<kCb>(pixel);
    out.chroma[1 - kU][i] = Source::template sample<kCr>(pixel);
  }
};

// 4:2:0 in pairs, U at byte 0 or at byte 1 of them.
template <int kU>
struct ToPairs {
  static constexpr int kPixelsPerSample = 2, kPlanes = 1, kSampleBytes = 2;

#if PIVRA_VECTORS
  template <class Source, class Block>
  static PIVRA_INLINE void store(YuvRow out, Block block) {
    auto even = even_pixels(block);
    store_twos(out.chroma[0],
               top_bytes<typename Source::template Weights<kU == 0 ? kCb : kCr>>(even),
               top_bytes<typename Source::template Weights<kU == 0 ? kCr : kCb>>(even));
  }
#endif
  template <class Source>
  static PIVRA_INLINE void sample(YuvRow out, ptrdiff_t i, const uint8_t *pixel) {
    out.chroma[0][2 * i + kU] = Source::template sample<kCb>(pixel);
    out.chroma[0][2 * i + 1 - kU] = Source::template sample<kCr>(pixel);
  }
};

// 4:4:4, U and V for every pixel.
struct ToFullPlanes {
  static constexpr int kPixelsPerSample = 1, kPlanes = 2, kSampleBytes = 1;

#if PIVRA_VECTORS
  template <class Source, class Block>
  static PIVRA_INLINE void store(YuvRow out, Block block) {
    store_top_bytes<typename Source::template Weights<kCb>>(out.chroma[0], block);
    store_top_bytes<typename Source::template Weights<kCr>>(out.chroma[1], block);
  }
#endif
  template <class Source>
  static PIVRA_INLINE void sample(YuvRow out, ptrdiff_t i, const uint8_t *pixel) {
    out.chroma[0][i] = Source::template sample<kCb>(pixel);
    out.chroma[1][i] = Source::template sample<kCr>(pixel);
  }
};

using ToYuv420 = ToPlanes<0>;
using ToYv12 = ToPlanes<1>;
using ToNv12 = ToPairs<0>;
using ToNv21 = ToPairs<1>;
using ToYuv444 = ToFullPlanes;

}  // namespace pivra::PIVRA_LEVEL

#endif
