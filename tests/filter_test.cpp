#include <gtest/gtest.h>

#include <numeric>

#include "guarded.h"
#include "levels.h"
#include "pivra.h"

namespace pivra::test {
namespace {

using Bytes = std::vector<uint8_t>;

uint8_t clamp(int32_t n) { return static_cast<uint8_t>(std::clamp(n, 0, 255)); }

// Runs the exported functions at every level in turn.
template <class Test>
void at_every_level(Test test) {
  const size_t chosen = chosen_level;
  for (size_t level = 0; level < kLevels && !testing::Test::HasFatalFailure(); ++level) {
    if (!levels[level].supported()) continue;
    SCOPED_TRACE(levels[level].name);
    chosen_level = level;
    test();
  }
  chosen_level = chosen;
}

// --- Rows, at every level and as scalar code ---

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

TEST_P(EveryLevel, LooksUpRowsOfEveryLength) {
  GuardedPlane table, src, dst;
  for (size_t n = 0; n <= 300; ++n) {
    const Bytes entries = noise(256), samples = random_bytes(n);
    Bytes expected;
    for (uint8_t s : samples) expected.push_back(entries[s]);
    table.place(entries, n % 2);
    src.place(samples, n % 2);
    dst.place(noise(n), n % 2);
    const auto look_up = GetParam().filter_rows.look_up;
    look_up(table.data(), src.data(), static_cast<ptrdiff_t>(n), dst.data());
    ASSERT_EQ(dst.content(), expected) << n;
    look_up(table.data(), src.data(), static_cast<ptrdiff_t>(n), src.data());
    ASSERT_EQ(src.content(), expected) << n << " in place";
  }
}

TEST_P(EveryLevel, MergesRowsOfEveryLength) {
  GuardedPlane a, b, dst;
  for (size_t n = 0; n <= 500; ++n) {
    const Bytes first = random_bytes(n), second = random_bytes(n);
    Bytes expected = second;
    for (size_t x = 0; x < n; x += 3) expected[x] = first[x];
    a.place(first, n % 2);
    b.place(second, n % 2);
    dst.place(noise(n), n % 2);
    GetParam().filter_rows.merge_triples(a.data(), b.data(), static_cast<ptrdiff_t>(n), dst.data());
    ASSERT_EQ(dst.content(), expected) << n;
  }
}

int32_t sharpened(const Bytes &plane, int32_t width, int32_t x, int32_t y) {
  const auto at = [&](int32_t dx, int32_t dy) {
    return int32_t{plane[static_cast<size_t>((y + dy) * width + x + dx)]};
  };
  const int32_t n = at(-1, 0) + at(1, 0) + at(0, -1) + at(0, 1);
  const int32_t r =
      at(-2, 0) + at(2, 0) + at(0, -2) + at(0, 2) + at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1);
  return clamp(at(0, 0) + ((16 * at(0, 0) - (2 * n + r)) >> 4));
}

Bytes enhanced(const Bytes &plane, int32_t width, int32_t height) {
  Bytes result = plane;
  for (int32_t y = 2; y < height - 2; ++y)
    for (int32_t x = 2; x < width - 2; ++x)
      result[static_cast<size_t>(y * width + x)] =
          static_cast<uint8_t>(sharpened(plane, width, x, y));
  return result;
}

TEST_P(EveryLevel, SharpensRowsOfEveryLength) {
  GuardedPlane src, dst;
  for (int32_t n = 1; n <= 300; ++n) {
    const int32_t width = n + 4, height = random_in(1, 9);
    const Bytes plane = random_bytes(static_cast<size_t>((height + 4) * width));
    const ptrdiff_t first = 2 * width + 2, end = (height + 1) * width + 2 + n;
    const Bytes all = enhanced(plane, width, height + 4);
    Bytes expected(all.begin() + first, all.begin() + end);
    Bytes edges = noise(expected.size());
    for (size_t i = 0; i < edges.size(); ++i)
      if (i % static_cast<size_t>(width) >= static_cast<size_t>(n)) expected[i] = edges[i];
    src.place(plane, n % 2);
    dst.place(edges, n % 2);
    GetParam().filter_rows.sharpen(src.data() + first, width, n, height, dst.data());
    ASSERT_EQ(dst.content(), expected) << n << "x" << height;
  }
}

// --- Saturation ---

Bytes model_table(int16_t gain) {
  Bytes ramp, entries;
  for (uint32_t word = 0; word < 256; ++word)
    for (uint32_t byte = 0; byte < 4; ++byte) ramp.push_back(uint8_t(word >> 8 * byte));
  for (size_t i = 0; i < 256; ++i) {
    const auto x = static_cast<int16_t>(ramp[2 * i] | ramp[2 * i + 1] << 8);
    const auto t = static_cast<int16_t>((x - 128) * gain >> 10);
    entries.push_back(clamp(static_cast<int16_t>(t + 128)));
  }
  return entries;
}

Bytes built_for(int32_t gain) {
  EXPECT_EQ(pivra_vqe_cs_init(gain), 0);
  return {lut, lut + 256};
}

TEST(Saturation, TableIsZeroAtFirst) { EXPECT_EQ(std::count(lut, lut + 256, 0), 256); }

TEST(Saturation, BuildsTheTableOfEveryGain) {
  Bytes entries(256);
  for (int32_t gain = INT16_MIN; gain <= INT16_MAX; ++gain) {
    color_sat_lut(entries.data(), static_cast<int16_t>(gain));
    ASSERT_EQ(entries, model_table(static_cast<int16_t>(gain))) << gain;
  }
}

TEST(Saturation, ChoosesTheGain) {
  EXPECT_EQ(built_for(1000), model_table(1000));
  EXPECT_EQ(built_for(70000), model_table(4464));
  EXPECT_EQ(built_for(65536), model_table(0));
  EXPECT_EQ(built_for(40000), model_table(40000 - 65536));
  for (int32_t none : {0, -5, INT32_MIN}) EXPECT_EQ(built_for(none), model_table(1180)) << none;
  EXPECT_EQ(lut[0], 0);
  EXPECT_EQ(lut[2], 0);
  EXPECT_EQ(lut[254], 126);
  EXPECT_EQ(lut[255], 0);
}

TEST(Saturation, MapsBothPlanes) {
  const Bytes entries = noise(256), u = noise(200), v = noise(200);
  at_every_level([&] {
    for (int32_t count : {-1, 0, 1, 2, 3, 64, 65, 199}) {
      Bytes to_u(200, 7), to_v(200, 8), expected_u = to_u, expected_v = to_v;
      for (size_t i = 0; int32_t(i) < count; ++i) {
        expected_u[i] = entries[u[i]];
        expected_v[i] = entries[v[i]];
      }
      color_sat(entries.data(), count, u.data(), v.data(), to_u.data(), to_v.data());
      ASSERT_EQ(to_u, expected_u) << count;
      ASSERT_EQ(to_v, expected_v) << count;
    }
  });
}

// --- Detail ---

TEST(Detail, EqualsTheModelAtEverySize) {
  at_every_level([] {
    GuardedPlane src, dst;
    for (int round = 0; round < 800; ++round) {
      const int32_t width = random_in(1, round % 4 ? 40 : 400),
                    height = random_in(1, round % 3 ? 12 : 40);
      const Bytes plane = random_bytes(static_cast<size_t>(width * height));
      src.place(plane, random_in(0, 1));
      dst.place(noise(plane.size()), random_in(0, 1));
      detail_enh(src.data(), width, height, dst.data());
      ASSERT_EQ(dst.content(), enhanced(plane, width, height)) << width << "x" << height;
    }
  });
}

TEST(Detail, LeavesFlatAndEmptyPlanesAlone) {
  const Bytes flat(100 * 20, 77);
  Bytes result(flat.size());
  detail_enh(flat.data(), 100, 20, result.data());
  EXPECT_EQ(result, flat);
  for (auto [w, h] : {std::pair{0, 9}, {9, 0}, {-9, 9}, {9, -9}})
    detail_enh(nullptr, w, h, nullptr);
}

TEST(Detail, SharpensAStep) {
  Bytes step;
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 30; ++x) step.push_back(x < 15 ? 100 : 200);
  Bytes result(step.size());
  detail_enh(step.data(), 30, 9, result.data());
  EXPECT_EQ(result[4 * 30 + 14], 68);
  EXPECT_EQ(result[4 * 30 + 15], 231);
}

// --- Frame packing ---

struct Views {
  explicit Views(int32_t width, int32_t height)
      : pixels(random_bytes(static_cast<size_t>(6 * width * height))),
        packed(static_cast<size_t>(3 * width * height)) {
    src.width[0] = 2 * width;
    dst.width[0] = width;
    src.height[0] = dst.height[0] = height;
    src.stride[0] = 6 * width;
    dst.stride[0] = 3 * width;
    src.format = dst.format = PIVRA_FORMAT_RGB888;
  }

  Bytes expected(int32_t order) const {
    Bytes result;
    for (int32_t y = 0; y < dst.height[0]; ++y)
      for (int32_t x = 0; x < dst.stride[0]; ++x) {
        const bool left = (x % 3 == 0) == (order == 1);
        result.push_back(
            pixels[static_cast<size_t>(y * src.stride[0] + x + (left ? 0 : dst.stride[0]))]);
      }
    return result;
  }

  Bytes pixels, packed;
  ImageDesc src{}, dst{};
};

TEST(FramePacking, EqualsTheModelAtEveryWidth) {
  at_every_level([] {
    GuardedPlane src, dst;
    for (int32_t width = 1; width <= 200; ++width)
      for (int32_t order : {1, 2}) {
        Views views(width, random_in(1, 4));
        views.src.plane[0] = src.place(views.pixels, width % 2);
        views.dst.plane[0] = dst.place(noise(views.packed.size()), width % 2);
        ASSERT_EQ(pivra_fpa(&views.src, &views.dst, order), PIVRA_OK);
        ASSERT_EQ(dst.content(), views.expected(order)) << width << ", order " << order;
      }
  });
}

TEST(FramePacking, RefusesWhatDoesNotFit) {
  const Views views(16, 4);
  const auto packs = [&](auto change, int32_t order = 1) {
    Views changed = views;
    changed.src.plane[0] = changed.pixels.data();
    changed.dst.plane[0] = changed.packed.data();
    change(changed.src, changed.dst);
    const int32_t result = pivra_fpa(&changed.src, &changed.dst, order);
    EXPECT_EQ(result == PIVRA_OK, changed.packed != views.packed);
    return result;
  };
  using Desc = ImageDesc;
  EXPECT_EQ(packs([](Desc &, Desc &) {}), PIVRA_OK);
  for (int32_t order : {0, 3, -1}) EXPECT_EQ(packs([](Desc &, Desc &) {}, order), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &s, Desc &d) { s.format = d.format = 401; }), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &s, Desc &) { s.format = 401; }), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &, Desc &d) { d.format = 200; }), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &s, Desc &) { --s.width[0]; }), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &, Desc &d) { --d.height[0]; }), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &, Desc &d) { --d.stride[0]; }), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &s, Desc &d) { s.stride[0] += 6, d.stride[0] += 3; }), PIVRA_REFUSED);
  EXPECT_EQ(packs([](Desc &s, Desc &d) { s.width[0] = 0, d.width[0] = INT32_MIN; }), PIVRA_REFUSED);
}

// Each row overwrites the second half of the one before.
TEST(FramePacking, KernelStepsByHalves) {
  const Bytes a = noise(300), b = noise(300);
  for (int32_t length : {-24, 0, 5, 24, 72, 199, 240}) {
    Bytes packed(500, 9), expected = packed;
    for (int32_t row = 0; row < 3; ++row)
      for (int32_t x = 0; x < length; ++x)
        expected[static_cast<size_t>(row * (length >> 1) + x)] =
            (x % 3 == 0 ? a : b)[static_cast<size_t>(row * 25 + x)];
    pivra_fpa_frm_pack(a.data(), b.data(), packed.data(), 3, -1, -1, 51, length, -1);
    EXPECT_EQ(packed, expected) << length;
  }
}

// --- What does nothing ---

TEST(Reserved, EntryPointsRefuse) {
  EXPECT_EQ(pivra_vqe_cs(), -1);
  EXPECT_EQ(pivra_vqe_de(), -1);
  EXPECT_EQ(pivra_vqe_dejagging(), -1);
}

TEST(Reserved, TableIsTheRamp) {
  std::vector<int16_t> ramp(256);
  std::iota(ramp.begin(), ramp.end(), int16_t{0});
  EXPECT_EQ(std::vector<int16_t>(table, table + 256), ramp);
}

}  // namespace
}  // namespace pivra::test
