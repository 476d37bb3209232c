// How the YUV layouts are read, vector and scalar side by side.
//
// A source says how its rows are laid out (kRowsPerChroma luma rows share a
// chroma row; bytes per two pixels in the luma and the chroma rows) and how a
// block of pixels, or one pixel, becomes RGB. Rows are walked by advancing
// pointers, so a block and a pixel are always read at the row pointers.
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
PIVRA_INLINE void advance(SourceRows<Source::kRowsPerChroma> &rows, int32_t pixels) {
  for (const uint8_t *&p : rows.luma) p += pixels * Source::kLumaBytes / 2;
  for (int plane = 0; plane < Source::kChromaPlanes; ++plane)
    rows.chroma[plane] += pixels * Source::kChromaBytes / 2;
}

#if PIVRA_VECTORS
PIVRA_INLINE Pair<ChromaTerms> shared(const ChromaTerms &c) { return {c, c}; }
#endif

// Luma in a plane of its own: the base of all planar and semi-planar sources.
template <int kRows, int kChromaBytesPerTwo>
struct LumaPlane {
  static constexpr int kRowsPerChroma = kRows;
  static constexpr int kLumaBytes = 2, kChromaBytes = kChromaBytesPerTwo;
  static constexpr int kChromaPlanes = kChromaBytesPerTwo == 0 ? 0 : 2;

#if PIVRA_VECTORS
  static PIVRA_INLINE Pair<Narrow> luma(const SourceRows<kRows> &rows, int row) {
    return load_pairs(rows.luma[row]);
  }
#endif
};

// Planes of U and V with one sample for two pixels: yuv420 (two rows), yuv422n (one).
template <int kRows>
struct HalfChromaPlanes : LumaPlane<kRows, 1> {
#if PIVRA_VECTORS
  static PIVRA_INLINE Pair<ChromaTerms> chroma(const SourceRows<kRows> &rows) {
    return shared(chroma_terms(load_narrow(rows.chroma[0]), load_narrow(rows.chroma[1])));
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<kRows> &rows, int row, int32_t x) {
    return apply_matrix(rows.luma[row][x], rows.chroma[0][x >> 1], rows.chroma[1][x >> 1]);
  }
};

// Planes of U and V with a sample for every pixel: yuv444 (one row), yuv422w (two).
template <int kRows>
struct FullChromaPlanes : LumaPlane<kRows, 2> {
#if PIVRA_VECTORS
  static PIVRA_INLINE Pair<ChromaTerms> chroma(const SourceRows<kRows> &rows) {
    const Pair<Narrow> u = load_pairs(rows.chroma[0]), v = load_pairs(rows.chroma[1]);
    return {chroma_terms(u.even, v.even), chroma_terms(u.odd, v.odd)};
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<kRows> &rows, int row, int32_t x) {
    return apply_matrix(rows.luma[row][x], rows.chroma[0][x], rows.chroma[1][x]);
  }
};

// One plane of chroma pairs: nv12 (U at byte 0 of the pair), nv21 (U at byte 1).
template <int kU>
struct ChromaPairs : LumaPlane<2, 2> {
  static constexpr int kChromaPlanes = 1;

#if PIVRA_VECTORS
  static PIVRA_INLINE Pair<ChromaTerms> chroma(const SourceRows<2> &rows) {
    Narrow v[2];
    load_interleaved2(rows.chroma[0], v);
    return shared(chroma_terms(v[kU], v[1 - kU]));
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<2> &rows, int row, int32_t x) {
    const uint8_t *pair = rows.chroma[0] + (x & ~1);
    return apply_matrix(rows.luma[row][x], pair[kU], pair[1 - kU]);
  }
};

// Groups of four bytes for two pixels: luma at kY and kY + 2, U and V between.
template <int kY>
struct PackedGroups {
  static constexpr int kRowsPerChroma = 1, kLumaBytes = 4, kChromaBytes = 0;
  static constexpr int kChromaPlanes = 0;
  static constexpr int kU = 1 - kY, kV = 3 - kY;

#if PIVRA_VECTORS
  static PIVRA_INLINE WideRgb block(const SourceRows<1> &rows) {
    Narrow v[4];
    load_interleaved4(rows.luma[0], v);
    return apply_matrix({v[kY], v[kY + 2]}, shared(chroma_terms(v[kU], v[kV])));
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<1> &rows, int, int32_t x) {
    const uint8_t *group = rows.luma[0] + 4 * ptrdiff_t{x >> 1};
    return apply_matrix(group[kY + 2 * (x & 1)], group[kU], group[kV]);
  }
};

// Luma alone, stored as it is in all three channels.
struct GreyPlane : LumaPlane<1, 0> {
#if PIVRA_VECTORS
  static PIVRA_INLINE WideRgb block(const SourceRows<1> &rows) {
    const Pair<Narrow> y = load_pairs(rows.luma[0]);
    const Pair<I16> grey = {widen(y.even), widen(y.odd)};
    return {grey, grey, grey};
  }
#endif
  static PIVRA_INLINE Rgb pixel(const SourceRows<1> &rows, int, int32_t x) {
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
