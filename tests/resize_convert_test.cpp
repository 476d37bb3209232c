#include "compare.h"
#include "heap.h"
#include "resize_convert_model.h"

namespace pivra::test {
namespace {

constexpr int32_t kGrey = PIVRA_FORMAT_YUV400, kYuv = PIVRA_FORMAT_YUV420,
                  kTiles = PIVRA_FORMAT_T64X32, k565 = PIVRA_FORMAT_RGB565,
                  k888 = PIVRA_FORMAT_RGB888;

int32_t padding() { return random_in(0, 2) == 0 ? 0 : random_in(0, 40); }
int32_t small_or_large(int32_t small, int32_t large) {
  return random_in(0, 3) == 0 ? random_in(1, large) : random_in(1, small);
}

// Chroma of odd sizes is rounded up, or down.
ResizeConvertModel model_of(int32_t from, int32_t w, int32_t h, int32_t to, int32_t dw, int32_t dh,
                            bool up = true) {
  ImageDesc src{}, dst{};
  src.format = from;
  dst.format = to;
  for (int p = 0; p < 3; ++p) {
    src.width[p] = p ? (w + up) / 2 : w;
    src.height[p] = p ? (h + up) / 2 : h;
    src.stride[p] = src.width[p] + padding();
  }
  dst.width[0] = dw;
  dst.height[0] = dh;
  dst.stride[0] = (to == k565 ? 2 : 3) * dw + padding();
  return {src, dst};
}

// run(the call's pictures, the scratch)
template <class Run>
void expect_equal(ResizeConvertModel &m, const std::function<void()> &model, Run run,
                  bool with_scratch = false) {
  ModelPlanes out = {&m.out};
  if (with_scratch) out.push_back(&m.scratch);
  const std::string what = (m.tiled ? "tiles " : "planes ") +
                           sizes(m.src.width[0], m.src.height[0], m.w, m.h) + ", stride " +
                           std::to_string(m.stride);
  const auto with_planes = [&](uint8_t **from, uint8_t **to) {
    ImageDesc src = m.src, dst = m.dst;
    std::copy_n(from, 3, src.plane);
    dst.plane[0] = to[0];
    run(src, dst, to[1]);
  };
  compare_with_model(all(m.in), out, model, with_planes, what);
}

// By the kernels, and by the dispatcher that chooses them and needs no memory for it.
TEST(ResizeConvert, ShrinksInOnePass) {
  rounds_at_every_level(500, [](int round) {
    const bool tiled = round % 3 == 0, dispatched = random_in(0, 1);
    const bool apart = round % 20 == 0;  // columns of which few fit a buffer
    const int32_t dw = apart ? random_in(1, 5) : small_or_large(40, 150),
                  dh = random_in(1, tiled ? 40 : 9);
    const int32_t qx = apart ? random_in(1000, 2500) : random_in(2, 6), qy = random_in(2, 6);
    const bool multiple = random_in(0, 1);
    const int32_t w = multiple ? dw * qx : random_in(dw * (apart ? qx - 1 : 1) + 1, dw * qx),
                  h = multiple ? dh * qy : random_in(dh + 1, dh * qy);
    ResizeConvertModel m = model_of(tiled ? kTiles : kYuv, w, h, k565, dw, dh);
    const bool whole = dispatched ? w % dw == 0 && h % dh == 0 : multiple;
    expect_equal(
        m, [&] { whole ? m.shrink_whole() : m.shrink_by_others(); },
        [&](ImageDesc &src, ImageDesc &dst, uint8_t *) {
          if (dispatched) {
            const bool fails = random_in(0, 1);
            const Outcome outcome = watch([&] { return pivra_rsz_csc(&src, &dst); }, fails);
            EXPECT_EQ(outcome.result, PIVRA_OK);
            EXPECT_EQ(outcome.kept, 0u);
          } else if (tiled && whole) {
            pivra_8b_rsz_csc_down_mult_t64x32torgb565(src.plane, dst.plane[0], dw, dh, qx, qy,
                                                      src.width, src.height, m.stride);
          } else if (tiled) {
            pivra_8b_rsz_csc_down_non_multt64x32torgb565(src.plane, dst.plane[0], dw, dh, src.width,
                                                         src.height, m.stride);
          } else if (whole) {
            pivra_8b_rsz_csc_down_mult_yuvtorgb565(src.plane, dst.plane[0], dw, dh, qx, qy,
                                                   src.stride, m.stride);
          } else {
            pivra_8b_rsz_csc_down_non_multyuvtorgb565(src.plane, dst.plane[0], dw, dh, src.width,
                                                      src.height, src.stride, m.stride);
          }
        });
  });
}

TEST(ResizeConvert, ConvertsWhatThePassesLeave) {
  rounds_at_every_level(200, [](int) {
    const bool pairs = random_in(0, 1);
    const int32_t w = small_or_large(40, 300), h = random_in(1, 7);
    ResizeConvertModel m = model_of(kYuv, w, h, k565, w, h);
    expect_equal(
        m, [&] { m.convert_passes(pairs, m.plane()); },
        [&](ImageDesc &src, ImageDesc &dst, uint8_t *) {
          (pairs ? pivra_rsz_csc_up_h2x_yuv420_to_rgb565_gen
                 : pivra_rsz_csc_up_h_yuv420_to_rgb565_gen)(src.plane[0], src.plane[1],
                                                            src.plane[2], dst.plane[0], dst.stride,
                                                            dst.height, dst.width);
        });
  });
}

TEST(ResizeConvert, InterpolatesToRgb888) {
  rounds_at_every_level(200, [](int) {
    ResizeConvertModel m = model_of(kYuv, small_or_large(60, 200), random_in(1, 40), k888,
                                    small_or_large(60, 200), random_in(1, 40));
    expect_equal(
        m, [&] { m.interpolate(); },
        [&](ImageDesc &src, ImageDesc &dst, uint8_t *) {
          pivra_rsz_csc_yuv420_to_rgb888(src.plane, src.width, src.height, src.stride, dst.width,
                                         dst.height, dst.stride, dst.plane);
        });
  });
}

// At least one axis does not shrink. The scratch is the call's own, or of the caller and
// then not cleared.
TEST(ResizeConvert, InterpolatesGreyWithoutChroma) {
  for (const auto &[w, h] : {std::pair{1, 37}, {37, 1}, {1, 1}}) {
    NoisyPicture src(kYuv, w, h), grey(kYuv, w, h), dst(k888, 40, 30), expected(k888, 40, 30);
    std::copy_n(src.desc.plane[0], src.before[0].size(), grey.desc.plane[0]);
    for (const int p : {1, 2}) {
      std::fill_n(grey.desc.plane[p], grey.before[p].size(), uint8_t{128});
      src.desc.width[p] = w / 2;
      src.desc.height[p] = h / 2;
      src.desc.plane[p] = nullptr;
    }
    EXPECT_EQ(pivra_rsz_csc(&src.desc, &dst.desc), PIVRA_OK);
    EXPECT_EQ(pivra_rsz_csc(&grey.desc, &expected.desc), PIVRA_OK);
    EXPECT_EQ(dst.now(), expected.now());
  }
}

TEST(ResizeConvert, MakesTwoPasses) {
  rounds_at_every_level(300, [](int round) {
    const bool tiled = random_in(0, 1), own = random_in(0, 1), odd = round % 2;
    const auto size = [=](int32_t most) {
      return random_in(1, most / 2) * 2 - (odd ? random_in(0, 1) : 0);
    };
    const int32_t w = size(random_in(0, 5) ? 70 : 300), h = size(50);
    int32_t dw, dh;
    do dw = size(random_in(0, 5) ? 70 : 2500), dh = size(50);
    while (dw < w && dh < h);
    ResizeConvertModel m = model_of(tiled ? kTiles : kYuv, w, h, k565, dw, dh, random_in(0, 1));
    m.dst.resize_mode = random_in(0, 1) ? PIVRA_RSZ_MODE1 : uint32_t(random_in(0, 1));
    m.dst.stride[0] = m.stride = 2 * ((dw + 1) & ~1) + padding();
    const ptrdiff_t known =
        m.half_w * (h / 2) * 2 + dw * h + dh * (m.stride >> 1) + m.half_h * (m.stride >> 2) * 2;
    expect_equal(
        m,
        [&] {
          if (own) m.scratch.bytes.clear();
          m.two_passes();
        },
        [&](ImageDesc &src, ImageDesc &dst, uint8_t *scratch) {
          const Outcome outcome = watch([&] {
            if (own) return pivra_rsz_csc(&src, &dst);
            return (tiled ? pivra_rsz_csc_t64x32_to_rgb565 : pivra_rsz_csc_yuv420_to_rgb565)(
                src.plane, src.width, src.height, src.stride, dst.width, dst.height, dst.stride,
                dst.plane, scratch, dst.resize_mode);
          });
          EXPECT_EQ(outcome.result, PIVRA_OK);
          EXPECT_EQ(outcome.calls, own);
          EXPECT_EQ(outcome.kept, 0u);
          EXPECT_GE(outcome.bytes, size_t(own ? known : 0));
        },
        !own);
  });
}

// --- The dispatcher ---

struct Picture : NoisyPicture {
  Picture(int32_t format, int32_t w, int32_t h, int32_t padding = 0)
      : NoisyPicture(format, w, h, padding, format == kTiles ? 1u << 17 : 0) {}
};

TEST(ResizeConvert, KnowsItsPairs) {
  const std::vector<std::pair<int32_t, int32_t>> known = {
      {kTiles, k565}, {kYuv, k565},  {kYuv, k888}, {kYuv, kGrey},
      {kGrey, kYuv},  {kGrey, k888}, {k888, kYuv}};
  for (int32_t from = -1; from < 510; ++from)
    for (const int32_t to : {-1, 0, 1, 4, 6, 11, 101, 200, 201, 400, 401, 500, from}) {
      const bool is_known =
          std::find(known.begin(), known.end(), std::pair(from, to)) != known.end();
      Picture src(from == kTiles || from == k888 ? from : kYuv, 20, 20),
          dst(to == k565 || to == k888 ? to : kYuv, 16, 10);
      src.desc.format = from;
      dst.desc.format = to;
      ASSERT_EQ(pivra_rsz_csc(&src.desc, &dst.desc), from == to ? PIVRA_REFUSED
                                                     : is_known ? PIVRA_OK
                                                                : PIVRA_UNSUPPORTED);
      ASSERT_EQ(dst.now() != dst.before, is_known) << from << " to " << to;
    }
}

TEST(ResizeConvert, KeepsItsScratchWhenAPictureIsEmpty) {
  for (const int32_t format : {kYuv, kTiles})
    for (int which = 0; which < 4; ++which)
      for (const int32_t size : {0, -1}) {
        Picture src(format, 20, 20), dst(k565, 30, 30);
        std::array{src.desc.width, src.desc.height, dst.desc.width, dst.desc.height}[which][0] =
            size;
        const Outcome outcome = watch([&] { return pivra_rsz_csc(&src.desc, &dst.desc); });
        EXPECT_EQ(outcome.result, PIVRA_REFUSED);
        EXPECT_EQ(outcome.kept, 1u);
        EXPECT_EQ(dst.now(), dst.before);
      }
}

TEST(ResizeConvert, NeedsMemoryUnlessBothAxesShrink) {
  for (const auto &[from, to] :
       {std::pair{kYuv, k565}, {kTiles, k565}, {kGrey, k888}, {k888, kYuv}})
    for (const int32_t dw : {30, 10}) {
      Picture src(from, 20, 20), dst(to, dw, 10);
      const bool needed = dw == 30 || to != k565;
      const auto call = [&] { return pivra_rsz_csc(&src.desc, &dst.desc); };
      EXPECT_EQ(watch(call, true).result, needed ? PIVRA_REFUSED : PIVRA_OK);
      EXPECT_EQ(dst.now() == dst.before, needed);
      if (to == k565 || dw < 20) continue;
      // The picture in between is there, but no scratch to resize by.
      const Outcome second = watch(call, true, 1);
      EXPECT_EQ(second.result, PIVRA_REFUSED);
      EXPECT_EQ(second.kept, 0u);
      EXPECT_EQ(dst.now(), dst.before);
    }
}

// Grey over a fill without regard to the stride.
TEST(ResizeConvert, ResizesLumaAlone) {
  for (const int32_t padding : {0, 3})
    for (const int32_t dw : {90, 31})
      for (const auto &[from, to] : {std::pair{kYuv, kGrey}, {kGrey, kYuv}}) {
        Picture src(from, 70, 50, padding), dst(to, dw, 40, padding), expected(to, dw, 40, padding);
        expected.become(dst);
        for (int p = 0; p < 3 && to == kYuv; ++p)
          std::fill_n(expected.desc.plane[p], dst.desc.width[p] * dst.desc.height[p], p ? 128 : 16);
        pivra_rsz_8b_org(src.desc.plane[0], 70 + padding, dw, 40, dw + padding,
                         expected.desc.plane[0], step_word(70, dw), step_word(50, 40));
        EXPECT_EQ(watch([&] { return pivra_rsz_csc(&src.desc, &dst.desc); }).calls, 0);
        EXPECT_EQ(dst.now(), expected.now());
      }
}

TEST(ResizeConvert, GoesThroughAPicture) {
  for (const auto &[from, to] : {std::pair{kGrey, k888}, {k888, kYuv}})
    for (const int32_t w : {30, 50, 64}) {
      const int32_t padding = random_in(0, 1) * random_in(1, 30);
      Picture src(from, 50, 40, 1), dst(to, w, 24, padding), expected(to, w, 24, padding),
          between(from, dst.desc.stride[0], 24);
      expected.become(dst);
      std::fill_n(between.desc.plane[0], between.before[0].size(), uint8_t{0});
      between.desc.width[0] = w;
      between.desc.stride[0] = from == kGrey ? dst.desc.stride[0] / 3 : dst.desc.stride[0] * 3;
      ASSERT_EQ(pivra_rsz(&src.desc, &between.desc), PIVRA_OK);
      ASSERT_EQ(pivra_csc(&between.desc, &expected.desc), PIVRA_OK);
      dst.desc.resize_mode = PIVRA_RSZ_MODE1;
      const Outcome outcome = watch([&] { return pivra_rsz_csc(&src.desc, &dst.desc); });
      EXPECT_EQ(outcome.result, PIVRA_OK);
      EXPECT_EQ(outcome.kept, 0u);
      EXPECT_EQ(dst.now(), expected.now());
      // Too small to be converted.
      Picture small(to, w, 7);
      EXPECT_EQ(pivra_rsz_csc(&src.desc, &small.desc), PIVRA_OK);
      EXPECT_EQ(small.now(), small.before);
    }
}

// A picture without edges comes out as if it were resized first, nearly.
TEST(ResizeConvert, StaysNearResizingThenConverting) {
  Picture src(kYuv, 640, 360);
  for (int p = 0; p < 3; ++p)
    for (int32_t i = 0; i < src.desc.stride[p] * src.desc.height[p]; ++i)
      src.desc.plane[p][i] = uint8_t(
          60 + 40 * p + (i % src.desc.stride[p] + i / src.desc.stride[p]) * (p ? 2 : 1) / 10);
  const int32_t targets[][2] = {{320, 180}, {400, 226}, {214, 122}, {960, 540}, {320, 400}};
  for (const auto &[dw, dh] : targets)
    for (const int32_t format : {k565, k888}) {
      Picture yuv(kYuv, dw, dh), made(kYuv, dw, dh), rgb(format, dw, dh);
      ASSERT_EQ(pivra_rsz(&src.desc, &yuv.desc), PIVRA_OK);
      ASSERT_EQ(pivra_csc(&yuv.desc, &rgb.desc), PIVRA_OK);
      ASSERT_EQ(pivra_csc(&rgb.desc, &yuv.desc), PIVRA_OK);
      ASSERT_EQ(pivra_rsz_csc(&src.desc, &rgb.desc), PIVRA_OK);
      ASSERT_EQ(pivra_csc(&rgb.desc, &made.desc), PIVRA_OK);
      for (size_t p = 0; p < 3; ++p) {
        const std::vector<uint8_t> a = yuv.now()[p], b = made.now()[p];
        double sum = 0;
        for (size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
        EXPECT_LE(sum / double(a.size()), 4) << dw << "x" << dh << ", plane " << p;
      }
    }
}

}  // namespace
}  // namespace pivra::test
