#include "turn/turn.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "levels.h"
#include "turn_model.h"

namespace pivra::test {
namespace {

using Turn = std::function<void(const TurnModel &, const uint8_t *, uint8_t *)>;

// The planes hold exactly what the model touches, and inaccessible pages around it.
void expect_equal_to_model(const std::string &name, TurnModel m, const Turn &turn) {
  m.run();  // finds out what is touched
  m.in.bytes = random_bytes(m.in.bytes.size());
  m.out.bytes = random_bytes(m.out.bytes.size());
  GuardedPlane in, out;
  in.place(m.in.bytes, random_in(0, 1));
  out.place(m.out.bytes, random_in(0, 1));
  turn(m, in.data(), out.data());
  m.run();
  ASSERT_EQ(out.content(), m.out.bytes)
      << name << " code " << m.code << ", units of " << m.unit << ", " << m.width << "x" << m.height
      << " strides " << m.src_stride << " " << m.dst_stride;
}

TurnModel job(int32_t code, int32_t unit, int32_t width, int32_t height, int32_t alignment = 1) {
  TurnModel m{code, unit, width, height, 0, 0, {}, {}};
  const auto padded = [=](int32_t units) {
    const int32_t bytes = units * unit + (random_in(0, 2) == 0 ? 0 : random_in(0, 40));
    return (bytes + alignment - 1) / alignment * alignment;
  };
  m.src_stride = padded(width);
  m.dst_stride = padded(m.dst_width());
  return m;
}

// --- The moves and the geometry, at every level ---

template <int code, int unit>
void turn_at(const Turns &level, const TurnModel &m, const uint8_t *src, uint8_t *dst) {
  turn<code, unit>(level, src, m.width, m.height, m.src_stride, m.dst_stride, dst);
}
// In four blocks, each by itself.
template <int code, int unit>
void turn_blocks_at(const Turns &level, const TurnModel &m, const uint8_t *src, uint8_t *dst) {
  const int32_t x = random_in(0, m.width), y = random_in(0, m.height);
  for (const Block &b : {Block{0, 0, x, y}, Block{x, 0, m.width - x, y},
                         Block{0, y, x, m.height - y}, Block{x, y, m.width - x, m.height - y}})
    turn<code, unit>(level, src + b.y * m.src_stride + b.x * unit, b.width, b.height, m.src_stride,
                     m.dst_stride,
                     turned_block<code, unit>(b, m.width, m.height, m.dst_stride, dst));
}

struct LevelTurn {
  void (*plane)(const Turns &, const TurnModel &, const uint8_t *, uint8_t *);
  void (*blocks)(const Turns &, const TurnModel &, const uint8_t *, uint8_t *);
};
#define PIVRA_OF_UNIT(code, unit) \
  { turn_at<code, unit>, turn_blocks_at<code, unit> }
#define PIVRA_OF_CODE(code) \
  { PIVRA_OF_UNIT(code, 1), PIVRA_OF_UNIT(code, 2), PIVRA_OF_UNIT(code, 3), PIVRA_OF_UNIT(code, 4) }
constexpr LevelTurn kTurns[PIVRA_ROT_CODES][4] = {PIVRA_OF_CODE(0), PIVRA_OF_CODE(1),
                                                  PIVRA_OF_CODE(2), PIVRA_OF_CODE(3),
                                                  PIVRA_OF_CODE(4), PIVRA_OF_CODE(5)};

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

template <class Size>
void try_every_turn(const LevelUnderTest &level, int rounds, Size size) {
  for (int32_t code = 0; code < PIVRA_ROT_CODES; ++code)
    for (int32_t unit = 1; unit <= 4; ++unit)
      for (int round = 0; round < rounds && !testing::Test::HasFatalFailure(); ++round)
        for (const auto turn : {kTurns[code][unit - 1].plane, kTurns[code][unit - 1].blocks})
          expect_equal_to_model(level.name, job(code, unit, size(), size()),
                                [&](const TurnModel &m, const uint8_t *src, uint8_t *dst) {
                                  turn(level.turns, m, src, dst);
                                });
}

TEST_P(EveryLevel, TurnsSmallPlanes) {
  try_every_turn(GetParam(), 120, [] { return random_in(1, 19); });
}
TEST_P(EveryLevel, TurnsPlanesOfAnySize) {
  try_every_turn(GetParam(), 30, [] { return random_in(1, random_in(0, 2) == 0 ? 300 : 80); });
}

// --- The exported kernels ---

pivra_rot_kernel *const *const kTables[] = {pivra_tbl_fn_rot_8b, pivra_tbl_fn_rot_16b,
                                            pivra_tbl_fn_rot_24b};

Turn run(pivra_rot_kernel *kernel) {
  return [kernel](const TurnModel &m, const uint8_t *src, uint8_t *dst) {
    kernel(src, m.width, m.height, m.src_stride, m.dst_stride, dst);
  };
}

TEST(Kernels, EqualTheModel) {
  for (int32_t unit = 1; unit <= 3; ++unit)
    for (int32_t code = 1; code < PIVRA_ROT_CODES; ++code)
      for (int round = 0; round < 40 && !HasFatalFailure(); ++round) {
        const bool even = unit == 2 && (code == PIVRA_ROT_90L || code == PIVRA_ROT_90R);
        expect_equal_to_model("kernel",
                              job(code, unit, random_in(1, 150), random_in(1, 150), even ? 2 : 1),
                              run(kTables[unit - 1][code]));
      }
}

// Only those of 16 bits, and only by a quarter, round odd strides down.
TEST(Kernels, RoundStridesOfQuarterTurnsOf16Bits) {
  for (const int32_t code : {PIVRA_ROT_90L, PIVRA_ROT_90R})
    for (int round = 0; round < 40; ++round) {
      const TurnModel m = job(code, 2, random_in(1, 70), random_in(1, 70), 2);
      const int32_t src_odd = random_in(0, 1), dst_odd = random_in(0, 1);
      expect_equal_to_model(
          "odd strides", m, [&](const TurnModel &, const uint8_t *src, uint8_t *dst) {
            pivra_tbl_fn_rot_16b[code](src, m.width, m.height, m.src_stride + src_odd,
                                       m.dst_stride + dst_odd, dst);
          });
    }
}

TEST(Kernels, AreThoseOfTheTables) {
  const std::array names8 = {pivra_cpy_8b,     pivra_rot_8b_90l,  pivra_rot_8b_90r,
                             pivra_rot_8b_180, pivra_rot_8b_hori, pivra_rot_8b_vert};
  const std::array names16 = {pivra_cpy_16b,     pivra_rot_16b_90l,  pivra_rot_16b_90r,
                              pivra_rot_16b_180, pivra_rot_16b_hori, pivra_rot_16b_vert};
  const std::array names24 = {pivra_cpy_24b,     pivra_rot_24b_90l,  pivra_rot_24b_90r,
                              pivra_rot_24b_180, pivra_rot_24b_hori, pivra_rot_24b_vert};
  EXPECT_TRUE(std::ranges::equal(names8, pivra_tbl_fn_rot_8b));
  EXPECT_TRUE(std::ranges::equal(names16, pivra_tbl_fn_rot_16b));
  EXPECT_TRUE(std::ranges::equal(names24, pivra_tbl_fn_rot_24b));
  const std::array<pivra_rot_kernel *, 6> chroma = {
      pivra_csc_1x2_to_1x1, pivra_csc_1x2_to_1x1_rot_90l, pivra_csc_1x2_to_1x1_rot_90r};
  const std::array<pivra_csc_kernel *, 6> packed = {
      pivra_csc_yuyv_to_bgra8888, pivra_csc_yuyv_to_bgra8888_90l, pivra_csc_yuyv_to_bgra8888_90r,
      pivra_csc_yuyv_to_bgra8888_180};
  EXPECT_TRUE(std::ranges::equal(chroma, pivra_tbl_fn_csc_1x2_to_1x1_rot));
  EXPECT_TRUE(std::ranges::equal(packed, pivra_csc_rot_yuyv2bgra8888));
}

TEST(Kernels, LeaveEmptyPlanesAlone) {
  for (const auto *table : kTables)
    for (int32_t code = 1; code < PIVRA_ROT_CODES; ++code)
      for (const auto &[w, h] : {std::pair{0, 8}, {8, 0}, {-7, 8}, {8, -7}, {-8, -8}})
        table[code](nullptr, w, h, w, w, nullptr);
}

TEST(Kernels, ComposeToTheIdentity) {
  using Codes = std::vector<int32_t>;
  const int32_t l = PIVRA_ROT_90L, r = PIVRA_ROT_90R, half = PIVRA_ROT_180;
  const int32_t hori = PIVRA_ROT_HORI, vert = PIVRA_ROT_VERT;
  for (const Codes &codes : {Codes{l, l, l, l},
                             {r, r, r, r},
                             {l, r},
                             {r, l},
                             {half, half},
                             {hori, hori},
                             {vert, vert},
                             {l, l, half},
                             {hori, vert, half}})
    for (int32_t unit = 1; unit <= 3; ++unit) {
      const int32_t width = random_in(1, 200), height = random_in(1, 200);
      const std::vector<uint8_t> first = noise(size_t{1} * width * height * unit);
      std::vector<uint8_t> now = first, next(first.size());
      int32_t w = width, h = height;
      for (const int32_t code : codes) {
        const bool quarter = code == l || code == r;
        kTables[unit - 1][code](now.data(), w, h, w * unit, (quarter ? h : w) * unit, next.data());
        if (quarter) std::swap(w, h);
        std::swap(now, next);
      }
      ASSERT_EQ(now, first) << testing::PrintToString(codes) << " " << width << "x" << height;
    }
}

// --- The conversions ---

TEST(Chroma, IsTurnedWithoutItsOddRows) {
  for (const int32_t code : {PIVRA_ROT_90L, PIVRA_ROT_90R})
    for (int round = 0; round < 100 && !HasFatalFailure(); ++round) {
      const int32_t odd = random_in(0, 1);
      TurnModel m = job(code, 1, random_in(1, 150), random_in(1, 80));
      m.src_stride *= 2;
      expect_equal_to_model("chroma", m, [&](const TurnModel &, const uint8_t *src, uint8_t *dst) {
        pivra_tbl_fn_csc_1x2_to_1x1_rot[code](src, m.width, 2 * m.height + odd, m.src_stride / 2,
                                              m.dst_stride, dst);
      });
    }
}

TEST(Packed, IsConvertedAndTurned) {
  for (const int32_t code : {PIVRA_ROT_90L, PIVRA_ROT_90R, PIVRA_ROT_180})
    for (int round = 0; round < 60 && !HasFatalFailure(); ++round) {
      // Converted upright by the other kernel, which has tests of its own.
      TurnModel m = job(code, 4, 2 * random_in(1, 90), random_in(1, 50));
      const int32_t yuyv_stride = 2 * m.width + random_in(0, 9);
      const size_t yuyv_bytes = size_t{1} * yuyv_stride * (m.height - 1) + 2 * m.width;
      GuardedPlane yuyv;
      yuyv.place(random_bytes(yuyv_bytes), random_in(0, 1));
      std::array<uint8_t *, 4> planes = {yuyv.data()};
      std::array<int32_t, 4> width = {m.width}, height = {m.height}, stride = {yuyv_stride};
      const auto convert = [&](int32_t code_or_none, int32_t dst_stride, uint8_t *dst) {
        std::array<uint8_t *, 4> to = {dst};
        pivra_csc_rot_yuyv2bgra8888[code_or_none](planes.data(), width.data(), height.data(),
                                                  stride.data(), &dst_stride, to.data());
      };
      m.run();
      m.in.bytes.resize(size_t{1} * m.src_stride * m.height);
      convert(PIVRA_ROT_COPY, m.src_stride, m.in.bytes.data());
      m.out.bytes = random_bytes(m.out.bytes.size());
      GuardedPlane out;
      out.place(m.out.bytes, random_in(0, 1));
      convert(code, m.dst_stride, out.data());
      m.run();
      ASSERT_EQ(out.content(), m.out.bytes) << code << " " << m.width << "x" << m.height;
    }
}

// --- The dispatchers ---

// Three planes, each of a size of its own, and ample room in each.
struct Picture {
  explicit Picture(int32_t format) {
    desc.format = format;
    for (int plane = 0; plane < 4; ++plane) {
      bytes[plane] = noise(2500);
      desc.plane[plane] = bytes[plane].data();
      desc.width[plane] = 24 - 4 * plane;
      desc.height[plane] = 16 - 2 * plane;
      desc.stride[plane] = 80 + plane;
    }
  }
  Picture(const Picture &other, int32_t format) : Picture(format) {
    bytes = other.bytes;
    for (int plane = 0; plane < 4; ++plane) desc.plane[plane] = bytes[plane].data();
  }
  void turn_by(pivra_rot_kernel *kernel, const Picture &src, int from, int to) {
    kernel(src.desc.plane[from], src.desc.width[from], src.desc.height[from], src.desc.stride[from],
           desc.stride[to], desc.plane[to]);
  }
  std::array<std::vector<uint8_t>, 4> bytes;
  ImageDesc desc{};
};

TEST(Rot, ChoosesKernelsByFormat) {
  for (int32_t format = -5; format < 610; ++format)
    for (int32_t code = -1; code <= PIVRA_ROT_CODES; ++code) {
      const Picture src(format);
      Picture dst(format + 7), expected(dst, format + 7);
      const bool known = code >= 0 && code < PIVRA_ROT_CODES;
      const bool yuv = format >= 0 && format < 100 && format != PIVRA_FORMAT_T64X32;
      const bool words = format >= 200 && format < 300, triples = format >= 400 && format < 500;
      if (known && words) expected.turn_by(pivra_tbl_fn_rot_16b[code], src, 0, 0);
      if (known && triples) expected.turn_by(pivra_tbl_fn_rot_24b[code], src, 0, 0);
      if (known && yuv) {
        const bool pairs = format == PIVRA_FORMAT_NV12;
        expected.turn_by(pivra_tbl_fn_rot_8b[code], src, 0, 0);
        if (pairs) expected.turn_by(pivra_tbl_fn_rot_16b[code], src, 1, 1);
        for (const int plane : {1, 2})
          if (!pairs && format != PIVRA_FORMAT_YUV400)
            expected.turn_by(pivra_tbl_fn_rot_8b[code], src, plane, plane);
      }
      const bool served = known && (yuv || words || triples);
      ASSERT_EQ(pivra_rot(&src.desc, code, &dst.desc), served ? PIVRA_OK : PIVRA_UNSUPPORTED)
          << format << " code " << code;
      ASSERT_EQ(dst.bytes, expected.bytes) << format << " code " << code;
    }
}

TEST(Rot, SendsCornersWhereTheCodeSays) {
  ImageDesc src{}, dst{};
  std::vector<uint8_t> plane = noise(16 * 8), turned(16 * 8);
  src.width[0] = src.stride[0] = 16;
  src.height[0] = dst.stride[0] = 8;
  src.plane[0] = plane.data();
  dst.plane[0] = turned.data();
  ASSERT_EQ(pivra_rot(&src, PIVRA_ROT_90L, &dst), PIVRA_OK);
  EXPECT_EQ(turned[0], plane[15]);
  ASSERT_EQ(pivra_rot(&src, PIVRA_ROT_90R, &dst), PIVRA_OK);
  EXPECT_EQ(turned[0], plane[7 * 16]);
}

TEST(CscRot, ServesItsPairs) {
  const auto planar422 = [](int32_t f) {
    return f == PIVRA_FORMAT_YUV422N || f == PIVRA_FORMAT_YV16;
  };
  const auto planar420 = [](int32_t f) {
    return f == PIVRA_FORMAT_YUV420 || f == PIVRA_FORMAT_YV12;
  };
  const std::vector<int32_t> formats = {-1, 0,  1,   2,   3,   4,   5,   6,   7,   8,   9,   11, 12,
                                        13, 14, 100, 101, 200, 201, 400, 401, 500, 501, 502, 503};
  for (const int32_t from : formats)
    for (const int32_t to : formats)
      for (int32_t code = -1; code <= PIVRA_ROT_CODES; ++code) {
        const Picture src(from);
        Picture dst(to), expected(dst, to);
        const bool turned = code >= 0 && code <= PIVRA_ROT_180;
        int32_t result = from == to ? PIVRA_REFUSED : PIVRA_UNSUPPORTED;
        if (turned && code != PIVRA_ROT_180 && planar422(from) && planar420(to)) {
          result = PIVRA_OK;
          const bool straight = (from == PIVRA_FORMAT_YUV422N) == (to == PIVRA_FORMAT_YUV420);
          expected.turn_by(pivra_tbl_fn_rot_8b[code], src, 0, 0);
          expected.turn_by(pivra_tbl_fn_csc_1x2_to_1x1_rot[code], src, 1, straight ? 1 : 2);
          expected.turn_by(pivra_tbl_fn_csc_1x2_to_1x1_rot[code], src, 2, straight ? 2 : 1);
        }
        if (turned && from == PIVRA_FORMAT_YUYV && to == PIVRA_FORMAT_BGRA8888) {
          result = PIVRA_OK;
          ImageDesc in = src.desc;
          pivra_csc_rot_yuyv2bgra8888[code](in.plane, in.width, in.height, in.stride,
                                            expected.desc.stride, expected.desc.plane);
        }
        ASSERT_EQ(pivra_csc_rot(&src.desc, code, &dst.desc), result)
            << from << " to " << to << " code " << code;
        ASSERT_EQ(dst.bytes, expected.bytes) << from << " to " << to << " code " << code;
      }
}

}  // namespace
}  // namespace pivra::test
