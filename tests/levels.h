// Every instruction-set level that this machine can run, reached through the
// static library, and the scalar code on its own.
#ifndef PIVRA_TESTS_LEVELS_H
#define PIVRA_TESTS_LEVELS_H

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "core/levels.h"
#include "csc/repack.h"
#include "csc/rgb_to_rgb.h"
#include "csc/rgb_to_yuv.h"
#include "csc/yuv_to_rgb.h"
#include "deblock/edges.h"
#include "dither/perturb.h"
#include "filter/rows.h"
#include "rsz/rows.h"
#include "rsz_csc/pairs.h"
#include "tile/tiled_to_rgb.h"
#include "turn/turn.h"
#include "txc/fixed_ratio.h"

namespace pivra {

// The table of each family, as a type and a name.
#define PIVRA_FAMILIES(DO)     \
  DO(YuvToRgb, yuv_to_rgb)     \
  DO(Repack, repack)           \
  DO(RgbToYuv, rgb_to_yuv)     \
  DO(RgbToRgb, rgb_to_rgb)     \
  DO(ResizeRows, resize_rows)  \
  DO(PairsToRgb, pairs_to_rgb) \
  DO(TiledToRgb, tiled_to_rgb) \
  DO(Turns, turns)             \
  DO(FilterRows, filter_rows)  \
  DO(FixedRatio, fixed_ratio)  \
  DO(Deblock, deblock)         \
  DO(Dither, dither)

namespace plain {
#define PIVRA_PLAIN(Table, name) extern const Table name;
PIVRA_FAMILIES(PIVRA_PLAIN)
#undef PIVRA_PLAIN
}  // namespace plain

namespace test {

struct LevelUnderTest {
  std::string name;
#define PIVRA_MEMBER(Table, name) const Table &name;
  PIVRA_FAMILIES(PIVRA_MEMBER)
#undef PIVRA_MEMBER

  friend std::ostream &operator<<(std::ostream &out, const LevelUnderTest &level) {
    return out << level.name;
  }
};

inline std::vector<LevelUnderTest> levels_under_test() {
#define PIVRA_PLAIN(Table, name) plain::name,
#define PIVRA_OF_LEVEL(Table, name) *name##_tables[i],
  std::vector<LevelUnderTest> found = {{"plain", PIVRA_FAMILIES(PIVRA_PLAIN)}};
  for (size_t i = 0; i < kLevels; ++i)
    if (levels[i].supported() && levels[i].name != found[0].name)
      found.push_back({levels[i].name, PIVRA_FAMILIES(PIVRA_OF_LEVEL)});
#undef PIVRA_PLAIN
#undef PIVRA_OF_LEVEL
  return found;
}

// Tests of the tables of each level, which need not have any.
class EachLevel : public testing::TestWithParam<LevelUnderTest> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(EachLevel);
INSTANTIATE_TEST_SUITE_P(, EachLevel, testing::ValuesIn(levels_under_test()),
                         testing::PrintToStringParamName());

// Lets the public functions run each level in turn: body(name of the level).
template <class Body>
void at_every_level(Body body) {
  const size_t chosen = chosen_level;
  for (size_t i = 0; i < kLevels; ++i) {
    if (!levels[i].supported()) continue;
    chosen_level = i;
    body(std::string(levels[i].name));
  }
  chosen_level = chosen;
}

}  // namespace test
}  // namespace pivra

#endif
