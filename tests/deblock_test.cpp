#include "guarded.h"
#include "levels.h"

namespace pivra::test {
namespace {

struct DeblockModel {
  int32_t strength, stride, width, height;
  std::vector<uint8_t> plane;

  // One edge position: a, b before the edge, c, d behind it.
  void position(ptrdiff_t at, ptrdiff_t across) {
    uint8_t &a = plane[at - 2 * across], &b = plane[at - across], &c = plane[at],
            &d = plane[at + across];
    const int32_t step = int16_t((a - 4 * b + 4 * c - d) >> 3), size = std::abs(step);
    const int32_t m = std::max(size - std::max(2 * (size - int16_t(strength)), 0), 0);
    const int32_t inner = step < 0 ? -m : m;
    const int32_t outer = std::clamp((a - d) >> 2, -(m >> 1), m >> 1);
    a = static_cast<uint8_t>(a - outer);
    b = static_cast<uint8_t>(std::clamp(b + inner, 0, 255));
    c = static_cast<uint8_t>(std::clamp(c - inner, 0, 255));
    d = static_cast<uint8_t>(d + outer);
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

// Of strengths 16 bits count.
constexpr int32_t kStrengths[] = {-32768, -32767, -65530, -1,    0,     1,         5,
                                  12,     13,     127,    128,   159,   160,       255,
                                  256,    32767,  32768,  65535, 65536, INT32_MIN, INT32_MAX};

DeblockModel random_job() {
  DeblockModel m{};
  m.width = random_in(0, 3) == 0 ? random_in(100, 300) : random_in(1, 72);
  m.height = random_in(0, 3) == 0 ? random_in(40, 90) : random_in(1, 40);
  m.stride = m.width + random_padding();
  m.strength = random_in(0, 3)   ? random_in(0, 40)
               : random_in(0, 1) ? random_in(-70, 200)
                                 : kStrengths[random_in(0, std::size(kStrengths) - 1)];
  m.plane = blocky_bytes(static_cast<size_t>(m.stride) * (m.height - 1) + m.width, m.stride);
  return m;
}

template <class Run>
void expect_equal(Run run, void (DeblockModel::*rule)(), DeblockModel m) {
  GuardedPlane plane;
  run(plane.place(m.plane, random_in(0, 1)), m.strength, m.stride, m.width, m.height);
  (m.*rule)();
  ASSERT_EQ(plane.content(), m.plane)
      << m.width << "x" << m.height << " stride " << m.stride << " strength " << m.strength;
}

TEST_P(EachLevel, EqualsTheModel) {
  for (int round = 0; round < 600 && !HasFatalFailure(); ++round) {
    const DeblockModel m = random_job();
    expect_equal(GetParam().deblock.horizontal, &DeblockModel::horizontal, m);
    expect_equal(GetParam().deblock.vertical, &DeblockModel::vertical, m);
  }
}

// Every B and C, with a few of A and D.
TEST_P(EachLevel, FiltersEveryStep) {
  constexpr int32_t kPairs = 65536;
  DeblockModel m = {0, kPairs, kPairs, 16, std::vector<uint8_t>(16 * kPairs)};
  for (int32_t x = 0; x < kPairs; ++x) {
    m.plane[7 * kPairs + x] = static_cast<uint8_t>(x >> 8);
    m.plane[8 * kPairs + x] = static_cast<uint8_t>(x & 255);
  }
  for (const int32_t strength : {1, 12, 40, 100, 160})
    for (const uint8_t a : {0, 1, 127, 130, 255})
      for (const uint8_t d : {0, 2, 128, 254, 255}) {
        m.strength = strength;
        std::fill_n(&m.plane[6 * kPairs], kPairs, a);
        std::fill_n(&m.plane[9 * kPairs], kPairs, d);
        expect_equal(GetParam().deblock.horizontal, &DeblockModel::horizontal, m);
        if (HasFatalFailure()) return;
      }
}

TEST_P(EachLevel, LeavesEmptyPlanesAlone) {
  for (const auto &[w, h] : kEmptySizes) {
    GetParam().deblock.horizontal(nullptr, 12, 15, 8 * w, 8 * h);
    GetParam().deblock.vertical(nullptr, 12, 15, 8 * w, 8 * h);
  }
}

// --- The exported functions ---

// Of a plane with a strength of 12 at most.
TEST(Deblock, FiltersHorizontalEdgesFirst) {
  for (int round = 0; round < 100 && !HasFatalFailure(); ++round) {
    DeblockModel m = random_job();
    expect_equal(pivra_dbf8x8_h263_hor, &DeblockModel::horizontal, m);
    expect_equal(pivra_dbf8x8_h263_ver, &DeblockModel::vertical, m);
    const auto run = [strength = m.strength](uint8_t *plane, auto, auto... sizes) {
      pivra_dbf8x8(plane, strength, sizes...);
    };
    m.strength = std::min(m.strength, 12);
    expect_equal(run, &DeblockModel::both, m);
  }
}

// Of a picture with any up to 15.
TEST(Deblock, FiltersThePlanesThereAre) {
  for (uint32_t qp = 0; qp <= 20; ++qp) {
    std::array<DeblockModel, 3> models = {random_job(), random_job(), random_job()};
    std::array<GuardedPlane, 3> planes;
    ImageDesc picture{};
    const bool refused = qp > 15;
    const size_t none = qp % 4;  // one of the planes, or 3
    for (size_t i = 0; i < 3; ++i) {
      DeblockModel &m = models[i];
      m.strength = static_cast<int32_t>(qp);
      picture.width[i] = m.width;
      picture.height[i] = m.height;
      picture.stride[i] = m.stride;
      uint8_t *const plane = planes[i].place(m.plane, true);
      picture.plane[i] = i == none ? nullptr : plane;
    }
    ASSERT_EQ(pivra_dbf8x8_yuv(&picture, qp == 20 ? UINT32_MAX : qp),
              refused ? PIVRA_REFUSED : PIVRA_OK);
    for (size_t i = 0; i < 3; ++i) {
      if (!refused && i != none) models[i].both();
      ASSERT_EQ(planes[i].content(), models[i].plane) << "plane " << i << " of strength " << qp;
    }
  }
}

}  // namespace
}  // namespace pivra::test
