// How the YUV layouts are read, vector and scalar side by side.
//
// A source says how its rows are laid out (how many luma rows share a chroma
// row, and how many bytes two pixels take in the luma and in the chroma rows) and
// reads at the row pointers, which are walked by advancing them: `pixel` one
// pixel, `block` what the rows of a block share. A block gives each row's luma
// and turns the luma of even and of odd pixels into RGB.
#ifndef PIVRA_CSC_SOURCES_H
#define PIVRA_CSC_SOURCES_H

#include "csc/matrix.h"

namespace pivra::PIVRA_LEVEL {

// The rows that are converted together: one or two of luma, and what they share.
template <int kRows>
struct SourceRows {
  const uint8_t *luma[kRows];
  const uint8_t *chroma[2];  // U and V, or the interleaved plane in the first
};

template <class Source>
PIVRA_INLINE void advance(SourceRows<Source::kRowsPerChroma> &rows, ptrdiff_t pixels) {
  for (const uint8_t *&p : rows.luma) p += pixels * Source::kLumaBytes / 2;
  for (int plane = 0; plane < Source::kChromaPlanes; ++plane)
    rows.chroma[plane] += pixels * Source::kChromaBytes / 2;
}

#if PIVRA_VECTORS

// Luma in rows of its own.
template <uint8_t kScale, int16_t kOffset>
struct LumaRows {
  template <int kRows>
  PIVRA_INLINE Pair<I16> luma(const SourceRows<kRows> &rows, int row) const {
    return scale<kScale, kOffset>(load_samples(rows.luma[row]));
  }
};

// A chroma sample for an even and an odd pixel.
struct HalfChromaBlock : LumaRows<kLumaScale, kLumaOffset> {
  ChromaTerms terms;
  PIVRA_INLINE explicit HalfChromaBlock(ChromaTerms c) : terms(c) {}
  PIVRA_INLINE RgbLanes even(I16 y) const { return apply_matrix(y, terms); }
  PIVRA_INLINE RgbLanes odd(I16 y) const { return apply_matrix(y, terms); }
};

// A chroma sample for every pixel.
struct FullChromaBlock : LumaRows<kLumaScale, kLumaOffset> {
  Samples u, v;
  PIVRA_INLINE FullChromaBlock(Samples cb, Samples cr) : u(cb), v(cr) {}
  PIVRA_INLINE RgbLanes even(I16 y) const {
    return apply_matrix(y, chroma_terms<0>(even_twos(u, v)));
  }
  PIVRA_INLINE RgbLanes odd(I16 y) const {
    return apply_matrix(y, chroma_terms<0>(odd_twos(u, v)));
  }
};

// Luma and chroma read at once.
struct PackedBlock : HalfChromaBlock {
  Pair<I16> scaled;
  PIVRA_INLINE explicit PackedBlock(Packed422 p)
      : HalfChromaBlock(chroma_terms<0>(p.chroma)),
        scaled(scale<kLumaScale, kLumaOffset>(p.luma)) {}
  PIVRA_INLINE Pair<I16> luma(const SourceRows<1> &, int) const { return scaled; }
};

// Luma as it is in all three channels.
struct GreyBlock : LumaRows<128, 0> {
  PIVRA_INLINE RgbLanes even(I16 y) const { return {y, y, y}; }
  PIVRA_INLINE RgbLanes odd(I16 y) const { return {y, y, y}; }
};

#endif

// Planes of U and V with one sample for two pixels: yuv420 (two rows), yuv422n (one).
template <int kRows>
struct HalfChromaPlanes {
  static constexpr int kRowsPerChroma = kRows, kChromaPlanes = 2;
  static constexpr int kLumaBytes = 2, kChromaBytes = 1;

#if PIVRA_VECTORS
  static PIVRA_INLINE HalfChromaBlock block(const SourceRows<kRows> &rows) {
    return HalfChromaBlock(
        chroma_terms<0>(twos(load_narrow(rows.chroma[0]), load_narrow(rows.chroma[1]))));
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<kRows> &rows, int row, ptrdiff_t x) {
    return apply_matrix(rows.luma[row][x], rows.chroma[0][x >> 1], rows.chroma[1][x >> 1]);
  }
};

// Planes of U and V with a sample for every pixel: yuv444 (one row), yuv422w (two).
template <int kRows>
struct FullChromaPlanes {
  static constexpr int kRowsPerChroma = kRows, kChromaPlanes = 2;
  static constexpr int kLumaBytes = 2, kChromaBytes = 2;

#if PIVRA_VECTORS
  static PIVRA_INLINE FullChromaBlock block(const SourceRows<kRows> &rows) {
    return {load_samples(rows.chroma[0]), load_samples(rows.chroma[1])};
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<kRows> &rows, int row, ptrdiff_t x) {
    return apply_matrix(rows.luma[row][x], rows.chroma[0][x], rows.chroma[1][x]);
  }
};

// One plane of chroma pairs: nv12 (U at byte 0 of the pair), nv21 (U at byte 1).
template <int kU>
struct ChromaPairs {
  static constexpr int kRowsPerChroma = 2, kChromaPlanes = 1;
  static constexpr int kLumaBytes = 2, kChromaBytes = 2;

#if PIVRA_VECTORS
  static PIVRA_INLINE HalfChromaBlock block(const SourceRows<2> &rows) {
    return HalfChromaBlock(chroma_terms<kU>(load_twos(rows.chroma[0])));
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<2> &rows, int row, ptrdiff_t x) {
    const uint8_t *pair = rows.chroma[0] + (x & ~ptrdiff_t{1});
    return apply_matrix(rows.luma[row][x], pair[kU], pair[1 - kU]);
  }
};

// Groups of four bytes for two pixels: luma at kY and kY + 2, U and V between.
template <int kY>
struct PackedGroups {
  static constexpr int kRowsPerChroma = 1, kChromaPlanes = 0;
  static constexpr int kLumaBytes = 4, kChromaBytes = 0;
  static constexpr int kU = 1 - kY, kV = 3 - kY;

#if PIVRA_VECTORS
  static PIVRA_INLINE PackedBlock block(const SourceRows<1> &rows) {
    return PackedBlock(load_packed422<kY>(rows.luma[0]));
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<1> &rows, int, ptrdiff_t x) {
    const uint8_t *group = rows.luma[0] + 4 * (x >> 1);
    return apply_matrix(group[kY + 2 * (x & 1)], group[kU], group[kV]);
  }
};

// Luma alone.
struct GreyPlane {
  static constexpr int kRowsPerChroma = 1, kChromaPlanes = 0;
  static constexpr int kLumaBytes = 2, kChromaBytes = 0;

#if PIVRA_VECTORS
  static PIVRA_INLINE GreyBlock block(const SourceRows<1> &) { return {}; }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<1> &rows, int, ptrdiff_t x) {
    const int32_t y = rows.luma[0][x];
    return {y, y, y};
  }
};

using Yuv420 = HalfChromaPlanes<2>;
using Yuv422n = HalfChromaPlanes<1>;
using Yuv444 = FullChromaPlanes<1>;
using Yuv422w = FullChromaPlanes<2>;
using Nv12 = ChromaPairs<0>;
using Nv21 = ChromaPairs<1>;
using Yuyv = PackedGroups<0>;
using Uyvy = PackedGroups<1>;
using Yuv400 = GreyPlane;

}  // namespace pivra::PIVRA_LEVEL

#endif
