#include <gtest/gtest.h>

#include <array>

#include "guarded.h"
#include "levels.h"
#include "pivra.h"

namespace pivra::test {
namespace {

// The first `kept` of every `of` columns, in units of bytes, and rows. Rows are made
// in steps of `step` bytes.
struct Ratio {
  int32_t kept, of, step;

  int32_t source(int32_t i) const { return of * (i / kept) + i % kept; }
};
constexpr Ratio k3To2 = {2, 3, 32}, k2To1 = {1, 2, 32}, k4To3 = {3, 4, 24};

// --- Rows, at every level and as scalar code ---

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

TEST_P(EveryLevel, KeepsUnitsOfRowsOfEveryLength) {
  const FixedRatio &rows = GetParam().fixed_ratio;
  GuardedPlane src, dst;
  for (const auto &[ratio, keep] : {std::pair{k2To1, &rows.one_of_two},
                                    {k3To2, &rows.two_of_three},
                                    {k4To3, &rows.three_of_four}})
    for (int32_t unit : {1, 2})
      for (int32_t bytes = 0; bytes <= 40 * ratio.step; bytes += ratio.step) {
        const std::vector<uint8_t> row = noise(static_cast<size_t>(bytes / ratio.kept * ratio.of));
        std::vector<uint8_t> expected;
        for (int32_t i = 0; i < bytes; ++i)
          expected.push_back(row[static_cast<size_t>(unit * ratio.source(i / unit) + i % unit)]);
        const bool at_end = bytes / ratio.step % 2;
        src.place(row, at_end);
        dst.place(noise(expected.size()), at_end);
        (*keep)[unit - 1](src.data(), bytes, dst.data());
        ASSERT_EQ(dst.content(), expected)
            << ratio.of << ":" << ratio.kept << ", units of " << unit << ", " << bytes;
      }
}

// --- Planes and pictures, told literally ---

void model(const Ratio &ratio, int32_t unit, ModelPlane &src, ModelPlane &dst, int32_t width,
           int32_t height, int32_t src_stride, int32_t dst_stride) {
  const int32_t bytes = width * unit / ratio.step * ratio.step;
  for (int32_t y = 0; y < height / ratio.kept * ratio.kept; ++y)
    for (int32_t i = 0; i < bytes; ++i) {
      const int32_t x = unit * ratio.source(i / unit) + i % unit;
      dst.write(y * dst_stride + i, src.read(ratio.source(y) * src_stride + x));
    }
  // Dropped columns are read with the others.
  if (bytes > 0 && height >= ratio.kept)
    src.read(ratio.source(height / ratio.kept * ratio.kept - 1) * src_stride +
             bytes / ratio.kept * ratio.of - 1);
}

struct Resizer {
  const char *name;
  Ratio ratio;
  pivra_txc_resizer *run;
  bool fixed;
};
constexpr Resizer kResizers[] = {{"1080p_720p", k3To2, pivra_txc_rsz_1080p_720p, false},
                                 {"1080p_qhd", k2To1, pivra_txc_rsz_1080p_qhd, true},
                                 {"720p_qhd", k4To3, pivra_txc_rsz_720p_qhd, false}};

void expect_equal_to_model(const Resizer &resizer, int32_t width, int32_t height) {
  ImageDesc src{}, dst{};
  dst.width[0] = width;
  dst.height[0] = height;
  dst.width[1] = random_in(0, 1) ? width / 2 : random_in(0, width);
  dst.height[1] = random_in(0, 1) ? height / 2 : random_in(0, height);

  std::array<ModelPlane, 2> in, out;
  const auto run_model = [&] {
    for (int32_t p : {0, 1})
      model(resizer.ratio, p + 1, in[p], out[p], resizer.fixed ? 960 / (p + 1) : dst.width[p],
            resizer.fixed ? 540 / (p + 1) : dst.height[p], src.stride[p], dst.stride[p]);
  };
  for (int32_t p : {0, 1}) {
    src.stride[p] = (resizer.fixed ? 1920 : 2 * width * (p + 1)) + random_in(0, 70);
    dst.stride[p] = (resizer.fixed ? 960 : width * (p + 1)) + random_in(0, 70);
  }
  run_model();  // finds out what is touched
  std::array<GuardedPlane, 4> memory;
  for (size_t p : {0, 1}) {
    in[p].bytes = noise(in[p].bytes.size());
    out[p].bytes = noise(out[p].bytes.size());
    src.plane[p] = memory[p].place(in[p].bytes, random_in(0, 1));
    dst.plane[p] = memory[2 + p].place(out[p].bytes, random_in(0, 1));
  }
  run_model();
  ASSERT_EQ(resizer.run(&src, &dst), PIVRA_OK);
  for (size_t p : {0, 1})
    ASSERT_EQ(memory[2 + p].content(), out[p].bytes)
        << resizer.name << " plane " << p << ", " << dst.width[p] << "x" << dst.height[p];
}

TEST(FixedRatio, EqualsTheModelAtEveryLevel) {
  const size_t chosen = chosen_level;
  for (size_t level = 0; level < kLevels && !testing::Test::HasFatalFailure(); ++level) {
    if (!levels[level].supported()) continue;
    SCOPED_TRACE(levels[level].name);
    chosen_level = level;
    for (const Resizer &resizer : kResizers)
      for (int round = 0; round < (resizer.fixed ? 2 : 100); ++round) {
        expect_equal_to_model(resizer, random_in(1, 500), random_in(1, 20));
        if (testing::Test::HasFatalFailure()) break;
      }
  }
  chosen_level = chosen;
  expect_equal_to_model(kResizers[0], 1280, 720);
  expect_equal_to_model(kResizers[2], 960, 540);
}

TEST(FixedRatio, LeavesEmptyPicturesAlone) {
  for (const auto &[w, h] : {std::pair{0, 8}, {8, 0}, {-64, 8}, {64, -8}, {-64, -8}})
    for (auto *kernel : {pivra_txc_rsz_1080p_720p_luma, pivra_txc_rsz_1080p_720p_chroma,
                         pivra_txc_rsz_720p_qhd_luma, pivra_txc_rsz_720p_qhd_chroma})
      kernel(nullptr, nullptr, w, h, 64, 64);
}

}  // namespace
}  // namespace pivra::test
