// The kernels from tiled layouts to RGB of one instruction-set level.
#ifndef PIVRA_TILE_TILED_TO_RGB_H
#define PIVRA_TILE_TILED_TO_RGB_H

#include "core/levels.h"
#include "pivra.h"

namespace pivra {

#define PIVRA_MEMBER(SOURCE, source, DESTINATION, destination) \
  pivra_csc_kernel *source##_to_##destination;
struct TiledToRgb {
  PIVRA_TILED_TO_RGB(PIVRA_MEMBER)
};
#undef PIVRA_MEMBER

PIVRA_TABLES(TiledToRgb, tiled_to_rgb)

}  // namespace pivra

#endif
