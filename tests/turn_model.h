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
        const ptrdiff_t right = width - 1 - x, below = height - 1 - y;
        const std::array<ptrdiff_t, 2> to[] = {{x, y},         {y, right}, {below, x},
                                               {right, below}, {right, y}, {x, below}};
        const auto [column, row] = to[code];
        for (int32_t byte = 0; byte < unit; ++byte)
          out.write(row * dst_stride + column * unit + byte,
                    in.read(ptrdiff_t{y} * src_stride + ptrdiff_t{x} * unit + byte));
      }
  }
};

}  // namespace pivra::test

#endif
