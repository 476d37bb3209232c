// Between RGB layouts of 16 and of 24 or 32 bits. Compiled once per instruction-set
// level, for the compiler to make vectors of.
#include "csc/rgb_to_rgb.h"

#include <string.h>

namespace pivra::PIVRA_LEVEL {
namespace {

// Each colour keeps its upper bits. kBytes from one pixel to the next.
template <int kBytes>
struct ToWords {
  static constexpr int kFrom = kBytes, kTo = 2;
  static void pixel(const uint8_t *p, uint8_t *out) {
    const int32_t word = (p[0] & 0xF8) << 8 | (p[1] & 0xFC) << 3 | p[2] >> 3;
    const uint8_t bytes[] = {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8)};
    memcpy(out, bytes, 2);
  }
};

// The fields become the upper bits of a byte, the lower ones are zero.
struct ToBytes {
  static constexpr int kFrom = 2, kTo = 4;
  static void pixel(const uint8_t *p, uint8_t *out) {
    const int32_t word = p[0] | p[1] << 8;
    out[0] = static_cast<uint8_t>(word >> 8 & 0xF8);
    out[1] = static_cast<uint8_t>(word >> 3 & 0xFC);
    out[2] = static_cast<uint8_t>(word << 3);
    out[3] = 255;
  }
};

// Rows of 16- and 32-bit pixels lie whole pixels apart: the stride is rounded down.
constexpr ptrdiff_t whole_pixels(ptrdiff_t stride, int bytes) {
  return bytes == 3 ? stride : stride & -ptrdiff_t{bytes};
}

template <class Rule>
void convert(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
             int32_t *dst_stride, uint8_t **dst) {
  for (ptrdiff_t y = 0; y < height[0]; ++y) {
    const uint8_t *__restrict in = src[0] + y * whole_pixels(src_stride[0], Rule::kFrom);
    uint8_t *__restrict out = dst[0] + y * whole_pixels(dst_stride[0], Rule::kTo);
    for (ptrdiff_t x = 0; x < width[0]; ++x) Rule::pixel(in + x * Rule::kFrom, out + x * Rule::kTo);
  }
}

}  // namespace

extern const RgbToRgb rgb_to_rgb;
const RgbToRgb rgb_to_rgb = {
    .rgb888_to_rgb565 = convert<ToWords<3>>,
    .rgba8888_to_rgb565 = convert<ToWords<4>>,
    .rgb565_to_rgba8888 = convert<ToBytes>,
};

}  // namespace pivra::PIVRA_LEVEL
