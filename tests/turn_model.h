// Turns told literally: where each unit of a plane goes.
#ifndef PIVRA_TESTS_TURN_MODEL_H
#define PIVRA_TESTS_TURN_MODEL_H

#include "guarded.h"
#include "pivra.h"

namespace pivra::test {

struct TurnModel {
  int32_t code, unit, width, height, src_stride, dst_stride;
  ModelPlane in, out;

  bool quarter() const { return code == PIVRA_ROT_90L || code == PIVRA_ROT_90R; }
  int32_t dst_width() const { return quarter() ? height : width; }

  void run() {
    for (int32_t y = 0; y < height; ++y)
      for (int32_t x = 0; x < width; ++x) {
        ptrdiff_t column = x, row = y;
        switch (code) {
          case PIVRA_ROT_90L:
            column = y, row = width - 1 - x;
            break;
          case PIVRA_ROT_90R:
            column = height - 1 - y, row = x;
            break;
          case PIVRA_ROT_180:
            column = width - 1 - x, row = height - 1 - y;
            break;
          case PIVRA_ROT_HORI:
            column = width - 1 - x;
            break;
          case PIVRA_ROT_VERT:
            row = height - 1 - y;
            break;
        }
        for (int32_t byte = 0; byte < unit; ++byte)
          out.write(row * dst_stride + column * unit + byte,
                    in.read(ptrdiff_t{y} * src_stride + ptrdiff_t{x} * unit + byte));
      }
  }
};

}  // namespace pivra::test

#endif
