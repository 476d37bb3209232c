#include "turn/turn.h"

#include <array>

#include "compare.h"
#include "levels.h"
#include "turn_model.h"
#include "yuv_to_rgb_model.h"

namespace pivra::test {
namespace {

template <class Run>  // of (model, source, destination)
void expect_equal_to_model(const std::string &name, TurnModel m, Run run) {
  compare_with_model(
      {&m.in}, {&m.out}, [&] { m.run(); },
      [&](uint8_t **src, uint8_t **dst) { run(m, *src, *dst); },
      std::tuple(name, "code", m.code, "unit", m.unit, m.width, m.height, "strides", m.src_stride,
                 m.dst_stride));
}

TurnModel job(int32_t code, int32_t unit, int32_t width, int32_t height, int32_t alignment = 1) {
  TurnModel m{code, unit, width, height, 0, 0, {}, {}};
  const auto padded = [=](int32_t units) {
    return (units * unit + random_padding() + alignment - 1) / alignment * alignment;
  };
  m.src_stride = padded(width);
  m.dst_stride = padded(m.dst_width());
  return m;
}

// --- The moves and the geometry, at every level ---

// Whole, or in four blocks, each by itself.
template <int code, int unit>
void turn_at(const Turns &level, const TurnModel &m, const uint8_t *src, uint8_t *dst) {
  if (random_in(0, 1))
    return turn<code, unit>(level, src, m.width, m.height, m.src_stride, m.dst_stride, dst);
  const int32_t x = random_in(0, m.width), y = random_in(0, m.height);
  for (const Block &b : {Block{0, 0, x, y}, Block{x, 0, m.width - x, y},
                         Block{0, y, x, m.height - y}, Block{x, y, m.width - x, m.height - y}})
    turn<code, unit>(level, src + b.y * m.src_stride + b.x * unit, b.width, b.height, m.src_stride,
                     m.dst_stride,
                     turned_block<code, unit>(b, m.width, m.height, m.dst_stride, dst));
}

#define PIVRA_OF_CODE(code) \
  { turn_at<code, 1>, turn_at<code, 2>, turn_at<code, 3>, turn_at<code, 4> }
constexpr decltype(&turn_at<0, 1>) kTurns[PIVRA_ROT_CODES][4] = {
    PIVRA_OF_CODE(0), PIVRA_OF_CODE(1), PIVRA_OF_CODE(2),
    PIVRA_OF_CODE(3), PIVRA_OF_CODE(4), PIVRA_OF_CODE(5)};

TEST_P(EachLevel, TurnsAsTheModel) {
  for (int32_t code = 0; code < PIVRA_ROT_CODES; ++code)
    for (int32_t unit = 1; unit <= 4; ++unit)
      for (int round = 0; round < 300 && !HasFatalFailure(); ++round) {
        const bool small = round % 5 != 0;
        const auto side = [&] { return random_in(1, small ? 19 : random_in(0, 2) ? 80 : 300); };
        expect_equal_to_model(GetParam().name, job(code, unit, side(), side()),
                              [&](const TurnModel &m, const uint8_t *src, uint8_t *dst) {
                                kTurns[code][unit - 1](GetParam().turns, m, src, dst);
                              });
      }
}

// --- The exported kernels ---

#define PIVRA_KERNELS(bits)                                                                   \
  std::array {                                                                                \
    pivra_cpy_##bits, pivra_rot_##bits##_90l, pivra_rot_##bits##_90r, pivra_rot_##bits##_180, \
        pivra_rot_##bits##_hori, pivra_rot_##bits##_vert                                      \
  }
const std::array kKernels = {PIVRA_KERNELS(8b), PIVRA_KERNELS(16b), PIVRA_KERNELS(24b)};

// Those of 16 bits by a quarter, and only they, round odd strides down.
TEST(Kernels, EqualTheModel) {
  for (int32_t unit = 1; unit <= 3; ++unit)
    for (int32_t code = 1; code < PIVRA_ROT_CODES; ++code)
      for (int round = 0; round < 100 && !HasFatalFailure(); ++round) {
        const bool even = unit == 2 && (code == PIVRA_ROT_90L || code == PIVRA_ROT_90R);
        const int32_t src_odd = even && random_in(0, 1), dst_odd = even && random_in(0, 1);
        expect_equal_to_model(
            "kernel", job(code, unit, random_in(1, 150), random_in(1, 150), even ? 2 : 1),
            [&](const TurnModel &m, const uint8_t *src, uint8_t *dst) {
              kKernels[unit - 1][code](src, m.width, m.height, m.src_stride + src_odd,
                                       m.dst_stride + dst_odd, dst);
            });
      }
}

TEST(Kernels, AreThoseOfTheTables) {
  EXPECT_TRUE(std::ranges::equal(kKernels[0], pivra_tbl_fn_rot_8b));
  EXPECT_TRUE(std::ranges::equal(kKernels[1], pivra_tbl_fn_rot_16b));
  EXPECT_TRUE(std::ranges::equal(kKernels[2], pivra_tbl_fn_rot_24b));
  const std::array<pivra_rot_kernel *, 6> chroma = {
      pivra_csc_1x2_to_1x1, pivra_csc_1x2_to_1x1_rot_90l, pivra_csc_1x2_to_1x1_rot_90r};
  const std::array<pivra_csc_kernel *, 6> packed = {
      pivra_csc_yuyv_to_bgra8888, pivra_csc_yuyv_to_bgra8888_90l, pivra_csc_yuyv_to_bgra8888_90r,
      pivra_csc_yuyv_to_bgra8888_180};
  EXPECT_TRUE(std::ranges::equal(chroma, pivra_tbl_fn_csc_1x2_to_1x1_rot));
  EXPECT_TRUE(std::ranges::equal(packed, pivra_csc_rot_yuyv2bgra8888));
}

TEST(Kernels, LeaveEmptyPlanesAlone) {
  for (const auto &kernels : kKernels)
    for (int32_t code = 1; code < PIVRA_ROT_CODES; ++code)
      for (const auto &[w, h] : kEmptySizes) kernels[code](nullptr, w, h, w, w, nullptr);
}

// --- The conversions ---

TEST(Kernels, ComposeToTheIdentity) {
  constexpr int32_t l = PIVRA_ROT_90L, r = PIVRA_ROT_90R, half = PIVRA_ROT_180;
  constexpr int32_t hori = PIVRA_ROT_HORI, vert = PIVRA_ROT_VERT;
  for (const std::vector<int32_t> &codes : std::vector<std::vector<int32_t>>{{l, l, l, l},
                                                                             {l, r},
                                                                             {r, l},
                                                                             {hori, hori},
                                                                             {vert, vert},
                                                                             {r, r, half},
                                                                             {hori, vert, half}})
    for (int32_t unit = 1; unit <= 3; ++unit) {
      const int32_t width = random_in(1, 200), height = random_in(1, 200);
      const std::vector<uint8_t> first = noise(size_t(width) * height * unit);
      std::vector<uint8_t> now = first, next = first;
      int32_t w = width, h = height;
      for (const int32_t code : codes) {
        const bool quarter = code == l || code == r;
        kKernels[unit - 1][code](now.data(), w, h, w * unit, (quarter ? h : w) * unit, next.data());
        if (quarter) std::swap(w, h);
        std::swap(now, next);
      }
      ASSERT_EQ(now, first) << testing::PrintToString(codes) << " " << width << "x" << height;
    }
}

TEST(Chroma, IsTurnedWithoutItsOddRows) {
  for (const int32_t code : {PIVRA_ROT_90L, PIVRA_ROT_90R})
    for (int round = 0; round < 100 && !HasFatalFailure(); ++round) {
      TurnModel job_of_evens = job(code, 1, random_in(1, 150), random_in(1, 80));
      job_of_evens.src_stride *= 2;
      expect_equal_to_model(
          "chroma", job_of_evens, [&](const TurnModel &m, const uint8_t *src, uint8_t *dst) {
            pivra_tbl_fn_csc_1x2_to_1x1_rot[code](src, m.width, 2 * m.height + random_in(0, 1),
                                                  m.src_stride / 2, m.dst_stride, dst);
          });
    }
}

TEST(Packed, IsConvertedAndTurned) {
  for (const int32_t code : {PIVRA_ROT_COPY, PIVRA_ROT_90L, PIVRA_ROT_90R, PIVRA_ROT_180})
    for (int round = 0; round < 60 && !HasFatalFailure(); ++round) {
      TurnModel m = job(code, 4, 2 * random_in(1, 90), random_in(1, 50));
      ConversionModel upright = {
          PIVRA_FORMAT_YUYV, PIVRA_FORMAT_BGRA8888, m.width, m.height, {}, m.src_stride, {}, {}};
      upright.stride[0] = 2 * m.width + random_padding();
      const auto model = [&] {
        upright.run();
        m.in = upright.out;
        m.run();
      };
      const auto run = [&](uint8_t **src, uint8_t **dst) {
        call(pivra_csc_rot_yuyv2bgra8888[code], m.width, m.height, upright.stride, {m.dst_stride},
             src, dst);
      };
      compare_with_model({upright.in.data()}, {&m.out}, model, run,
                         std::tuple("code", code, m.width, m.height));
    }
}

// --- The dispatchers ---

TEST(Rot, ChoosesKernelsByFormat) {
  for (int32_t format = -5; format < 610; ++format)
    for (int32_t code = -1; code <= PIVRA_ROT_CODES; ++code) {
      const Image src(format);
      Image dst(format + 7), expected = dst;
      const bool known = code >= 0 && code < PIVRA_ROT_CODES;
      const bool yuv = format >= 0 && format < 100 && format != PIVRA_FORMAT_T64X32;
      const bool words = format >= 200 && format < 300, triples = format >= 400 && format < 500;
      if (known && words) expected.take(pivra_tbl_fn_rot_16b[code], src, 0, 0);
      if (known && triples) expected.take(pivra_tbl_fn_rot_24b[code], src, 0, 0);
      if (known && yuv) {
        const bool pairs = format == PIVRA_FORMAT_NV12;
        expected.take(pivra_tbl_fn_rot_8b[code], src, 0, 0);
        if (pairs) expected.take(pivra_tbl_fn_rot_16b[code], src, 1, 1);
        for (const int plane : {1, 2})
          if (!pairs && format != PIVRA_FORMAT_YUV400)
            expected.take(pivra_tbl_fn_rot_8b[code], src, plane, plane);
      }
      const bool served = known && (yuv || words || triples);
      ASSERT_EQ(pivra_rot(&src.desc, code, &dst.desc), served ? PIVRA_OK : PIVRA_UNSUPPORTED)
          << format << " code " << code;
      ASSERT_EQ(dst.bytes, expected.bytes) << format << " code " << code;
    }
}

TEST(CscRot, ServesItsPairs) {
  const auto one_of = [](int32_t f, int32_t a, int32_t b) { return f == a || f == b; };
  const std::vector<int32_t> formats = {-1, 0,  1,   2,   3,   4,   5,   6,   7,   8,   9,   11, 12,
                                        13, 14, 100, 101, 200, 201, 400, 401, 500, 501, 502, 503};
  for (const int32_t from : formats)
    for (const int32_t to : formats)
      for (int32_t code = -1; code <= PIVRA_ROT_CODES; ++code) {
        const Image src(from);
        Image dst(to), expected = dst;
        int32_t result = from == to ? PIVRA_REFUSED : PIVRA_UNSUPPORTED;
        if (code >= 0 && code < PIVRA_ROT_180 &&
            one_of(from, PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_YV16) &&
            one_of(to, PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YV12)) {
          result = PIVRA_OK;
          const bool straight = (from == PIVRA_FORMAT_YUV422N) == (to == PIVRA_FORMAT_YUV420);
          expected.take(pivra_tbl_fn_rot_8b[code], src, 0, 0);
          expected.take(pivra_tbl_fn_csc_1x2_to_1x1_rot[code], src, 1, straight ? 1 : 2);
          expected.take(pivra_tbl_fn_csc_1x2_to_1x1_rot[code], src, 2, straight ? 2 : 1);
        }
        if (code >= 0 && code <= PIVRA_ROT_180 && from == PIVRA_FORMAT_YUYV &&
            to == PIVRA_FORMAT_BGRA8888) {
          result = PIVRA_OK;
          expected.take(pivra_csc_rot_yuyv2bgra8888[code], src);
        }
        ASSERT_EQ(pivra_csc_rot(&src.desc, code, &dst.desc), result)
            << from << " to " << to << " code " << code;
        ASSERT_EQ(dst.bytes, expected.bytes) << from << " to " << to << " code " << code;
      }
}

}  // namespace
}  // namespace pivra::test
