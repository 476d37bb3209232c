// The kernels from RGB told literally, pixel by pixel and step by step, as the
// reference that every level is compared with.
#ifndef PIVRA_TESTS_RGB_MODEL_H
#define PIVRA_TESTS_RGB_MODEL_H

#include <array>

#include "guarded.h"
#include "pivra.h"

namespace pivra::test {

using Colour = std::array<int32_t, 3>;

inline int32_t pixel_bytes(int32_t format) { return format < 300 ? 2 : format < 500 ? 3 : 4; }

struct RgbModel {
  int32_t source, destination;
  int32_t width, height;
  int32_t stride;
  std::array<int32_t, 4> dst_stride;
  ModelPlane in;
  std::array<ModelPlane, 3> out;

  void run() {
    if (destination >= PIVRA_FORMAT_RGB565)
      to_rgb();
    else if (destination != PIVRA_FORMAT_YUV444)
      to_yuv420();
    else if (source == PIVRA_FORMAT_RGBA8888)
      luma(stride, dst_stride[0]);
    else
      to_packed_yuv444();
  }

  Colour fetch(ptrdiff_t at) {
    std::array<int32_t, 4> b{};
    for (int i = 0; i < pixel_bytes(source); ++i) b[i] = in.read(at + i);
    const int32_t word = b[0] | b[1] << 8;
    const int32_t top = (word >> 11) << 3, middle = (word >> 5 & 63) << 2, low = (word & 31) << 3;
    switch (source) {
      case PIVRA_FORMAT_RGB565:
        return {top, middle, low};
      case PIVRA_FORMAT_BGR565:
        return {low, middle, top};
      case PIVRA_FORMAT_RGB888:
      case PIVRA_FORMAT_RGBA8888:
        return {b[0], b[1], b[2]};
      case PIVRA_FORMAT_BGR888:
      case PIVRA_FORMAT_BGRA8888:
        return {b[2], b[1], b[0]};
      case PIVRA_FORMAT_ARGB8888:
        return {b[1], b[2], b[3]};
      case PIVRA_FORMAT_ABGR8888:
        return {b[3], b[2], b[1]};
      default:
        throw std::invalid_argument("no such source");
    }
  }
  static int32_t y(const Colour &c) { return 16 + ((66 * c[0] + 129 * c[1] + 25 * c[2]) >> 8); }
  static int32_t u(const Colour &c) {
    return 128 + ((-38 * c[0] - 74 * c[1] + 112 * c[2] + 128) >> 8);
  }
  static int32_t v(const Colour &c) {
    return 128 + ((112 * c[0] - 94 * c[1] - 18 * c[2] + 128) >> 8);
  }

  void luma(ptrdiff_t src_step, ptrdiff_t dst_step) {
    for (int32_t row = 0; row < height; ++row)
      for (int32_t x = 0; x < width; ++x)
        out[0].write(row * dst_step + x, y(fetch(row * src_step + x * pixel_bytes(source))));
  }

  ptrdiff_t dst_step(int plane, ptrdiff_t row_bytes) const {
    const ptrdiff_t s = dst_stride[plane];
    return pixel_bytes(source) == 2 ? row_bytes + 4 * (s - row_bytes) : s;
  }

  void to_yuv420() {
    luma(stride, dst_step(0, width));
    const bool pairs = destination == PIVRA_FORMAT_NV12 || destination == PIVRA_FORMAT_NV21;
    const bool v_first = destination == PIVRA_FORMAT_YV12 || destination == PIVRA_FORMAT_NV21;
    const int32_t samples = width / 2;
    ptrdiff_t from = 0;
    for (int32_t row = 0; row < height / 2; ++row) {
      for (int32_t x = 0; x < samples; ++x) {
        const Colour c = fetch(from);
        from += pixel_bytes(source);
        fetch(from);  // read along with it
        from += pixel_bytes(source);
        const int32_t first = v_first ? v(c) : u(c), second = v_first ? u(c) : v(c);
        if (pairs) {
          out[1].write(row * dst_step(1, 2 * samples) + 2 * x, first);
          out[1].write(row * dst_step(1, 2 * samples) + 2 * x + 1, second);
        } else {
          out[1].write(row * dst_step(1, samples) + x, first);
          out[2].write(row * dst_step(2, samples) + x, second);
        }
      }
      from += stride;
    }
  }

  void to_packed_yuv444() {
    for (int32_t i = 0; i < width * height; ++i) {
      const Colour c = fetch(ptrdiff_t{i} * 4);
      out[0].write(i, y(c));
      out[1].write(i, u(c));
      out[2].write(i, v(c));
    }
  }

  void to_rgb() {
    const int32_t from = pixel_bytes(source), to = pixel_bytes(destination);
    const ptrdiff_t src_step = from == 3 ? stride : stride / from * from;
    const ptrdiff_t dst_step = dst_stride[0] / to * to;
    for (int32_t row = 0; row < height; ++row)
      for (int32_t x = 0; x < width; ++x) {
        const Colour c = fetch(row * src_step + x * from);
        const ptrdiff_t at = row * dst_step + x * to;
        const int32_t word = (c[0] & 0xF8) << 8 | (c[1] & 0xFC) << 3 | c[2] >> 3;
        if (to == 2) {
          out[0].write(at, word & 255);
          out[0].write(at + 1, word >> 8);
        } else {
          for (int i = 0; i < 3; ++i) out[0].write(at + i, c[i]);
          out[0].write(at + 3, 255);
        }
      }
  }
};

}  // namespace pivra::test

#endif
