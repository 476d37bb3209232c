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
  const auto add = [&](ptrdiff_t i, int32_t n) {
    dst.write(i, std::clamp(dst.read(i) + n, 0, 255));
  };
  for (ptrdiff_t y = 1; y <= height - 2; ++y)
    for (ptrdiff_t x = 2; x <= width - 3; x += 2) {
      const ptrdiff_t cur = at + y * dst_stride + x, next = cur + dst_stride;
      const int32_t b = dst.read(cur);
      add(cur + 2, dst.read(cur - 1) > b ? 2 : -2);
      const int32_t below = dst.read(cur - dst_stride) > b ? 1 : -1;
      add(next + 1, below);
      add(next, below);
    }
}

struct DitherModel : ConversionModel {
  Four heights;

  void run() {
    const bool grey = source == PIVRA_FORMAT_YUV400;
    const int32_t above = heights[0] - (grey ? 0 : 4);
    const ptrdiff_t scratch = (heights[0] * dst_stride) >> 1;
    if (above > 0) {
      model_perturb(in[0], width, above, stride[0], dst_stride >> 1, out, scratch);
      if (from({PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_YUV422W}))
        convert(source, destination, above, dst_stride >> 1, {});
      else
        over_the_luma(scratch, above);
    }
    if (grey) return;
    const int32_t rows = std::min(heights[0], 4);
    std::array<ptrdiff_t, 3> first = {std::max(above, 0)};
    for (int i = 1; i < 3 && heights[0] >= 4; ++i)
      first[i] = heights[i] - (from({PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV422W}) ? 2 : 4);
    const bool another = source == PIVRA_FORMAT_YUV444 && destination == PIVRA_FORMAT_RGB565;
    convert(another ? PIVRA_FORMAT_YUV420 : source, another ? PIVRA_FORMAT_BGR565 : destination,
            rows, stride[0], first);
  }

  // An ordinary conversion from and to rows that are so far down.
  void convert(int32_t format, int32_t to, int32_t rows, int32_t luma_stride,
               std::array<ptrdiff_t, 3> first) {
    ConversionModel m = *this;
    m.source = format;
    m.destination = to;
    m.height = rows;
    m.stride[0] = luma_stride;
    for (size_t p = 0; p < 3; ++p) m.in[p].origin = first[p] * stride[p];
    m.out.origin = first[0] * dst_stride;
    m.run();
    in = m.in;
    out = m.out;
    for (ModelPlane &plane : in) plane.origin = 0;
    out.origin = 0;
  }

  // Row by row, pixel by pixel; of 4:2:0 two rows and up to eight columns at once, except
  // that pivra_csc_yuv420_to_rgb565 takes single rows where the width is no multiple of 4. Of
  // an odd one it makes one more pixel, and its rows go on from there.
  void over_the_luma(ptrdiff_t scratch, int32_t rows) {
    const bool halved = source == PIVRA_FORMAT_YUV420;
    const bool word_rows = halved && destination == PIVRA_FORMAT_RGB565 && width % 4 != 0;
    const int32_t one_more = word_rows ? width & 1 : 0, columns = width + one_more;
    const int32_t share = halved ? 2 : 1, phase = word_rows ? rows & 1 : 0;
    const int32_t v_stride = halved && width % 4 == 0 ? stride[1] : stride[2];
    int32_t rows_a_step = halved && !word_rows ? 2 : 1;
    for (int32_t y = 0; y < rows; y += rows_a_step) {
      if (y + rows_a_step > rows) rows_a_step = 1;
      const int32_t step = rows_a_step == 1 ? share : width % 8 == 0 ? 8 : width % 4 == 0 ? 4 : 2;
      for (int32_t x = 0; x < columns; x += step) {
        std::vector<std::pair<ptrdiff_t, Colour>> colours;
        for (ptrdiff_t row = y; row < y + rows_a_step; ++row)
          for (ptrdiff_t i = x; i < std::min(x + step, columns); ++i) {
            const int32_t luma = out.read(scratch + row * (dst_stride >> 1) + i);
            const ptrdiff_t line = (row + phase) / share, sample = i / share;
            colours.emplace_back(row * (dst_stride + 2 * one_more) + 2 * i,
                                 source == PIVRA_FORMAT_YUV400
                                     ? Colour{luma, luma, luma}
                                     : model_matrix(luma, in[1].read(line * stride[1] + sample),
                                                    in[2].read(line * v_stride + sample)));
          }
        for (const auto &[at, colour] : colours) put(at, colour);
      }
    }
  }
};

}  // namespace pivra::test

#endif
