// Planes, and the kernels that they are resized by.
#include <functional>

#include "compare.h"
#include "resize_model.h"
#include "rsz/org.h"

namespace pivra::test {
namespace {

// run(source, destination, scratch or second destination)
template <class Model, class Run>
void expect_equal(ResizeModel m, Model model, Run run) {
  compare_with_model(
      {&m.in}, {&m.out, &m.scratch}, [&] { std::invoke(model, m); },
      [&](uint8_t **src, uint8_t **dst) { run(*src, dst[0], dst[1]); },
      m.shape + " " + m.turn + " " + sizes(m.sw, m.sh, m.dw, m.dh) + ", strides " +
          std::to_string(m.src_bytes) + " " + std::to_string(m.dst_bytes));
}

// The arguments of the kernels.
struct Arguments {
  using M = const ResizeModel &;
  static auto down_mult(M m) {
    return std::array{m.dw, m.dh, m.qx, m.src_stride, m.step, m.dst_stride};
  }
  static auto down_non_mult(M m) {
    return std::array{m.dw, m.dh, m.qx, m.src_stride, m.step, m.rx, m.ry, m.dst_stride};
  }
  static auto down_w(M m) { return std::array{m.src_stride, m.w, m.sh, m.qx, m.rx}; }
  static auto down_h(M m) { return std::array{m.dw, m.dst_stride, m.dh, m.qy, m.ry}; }
  static auto up(M m) { return std::array{m.w, m.sw, m.sh, m.qx, m.rx, m.src_stride}; }
  static auto up_h(M m) { return std::array{m.dw, m.sh, m.dh, m.qy, m.ry, m.dst_stride}; }
  static auto down_2xplus(M m) {
    return std::array{m.dw,         m.dh,        (m.sw >> 1) % m.dw, (m.sh >> 1) % m.dh,
                      m.src_stride, m.dst_stride};
  }
  // Those of the one picture that it is for, and what it does not look at.
  static auto down_720p(M m) {
    return std::array{m.dw, m.dh, -1, m.src_stride, -1, -1, m.ry, m.dst_stride};
  }
};
template <class... Ints, class Choose>
void expect_kernel(const ResizeModel &m, void (ResizeModel::*model)(),
                   void (*run)(const uint8_t *, uint8_t *, Ints...), Choose arguments) {
  expect_equal(m, model, [&](const uint8_t *src, uint8_t *dst, uint8_t *) {
    std::apply([&](Ints... a) { run(src, dst, a...); }, arguments(m));
  });
}

// The two sizes of an axis for a kind of kernel, or any two, of ratios from 1:40 to 40:1
// and now and then beyond; of whole ratios and of quarters more than by chance.
std::array<int32_t, 2> random_sizes(int32_t limit, const std::string &kind) {
  const bool multiple = kind == "down_mult", grows = kind == "" ? random_in(0, 1) : kind[0] == 'u';
  const int32_t most = random_in(0, 1) ? 4 : random_in(0, 20) ? 40 : limit;
  const int32_t ratio = random_in(1 + multiple, most), rest = multiple ? 0 : random_in(0, 2);
  int32_t few = random_in(1, std::max(1, limit / ratio));
  if (rest == 2) few = (few + 3) & ~3;
  const int32_t many = few * ratio + (rest == 0   ? 0
                                      : rest == 1 ? random_in(0, few - 1)
                                                  : few / 4 * random_in(1, 3));
  if (grows) return {few, many};
  return {many, few};
}

// Rows are packed or padded, and at times longer than what is resized at once.
ResizeModel random_model(const std::string &shape, const std::string &turn,
                         const std::string &kind) {
  const bool wide = random_in(0, 9) == 0, quarter = turn[0] == '9';
  const auto [sw, w] = random_sizes(wide ? 5000 : random_in(0, 2) ? 40 : 300, kind);
  const auto [sh, h] = random_sizes(wide ? 4 : 50, kind);
  const int32_t dw = quarter ? h : w, dh = quarter ? w : h, bytes = bytes_of(shape);
  const int32_t more = kind[0] == 'u' && random_in(0, 3) == 0 ? 9 : 0;  // than the ratio gives
  const auto stride = [&](int32_t n) { return n * bytes + random_in(0, 2) * random_in(0, 20); };
  const bool mode1 = kind == "" ? random_in(0, 1) : kind.ends_with("mode1");
  ResizeModel m = {shape, turn, mode1, sw, sh, dw, dh, stride(sw), stride(dw + more)};
  for (int32_t *size : {&m.w, &m.h, &m.dw, &m.dh}) *size += more;
  return m;
}

// --- Kernels ---

TEST(ResizeKernels, EqualTheModelAtEveryLevel) {
  at_every_level([](const std::string &level) {
    const auto check = [&](const std::string &shape, const std::string &turn,
                           const std::string &kind, auto run, auto model, auto arguments) {
      SCOPED_TRACE(level + " " + kind);
      for (int round = 0; round < 20 && !HasFatalFailure(); ++round)
        expect_kernel(random_model(shape, turn, kind), model, run, arguments);
    };
#define PIVRA_STRAIGHT(kind, arguments, shape)                                  \
  check(#shape, "", #kind, pivra_##shape##_rsz_##kind, &ResizeModel::arguments, \
        Arguments::arguments);
#define PIVRA_TURNED(kind, arguments, shape, turn)                                              \
  check(#shape, #turn, #kind, pivra_##shape##_rsz_rot_##turn##_##kind, &ResizeModel::arguments, \
        Arguments::arguments);
    PIVRA_RSZ_KERNELS(PIVRA_STRAIGHT)
    PIVRA_RSZ_ROT_KERNELS(PIVRA_TURNED)
  });
}

TEST(ResizeKernels, ShrinkTo404Rows) {
  const ResizeModel luma = {"8b", "", false, 1280, 720, 720, 404, 1280, 720};
  const ResizeModel chroma = {"8b8b", "", false, 640, 360, 360, 202, 1281, 723};
  at_every_level([&](const std::string &) {
    expect_kernel(luma, &ResizeModel::down_non_mult, pivra_8b_rsz_down_non_mult_720p_720x404,
                  Arguments::down_720p);
    expect_kernel(chroma, &ResizeModel::down_non_mult, pivra_8b8b_rsz_down_non_mult_720p_720x404,
                  Arguments::down_720p);
  });
}

TEST(ResizeKernels, AverageCells) {
  rounds_at_every_level(200, [](int round) {
    const int32_t pairs = round % 2, ratio = round % 4 < 2 ? 2 : 4;
    const int32_t w = random_in(1, 90), h = random_in(1, 20);
    const int32_t sw = random_in(ratio * w, 2 * ratio * w - 1),
                  sh = random_in(ratio * h, 2 * ratio * h - 1);
    const int32_t src_stride = (sw << pairs) + random_in(0, 1) * random_in(0, 9),
                  dst_stride = (w << pairs) + random_in(0, 9);
    const ResizeModel m = {pairs ? "8b8b" : "8b", "", false, sw, sh, w, h, src_stride, dst_stride};
    if (ratio == 2)
      return expect_kernel(m, &ResizeModel::down_2xplus,
                           pairs ? pivra_8b8b_rsz_down_2xplus : pivra_8b_rsz_down_2xplus,
                           Arguments::down_2xplus);
    expect_equal(m, &ResizeModel::down_4xplus,
                 [&](const uint8_t *src, uint8_t *dst, uint8_t *scratch) {
                   (pairs ? pivra_8b8b_rsz_down_4xplus : pivra_8b_rsz_down_4xplus)(
                       src, dst, w, h, sw, sh, src_stride, dst_stride, scratch);
                 });
  });
}

TEST(ResizeKernels, ReadTiles) {
  rounds_at_every_level(200, [](int round) {
    const bool pairs = round % 2, grows = random_in(0, 1), mode1 = random_in(0, 1);
    const ResizeModel m = random_model("8b", "", !grows ? "down_w" : mode1 ? "up_mode1" : "up");
    const int32_t w = m.w, rows = m.sh, u = m.qx, r = m.rx,
                  q = u == 1 ? random_in(0, 1) : u,  // which are the same
        tw = (m.sw << pairs) + random_in(0, 1) * random_in(0, 200);
    expect_equal(
        m, [=](ResizeModel &same) { same.tiled(tw, 1 + pairs); },
        [&](const uint8_t *src, uint8_t *dst, uint8_t *second) {
          const auto up = mode1 ? pivra_nv12t_rsz_up_mode1 : pivra_nv12t_rsz_up;
          const auto up_c = mode1 ? pivra_nv12t_rsz_up_c_mode1 : pivra_nv12t_rsz_up_c;
          grows &&pairs ? up_c(src, dst, second, w, 2 * m.sw + tw % 2, rows, u, r, tw)
          : grows       ? up(src, dst, w, m.sw, rows, u, r, tw)
          : pairs       ? pivra_nv12t_rsz_down_w_c(src, dst, second, tw, w, rows, q, r)
                        : pivra_nv12t_rsz_down_w(src, dst, tw, w, rows, q, r);
        });
  });
}

TEST(ResizeKernels, ResampleBilinearly) {
  rounds_at_every_level(300, [](int round) {
    const ResizeModel m = random_model("8b", round % 3 == 1 ? "90l" : "", "");
    if (std::max(m.sw, m.sh) > 8192) return;  // positions have 13 bits before the point
    int32_t x = 0, y = 0;
    rsz_org_steps(m.sw, m.sh, m.dw, m.dh, round % 3, &x, &y);
    if (round % 3 == 2) return;
    ASSERT_EQ(std::pair(x, y), std::pair(step_word(m.sw, m.w), step_word(m.sh, m.h)));
    expect_equal(
        {"8b", "", false, m.sw, m.sh, m.w, m.h, m.src_bytes, m.w + 7},
        [=](ResizeModel &same) { same.org(x, y); },
        [&](const uint8_t *src, uint8_t *dst, uint8_t *) {
          pivra_rsz_8b_org(src, m.src_bytes, m.w, m.h, m.w + 7, dst, x, y);
        });
  });
}

TEST(ResizeTables, HoldTheirWeights) {
  for (size_t g = 0; g < 34; ++g) EXPECT_EQ(scale[g], kRampSteps[g]) << g;
  for (int32_t i = 0, at = 0; i < 8; ++i)
    for (int32_t j = 0; j < 8; ++j)
      for (const int32_t weight : {(8 - i) * (8 - j), i * (8 - j), (8 - i) * j, i * j})
        EXPECT_EQ(pivra_tbl_rsz_weight[at++], weight) << i << " " << j;
  EXPECT_EQ(pivra_rsz_8b_rot_90r_quarter(INTPTR_MIN), INTPTR_MIN);
}

// --- Planes ---

struct Plane {
  std::string shape, turn;
  pivra_rsz_plane *resize;
};
#define PIVRA_SHAPE(shape) {#shape, "", pivra_rsz_##shape},
#define PIVRA_TURN(shape, turn) {#shape, #turn, pivra_rsz_##shape##_rot_##turn},
const std::vector<Plane> kPlanes = {PIVRA_RSZ_SHAPES(PIVRA_SHAPE) PIVRA_RSZ_TURNS(PIVRA_TURN)};

int32_t resize(const Plane &plane, const ResizeModel &m, const uint8_t *src, uint8_t *dst,
               uint8_t *scratch) {
  return plane.resize(src, m.sw, m.sh, m.dw, m.dh, dst, scratch, m.src_bytes, m.dst_bytes,
                      m.mode1 ? PIVRA_RSZ_MODE1 : random_in(0, 1));
}

TEST(ResizePlanes, EqualTheModelAtEveryLevel) {
  rounds_at_every_level(40, [](int) {
    for (const Plane &plane : kPlanes) {
      const ResizeModel m = random_model(plane.shape, plane.turn, "");
      expect_equal(m, &ResizeModel::plane, [&](const uint8_t *src, uint8_t *dst, uint8_t *scratch) {
        if (m.w < m.sw && m.h < m.sh) scratch = nullptr;
        EXPECT_EQ(resize(plane, m, src, dst, scratch), PIVRA_OK);
      });
    }
  });
}

TEST(ResizePlanes, ComputeTheseByHand) {
  const struct {
    size_t plane;  // of kPlanes
    bool mode1;
    int32_t sw, sh, dw, dh;
    std::vector<uint8_t> in, out;
  } kRows[] = {
      {0, 0, 2, 1, 8, 1, {10, 20}, {10, 12, 12, 12, 20, 20, 20, 20}},
      {0, 0, 2, 1, 4, 1, {10, 21}, {10, 15, 21, 21}},
      {0, 0, 5, 1, 7, 1, {0, 10, 20, 30, 40}, {0, 10, 20, 25, 30, 40, 40}},
      {0, 0, 4, 1, 1, 1, {0, 100, 200, 255}, {50}},
      {0, 0, 7, 1, 3, 1, {1, 2, 3, 4, 10, 21, 7}, {1, 3, 15}},
      {0, 0, 2, 2, 1, 1, {1, 2, 3, 5}, {2}},
      {0, 0, 4, 3, 2, 2, {1, 9, 2, 9, 4, 9, 5, 9, 8, 9, 10, 9}, {1, 2, 6, 7}},
      {0, 1, 2, 1, 8, 1, {10, 74}, {10, 26, 42, 58, 74, 74, 74, 74}},
      {0, 1, 1, 3, 1, 8, {0, 64, 128}, {0, 32, 64, 85, 106, 128, 128, 128}},
      {1, 0, 2, 1, 4, 1, {10, 200, 20, 100}, {10, 200, 15, 150, 20, 100, 20, 100}},
      {1, 0, 2, 2, 1, 1, {1, 9, 3, 9, 5, 9, 7, 10}, {4, 9}},
      {2, 0, 2, 1, 1, 1, {0xFF, 0xFF, 0, 0}, {0xEF, 0x7B}},
      {2, 0, 2, 2, 1, 1, {0, 0xF8, 0, 0xF8, 0, 0, 0, 0}, {0, 0x78}},
      {4, 0, 2, 1, 1, 1, {9, 9, 9, 255, 9, 9, 9, 0}, {9, 9, 9, 127}},
      {5, 0, 3, 2, 4, 3, {0, 16, 32, 64, 80, 96}, {32, 64, 96, 96, 16, 48, 80, 80, 0, 32, 64, 64}},
      {6, 0, 2, 2, 2, 2, {1, 2, 3, 4}, {3, 1, 4, 2}},
      {7, 0, 2, 2, 2, 2, {1, 2, 3, 4}, {4, 3, 2, 1}},
  };
  for (const auto &row : kRows) {
    const Plane &plane = kPlanes[row.plane];
    const int32_t bytes = bytes_of(plane.shape);
    std::vector<uint8_t> out(row.out.size()), scratch(64);
    resize(plane,
           {plane.shape, plane.turn, row.mode1, row.sw, row.sh, row.dw, row.dh, row.sw * bytes,
            row.dw * bytes},
           row.in.data(), out.data(), scratch.data());
    EXPECT_EQ(out, row.out) << plane.shape << " " << plane.turn << " " << row.sw;
  }
}

}  // namespace
}  // namespace pivra::test
