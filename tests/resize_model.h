// The resizers told literally: which samples meet in each output and with what
// weights, and where it goes; each kernel by the arguments that it takes.
#ifndef PIVRA_TESTS_RESIZE_MODEL_H
#define PIVRA_TESTS_RESIZE_MODEL_H

#include "pivra.h"
#include "tile_model.h"

namespace pivra::test {

// Along an axis an output is (weight_c c + weight_n n) / divisor of the samples, or of
// the rows, at c and n. Those of weight 0 do not count.
struct Tap {
  ptrdiff_t c, n;
  uint32_t weight_c, weight_n, divisor;
};
using Taps = std::vector<Tap>;

// The remainder is that of so many outputs as `modulus` says, or of all.
inline Taps shrink(int32_t count, int32_t q, int32_t r, bool always = false, int32_t modulus = 0) {
  if (modulus == 0) modulus = count;
  Taps taps;
  for (int32_t at = 0, counter = 0; std::ssize(taps) < count; at += q) {
    counter += r;
    const bool overflow = counter >= modulus, mean = overflow || always;
    taps.push_back({at, at + 1, 1, mean, 1u + mean});
    if (overflow) counter -= modulus, ++at;
  }
  return taps;
}
inline Taps each(int32_t count) { return shrink(count, 1, 0); }

inline constexpr uint32_t kRampSteps[34] = {0, 0, 32, 21, 16, 13, 11, 9, 8, 7, 6, 6, 5, 5, 4, 4, 4,
                                            3, 3, 3,  3,  3,  3,  2,  2, 2, 2, 2, 2, 2, 2, 2, 2, 1};
inline Taps grow(int32_t count, int32_t from, uint32_t u, int32_t r, bool mode1) {
  Taps taps;
  for (int32_t i = 0, counter = 0; std::ssize(taps) < count; ++i) {
    const int32_t c = std::min(i, from - 1), n = std::min(i + 1, from - 1);
    counter += r;
    const bool overflow = counter >= from;
    if (overflow) counter -= from;
    const uint32_t group = u + overflow, w = kRampSteps[std::min(group, 33u)];
    taps.push_back({c, n, 1, 0, 1});
    for (uint32_t m = 1; m < group; ++m)
      taps.push_back(mode1   ? Tap{c, n, 64 - m * w, m * w, 64}
                     : m < u ? Tap{c, n, group - 1, 1, group}
                             : Tap{c, n, 1, u, u + 1});
  }
  taps.resize(count);
  return taps;
}

// The step between outputs in units of 2^-18 of every few samples, times 8, and the
// logarithm of these few.
inline int32_t step_word(int32_t from, int32_t to) {
  if (to < 1) return 0;
  const int32_t ratio = from / to;
  const int32_t shift = ratio < 3 ? 0 : ratio < 5 ? 1 : ratio < 9 ? 2 : ratio < 17 ? 3 : 4;
  return (((from - 1) >> shift) << 18) / to * 8 + shift;
}
inline Taps bilinear(int32_t count, int32_t word) {
  Taps taps;
  for (int32_t i = 0, at = 0; i < count; ++i, at += word >> 3) {
    const ptrdiff_t c = ptrdiff_t{at >> 18} << (word & 7);
    const uint32_t f = at >> 15 & 7;
    taps.push_back({c, c + (ptrdiff_t{1} << (word & 7)), 8 - f, f, 8});
  }
  return taps;
}

// Rows as offsets: `below` apart, and those of each line `step` further.
inline Taps rows_at(Taps taps, ptrdiff_t below, ptrdiff_t step = 0) {
  for (ptrdiff_t line = 0; line < std::ssize(taps); ++line)
    for (ptrdiff_t *at : {&taps[line].c, &taps[line].n}) *at = *at * below + line * step;
  return taps;
}

// Of a sample, by the name of its shape.
inline int32_t bytes_of(const std::string &shape) {
  return shape == "5b6b5b" ? 2 : int32_t(shape.size() / 2);
}

// A plane that is resized, and turned, by a kernel.
struct ResizeModel {
  std::string shape, turn;  // as names have them: "8b8b", "90l" or none
  bool mode1;
  int32_t sw, sh, dw, dh, src_bytes, dst_bytes;  // sizes, the latter when turned, and strides
  ModelPlane in = {}, out = {}, scratch = {};

  // A sample has fields of so many bits, from its lowest byte up; of 5-6-5 kernels count in
  // words and not in bytes.
  int fields = int(shape.size() / 2);
  int32_t unit = shape == "5b6b5b" ? 2 : 1, bytes = bytes_of(shape);
  int bits(int field) const { return shape[2 * field] - '0'; }

  // The size before a turn, and the ratios of the larger to the smaller sizes.
  bool quarter = turn[0] == '9';
  int32_t w = quarter ? dh : dw, h = quarter ? dw : dh;
  int32_t qx = std::max(sw, w) / std::min(sw, w), rx = std::max(sw, w) % std::min(sw, w);
  int32_t qy = std::max(sh, h) / std::min(sh, h), ry = std::max(sh, h) % std::min(sh, h);
  int32_t src_stride = src_bytes / unit, dst_stride = dst_bytes / unit, step = qy * src_stride;

  // --- Samples ---

  using Sample = std::array<uint32_t, 4>;
  Sample read(ptrdiff_t row, ptrdiff_t x) {
    uint64_t word = 0;
    for (int b = 0; b < bytes; ++b)
      word |= uint64_t{in.read(row * unit + x * bytes + b)} << (8 * b);
    Sample sample{};
    for (int f = 0; f < fields; word >>= bits(f++)) sample[f] = word & ((1u << bits(f)) - 1);
    return sample;
  }
  void write(ptrdiff_t row, ptrdiff_t x, const Sample &sample) {
    uint64_t word = 0;
    for (int f = fields; f-- > 0;) word = word << bits(f) | (sample[f] & ((1u << bits(f)) - 1));
    for (int b = 0; b < bytes; ++b)
      out.write(row * unit + x * bytes + b, int32_t(word >> (8 * b) & 255));
  }

  template <class Fetch>
  static Sample weigh(Fetch fetch, const Tap &x, const Tap &y) {
    Sample sum{};
    for (const auto &[row, weight_y] : {std::pair{y.c, y.weight_c}, {y.n, y.weight_n}})
      for (const auto &[column, weight_x] : {std::pair{x.c, x.weight_c}, {x.n, x.weight_n}}) {
        if (weight_x * weight_y == 0) continue;
        const Sample sample = fetch(row, column);
        for (int f = 0; f < 4; ++f) sum[f] += weight_x * weight_y * sample[f];
      }
    for (uint32_t &field : sum) field /= x.divisor * y.divisor;
    return sum;
  }

  // What taps fetch: a sample of the row at an offset, or a cell of two by two.
  auto samples() {
    return [this](ptrdiff_t row, ptrdiff_t x) { return read(row, x); };
  }
  auto cells() {
    return [this](ptrdiff_t row, ptrdiff_t x) {
      return weigh(samples(), {2 * x, 2 * x + 1, 1, 1, 2}, {row, row + src_stride, 1, 1, 2});
    };
  }

  // Rows of the scratch: straight and without padding.
  template <class Fetch>
  void to_rows(const Taps &xs, const Taps &ys, Fetch fetch) {
    for (ptrdiff_t y = 0; y < std::ssize(ys); ++y)
      for (ptrdiff_t x = 0; x < std::ssize(xs); ++x)
        write(0, y * std::ssize(xs) + x, weigh(fetch, xs[x], ys[y]));
  }
  // Sample i of line t to its place in the plane.
  template <class Fetch>
  void to_plane(const Taps &xs, const Taps &ys, Fetch fetch) {
    for (ptrdiff_t t = 0; t < std::ssize(ys); ++t)
      for (ptrdiff_t i = 0; i < std::ssize(xs); ++i) {
        ptrdiff_t row = t, x = i;
        if (turn == "90l") row = dh - 1 - i, x = t;
        if (turn == "90r") row = i, x = dw - 1 - t;
        if (turn == "180") row = dh - 1 - t, x = dw - 1 - i;
        write(row * dst_stride, x, weigh(fetch, xs[i], ys[t]));
      }
  }

  // --- The kernels ---

  void down_mult() {
    to_plane(shrink(w, qx, 0, true), rows_at(shrink(h, 0, 0, true), src_stride, step), samples());
  }
  void down_non_mult() {
    to_plane(shrink(w, qx, rx), rows_at(shrink(h, 0, ry), src_stride, step), samples());
  }
  Taps down_columns() const { return shrink(w, qx, rx, rx == 0 && qx > 1); }
  Taps up_columns() const { return grow(w, sw, qx, rx, mode1); }
  void down_w() { to_rows(down_columns(), rows_at(each(sh), src_stride), samples()); }
  void up() { to_rows(up_columns(), rows_at(each(sh), src_stride), samples()); }
  void down_h() {
    to_plane(each(w), rows_at(shrink(h, qy, ry, ry == 0 && qy > 1), w * bytes / unit), samples());
  }
  void up_h() {
    to_plane(each(w), rows_at(grow(h, sh, qy, ry, mode1), w * bytes / unit), samples());
  }

  void down_2xplus() {
    to_plane(shrink(w, 1, (sw >> 1) % w), rows_at(shrink(h, 1, (sh >> 1) % h), 2 * src_stride),
             cells());
  }
  void down_4xplus() {
    ResizeModel halves = {shape, "", false, sw, sh, sw >> 1, sh >> 1, src_bytes, src_bytes >> 1};
    halves.qx = 2;
    halves.step = 2 * src_stride;
    if (shape == "8b") halves.src_stride = sw;
    halves.run(&ResizeModel::down_mult, in, scratch);
    ResizeModel{shape, "", false, sw >> 1, sh >> 1, dw, dh, src_bytes >> 1, dst_bytes}.run(
        &ResizeModel::down_2xplus, scratch, out);
  }
  void run(void (ResizeModel::*kernel)(), ModelPlane &from, ModelPlane &to) {
    std::swap(from, in), std::swap(to, out);
    (this->*kernel)();
    std::swap(from, in), std::swap(to, out);
  }

  // Rows of tiles; the second byte of pairs goes to the scratch.
  void tiled(int32_t tw, int32_t channels) {
    for (int32_t c = 0; c < channels; ++c) {
      to_rows(sw > w ? down_columns() : up_columns(), each(sh), [&](ptrdiff_t y, ptrdiff_t x) {
        const ptrdiff_t at = address_64x32(tw, sh, int32_t(x) * channels + c, int32_t(y));
        in.read(at | 63);  // rows of a tile are there as a whole
        return read(at, 0);
      });
      if (channels == 2) std::swap(out, scratch);
    }
  }

  void org(int32_t step_x, int32_t step_y) {
    to_plane(bilinear(w, step_x), rows_at(bilinear(h, step_y), src_stride), samples());
  }

  // --- The kernels of a plane ---

  void plane() {
    if (w < sw && h < sh) return rx == 0 && ry == 0 ? down_mult() : down_non_mult();
    std::swap(out, scratch);
    w < sw ? down_w() : up();
    std::swap(out, scratch);
    std::swap(in, scratch);
    h < sh ? down_h() : up_h();
    std::swap(in, scratch);
  }
};

}  // namespace pivra::test

#endif
