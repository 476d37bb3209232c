#include "compare.h"

namespace pivra::test {
namespace {

// The first `kept` of every `of` columns, in units of bytes, and rows. Rows are made
// in steps of `step` bytes.
struct Ratio {
  int32_t kept, of, step;

  int32_t source(int32_t i) const { return of * (i / kept) + i % kept; }
};
constexpr Ratio k3To2 = {2, 3, 32}, k2To1 = {1, 2, 32}, k4To3 = {3, 4, 24};

// Of source rows whole groups are read.
void model_row(const Ratio &ratio, int32_t unit, ModelPlane &src, ptrdiff_t from, ModelPlane &dst,
               ptrdiff_t to, int32_t bytes) {
  for (int32_t i = 0; i < bytes; ++i)
    dst.write(to + i, src.read(from + unit * ratio.source(i / unit) + i % unit));
  if (bytes > 0) src.read(from + bytes / ratio.kept * ratio.of - 1);
}

// --- Rows, at every level and as scalar code ---

TEST(FixedRatio, KeepsUnitsOfRowsOfEveryLength) {
  for (const LevelUnderTest &level : levels_under_test())
    for (const auto &[ratio, keep] : {std::pair{k2To1, level.fixed_ratio.one_of_two},
                                      {k3To2, level.fixed_ratio.two_of_three},
                                      {k4To3, level.fixed_ratio.three_of_four}})
      for (int32_t unit : {1, 2})
        for (int32_t bytes = 0; bytes <= 40 * ratio.step; bytes += ratio.step) {
          ModelPlane in, out;
          compare_with_model(
              {&in}, {&out}, [&, &ratio = ratio] { model_row(ratio, unit, in, 0, out, 0, bytes); },
              [&, keep = keep](uint8_t **src, uint8_t **dst) { keep[unit - 1](*src, bytes, *dst); },
              std::tuple(level.name, "1 of", ratio.of, "units of", unit));
        }
}

// --- Planes and pictures ---

void model(const Ratio &ratio, int32_t unit, ModelPlane &src, ModelPlane &dst, int32_t width,
           int32_t height, int32_t src_stride, int32_t dst_stride) {
  for (int32_t y = 0; y < height / ratio.kept * ratio.kept; ++y)
    model_row(ratio, unit, src, ratio.source(y) * src_stride, dst, y * dst_stride,
              width * unit / ratio.step * ratio.step);
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

void expect_equal(const Resizer &resizer, int32_t width, int32_t height) {
  ImageDesc src{}, dst{};
  std::array<ModelPlane, 2> in, out;
  for (int32_t p : {0, 1}) {
    dst.width[p] = p == 0 ? width : random_in(0, 1) ? width / 2 : random_in(0, width);
    dst.height[p] = p == 0 ? height : random_in(0, 1) ? height / 2 : random_in(0, height);
    src.stride[p] = (resizer.fixed ? 1920 : 2 * width * (p + 1)) + random_in(0, 70);
    dst.stride[p] = (resizer.fixed ? 960 : width * (p + 1)) + random_in(0, 70);
  }
  compare_with_model(
      {&in[0], &in[1]}, {&out[0], &out[1]},
      [&] {
        for (int32_t p : {0, 1})
          model(resizer.ratio, p + 1, in[p], out[p], resizer.fixed ? 960 / (p + 1) : dst.width[p],
                resizer.fixed ? 540 / (p + 1) : dst.height[p], src.stride[p], dst.stride[p]);
      },
      [&](uint8_t **from, uint8_t **to) {
        std::copy_n(from, 2, src.plane);
        std::copy_n(to, 2, dst.plane);
        EXPECT_EQ(resizer.run(&src, &dst), PIVRA_OK);
      },
      std::tuple(resizer.name, width, height));
}

TEST(FixedRatio, EqualsTheModelAtEveryLevel) {
  rounds_at_every_level(100, [](int round) {
    for (const Resizer &resizer : kResizers)
      if (!resizer.fixed || round < 2) expect_equal(resizer, random_in(1, 500), random_in(1, 20));
  });
  expect_equal(kResizers[0], 1280, 720);
  expect_equal(kResizers[2], 960, 540);
}

TEST(FixedRatio, LeavesEmptyPicturesAlone) {
  for (const auto &[w, h] : {std::pair{0, 8}, {8, 0}, {-64, 8}, {64, -8}, {-64, -8}})
    for (auto *kernel : {pivra_txc_rsz_1080p_720p_luma, pivra_txc_rsz_1080p_720p_chroma,
                         pivra_txc_rsz_720p_qhd_luma, pivra_txc_rsz_720p_qhd_chroma})
      kernel(nullptr, nullptr, w, h, 64, 64);
}

}  // namespace
}  // namespace pivra::test
