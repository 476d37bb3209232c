// The planes that are resized and converted, linear or tiled, and the strips of columns
// in which that is done: a chroma sample for two columns of luma.
#ifndef PIVRA_RSZ_CSC_PLANES_H
#define PIVRA_RSZ_CSC_PLANES_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/bounds.h"
#include "rsz/engine.h"
#include "rsz_csc/pairs.h"
#include "tile/layout.h"

namespace pivra {

struct Plane {
  Shape shape;
  const uint8_t *first;
  ptrdiff_t stride, below;  // of linear planes: from row to row, and to the lower of two
  int32_t tile_width = 0;   // of tiled ones: bytes
  int32_t rows = 0;

  bool tiled() const { return tile_width != 0; }
};

constexpr Plane linear_plane(const uint8_t *first, ptrdiff_t stride, ptrdiff_t below) {
  return {k8b, first, stride, below};
}
constexpr Plane tiled_plane(Shape shape, const uint8_t *first, int32_t width, int32_t rows) {
  return {shape, first, 0, 0, width, rows};
}

// The samples of a strip, row by row in rising order. Rows of tiles are put together
// first, by several at once, as they lie in a tile one behind the other; where outputs are
// far apart, of what they are made of only.
class StripRows {
 public:
  // As many outputs as have their samples in a buffer. Two do in any case.
  static int32_t limit(const Plane &plane, const Engine &engine, int64_t quotient) {
    if (!plane.tiled()) return engine.limit;
    const int64_t outputs = (kBytes / engine.bytes - 2) / (quotient + 1);
    return outputs < engine.limit ? larger(static_cast<int32_t>(outputs), 2) : engine.limit;
  }

  // Before the strip is planned: it may be packed. `step` is how far rows are apart.
  StripRows(const Plane &plane, Strip &strip, int32_t step)
      : plane_(plane),
        unit_(kSampleBytes[plane.shape]),
        x_(static_cast<int32_t>(strip.source) * unit_),
        bytes_(strip.samples * unit_),
        at_once_(step > 2 ? 1 : kRows),
        halved_(plane.tiled() && strip.whole == 2 && x_ % k64x32.width == 0) {
    if (!plane.tiled() || bytes_ <= kBytes) return;
    far_ = bytes_ - 2 * unit_;  // to the last two samples
    at_once_ = 1;
    halved_ = false;
    if (strip.even) strip.at[0] = 0, strip.pair[0] = strip.pair[1] = true;
    strip.at[1] = 3 - strip.pair[1];
    strip.samples = 4;
    strip.whole = 0;
    strip.even = false;
  }

  // Two rows stay.
  const uint8_t *operator()(ptrdiff_t row, bool lower = false) {
    if (!plane_.tiled())
      return plane_.first + row * plane_.stride + (lower ? plane_.below : 0) + x_;
    const int32_t y = static_cast<int32_t>(row) + lower, block = y / at_once_;
    uint8_t *const to = buffer_[block & 1];
    if (block > block_) read(block_ = block, to);
    return to + ptrdiff_t{y % at_once_} * kPitch + (far_ == 0 ? x_ % k64x32.width : 0);
  }

  // The mean of a row and the next one at half the width, if it can be had from the tiles
  // as they are. Up to half a tile more is written.
  bool halve(ptrdiff_t row, uint8_t *dst) {
    const auto y = static_cast<int32_t>(row), within = y % k64x32.rows;
    if (!halved_ || within + 1 == k64x32.rows) return false;
    find_tiles(y / k64x32.rows);
    pairs_.halve_tiles[unit_ - 1](tile_, tiles_, ptrdiff_t{within} * k64x32.width, dst);
    return true;
  }

 private:
  static constexpr int32_t kBytes = 4096, kPitch = kBytes + 2 * k64x32.width, kRows = 2;

  void read(int32_t block, uint8_t *to) {
    const int32_t y = block * at_once_, rows = smaller(at_once_, plane_.rows - y);
    if (far_ != 0) {
      read_two(x_, y, to);
      read_two(x_ + far_, y, to + 2 * unit_);
      return;
    }
    find_tiles(y / k64x32.rows);
    pairs_.tiles_to_rows(tile_, tiles_, ptrdiff_t{y % k64x32.rows} * k64x32.width, rows, to,
                         kPitch);
  }

  // Samples.
  void read_two(int32_t x, int32_t y, uint8_t *to) const {
    read_row<k64x32>(plane_.first, plane_.tile_width, plane_.rows, x, y, 2 * unit_, to);
  }

  void find_tiles(int32_t tile_row) {
    if (tile_row == tile_row_) return;
    tile_row_ = tile_row;
    int32_t x = x_ - x_ % k64x32.width;
    for (tiles_ = 0; x < x_ + bytes_; x += k64x32.width)
      tile_[tiles_++] = plane_.first + tile_offset(k64x32, plane_.tile_width, plane_.rows, x,
                                                   tile_row * k64x32.rows);
  }

  const Plane &plane_;
  const PairsToRgb &pairs_ = chosen(pairs_to_rgb_tables);
  int32_t unit_, x_, bytes_, at_once_;
  bool halved_;
  int32_t far_ = 0, block_ = -1;
  int32_t tiles_ = 0, tile_row_ = -1;
  const uint8_t *tile_[kBytes / k64x32.width + 1];
  alignas(64) uint8_t buffer_[2][kRows * kPitch];
};

// Lines in the making. They are no power of two apart, for the cache's sake.
struct alignas(64) LineBuffer {
  uint8_t byte[kStripBytes + 64];
};

// What pairs of lines become, and where they go. The lines of a pair may lie at a distance
// of their own.
struct Target {
  void (*convert)(const RowPair &rows, int32_t columns);
  int32_t pixel_bytes;
  uint8_t *first;
  ptrdiff_t pair_step, line_step;
  int32_t width, height;
};

// Converts luma and one or two planes of chroma as they are resized: strip by strip, two
// lines at a time. Resize gives for luma (0) and chroma (1)
//
//   limit(plane, engine, which)  how many outputs a strip may have
//   walk(which)                  of the outputs of a line
//   Lines                        of a plane in a strip: next() makes one after another;
//                                it stays until the next but one is made
template <class Resize>
void convert_resized(const Resize &resize, const Plane *planes, int count, const Target &to) {
  const Engine luma_engine(planes[0].shape), chroma_engine(planes[1].shape);
  auto luma_walk = resize.walk(0), chroma_walk = resize.walk(1);
  Strip luma, chroma;
  const int32_t limit = smaller(resize.limit(planes[0], luma_engine, 0) / 2,
                                resize.limit(planes[1], chroma_engine, 1));
  for (StripCutter cutter((to.width + 1) / 2, limit); cutter.cut(chroma);) {
    luma.first = 2 * chroma.first;
    luma.count = smaller(2 * chroma.count, to.width - static_cast<int32_t>(luma.first));
    luma_walk.take(luma);
    chroma_walk.take(chroma);
    typename Resize::Lines y(resize, luma_engine, planes[0], luma, 0),
        u(resize, chroma_engine, planes[1], chroma, 1),
        v(resize, chroma_engine, planes[count - 1], chroma, 1);
    luma_engine.plan(luma);
    chroma_engine.plan(chroma);
    uint8_t *out = to.first + luma.first * to.pixel_bytes;
    for (int32_t line = 0; line < to.height; line += 2, out += to.pair_step) {
      const bool lone = line + 1 == to.height;
      RowPair rows;
      rows.luma[0] = y.next();
      rows.luma[1] = lone ? rows.luma[0] : y.next();
      rows.chroma[0] = u.next();
      rows.chroma[1] = count == 3 ? v.next() : nullptr;
      rows.out[0] = out;
      rows.out[1] = lone ? out : out + to.line_step;
      to.convert(rows, luma.count);
    }
  }
}

}  // namespace pivra

#endif
