#include <gtest/gtest.h>

#include <array>

#include "guarded.h"
#include "levels.h"
#include "pivra.h"

namespace pivra::test {
namespace {

struct DeblockModel {
  int32_t strength, stride, width, height;
  std::vector<uint8_t> plane;

  static int32_t number16(int32_t n) {
    n &= 0xFFFF;
    return n < 0x8000 ? n : n - 0x10000;
  }

  // One edge position: a, b before the edge, c, d behind it.
  void position(ptrdiff_t c, ptrdiff_t across) {
    const ptrdiff_t at[] = {c - 2 * across, c - across, c, c + across};
    const int32_t pixel_a = plane[at[0]], pixel_b = plane[at[1]], pixel_c = plane[at[2]],
                  pixel_d = plane[at[3]];
    const int32_t d = number16((pixel_a - 4 * pixel_b + 4 * pixel_c - pixel_d) >> 3);
    const int32_t size = std::abs(d), s = number16(strength);
    const int32_t m = std::max(size - std::max(2 * (size - s), 0), 0);
    const int32_t d1 = d < 0 ? -m : m;
    const int32_t d2 = std::clamp((pixel_a - pixel_d) >> 2, -(m >> 1), m >> 1);
    plane[at[0]] = static_cast<uint8_t>(pixel_a - d2);
    plane[at[1]] = static_cast<uint8_t>(std::clamp(pixel_b + d1, 0, 255));
    plane[at[2]] = static_cast<uint8_t>(std::clamp(pixel_c - d1, 0, 255));
    plane[at[3]] = static_cast<uint8_t>(pixel_d + d2);
  }
  void horizontal() {
    for (ptrdiff_t k = 1; k < height >> 3; ++k)
      for (int32_t x = 0; x < width; ++x) position(8 * k * stride + x, stride);
  }
  void vertical() {
    for (ptrdiff_t k = 1; k < width >> 3; ++k)
      for (ptrdiff_t y = 0; y < height; ++y) position(y * stride + 8 * k, 1);
  }
  void both() {
    horizontal();
    vertical();
  }
};

// Noise, of which little is filtered, or the small steps that a coder leaves.
std::vector<uint8_t> blocky_bytes(size_t count, int32_t stride) {
  std::vector<uint8_t> bytes = random_bytes(count);
  if (random_in(0, 2) == 0) return bytes;
  const std::vector<uint8_t> blocks = noise(count / 8 + 1);
  const int32_t step = random_in(1, 60), base = random_in(0, 255 - step), grain = random_in(1, 8);
  for (size_t i = 0; i < count; ++i)
    bytes[i] = static_cast<uint8_t>(std::min(
        base + blocks[i / stride / 8 * (stride / 8) + i % stride / 8] % step + bytes[i] % grain,
        255));
  return bytes;
}

DeblockModel random_job() {
  DeblockModel m{};
  m.width = random_in(0, 3) == 0 ? random_in(100, 300) : random_in(1, 72);
  m.height = random_in(0, 3) == 0 ? random_in(40, 90) : random_in(1, 40);
  m.stride = m.width + (random_in(0, 1) ? 0 : random_in(0, 40));
  m.strength = random_in(0, 3) ? random_in(0, 40) : random_in(-70, 200);
  m.plane = blocky_bytes(static_cast<size_t>(m.stride) * (m.height - 1) + m.width, m.stride);
  return m;
}

std::string describe(const DeblockModel &m) {
  return std::to_string(m.width) + "x" + std::to_string(m.height) + " stride " +
         std::to_string(m.stride) + " strength " + std::to_string(m.strength);
}

template <class Run>
void expect_equal(Run run, void (DeblockModel::*rule)(), DeblockModel m) {
  GuardedPlane plane;
  run(plane.place(m.plane, random_in(0, 1)), m.strength, m.stride, m.width, m.height);
  (m.*rule)();
  ASSERT_EQ(plane.content(), m.plane) << describe(m);
}

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

TEST_P(EveryLevel, EqualsTheModel) {
  for (int round = 0; round < 600 && !HasFatalFailure(); ++round) {
    const DeblockModel m = random_job();
    expect_equal(GetParam().deblock.horizontal, &DeblockModel::horizontal, m);
    expect_equal(GetParam().deblock.vertical, &DeblockModel::vertical, m);
  }
}

TEST_P(EveryLevel, TakesStrengthsOfSixteenBits) {
  for (const int32_t strength : {-32768, -32767, -1, 0, 1, 127, 128, 159, 160, 255, 256, 32767,
                                 32768, 65535, 65536, 65546, INT32_MIN, INT32_MAX}) {
    DeblockModel m = random_job();
    m.strength = strength;
    expect_equal(GetParam().deblock.horizontal, &DeblockModel::horizontal, m);
    expect_equal(GetParam().deblock.vertical, &DeblockModel::vertical, m);
  }
}

// Every B and C, with a few of A and D.
TEST_P(EveryLevel, FiltersEveryStep) {
  constexpr int32_t kPairs = 65536;
  DeblockModel m = {0, kPairs, kPairs, 16, std::vector<uint8_t>(16 * kPairs)};
  const auto fill = [&](int32_t row, auto value) {
    for (int32_t x = 0; x < kPairs; ++x) m.plane[row * kPairs + x] = static_cast<uint8_t>(value(x));
  };
  for (const int32_t strength : {1, 12, 40, 100, 160})
    for (const int32_t a : {0, 1, 127, 130, 255})
      for (const int32_t d : {0, 2, 128, 254, 255}) {
        m.strength = strength;
        fill(6, [&](int32_t) { return a; });
        fill(7, [](int32_t x) { return x >> 8; });
        fill(8, [](int32_t x) { return x & 255; });
        fill(9, [&](int32_t) { return d; });
        expect_equal(GetParam().deblock.horizontal, &DeblockModel::horizontal, m);
        if (HasFatalFailure()) return;
      }
}

TEST_P(EveryLevel, LeavesAPlaneOfOneBlockAlone) {
  for (const auto &[w, h] : {std::pair{15, 15}, {0, 64}, {64, 0}, {-64, 64}, {64, -64}}) {
    std::vector<uint8_t> plane = noise(15 * 15);
    const std::vector<uint8_t> before = plane;
    GetParam().deblock.horizontal(plane.data(), 12, 15, w, h);
    GetParam().deblock.vertical(plane.data(), 12, 15, w, h);
    EXPECT_EQ(plane, before) << w << "x" << h;
  }
}

// --- The exported functions ---

TEST(Deblock, FiltersHorizontalEdgesFirst) {
  for (int round = 0; round < 50 && !testing::Test::HasFatalFailure(); ++round) {
    DeblockModel m = random_job();
    expect_equal(pivra_dbf8x8_h263_hor, &DeblockModel::horizontal, m);
    expect_equal(pivra_dbf8x8_h263_ver, &DeblockModel::vertical, m);
    m.strength = std::min(m.strength, 12);
    expect_equal(pivra_dbf8x8, &DeblockModel::both, m);
  }
}

TEST(Deblock, OfAPlaneIsOfStrength12AtMost) {
  for (const int32_t qp : {12, 13, 20, 1 << 20, INT32_MAX, 65536 + 5, -1, -65530, INT32_MIN}) {
    DeblockModel m = random_job();
    GuardedPlane plane;
    pivra_dbf8x8(plane.place(m.plane, true), qp, m.stride, m.width, m.height);
    m.strength = std::min(qp, 12);
    m.both();
    ASSERT_EQ(plane.content(), m.plane) << qp << " " << describe(m);
  }
}

TEST(Deblock, OfAPictureIsOfAnyStrengthUpTo15) {
  for (uint32_t qp = 0; qp <= 15; ++qp) {
    std::array<DeblockModel, 3> models = {random_job(), random_job(), random_job()};
    std::array<GuardedPlane, 3> planes;
    ImageDesc picture{};
    for (int i = 0; i < 3; ++i) {
      DeblockModel &m = models[i];
      m.strength = static_cast<int32_t>(qp);
      picture.width[i] = m.width;
      picture.height[i] = m.height;
      picture.stride[i] = m.stride;
      picture.plane[i] = planes[i].place(m.plane, true);
    }
    const size_t none = qp % 4;  // one of the planes, or 3
    picture.plane[none] = nullptr;
    ASSERT_EQ(pivra_dbf8x8_yuv(&picture, qp), PIVRA_OK);
    for (size_t i = 0; i < 3; ++i) {
      if (i != none) models[i].both();
      ASSERT_EQ(planes[i].content(), models[i].plane)
          << "plane " << i << " " << describe(models[i]);
    }
  }
}

TEST(Deblock, RefusesAStrengthAbove15) {
  std::vector<uint8_t> plane = blocky_bytes(64 * 64, 64);
  const std::vector<uint8_t> before = plane;
  ImageDesc picture{};
  picture.width[0] = picture.height[0] = picture.stride[0] = 64;
  picture.plane[0] = plane.data();
  for (const uint32_t qp : {16u, 20u, 0x7FFFFFFFu, 0xFFFFFFFFu})
    EXPECT_EQ(pivra_dbf8x8_yuv(&picture, qp), PIVRA_REFUSED);
  EXPECT_EQ(plane, before);
}

// Across one edge: a step that is smoothed, rounding down, and steps that are kept.
TEST(Deblock, DoesAsThePictureOfTheRuleSays) {
  const auto filtered = [](std::array<uint8_t, 4> across, int32_t strength) {
    std::vector<uint8_t> row(16, 0);
    std::copy(across.begin(), across.end(), row.begin() + 6);
    pivra_dbf8x8_h263_ver(row.data(), strength, 16, 16, 1);
    std::copy_n(row.begin() + 6, 4, across.begin());
    return across;
  };
  using Pixels = std::array<uint8_t, 4>;
  EXPECT_EQ(filtered({100, 100, 108, 108}, 12), (Pixels{101, 103, 105, 107}));
  EXPECT_EQ(filtered({100, 100, 100, 101}, 12), (Pixels{100, 99, 101, 101}));  // d = -1
  EXPECT_EQ(filtered({100, 100, 100, 100}, 12), (Pixels{100, 100, 100, 100}));
  EXPECT_EQ(filtered({100, 100, 160, 160}, 11), (Pixels{100, 100, 160, 160}));  // d = 22
  EXPECT_EQ(filtered({100, 100, 108, 108}, 0), (Pixels{100, 100, 108, 108}));
}

}  // namespace
}  // namespace pivra::test
