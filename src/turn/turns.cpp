// The moves that turns are made of. Compiled once per instruction-set level.
#include "simd/simd.h"
#include "turn/turn.h"

namespace pivra::PIVRA_LEVEL {
namespace {

// --- One unit at a time ---

template <int unit>
PIVRA_INLINE void move_unit(const uint8_t *src, uint8_t *dst) {
  memcpy(dst, src, unit);
}

template <int unit>
void transpose_units(const uint8_t *src, ptrdiff_t width, ptrdiff_t height, ptrdiff_t src_stride,
                     ptrdiff_t dst_stride, uint8_t *dst) {
  for (ptrdiff_t y = 0; y < height; ++y)
    for (ptrdiff_t x = 0; x < width; ++x)
      move_unit<unit>(src + y * src_stride + x * unit, dst + x * dst_stride + y * unit);
}

template <int unit>
void mirror_units(const uint8_t *src, ptrdiff_t width, ptrdiff_t height, ptrdiff_t src_stride,
                  ptrdiff_t dst_stride, uint8_t *dst) {
  for (ptrdiff_t y = 0; y < height; ++y)
    for (ptrdiff_t x = 0; x < width; ++x)
      move_unit<unit>(src + y * src_stride + x * unit,
                      dst + y * dst_stride + (width - 1 - x) * unit);
}

#if PIVRA_VECTORS

// --- Blocks that are transposed in registers ---

#if defined(PIVRA_TRANSPOSES_SQUARES)

// As many rows as fill whole registers, and as many columns: the fewest loads as well.
template <int unit>
struct Square {
  static constexpr ptrdiff_t kRows = kBlock / unit, kColumns = kRows;

  PIVRA_INLINE static void transpose(const uint8_t *src, ptrdiff_t src_stride, ptrdiff_t dst_stride,
                                     uint8_t *dst) {
    Whole v[kRows];
#pragma GCC unroll 16
    for (Whole &row : v) row = load_and_step(src, src_stride);
    PIVRA_LEVEL::transpose<unit>(v);
#pragma GCC unroll 16
    for (Whole &column : v) store_and_step(dst, dst_stride, column);
  }
};

#endif

// As many rows as fill whole registers: the fewest stores.
template <int unit>
struct Tall {
  static constexpr ptrdiff_t kRows = kBlock / unit, kColumns = kLane / unit;

  PIVRA_INLINE static void transpose(const uint8_t *src, ptrdiff_t src_stride, ptrdiff_t dst_stride,
                                     uint8_t *dst) {
    Whole v[kColumns];
#pragma GCC unroll 16
    for (Whole &row : v) {
      row = load_lanes(src, kColumns * src_stride);
      src += src_stride;
    }
    PIVRA_LEVEL::transpose<unit>(v);
#pragma GCC unroll 16
    for (Whole &column : v) {
      store_bytes(dst, column);
      dst += dst_stride;
    }
  }
};

// Triples travel as units of four bytes, two lanes to a row.
template <>
struct Tall<3> {
  static constexpr ptrdiff_t kHalf = kLane / 4;
  static constexpr ptrdiff_t kRows = kBlock / 4, kColumns = 2 * kHalf;

  template <int past>
  PIVRA_INLINE static void transpose_half(const uint8_t *src, ptrdiff_t src_stride,
                                          ptrdiff_t dst_stride, uint8_t *dst) {
    Whole v[kHalf];
#pragma GCC unroll 4
    for (Whole &row : v) {
      row = move_apart<past>(load_lanes(src, kHalf * src_stride));
      src += src_stride;
    }
    PIVRA_LEVEL::transpose<4>(v);
#pragma GCC unroll 4
    for (Whole &column : v) {
      store_triples(dst, column);
      dst += dst_stride;
    }
  }
  PIVRA_INLINE static void transpose(const uint8_t *src, ptrdiff_t src_stride, ptrdiff_t dst_stride,
                                     uint8_t *dst) {
    transpose_half<0>(src, src_stride, dst_stride, dst);
    // What fills a lane and ends with the last column.
    constexpr int32_t kPast = kLane - 3 * kHalf;
    transpose_half<kPast>(src + 3 * kHalf - kPast, src_stride, dst_stride,
                          dst + kHalf * dst_stride);
  }
};

// As few rows as make eight bytes of a column.
template <int unit>
struct Short {
  static constexpr ptrdiff_t kRows = 8 / unit, kColumns = kLane / unit;

  PIVRA_INLINE static void transpose(const uint8_t *src, ptrdiff_t src_stride, ptrdiff_t dst_stride,
                                     uint8_t *dst) {
    constexpr ptrdiff_t kColumnsEach = kLane / 8;
    Lane v[kRows];
#pragma GCC unroll 8
    for (Lane &row : v) {
      row = load_lane(src);
      src += src_stride;
    }
    PIVRA_LEVEL::transpose<unit>(v);
#pragma GCC unroll 8
    for (Lane &columns : v) {
      store_eights(dst, dst_stride, columns);
      dst += kColumnsEach * dst_stride;
    }
  }
};

ptrdiff_t smaller(ptrdiff_t a, ptrdiff_t b) { return a < b ? a : b; }

// Bands of rows that make whole cache lines of the destination, down before across:
// a line is filled while it is at hand.
template <class Block, int unit>
PIVRA_INLINE bool in_blocks(const uint8_t *src, ptrdiff_t width, ptrdiff_t height,
                            ptrdiff_t src_stride, ptrdiff_t dst_stride, uint8_t *dst) {
  if (width < Block::kColumns || height < Block::kRows) return false;
  constexpr ptrdiff_t kBand = unit == 3 ? 64 : 64 / unit;
  for (ptrdiff_t band = 0; band < height; band += kBand) {
    const ptrdiff_t start = smaller(band, height - Block::kRows);
    const ptrdiff_t rows = smaller(band + kBand, height) - start;
    for (ptrdiff_t at = 0; at < width; at += Block::kColumns) {
      const ptrdiff_t x = smaller(at, width - Block::kColumns);
      const uint8_t *from = src + start * src_stride + x * unit;
      uint8_t *to = dst + x * dst_stride + start * unit;
      for (ptrdiff_t left = rows;;) {
        Block::transpose(from, src_stride, dst_stride, to);
        left -= Block::kRows;
        if (left <= 0) break;
        const ptrdiff_t step = smaller(left, Block::kRows);
        from += step * src_stride;
        to += step * unit;
      }
    }
  }
  return true;
}

// --- Rows that are mirrored in registers ---

// Of at least kMirrored<unit> bytes.
template <int unit>
PIVRA_INLINE void mirror_row(const uint8_t *src, ptrdiff_t bytes, uint8_t *dst) {
  constexpr ptrdiff_t kStep = kMirrored<unit>;
  const uint8_t *from = src;
  uint8_t *to = copy_mirrored_far<unit>(from, dst + bytes, bytes);
#pragma GCC unroll 4
  for (; to - dst >= kStep; from += kStep) copy_mirrored<unit>(from, to -= kStep);
  if (to > dst) copy_mirrored<unit>(src + bytes - kStep, dst);
}

#endif

template <int unit>
void transpose(const uint8_t *src, ptrdiff_t width, ptrdiff_t height, ptrdiff_t src_stride,
               ptrdiff_t dst_stride, uint8_t *dst) {
#if defined(PIVRA_TRANSPOSES_SQUARES)
  if constexpr (unit != 3)
    if (in_blocks<Square<unit>, unit>(src, width, height, src_stride, dst_stride, dst)) return;
#endif
#if PIVRA_VECTORS
  if (in_blocks<Tall<unit>, unit>(src, width, height, src_stride, dst_stride, dst)) return;
  if constexpr (unit != 3)
    if (in_blocks<Short<unit>, unit>(src, width, height, src_stride, dst_stride, dst)) return;
#endif
  transpose_units<unit>(src, width, height, src_stride, dst_stride, dst);
}

template <int unit>
void mirror(const uint8_t *src, ptrdiff_t width, ptrdiff_t height, ptrdiff_t src_stride,
            ptrdiff_t dst_stride, uint8_t *dst) {
#if PIVRA_VECTORS
  if (width * unit >= kMirrored<unit>) {
    for (; height > 0; --height, src += src_stride, dst += dst_stride)
      mirror_row<unit>(src, width * unit, dst);
    return;
  }
#endif
  mirror_units<unit>(src, width, height, src_stride, dst_stride, dst);
}

}  // namespace

extern const Turns turns;
const Turns turns = {
    .transpose = {transpose<1>, transpose<2>, transpose<3>, transpose<4>},
    .mirror = {mirror<1>, mirror<2>, mirror<3>, mirror<4>},
};

}  // namespace pivra::PIVRA_LEVEL
