// What resized rows come from and end in, at one instruction-set level: rows of tiles
// put together, and pairs of rows that share chroma made RGB.
#ifndef PIVRA_RSZ_CSC_PAIRS_H
#define PIVRA_RSZ_CSC_PAIRS_H

#include <stddef.h>
#include <stdint.h>

#include "core/levels.h"

namespace pivra {

// Rows may be the same, so that there is only one.
struct RowPair {
  const uint8_t *luma[2], *chroma[2];  // U and V, or pairs in the first
  uint8_t *out[2];
};

struct PairsToRgb {
  // Rows of 64x32 tiles put side by side; those of a tile lie one behind the other,
  // `within` bytes from its start on.
  void (*tiles_to_rows)(const uint8_t *const *tiles, int32_t count, ptrdiff_t within, int32_t rows,
                        uint8_t *dst, ptrdiff_t dst_step);
  // Halves of two such rows of a tile side by side: truncated means of two neighbours and
  // the two below them, of bytes and of pairs.
  void (*halve_tiles[2])(const uint8_t *const *tiles, int32_t count, ptrdiff_t within,
                         uint8_t *dst);

  void (*yuv420_to_rgb565)(const RowPair &rows, int32_t columns);
  void (*nv12_to_rgb565)(const RowPair &rows, int32_t columns);
  void (*yuv420_to_rgb888)(const RowPair &rows, int32_t columns);
};

PIVRA_TABLES(PairsToRgb, pairs_to_rgb)

}  // namespace pivra

#endif
