// The combined resizers told literally, an output pixel at a time. Their two-pass way is
// put together of the models of the passes.
#ifndef PIVRA_TESTS_RESIZE_CONVERT_MODEL_H
#define PIVRA_TESTS_RESIZE_CONVERT_MODEL_H

#include <functional>

#include "guarded.h"
#include "pivra.h"
#include "yuv_to_rgb_model.h"

namespace pivra::test {

inline void model_store_565(ModelPlane &out, ptrdiff_t offset, const Colour &rgb) {
  const int32_t word = (rgb[0] & 0xF8) << 8 | (rgb[1] & 0xFC) << 3 | rgb[2] >> 3;
  out.write(offset, word & 255);
  out.write(offset + 1, word >> 8);
}

// A sample of plane p by column and row, and whether it lies in the lower row of a mean.
using Fetch = std::function<int32_t(int32_t p, int32_t x, int32_t y, bool lower)>;

// Positions along an axis that shrinks, and where the remainder carries.
struct ModelWalk {
  int32_t quotient, remainder, modulus, acc = 0, at = 0;
  bool carry = false;
  void begin() {
    acc += remainder;
    carry = modulus > 0 && acc >= modulus;
  }
  void end() {
    if (carry) acc -= modulus;
    at += quotient + carry;
  }
};

struct DirectShrinkModel {
  int32_t width, height, dst_stride;
  Fetch fetch;
  ModelPlane &out;

  int32_t mean(int32_t p, int32_t x, int32_t y, bool right, bool below) {
    int32_t sum = 0;
    for (int32_t j = 0; j <= below; ++j)
      for (int32_t i = 0; i <= right; ++i) sum += fetch(p, x + i, y, j == 1);
    return sum >> (right + below);
  }

  // By whole factors: blocks of two by two, the odd last row alone.
  void whole(int32_t qx, int32_t qy) {
    for (int32_t y = 0; y < height; ++y) {
      const bool alone = y == height - 1 && y % 2 == 0;
      for (int32_t x = 0; x < (width & ~1); ++x) {
        const int32_t luma = mean(0, x * qx, y * qy, true, true);
        const int32_t c = x / 2 * qx, r = y / 2 * qy;
        model_store_565(
            out, ptrdiff_t{y} * dst_stride + 2 * x,
            model_matrix(luma, mean(1, c, r, true, !alone), mean(2, c, r, true, !alone)));
      }
    }
  }

  // By other factors. Sizes of the source's luma and chroma.
  void fractional(int32_t w, int32_t h, int32_t cw, int32_t ch) {
    const int32_t half_w = width / 2, half_h = height / 2;
    ModelWalk row = {h / height, h % height, height};
    ModelWalk chroma_row = {h / height, half_h ? ch % half_h : 0, half_h};
    for (int32_t y = 0; y < height; ++y) {
      row.begin();
      if (y % 2 == 0) chroma_row.begin();
      ModelWalk column = {w / width, w % width, width};
      ModelWalk chroma = {half_w ? cw / half_w : 0, half_w ? cw % half_w : 0, half_w};
      for (int32_t x = 0; x < width; ++x) {
        column.begin();
        if (x % 2 == 0) chroma.begin();
        model_store_565(
            out, ptrdiff_t{y} * dst_stride + 2 * x,
            model_matrix(mean(0, column.at, row.at, column.carry, row.carry),
                         mean(1, chroma.at, chroma_row.at, chroma.carry, chroma_row.carry),
                         mean(2, chroma.at, chroma_row.at, chroma.carry, chroma_row.carry)));
        column.end();
        if (x % 2 == 1) chroma.end();
      }
      row.end();
      if (y % 2 == 1) chroma_row.end();
    }
  }
};

// The conversion behind the passes. `luma`, `u` and `v` are offsets into `scratch`.
inline void model_convert_passes(const std::function<int32_t(ptrdiff_t)> &luma,
                                 const std::function<int32_t(ptrdiff_t)> &u,
                                 const std::function<int32_t(ptrdiff_t)> &v, int32_t width,
                                 int32_t height, int32_t stride, bool pairs, ModelPlane &out) {
  const int32_t rows = pairs ? (height + 1) & ~1 : height;
  for (int32_t y = 0; y < rows; ++y) {
    const ptrdiff_t at =
        pairs ? ptrdiff_t{y & ~1} * stride + (y & 1) * (stride & ~1) : ptrdiff_t{y} * (stride & ~1);
    for (int32_t x = 0; x < ((width + 1) & ~1); ++x) {
      const ptrdiff_t chroma = ptrdiff_t{y / 2} * (stride >> 2) + x / 2;
      model_store_565(out, at + 2 * x,
                      model_matrix(luma(ptrdiff_t{y} * (stride >> 1) + x), u(chroma), v(chroma)));
    }
  }
}

// A bilinear sample at (x, y) in units of 2^-18 of samples decimated by 2^sx and 2^sy.
// A neighbour that counts nothing is not looked at.
inline int32_t model_bilinear(const std::function<int32_t(int32_t, int32_t)> &sample, int32_t x,
                              int32_t y, int32_t sx, int32_t sy) {
  const int32_t c = x >> 18 << sx, r = y >> 18 << sy, i = x >> 15 & 7, j = y >> 15 & 7;
  int32_t sum = (8 - i) * (8 - j) * sample(c, r);
  if (i) sum += i * (8 - j) * sample(c + (1 << sx), r);
  if (j) sum += (8 - i) * j * sample(c, r + (1 << sy));
  if (i && j) sum += i * j * sample(c + (1 << sx), r + (1 << sy));
  return sum >> 6;
}

// Step and decimation from one length to another.
struct ModelSteps {
  int32_t shift = 0, step = 0;
  ModelSteps(int32_t from, int32_t to) {
    if (to < 1) return;
    const int32_t ratio = std::min(from / to, 31);
    shift = ratio < 3 ? 0 : ratio < 5 ? 1 : ratio < 9 ? 2 : ratio < 17 ? 3 : 4;
    step = (((from - 1) >> shift) << 18) / to;
  }
};

}  // namespace pivra::test

#endif
