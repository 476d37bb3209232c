// How the RGB layouts are written, vector and scalar side by side.
//
// A block is finished half by half, its even pixels and then its odd ones, so
// that few registers hold wide lanes; `store` puts both halves at the row pointer
// and returns the address behind them. `pixel` writes one pixel.
#ifndef PIVRA_CSC_TARGETS_H
#define PIVRA_CSC_TARGETS_H

#include "csc/matrix.h"

namespace pivra::PIVRA_LEVEL {

// 5-6-5 words, little-endian: red on top, or blue.
template <bool kBlueOnTop>
struct Rgb16 {
  static constexpr int kBytes = 2;

#if PIVRA_VECTORS
  static PIVRA_INLINE Words565 half(const RgbLanes &c) {
    return clamp_565(kBlueOnTop ? c.b : c.r, c.g, kBlueOnTop ? c.r : c.b);
  }
  static PIVRA_INLINE uint8_t *store(uint8_t *p, const Words565 &even, const Words565 &odd) {
    return store_565(p, even, odd);
  }
#endif
  static PIVRA_INLINE void pixel(uint8_t *p, const Rgb &c) {
    const int32_t top = kBlueOnTop ? c.b : c.r, bottom = kBlueOnTop ? c.r : c.b;
    const int32_t word = (top >> 3) << 11 | (c.g >> 2) << 5 | bottom >> 3;
    p[0] = static_cast<uint8_t>(word);
    p[1] = static_cast<uint8_t>(word >> 8);
  }
};

#if PIVRA_VECTORS
// Clamped colours in the order in which they are stored.
struct Colours {
  Clamped first, middle, last;
};

template <bool kBlueFirst>
PIVRA_INLINE Colours in_order(const RgbLanes &c) {
  Clamped r = clamp(c.r), g = clamp(c.g), b = clamp(c.b);
  return {kBlueFirst ? b : r, g, kBlueFirst ? r : b};
}
#endif

// Three bytes, red first or blue first.
template <bool kBlueFirst>
struct Rgb24 {
  static constexpr int kBytes = 3;

#if PIVRA_VECTORS
  static PIVRA_INLINE Colours half(const RgbLanes &c) { return in_order<kBlueFirst>(c); }
  static PIVRA_INLINE uint8_t *store(uint8_t *p, const Colours &even, const Colours &odd) {
    return store_interleaved3(p, join(even.first, odd.first), join(even.middle, odd.middle),
                              join(even.last, odd.last));
  }
#endif
  static PIVRA_INLINE void pixel(uint8_t *p, const Rgb &c) {
    p[0] = static_cast<uint8_t>(kBlueFirst ? c.b : c.r);
    p[1] = static_cast<uint8_t>(c.g);
    p[2] = static_cast<uint8_t>(kBlueFirst ? c.r : c.b);
  }
};

// Four bytes: the colours in either order, an opaque alpha after or before them.
template <bool kBlueFirst, bool kAlphaFirst>
struct Rgb32 {
  static constexpr int kBytes = 4;

#if PIVRA_VECTORS
  static PIVRA_INLINE Colours half(const RgbLanes &c) { return in_order<kBlueFirst>(c); }
  static PIVRA_INLINE uint8_t *store(uint8_t *p, const Colours &even, const Colours &odd) {
    Bytes first = join(even.first, odd.first), middle = join(even.middle, odd.middle);
    Bytes last = join(even.last, odd.last), alpha = splat_bytes(255);
    if constexpr (kAlphaFirst) return store_interleaved4(p, alpha, first, middle, last);
    return store_interleaved4(p, first, middle, last, alpha);
  }
#endif
  static PIVRA_INLINE void pixel(uint8_t *p, const Rgb &c) {
    p[kAlphaFirst ? 0 : 3] = 255;
    Rgb24<kBlueFirst>::pixel(p + kAlphaFirst, c);
  }
};

using Rgb565 = Rgb16<false>;
using Bgr565 = Rgb16<true>;
using Rgb888 = Rgb24<false>;
using Bgr888 = Rgb24<true>;
using Rgba8888 = Rgb32<false, false>;
using Bgra8888 = Rgb32<true, false>;
using Argb8888 = Rgb32<false, true>;
using Abgr8888 = Rgb32<true, true>;

}  // namespace pivra::PIVRA_LEVEL

#endif
