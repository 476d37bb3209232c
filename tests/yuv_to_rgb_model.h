// The YUV to RGB kernels told literally, pixel by pixel and step by step, as the
// reference that every level is compared with.
#ifndef PIVRA_TESTS_YUV_TO_RGB_MODEL_H
#define PIVRA_TESTS_YUV_TO_RGB_MODEL_H

#include "rgb_model.h"

namespace pivra::test {

inline Colour model_matrix(int32_t luma, int32_t cb, int32_t cr) {
  const int32_t y = 298 * (luma - 16) + 128, u = cb - 128, v = cr - 128;
  Colour rgb = {(y + 409 * v) >> 8, (y - 100 * u - 208 * v) >> 8, (y + 516 * u) >> 8};
  for (int32_t &c : rgb) c = std::clamp(c, 0, 255);
  return rgb;
}

struct ConversionModel {
  int32_t source, destination;
  int32_t width, height;
  std::array<int32_t, 4> stride;
  int32_t dst_stride;
  std::array<ModelPlane, 3> in;
  ModelPlane out;

  void run() {
    if (is_pair_of_rows())
      pairs_of_rows();
    else
      row_by_row();
  }

  bool to(std::initializer_list<int32_t> formats) const {
    return std::find(formats.begin(), formats.end(), destination) != formats.end();
  }
  bool from(std::initializer_list<int32_t> formats) const {
    return std::find(formats.begin(), formats.end(), source) != formats.end();
  }
  bool halves_height() const {
    return from({PIVRA_FORMAT_YUV420, PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV21, PIVRA_FORMAT_YUV422W});
  }
  int32_t pixel_bytes() const { return test::pixel_bytes(destination); }
  bool is_pair_of_rows() const {
    return (from({PIVRA_FORMAT_YUV420}) &&
            to({PIVRA_FORMAT_RGB565, PIVRA_FORMAT_BGR565, PIVRA_FORMAT_RGBA8888,
                PIVRA_FORMAT_BGRA8888, PIVRA_FORMAT_ARGB8888})) ||
           (from({PIVRA_FORMAT_NV21}) && to({PIVRA_FORMAT_RGB565, PIVRA_FORMAT_BGR565}));
  }

  // One pixel at column x: luma row and chroma rows given by the offset of their starts.
  Colour fetch(int32_t x, ptrdiff_t luma, ptrdiff_t u, ptrdiff_t v) {
    const int32_t pair = x / 2;
    if (from({PIVRA_FORMAT_UYVY, PIVRA_FORMAT_YUYV})) {
      std::array<int32_t, 4> b;
      for (int i = 0; i < 4; ++i) b[i] = in[0].read(luma + 4 * pair + i);
      const int32_t first = source == PIVRA_FORMAT_UYVY;  // luma
      return model_matrix(b[first + 2 * (x % 2)], b[1 - first], b[3 - first]);
    }
    const int32_t y = in[0].read(luma + x);
    if (source == PIVRA_FORMAT_YUV400) return {y, y, y};
    if (from({PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV21})) {
      const int32_t first = in[1].read(u + 2 * pair), second = in[1].read(u + 2 * pair + 1);
      const bool u_first = source == PIVRA_FORMAT_NV12;
      return model_matrix(y, u_first ? first : second, u_first ? second : first);
    }
    const int32_t column = from({PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV422N}) ? pair : x;
    return model_matrix(y, in[1].read(u + column), in[2].read(v + column));
  }

  void put(ptrdiff_t at, const Colour &c) { store_rgb(out, at, destination, c); }

  // A row in blocks of 8, then a tail two pixels at a time.
  void row_by_row() {
    const bool exact = from({PIVRA_FORMAT_YUV444, PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV422W});
    const bool one_step_first =
        to({PIVRA_FORMAT_RGB888}) && !exact && !from({PIVRA_FORMAT_UYVY, PIVRA_FORMAT_YUYV});
    for (int32_t y = 0; y < height; ++y) {
      const ptrdiff_t chroma = halves_height() ? y >> 1 : y;
      ptrdiff_t to_byte = ptrdiff_t{y} * dst_stride;
      int32_t x = 0;
      const auto convert_one = [&] {
        put(to_byte, fetch(x, ptrdiff_t{y} * stride[0], chroma * stride[1], chroma * stride[2]));
        to_byte += pixel_bytes();
        ++x;
      };
      while (x < (exact ? width : width & ~7)) convert_one();
      int32_t left = width - x;
      if (left == 0) continue;
      do {
        convert_one();
        convert_one();
        left -= 2;
      } while (one_step_first ? left > 1 : left > 0);
    }
  }

  void pairs_of_rows() {
    const bool vector = width % 4 == 0;
    const bool blocks = from({PIVRA_FORMAT_NV21}) || to({PIVRA_FORMAT_BGR565});
    const bool words = pixel_bytes() == 2;
    const int32_t v_step = vector || !words ? stride[1] : stride[2];
    const auto pixel = [&](int32_t x, int32_t y, ptrdiff_t at, ptrdiff_t chroma_row) {
      put(at, fetch(x, ptrdiff_t{y} * stride[0], chroma_row * stride[1], chroma_row * v_step));
    };
    if (vector || blocks) {
      for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
          pixel(x, y, ptrdiff_t{y} * dst_stride + ptrdiff_t{x} * pixel_bytes(), y / 2);
      return;
    }
    // Row at a time; chroma moves on after the rows with an odd number still to do.
    ptrdiff_t at = 0, chroma_row = 0;
    for (int32_t y = 0, to_do = height; y < height; ++y, --to_do) {
      const ptrdiff_t start = at;
      int32_t x = 0;
      for (int32_t left = width; left > 0; left -= 2)
        for (int i = 0; i < 2 && (words || x < width); ++i, ++x, at += pixel_bytes())
          pixel(x, y, at, chroma_row);
      at = (words ? at - ptrdiff_t{2} * width : start) + dst_stride;
      if (to_do & 1) ++chroma_row;
    }
  }
};

}  // namespace pivra::test

#endif
