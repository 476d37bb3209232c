// Between RGB layouts of 16 and of 24 or 32 bits. Compiled once per instruction-set
// level.
#include "csc/rgb_to_rgb.h"

#include "csc/blocks.h"

namespace pivra::PIVRA_LEVEL {
namespace {

// Each colour keeps its upper bits. kBytes from one pixel to the next.
template <int kBytes>
struct ToWords {
  static constexpr int kFrom = kBytes, kTo = 2;

#if PIVRA_VECTORS
  static PIVRA_INLINE void block(const uint8_t *p, uint8_t *out) {
    store_top_bits_565(out, load_pixels<kBytes>(p));
  }
#endif
  static PIVRA_INLINE void pixel(const uint8_t *p, uint8_t *out) {
    const int32_t word = (p[0] & 0xF8) << 8 | (p[1] & 0xFC) << 3 | p[2] >> 3;
    out[0] = static_cast<uint8_t>(word);
    out[1] = static_cast<uint8_t>(word >> 8);
  }
};

// The fields become the upper bits of a byte, the lower ones are zero.
struct ToBytes {
  static constexpr int kFrom = 2, kTo = 4;

#if PIVRA_VECTORS
  // Red and green in words of their own, blue and alpha too, stored by turns.
  static PIVRA_INLINE void block(const uint8_t *p, uint8_t *out) {
    Words words = load_words(p);
    for (const U16 w : words.v) {
      const U16 rg = (w >> 8 & uint16_t{0xF8}) | (w << 5 & uint16_t{0xFC00});
      const U16 ba = (w << 3 & uint16_t{0xF8}) | uint16_t{0xFF00};
      out = store_565(out, (Words565)rg, (Words565)ba);
    }
  }
#endif
  static PIVRA_INLINE void pixel(const uint8_t *p, uint8_t *out) {
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

// The row being converted, at the pixels that are next.
template <class Rule>
struct Row {
  const uint8_t *in;
  uint8_t *out;

  PIVRA_INLINE void advance(ptrdiff_t pixels) {
    in += pixels * Rule::kFrom;
    out += pixels * Rule::kTo;
  }

#if PIVRA_VECTORS
  PIVRA_INLINE void block() {
    Rule::block(in, out);
    advance(kBlock);
  }
#endif
};

template <class Rule>
PIVRA_INLINE void convert_row(Row<Rule> row, ptrdiff_t columns) {
#if PIVRA_VECTORS
  columns -= convert_blocks(row, columns);
#endif
  for (ptrdiff_t x = 0; x < columns; ++x)
    Rule::pixel(row.in + x * Rule::kFrom, row.out + x * Rule::kTo);
}

template <class Rule>
void convert(uint8_t **src, int32_t *width, int32_t *height, int32_t *src_stride,
             int32_t *dst_stride, uint8_t **dst) {
  for (ptrdiff_t y = 0; y < height[0]; ++y)
    convert_row(Row<Rule>{src[0] + y * whole_pixels(src_stride[0], Rule::kFrom),
                          dst[0] + y * whole_pixels(dst_stride[0], Rule::kTo)},
                width[0]);
}

}  // namespace

extern const RgbToRgb rgb_to_rgb;
const RgbToRgb rgb_to_rgb = {
    .rgb888_to_rgb565 = convert<ToWords<3>>,
    .rgba8888_to_rgb565 = convert<ToWords<4>>,
    .rgb565_to_rgba8888 = convert<ToBytes>,
};

}  // namespace pivra::PIVRA_LEVEL
