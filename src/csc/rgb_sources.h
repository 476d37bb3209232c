// How the RGB layouts are read, vector and scalar side by side.
//
// `load` reads a block of pixels as they lie in memory; `weights` brings a row of
// the matrix into the order of their bytes or fields, so that pixels are weighed
// without being taken apart. (A type holds them: GCC 12 takes template arguments
// for the same that differ in the place of a zero.) `sample` is the same for a single pixel.
#ifndef PIVRA_CSC_RGB_SOURCES_H
#define PIVRA_CSC_RGB_SOURCES_H

#include "csc/rgb_matrix.h"
#include "simd/simd.h"

namespace pivra::PIVRA_LEVEL {

// Three or four bytes with the colours at these positions.
template <int kSize, int kR, int kG, int kB>
struct FromBytes {
  static constexpr int kBytes = kSize;
  static constexpr bool kWords = false;

#if PIVRA_VECTORS
  static PIVRA_INLINE auto load(const uint8_t *p) { return load_pixels<kSize>(p); }
  static constexpr ByteWeights weights(MatrixRow row) {
    ByteWeights w{{}, row.offset};
    w.byte[kR] = row.r;
    w.byte[kG] = row.g;
    w.byte[kB] = row.b;
    return w;
  }
  template <MatrixRow row>
  struct Weights {
    static constexpr ByteWeights k = weights(row);
  };
#endif
  template <MatrixRow row>
  static PIVRA_INLINE uint8_t sample(const uint8_t *p) {
    return static_cast<uint8_t>((row.r * p[kR] + row.g * p[kG] + row.b * p[kB] + row.offset) >> 8);
  }
};

// 5-6-5 words, little-endian: red on top, or blue. The fields stand for the upper
// bits of a byte, the lower ones are zero.
template <bool kBlueOnTop>
struct FromWords {
  static constexpr int kBytes = 2;
  static constexpr bool kWords = true;

#if PIVRA_VECTORS
  static PIVRA_INLINE auto load(const uint8_t *p) { return load_words(p); }
  // With the word w = 2048 top + 32 middle + bottom the fields are
  //   top = w >> 11,  middle = (w >> 5) - 64 (w >> 11),  bottom = w - 32 (w >> 5)
  // and the matrix is gathered by w, w >> 5 and w >> 11, with nothing to mask.
  static constexpr WordWeights weights(MatrixRow row) {
    const int32_t top = 8 * (kBlueOnTop ? row.b : row.r), middle = 4 * row.g;
    const int32_t bottom = 8 * (kBlueOnTop ? row.r : row.b);
    return {bottom, middle - 32 * bottom, top - 64 * middle, row.offset};
  }
  template <MatrixRow row>
  struct Weights {
    static constexpr WordWeights k = weights(row);
  };
#endif
  template <MatrixRow row>
  static PIVRA_INLINE uint8_t sample(const uint8_t *p) {
    const int32_t top = p[1] & 0xF8, middle = (p[1] << 5 | p[0] >> 3) & 0xFC;
    const int32_t bottom = p[0] << 3 & 0xF8;
    const int32_t r = kBlueOnTop ? bottom : top, b = kBlueOnTop ? top : bottom;
    return static_cast<uint8_t>((row.r * r + row.g * middle + row.b * b + row.offset) >> 8);
  }
};

using FromRgb565 = FromWords<false>;
using FromBgr565 = FromWords<true>;
using FromRgb888 = FromBytes<3, 0, 1, 2>;
using FromBgr888 = FromBytes<3, 2, 1, 0>;
using FromRgba8888 = FromBytes<4, 0, 1, 2>;
using FromBgra8888 = FromBytes<4, 2, 1, 0>;
using FromArgb8888 = FromBytes<4, 1, 2, 3>;
using FromAbgr8888 = FromBytes<4, 3, 2, 1>;

}  // namespace pivra::PIVRA_LEVEL

#endif
