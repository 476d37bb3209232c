// The layouts of RGB, and the kernels from RGB told literally, pixel by pixel and step
// by step, as the reference that every level is compared with.
#ifndef PIVRA_TESTS_RGB_MODEL_H
#define PIVRA_TESTS_RGB_MODEL_H

#include "guarded.h"

namespace pivra::test {

using Colour = std::array<int32_t, 3>;

inline int32_t pixel_bytes(int32_t format) { return format < 300 ? 2 : format < 500 ? 3 : 4; }

// Which of red, green, blue and alpha each byte holds, or each part of a word from the top.
inline const std::array<int32_t, 4> &channels(int32_t format) {
  static constexpr std::array<std::pair<int32_t, std::array<int32_t, 4>>, 8> layouts = {
      {{PIVRA_FORMAT_RGB565, {0, 1, 2, 3}},
       {PIVRA_FORMAT_BGR565, {2, 1, 0, 3}},
       {PIVRA_FORMAT_RGB888, {0, 1, 2, 3}},
       {PIVRA_FORMAT_BGR888, {2, 1, 0, 3}},
       {PIVRA_FORMAT_RGBA8888, {0, 1, 2, 3}},
       {PIVRA_FORMAT_BGRA8888, {2, 1, 0, 3}},
       {PIVRA_FORMAT_ARGB8888, {3, 0, 1, 2}},
       {PIVRA_FORMAT_ABGR8888, {3, 2, 1, 0}}}};
  for (const auto &[code, order] : layouts)
    if (code == format) return order;
  throw std::invalid_argument("no such layout");
}

inline Colour load_rgb(ModelPlane &in, ptrdiff_t at, int32_t format) {
  std::array<int32_t, 4> parts{}, pixel{};
  for (int i = 0; i < pixel_bytes(format); ++i) parts[i] = in.read(at + i);
  const int32_t word = parts[0] | parts[1] << 8;
  if (pixel_bytes(format) == 2) parts = {word >> 11 << 3, (word >> 5 & 63) << 2, (word & 31) << 3};
  for (int i = 0; i < 4; ++i) pixel[channels(format)[i]] = parts[i];
  return {pixel[0], pixel[1], pixel[2]};
}

inline void store_rgb(ModelPlane &out, ptrdiff_t at, int32_t format, const Colour &c) {
  const std::array<int32_t, 4> pixel = {c[0], c[1], c[2], 255}, &order = channels(format);
  const int32_t word =
      (pixel[order[0]] >> 3) << 11 | (pixel[order[1]] >> 2) << 5 | pixel[order[2]] >> 3;
  for (int i = 0; i < pixel_bytes(format); ++i)
    out.write(at + i, pixel_bytes(format) == 2 ? word >> (8 * i) : pixel[order[i]]);
}

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

  bool pairs() const {
    return destination == PIVRA_FORMAT_NV12 || destination == PIVRA_FORMAT_NV21;
  }
  Colour fetch(ptrdiff_t at) { return load_rgb(in, at, source); }
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
    const bool v_first = destination == PIVRA_FORMAT_YV12 || destination == PIVRA_FORMAT_NV21;
    const int32_t samples = width / 2;
    ptrdiff_t from = 0;
    for (int32_t row = 0; row < height / 2; ++row, from += stride)
      for (int32_t x = 0; x < samples; ++x, from += 2 * pixel_bytes(source)) {
        const Colour c = fetch(from);
        fetch(from + pixel_bytes(source));  // read along with it
        const int32_t first = v_first ? v(c) : u(c), second = v_first ? u(c) : v(c);
        if (pairs()) {
          out[1].write(row * dst_step(1, 2 * samples) + 2 * x, first);
          out[1].write(row * dst_step(1, 2 * samples) + 2 * x + 1, second);
        } else {
          out[1].write(row * dst_step(1, samples) + x, first);
          out[2].write(row * dst_step(2, samples) + x, second);
        }
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
      for (int32_t x = 0; x < width; ++x)
        store_rgb(out[0], row * dst_step + x * to, destination, fetch(row * src_step + x * from));
  }
};

}  // namespace pivra::test

#endif
