// Where lines of samples go: a destination plane that takes them straight or turned.
//
// A line is a row of the picture before it is turned. Lines come in bands, as wide as
// a strip of columns; a straight plane has them written in place, for a turned one they
// are collected and turned as one block.
#ifndef PIVRA_RSZ_PLACE_H
#define PIVRA_RSZ_PLACE_H

#include <stddef.h>
#include <stdint.h>

#include "core/bounds.h"
#include "pivra.h"
#include "rsz/shape.h"
#include "turn/turn.h"

namespace pivra {

// Turns, as they stand in names.
constexpr int32_t kStraight = PIVRA_ROT_COPY, k90l = PIVRA_ROT_90L, k90r = PIVRA_ROT_90R,
                  k180 = PIVRA_ROT_180;

class Place {
 public:
  // A band of a turned plane: lines that make whole cache lines of it, and as much of each
  // as stays in the cache.
  static constexpr int32_t kLines = 64, kTurnedBytes = 512;
  // Straight ones are not kept, but lines may be made of the same rows.
  static constexpr int32_t kStraightLines = 4;

  // `turn` is one of these; only samples of one or two bytes turn. Width and height are
  // those of the destination.
  Place(int32_t turn, Shape shape, uint8_t *dst, ptrdiff_t stride, int32_t width, int32_t height)
      : turn_(kTurnInto[turn][kSampleBytes[shape] - 1]),
        bytes_(kSampleBytes[shape]),
        dst_(dst),
        stride_(stride),
        columns_(is_quarter_turn(turn) ? height : width),
        lines_(is_quarter_turn(turn) ? width : height) {}

  // Before the turn.
  int32_t columns() const { return columns_; }
  int32_t lines() const { return lines_; }

  // How many columns and lines at once suit the place, unless it takes whole rows.
  bool whole_rows() const { return turn_ == nullptr; }
  int32_t strip(int32_t limit) const {
    const int32_t turned = kTurnedBytes / bytes_;
    return turn_ == nullptr || limit < turned ? limit : turned;
  }
  int32_t band() const { return turn_ == nullptr ? kStraightLines : kLines / bytes_; }

  // Columns x .. x + width - 1 of lines `first` .. `first` + count - 1, a band of them:
  // make(line, out, before) writes one line, in order and counting from 0; `before` is
  // where the last one went, unless it is the first.
  template <class Make>
  void write(int32_t first, int32_t count, ptrdiff_t x, ptrdiff_t width, Make make) const {
    write_block(first, count, x, width, [&](uint8_t *out, ptrdiff_t stride) {
      const uint8_t *before = nullptr;
      for (int32_t line = 0; line < count; ++line, before = out, out += stride)
        make(line, out, before);
    });
  }

  // Of all lines: make(first, count, out, stride) writes some.
  template <class Make>
  void write_alike(ptrdiff_t x, ptrdiff_t width, Make make) const {
    const int32_t most = turn_ == nullptr ? lines_ : band();
    for (int32_t first = 0; first < lines_; first += most) {
      const int32_t count = smaller(most, lines_ - first);
      write_block(first, count, x, width,
                  [&](uint8_t *out, ptrdiff_t stride) { make(first, count, out, stride); });
    }
  }

 private:
  template <class Make>
  void write_block(int32_t first, int32_t count, ptrdiff_t x, ptrdiff_t width, Make make) const {
    if (turn_ == nullptr) return make(dst_ + first * stride_ + x * bytes_, stride_);
    constexpr ptrdiff_t kPitch = kTurnedBytes + 64;  // no power of two, for the cache's sake
    uint8_t band[kLines * kPitch];
    make(band, kPitch);
    turn_(band, {x, first, width, count}, kPitch, columns_, lines_, stride_, dst_);
  }

  typedef void TurnInto(const uint8_t *src, Block block, ptrdiff_t src_stride, ptrdiff_t width,
                        ptrdiff_t height, ptrdiff_t dst_stride, uint8_t *dst);

  template <int code, int unit>
  static void turn_into(const uint8_t *src, Block block, ptrdiff_t src_stride, ptrdiff_t width,
                        ptrdiff_t height, ptrdiff_t dst_stride, uint8_t *dst) {
    turn<code, unit>(chosen(turns_tables), src, block.width, block.height, src_stride, dst_stride,
                     turned_block<code, unit>(block, width, height, dst_stride, dst));
  }

  static constexpr TurnInto *kTurnInto[k180 + 1][4] = {
      {},
      {turn_into<k90l, 1>, turn_into<k90l, 2>},
      {turn_into<k90r, 1>, turn_into<k90r, 2>},
      {turn_into<k180, 1>, turn_into<k180, 2>},
  };

  TurnInto *turn_;  // null: straight
  int32_t bytes_;
  uint8_t *dst_;
  ptrdiff_t stride_;
  int32_t columns_, lines_;
};

}  // namespace pivra

#endif
