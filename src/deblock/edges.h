// The edges of 8 x 8 blocks in a plane, filtered at one instruction-set level.
#ifndef PIVRA_DEBLOCK_EDGES_H
#define PIVRA_DEBLOCK_EDGES_H

#include <stdint.h>

#include "core/levels.h"

namespace pivra {

struct Deblock {
  void (*horizontal)(uint8_t *plane, int32_t strength, int32_t stride, int32_t width,
                     int32_t height);
  void (*vertical)(uint8_t *plane, int32_t strength, int32_t stride, int32_t width, int32_t height);
};

PIVRA_TABLES(Deblock, deblock)

}  // namespace pivra

#endif
