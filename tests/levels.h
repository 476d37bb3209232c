// Every instruction-set level that this machine can run, reached through the
// static library, and the scalar code on its own.
#ifndef PIVRA_TESTS_LEVELS_H
#define PIVRA_TESTS_LEVELS_H

#include <ostream>
#include <string>
#include <vector>

#include "core/levels.h"
#include "csc/repack.h"
#include "csc/rgb_to_rgb.h"
#include "csc/rgb_to_yuv.h"
#include "csc/yuv_to_rgb.h"
#include "tile/tiled_to_rgb.h"

namespace pivra {

namespace plain {
extern const YuvToRgb yuv_to_rgb;
extern const Repack repack;
extern const RgbToYuv rgb_to_yuv;
extern const RgbToRgb rgb_to_rgb;
extern const TiledToRgb tiled_to_rgb;
}  // namespace plain

namespace test {

struct LevelUnderTest {
  std::string name;
  const YuvToRgb &yuv_to_rgb;
  const Repack &repack;
  const RgbToYuv &rgb_to_yuv;
  const RgbToRgb &rgb_to_rgb;
  const TiledToRgb &tiled_to_rgb;

  friend std::ostream &operator<<(std::ostream &out, const LevelUnderTest &level) {
    return out << level.name;
  }
};

inline std::vector<LevelUnderTest> levels_under_test() {
  std::vector<LevelUnderTest> found = {{"plain", plain::yuv_to_rgb, plain::repack,
                                        plain::rgb_to_yuv, plain::rgb_to_rgb, plain::tiled_to_rgb}};
  for (size_t i = 0; i < kLevels; ++i)
    if (levels[i].supported() && levels[i].name != found[0].name)
      found.push_back({levels[i].name, *yuv_to_rgb_tables[i], *repack_tables[i],
                       *rgb_to_yuv_tables[i], *rgb_to_rgb_tables[i], *tiled_to_rgb_tables[i]});
  return found;
}

}  // namespace test
}  // namespace pivra

#endif
