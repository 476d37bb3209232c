// The combined resizers told literally, an output pixel at a time.
#ifndef PIVRA_TESTS_RESIZE_CONVERT_MODEL_H
#define PIVRA_TESTS_RESIZE_CONVERT_MODEL_H

#include "resize_model.h"

namespace pivra::test {

// A yuv420 picture, as planes or as tiles that have both chromas in one, and the RGB that
// is made of it.
struct ResizeConvertModel {
  ImageDesc src{}, dst{};
  std::array<ModelPlane, 3> in = {};
  ModelPlane out = {}, scratch = {};

  bool tiled = src.format == PIVRA_FORMAT_T64X32;
  int32_t w = dst.width[0], h = dst.height[0], stride = dst.stride[0];
  int32_t half_w = w / 2, half_h = h / 2, more_w = (w + 1) / 2, more_h = (h + 1) / 2;

  // Of a plane; its rows are offsets, but numbers in tiles.
  int32_t read(int p, ptrdiff_t row, ptrdiff_t x) {
    if (!tiled) return in[p].read(row + x);
    if (p > 0) x = 2 * x + p - 1, p = 1;
    const auto address = [&](ptrdiff_t y) {
      return address_64x32(src.width[0], src.height[p], int32_t(x), int32_t(y));
    };
    // Pairs of rows of a tile are there as a whole.
    in[p].read(address(std::min<ptrdiff_t>(row | 1, src.height[p] - 1)) | 63);
    return in[p].read(address(row));
  }
  Taps rows(const Taps &taps, ptrdiff_t below, ptrdiff_t step = 0) const {
    return tiled ? taps : rows_at(taps, below, step);
  }
  auto plane() {
    return [this](int p, ptrdiff_t row, ptrdiff_t x) { return read(p, row, x); };
  }

  template <class Fetch>
  static int32_t weigh(Fetch fetch, int p, const Tap &x, const Tap &y) {
    return int32_t(ResizeModel::weigh(
        [&](ptrdiff_t row, ptrdiff_t column) {
          return ResizeModel::Sample{uint32_t(fetch(p, row, column))};
        },
        x, y)[0]);
  }

  // Every pixel of the samples that taps fetch, to its line. Those of chroma serve two
  // columns and two rows.
  using PlaneTaps = std::array<Taps, 3>;
  template <class Fetch, class Line>
  void convert(const PlaneTaps &xs, const PlaneTaps &ys, Fetch fetch, Line line) {
    for (ptrdiff_t y = 0; y < std::ssize(ys[0]); ++y)
      for (ptrdiff_t x = 0; x < std::ssize(xs[0]); ++x) {
        Colour c;
        for (int p = 0; p < 3; ++p)
          c[p] = weigh(fetch, p, xs[p][p ? x / 2 : x], ys[p][p ? y / 2 : y]);
        const auto [r, g, b] = model_matrix(c[0], c[1], c[2]);
        if (dst.format == PIVRA_FORMAT_RGB888) {
          for (const int i : {0, 1, 2}) out.write(line(y) + 3 * x + i, std::array{r, g, b}[i]);
          continue;
        }
        const int32_t word = (r & 0xF8) << 8 | (g & 0xFC) << 3 | b >> 3;
        out.write(line(y) + 2 * x, word & 255);
        out.write(line(y) + 2 * x + 1, word >> 8);
      }
  }
  template <class Fetch>
  void convert(const PlaneTaps &xs, const PlaneTaps &ys, Fetch fetch) {
    convert(xs, ys, fetch, [this](ptrdiff_t y) { return y * stride; });
  }

  // --- The ways ---

  // Chroma of linear sources lies by the stride of luma, but blocks begin by its own.
  int32_t below(int p) const { return p == 0 ? src.stride[0] : src.stride[0] / 2; }

  // By whole factors, the means of two by two samples; chroma of an odd last row is alone.
  void shrink_whole() {
    const int32_t qx = src.width[0] / w, qy = src.height[0] / h;
    PlaneTaps xs, ys;
    for (int p = 0; p < 3; ++p) {
      xs[p] = shrink(p ? half_w : 2 * half_w, qx, 0, true);
      ys[p] = shrink(p ? more_h : h, tiled ? qy : 0, 0, true);
      if (p > 0 && h % 2 != 0) ys[p].back().weight_n = 0, ys[p].back().divisor = 1;
      ys[p] = rows(ys[p], below(p), ptrdiff_t{qy} * src.stride[p]);
    }
    convert(xs, ys, plane());
  }

  void shrink_by_others() {
    PlaneTaps xs, ys;
    for (int p = 0; p < 3; ++p) {
      const int32_t columns = p ? std::max(half_w, 1) : w, lines = p ? std::max(half_h, 1) : h;
      xs[p] =
          shrink(p ? more_w : w, src.width[p] / columns, src.width[p] % columns, false, columns);
      ys[p] = shrink(p ? more_h : h, src.height[0] / h, src.height[p] % lines, false, lines);
      for (Tap &x : xs[p])
        for (ptrdiff_t *at : {&x.c, &x.n}) *at = std::min<ptrdiff_t>(*at, src.width[p] - 1);
      for (Tap &y : ys[p])
        for (ptrdiff_t *at : {&y.c, &y.n}) *at = std::min<ptrdiff_t>(*at, src.height[p] - 1);
      ys[p] = rows(ys[p], below(p));
    }
    convert(xs, ys, plane());
  }

  void interpolate() {
    PlaneTaps xs, ys;
    for (int p = 0; p < 3; ++p) {
      xs[p] = bilinear(p ? more_w : w, step_word(src.width[p], p ? half_w : w));
      ys[p] = bilinear(p ? more_h : h, step_word(src.height[p], p ? more_h : h));
      ys[p] = rows(ys[p], src.stride[p]);
    }
    convert(xs, ys, plane());
  }

  // What the passes leave, in pairs of rows or row by row.
  template <class Fetch>
  void convert_passes(bool pairs, Fetch fetch) {
    const Taps y = rows_at(each(pairs ? 2 * more_h : h), stride >> 1);
    const Taps c = rows_at(each(more_h), stride >> 2);
    convert({each(2 * more_w), each(more_w), each(more_w)}, {y, c, c}, fetch, [&](ptrdiff_t row) {
      return pairs ? (row & ~1) * stride + (row & 1) * (stride & ~1) : row * (stride & ~1);
    });
  }

  // The ratio is that of luma, the remainder the plane's own.
  Taps pass(int32_t from, int32_t to, int32_t luma_from, int32_t luma_to) const {
    if (from == 0 || to == 0) return {};
    const bool mode1 = dst.resize_mode == PIVRA_RSZ_MODE1;
    if (luma_to >= luma_from)
      return grow(to, from, uint32_t(luma_to / luma_from), to % from, mode1);
    const int32_t q = luma_from / luma_to, r = from % to;
    return shrink(to, q, r, r == 0 && q > 1);
  }
  void two_passes() {
    const int32_t sh = src.height[0];
    const std::array<ptrdiff_t, 3> pitch = {stride >> 1, stride >> 2, stride >> 2};
    // The planes in the scratch, before and after the pass over columns.
    const std::array<ptrdiff_t, 3> before = {0, w * sh, w * sh + sh / 2 * half_w};
    std::array<ptrdiff_t, 3> after = {w * sh + (src.height[1] + src.height[2]) * half_w};
    after[1] = after[0] + h * pitch[0];
    after[2] = after[1] + half_h * pitch[1];

    PlaneTaps xs, ys;
    for (int p = 0; p < 3; ++p) {
      xs[p] = pass(src.width[p], p ? half_w : w, src.width[0], w);
      ys[p] = pass(src.height[p], p ? half_h : h, sh, h);
    }

    // The rows of both chromas may be at the same place: those of tiles come by turns.
    using Planes = std::vector<int>;
    for (const Planes &planes :
         tiled ? std::vector<Planes>{{0}, {1, 2}} : std::vector<Planes>{{0}, {1}, {2}})
      for (int32_t y = 0; y < src.height[planes[0]]; ++y)
        for (const int p : planes) {
          const Tap row = rows(Taps{{y, y, 1, 0, 1}}, src.stride[p])[0];
          for (ptrdiff_t x = 0; x < std::ssize(xs[p]); ++x)
            scratch.write(before[p] + y * std::ssize(xs[p]) + x, weigh(plane(), p, xs[p][x], row));
        }
    const auto in_scratch = [this](const auto &planes) {
      return [this, planes](int p, ptrdiff_t row, ptrdiff_t x) {
        return scratch.read(planes[p] + row + x);
      };
    };
    for (int p = 0; p < 3; ++p) {
      const Taps columns = each(p ? half_w : w), lines = rows_at(ys[p], std::ssize(columns));
      for (ptrdiff_t y = 0; y < std::ssize(lines); ++y)
        for (ptrdiff_t x = 0; x < std::ssize(columns); ++x)
          scratch.write(after[p] + y * pitch[p] + x,
                        weigh(in_scratch(before), p, columns[x], lines[y]));
    }
    convert_passes(h % 2 == 0, in_scratch(after));
  }
};

}  // namespace pivra::test

#endif
