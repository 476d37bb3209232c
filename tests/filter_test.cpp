#include "guarded.h"
#include "levels.h"

namespace pivra::test {
namespace {

using Bytes = std::vector<uint8_t>;

uint8_t clamp(int32_t n) { return static_cast<uint8_t>(std::clamp(n, 0, 255)); }

// --- Rows, at every level and as scalar code ---

TEST_P(EachLevel, LooksUpAndMergesRowsOfEveryLength) {
  GuardedPlane table, a, b, dst;
  for (size_t n = 0; n <= 500; ++n) {
    const auto count = static_cast<ptrdiff_t>(n);
    const Bytes entries = noise(256), first = random_bytes(n), second = random_bytes(n);
    Bytes found, merged = second;
    for (const uint8_t sample : first) found.push_back(entries[sample]);
    for (size_t x = 0; x < n; x += 3) merged[x] = first[x];
    table.place(entries, n % 2);
    a.place(first, n % 2);
    b.place(second, n % 2);
    dst.place(noise(n), n % 2);
    const FilterRows &rows = GetParam().filter_rows;
    rows.merge_triples(a.data(), b.data(), count, dst.data());
    ASSERT_EQ(dst.content(), merged) << n;
    rows.look_up(table.data(), a.data(), count, dst.data());
    ASSERT_EQ(dst.content(), found) << n;
    rows.look_up(table.data(), a.data(), count, a.data());
    ASSERT_EQ(a.content(), found) << n << " in place";
  }
}

// The inner samples of a plane, the others being as they are.
void sharpen(const Bytes &plane, int32_t width, int32_t height, Bytes &result) {
  for (int32_t y = 2; y < height - 2; ++y)
    for (int32_t x = 2; x < width - 2; ++x) {
      const auto at = [&](int32_t dx, int32_t dy) {
        return int32_t{plane[(y + dy) * width + x + dx]};
      };
      const int32_t near = at(-1, 0) + at(1, 0) + at(0, -1) + at(0, 1);
      const int32_t far = at(-2, 0) + at(2, 0) + at(0, -2) + at(0, 2) + at(-1, -1) + at(1, -1) +
                          at(-1, 1) + at(1, 1);
      result[y * width + x] = clamp(at(0, 0) + ((16 * at(0, 0) - (2 * near + far)) >> 4));
    }
}

TEST_P(EachLevel, SharpensRowsOfEveryLength) {
  GuardedPlane src, dst;
  for (int32_t n = 1; n <= 300; ++n) {
    const int32_t width = n + 4, height = random_in(1, 9);
    const Bytes plane = random_bytes((height + 4) * width);
    Bytes all = noise(plane.size());
    const auto inner = [&, first = 2 * width + 2] {
      return Bytes(all.begin() + first, all.begin() + first + (height - 1) * width + n);
    };
    src.place(plane, n % 2);
    dst.place(inner(), n % 2);
    GetParam().filter_rows.sharpen(src.data() + 2 * width + 2, width, n, height, dst.data());
    sharpen(plane, width, height + 4, all);
    ASSERT_EQ(dst.content(), inner()) << n << "x" << height;
  }
}

// --- Saturation ---

// A ramp of 32-bit words is read as one of 16 bits.
Bytes model_table(int16_t gain) {
  Bytes entries;
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t x = i % 2 ? 0 : i / 2;
    const auto t = static_cast<int16_t>((x - 128) * gain >> 10);
    entries.push_back(clamp(static_cast<int16_t>(t + 128)));
  }
  return entries;
}

TEST(Saturation, BuildsTheTableOfEveryGain) {
  EXPECT_EQ(std::count(lut, lut + 256, 0), 256);  // at first
  Bytes entries(256);
  for (int32_t gain = INT16_MIN; gain <= INT16_MAX; ++gain) {
    color_sat_lut(entries.data(), static_cast<int16_t>(gain));
    ASSERT_EQ(entries, model_table(static_cast<int16_t>(gain))) << gain;
  }
}

TEST(Saturation, ChoosesTheGain) {
  for (const auto &[gain, chosen] :
       std::initializer_list<std::pair<int32_t, int16_t>>{{1000, 1000},
                                                          {70000, 4464},
                                                          {65536, 0},
                                                          {40000, 40000 - 65536},
                                                          {0, 1180},
                                                          {-5, 1180},
                                                          {INT32_MIN, 1180}}) {
    EXPECT_EQ(pivra_vqe_cs_init(gain), 0);
    EXPECT_EQ(Bytes(lut, lut + 256), model_table(chosen)) << gain;
  }
}

TEST(Saturation, MapsBothPlanes) {
  const Bytes entries = noise(256), u = noise(200), v = noise(200);
  at_every_level([&](const std::string &level) {
    for (int32_t count : {-1, 0, 1, 2, 3, 64, 65, 199}) {
      Bytes to_u(200, 7), to_v(200, 8), expected_u = to_u, expected_v = to_v;
      for (size_t i = 0; int32_t(i) < count; ++i) {
        expected_u[i] = entries[u[i]];
        expected_v[i] = entries[v[i]];
      }
      color_sat(entries.data(), count, u.data(), v.data(), to_u.data(), to_v.data());
      EXPECT_EQ(to_u, expected_u) << level << " " << count;
      EXPECT_EQ(to_v, expected_v) << level << " " << count;
    }
  });
}

// --- Detail ---

TEST(Detail, EqualsTheModelAtEverySize) {
  at_every_level([](const std::string &level) {
    GuardedPlane src, dst;
    for (int round = 0; round < 800; ++round) {
      const int32_t width = random_in(1, round % 4 ? 40 : 400),
                    height = random_in(1, round % 3 ? 12 : 40);
      const Bytes plane = random_bytes(width * height);
      Bytes expected = plane;
      sharpen(plane, width, height, expected);
      src.place(plane, random_in(0, 1));
      dst.place(noise(plane.size()), random_in(0, 1));
      detail_enh(src.data(), width, height, dst.data());
      ASSERT_EQ(dst.content(), expected) << level << " " << width << "x" << height;
    }
  });
  for (const auto &[w, h] : kEmptySizes) detail_enh(nullptr, w, h, nullptr);
}

// --- Frame packing ---

struct Views {
  explicit Views(int32_t width, int32_t height)
      : pixels(noise(6 * width * height)), packed(3 * width * height) {
    src.width[0] = 2 * width;
    dst.width[0] = width;
    src.height[0] = dst.height[0] = height;
    src.stride[0] = 6 * width;
    dst.stride[0] = 3 * width;
    src.format = dst.format = PIVRA_FORMAT_RGB888;
  }

  Bytes pixels, packed;
  ImageDesc src{}, dst{};
};

TEST(FramePacking, EqualsTheModelAtEveryWidth) {
  at_every_level([](const std::string &level) {
    GuardedPlane src, dst;
    for (int32_t width = 1; width <= 200; ++width)
      for (int32_t order : {1, 2}) {
        Views views(width, random_in(1, 4));
        views.src.plane[0] = src.place(views.pixels, width % 2);
        views.dst.plane[0] = dst.place(noise(views.packed.size()), width % 2);
        ASSERT_EQ(pivra_fpa(&views.src, &views.dst, order), PIVRA_OK);
        Bytes expected;
        for (int32_t y = 0; y < views.dst.height[0]; ++y)
          for (int32_t x = 0; x < 3 * width; ++x) {
            const bool left = (x % 3 == 0) == (order == 1);
            expected.push_back(views.pixels[6 * width * y + x + (left ? 0 : 3 * width)]);
          }
        ASSERT_EQ(dst.content(), expected) << level << width << ", order " << order;
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
        expected[row * (length >> 1) + x] = (x % 3 == 0 ? a : b)[row * 25 + x];
    pivra_fpa_frm_pack(a.data(), b.data(), packed.data(), 3, -1, -1, 51, length, -1);
    EXPECT_EQ(packed, expected) << length;
  }
}

TEST(Reserved, DoNothing) {
  for (auto *refuse : {pivra_vqe_cs, pivra_vqe_de, pivra_vqe_dejagging}) EXPECT_EQ(refuse(), -1);
  for (int32_t i = 0; i < 256; ++i) EXPECT_EQ(table[i], i);
}

}  // namespace
}  // namespace pivra::test
