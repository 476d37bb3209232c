// Dithering told literally: step by step in one plane, and then pixel by pixel over
// the luma that is read.
#ifndef PIVRA_TESTS_DITHER_MODEL_H
#define PIVRA_TESTS_DITHER_MODEL_H

#include "yuv_to_rgb_model.h"

namespace pivra::test {

// Of `src` into the plane `dst` from byte `at` on.
inline void model_perturb(ModelPlane &src, int32_t width, int32_t height, int32_t src_stride,
                          int32_t dst_stride, ModelPlane &dst, ptrdiff_t at) {
  for (ptrdiff_t y = 0; y < height; ++y)
    for (ptrdiff_t x = 0; x < width; ++x)
      dst.write(at + y * dst_stride + x, src.read(y * src_stride + x));
  if (width <= 4) return;
  const auto up = [&](ptrdiff_t i, int32_t by) { dst.write(i, std::min(dst.read(i) + by, 255)); };
  const auto down = [&](ptrdiff_t i, int32_t by) { dst.write(i, std::max(dst.read(i) - by, 0)); };
  for (ptrdiff_t y = 1; y <= height - 2; ++y) {
    const ptrdiff_t cur = at + y * dst_stride, prev = cur - dst_stride, next = cur + dst_stride;
    for (ptrdiff_t x = 2; x <= 2 + ((width - 5) & ~1); x += 2) {
      const int32_t b = dst.read(cur + x), a = dst.read(cur + x - 1);
      if (a > b)
        up(cur + x + 2, 2);
      else
        down(cur + x + 2, 2);
      if (dst.read(prev + x) > b) {
        up(next + x + 1, 1);
        up(next + x, 1);
      } else {
        down(next + x + 1, 1);
        down(next + x, 1);
      }
    }
  }
}

struct DitherModel {
  int32_t source, destination;
  int32_t width;
  std::array<int32_t, 4> height, stride;
  int32_t dst_stride;
  std::array<ModelPlane, 3> in;
  ModelPlane out;

  void run() {
    const bool grey = source == PIVRA_FORMAT_YUV400;
    const int32_t above = height[0] - (grey ? 0 : 4);
    const ptrdiff_t scratch = (height[0] * dst_stride) >> 1;
    if (above > 0) {
      model_perturb(in[0], width, above, stride[0], dst_stride >> 1, out, scratch);
      if (source == PIVRA_FORMAT_YUV422N || source == PIVRA_FORMAT_YUV422W)
        convert(source, destination, above, {dst_stride >> 1, stride[1], stride[2]}, 0, {});
      else
        over_the_luma(scratch, above);
    }
    if (grey) return;
    const int32_t rows = std::min(height[0], 4);
    std::array<ptrdiff_t, 2> chroma{};
    for (int i = 0; i < 2 && height[0] >= 4; ++i)
      chroma[i] =
          height[1 + i] - (source == PIVRA_FORMAT_YUV420 || source == PIVRA_FORMAT_YUV422W ? 2 : 4);
    if (source == PIVRA_FORMAT_YUV444 && destination == PIVRA_FORMAT_RGB565)
      convert(PIVRA_FORMAT_YUV420, PIVRA_FORMAT_BGR565, rows, stride, std::max(above, 0), chroma);
    else
      convert(source, destination, rows, stride, std::max(above, 0), chroma);
  }

  // An ordinary conversion from rows that are so far down.
  void convert(int32_t from, int32_t to, int32_t rows, std::array<int32_t, 4> strides,
               ptrdiff_t luma_row, std::array<ptrdiff_t, 2> chroma_row) {
    ConversionModel m = {from, to, width, rows, strides, dst_stride, {}, {}};
    const auto below = [](const ModelPlane &plane, ptrdiff_t at) {
      if (at < 0) throw std::out_of_range("the model went before its plane");
      ModelPlane rest;
      const size_t start = std::min(plane.bytes.size(), static_cast<size_t>(at));
      rest.bytes.assign(plane.bytes.begin() + static_cast<ptrdiff_t>(start), plane.bytes.end());
      return rest;
    };
    const std::array<ptrdiff_t, 3> at = {luma_row * stride[0], chroma_row[0] * stride[1],
                                         chroma_row[1] * stride[2]};
    const ptrdiff_t out_at = luma_row * dst_stride;
    for (size_t i = 0; i < 3; ++i) m.in[i] = below(in[i], at[i]);
    m.out = below(out, out_at);
    m.run();
    for (size_t i = 0; i < 3; ++i) touch(in[i], at[i], m.in[i].bytes);
    touch(out, out_at, m.out.bytes);
  }
  static void touch(ModelPlane &plane, ptrdiff_t at, const std::vector<uint8_t> &bytes) {
    for (size_t i = 0; i < bytes.size(); ++i) plane.write(at + static_cast<ptrdiff_t>(i), bytes[i]);
  }

  // Row by row; of 4:2:0 two pixels at once. For an odd width pivra_csc_yuv420_to_rgb565
  // makes one more, and its rows go on from there.
  void over_the_luma(ptrdiff_t scratch, int32_t rows) {
    const bool halved = source == PIVRA_FORMAT_YUV420;
    const bool word_rows = halved && destination == PIVRA_FORMAT_RGB565 && width % 4 != 0;
    const int32_t one_more = word_rows ? width & 1 : 0;
    const int32_t columns = width + one_more, step = halved ? 2 : 1;
    const int32_t v_stride = halved && width % 4 == 0 ? stride[1] : stride[2];
    for (ptrdiff_t y = 0; y < rows; ++y) {
      const ptrdiff_t chroma = !halved ? y : (y + (word_rows ? rows & 1 : 0)) / 2;
      for (ptrdiff_t x = 0; x < columns; x += step) {
        std::array<Colour, 2> colours;
        for (ptrdiff_t i = 0; i < step && x + i < columns; ++i) {
          const int32_t luma = out.read(scratch + y * (dst_stride >> 1) + x + i);
          colours[i] = source == PIVRA_FORMAT_YUV400
                           ? Colour{luma, luma, luma}
                           : model_matrix(luma, in[1].read(chroma * stride[1] + (x + i) / step),
                                          in[2].read(chroma * v_stride + (x + i) / step));
        }
        for (ptrdiff_t i = 0; i < step && x + i < columns; ++i) {
          const auto [r, g, b] = colours[i];
          const bool red_on_top = destination == PIVRA_FORMAT_RGB565;
          const int32_t top = red_on_top ? r : b, bottom = red_on_top ? b : r;
          const int32_t word = (top >> 3) << 11 | (g >> 2) << 5 | bottom >> 3;
          const ptrdiff_t at = y * (dst_stride + 2 * one_more) + 2 * (x + i);
          out.write(at, word & 255);
          out.write(at + 1, word >> 8);
        }
      }
    }
  }
};

}  // namespace pivra::test

#endif
