// Pictures: which planes are resized and by what, what is copied, what is refused, and
// the memory that a call asks for.
#include <gtest/gtest.h>

#include "heap.h"
#include "levels.h"
#include "resize_model.h"

namespace pivra::test {
namespace {

// --- Pictures ---

struct Layout {
  int32_t format;
  std::vector<std::string> planes;
};
const Layout kNv12 = {PIVRA_FORMAT_NV12, {"8b", "8b8b"}};
const std::vector<Layout> kLayouts = [] {
  std::vector<Layout> all = {
      kNv12, {PIVRA_FORMAT_NV21, kNv12.planes}, {PIVRA_FORMAT_YUV400, {"8b"}}};
  for (const int32_t format : {1, 2, 3, 4, 5, 8, 9, 10, 12, 13, 14, 99})
    all.push_back({format, {"8b", "8b", "8b"}});
  for (const int32_t format : {PIVRA_FORMAT_RGB565, PIVRA_FORMAT_BGR565})
    all.push_back({format, {"5b6b5b"}});
  for (const int32_t format : {PIVRA_FORMAT_RGB888, PIVRA_FORMAT_BGR888})
    all.push_back({format, {"8b8b8b"}});
  for (int32_t format = PIVRA_FORMAT_RGBA8888; format <= PIVRA_FORMAT_ABGR8888; ++format)
    all.push_back({format, {"8b8b8b8b"}});
  return all;
}();

// Planes behind the first one have half the size, rounded up.
struct Picture : GuardedPicture {
  Picture(const Layout &layout, int32_t w, int32_t h, int32_t padding, size_t slack = 0) {
    desc.format = layout.format;
    for (size_t p = 0; p < layout.planes.size(); ++p) {
      desc.width[p] = p == 0 ? w : (w + 1) / 2;
      desc.height[p] = p == 0 ? h : (h + 1) / 2;
      const int32_t row = desc.width[p] * bytes_of(layout.planes[p]);
      desc.stride[p] = row + padding * int32_t(p + 1);
      before.push_back(noise(size_t(desc.height[p] - 1) * desc.stride[p] + row + slack));
      desc.plane[p] = memory[p].place(before[p], random_in(0, 1));
    }
  }
};

constexpr int32_t kNoRotation = -1;  // pivra_rsz
Outcome resize(const Picture &src, Picture &dst, int32_t rotation = kNoRotation,
               bool fails = false) {
  return watch(
      [&] {
        return rotation == kNoRotation ? pivra_rsz(&src.desc, &dst.desc)
                                       : pivra_rsz_rot(&src.desc, rotation, &dst.desc);
      },
      fails);
}
bool is_quarter(int32_t rotation) { return rotation == PIVRA_ROT_90L || rotation == PIVRA_ROT_90R; }

// Each plane by the model of it.
template <class Model>
void expect_planes(const Layout &layout, const std::string &turn, const Picture &src,
                   const Picture &dst, Model model) {
  const ImageDesc &s = src.desc, &d = dst.desc;
  for (size_t p = 0; p < layout.planes.size(); ++p) {
    ResizeModel m = {layout.planes[p], turn,        d.resize_mode == PIVRA_RSZ_MODE1,
                     s.width[p],       s.height[p], d.width[p],
                     d.height[p],      s.stride[p], d.stride[p]};
    m.in.bytes = src.before[p];
    m.out.bytes = dst.before[p];
    model(m);
    ASSERT_EQ(dst.now()[p], m.out.bytes) << layout.format << " plane " << p << " " << turn << " "
                                         << m.sw << "x" << m.sh << " to " << m.dw << "x" << m.dh;
  }
}
constexpr auto kPlane = [](ResizeModel &m) { m.plane(); };

TEST(ResizePictures, ResizeAndTurnEveryPlane) {
  at_every_level([](const std::string &) {
    for (const Layout &layout : kLayouts)
      for (int round = 0; round < 30 && !HasFatalFailure(); ++round) {
        Picture src(layout, random_in(1, 80), random_in(1, 60), random_in(0, 5)),
            dst(layout, random_in(1, 80), random_in(1, 60), random_in(0, 5));
        const int32_t rotation = layout.format < 100 ? random_in(kNoRotation, 5) : kNoRotation;
        const int32_t w = is_quarter(rotation) ? dst.desc.height[0] : dst.desc.width[0];
        if (src.desc.width[0] == w) continue;  // perhaps of the same size
        dst.desc.resize_mode = std::array{0u, 1u, PIVRA_RSZ_MODE1}[round % 3];
        const Outcome outcome = resize(src, dst, rotation);
        ASSERT_EQ(outcome.result, PIVRA_OK);
        ASSERT_EQ(outcome.calls, 1);
        ASSERT_EQ(outcome.kept, 0u);
        const bool by_stride = layout.format >= 100 || (rotation == 0 && layout.planes.size() != 2);
        ASSERT_GE(outcome.bytes, size_t(by_stride ? dst.desc.stride[0] : w) * src.desc.height[0]);
        const std::string turns[] = {"", "", "90l", "90r", "180", "", ""};
        expect_planes(layout, turns[rotation + 1], src, dst, kPlane);
      }
  });
}

// Of plane 0 alone the size counts. The copy kernels may go past the planes.
TEST(ResizePictures, CopyOrTurnWhatKeepsItsSize) {
  for (const Layout &layout : kLayouts)
    for (int32_t rotation = kNoRotation; rotation < PIVRA_ROT_CODES; ++rotation) {
      const int32_t w = random_in(9, 40), h = random_in(9, 30), padding = random_in(0, 3),
                    dw = is_quarter(rotation) ? h : w, dh = is_quarter(rotation) ? w : h;
      Picture src(layout, w, h, padding, 999), dst(layout, dw, dh, padding, 999),
          same(layout, dw, dh, padding, 999);
      for (size_t p = 0; p < layout.planes.size(); ++p) {
        same.desc.plane[p] = same.memory[p].place(dst.before[p], random_in(0, 1));
        if (rotation != kNoRotation) continue;
        const std::string &shape = layout.planes[p];
        const auto copy = shape == "5b6b5b"     ? pivra_cpy_16b
                          : shape == "8b8b8b"   ? pivra_cpy_24b
                          : shape == "8b8b8b8b" ? pivra_cpy_32b
                                                : pivra_cpy_8b;
        copy(src.desc.plane[p], src.desc.width[p] * (shape == "8b8b" ? 2 : 1), src.desc.height[p],
             src.desc.stride[p], same.desc.stride[p], same.desc.plane[p]);
      }
      const int32_t result =
          rotation == kNoRotation ? PIVRA_OK : pivra_rot(&src.desc, rotation, &same.desc);
      dst.desc.width[1] = dst.desc.height[2] = 3;
      const Outcome outcome = resize(src, dst, rotation);
      EXPECT_EQ(outcome.result, result);
      EXPECT_EQ(outcome.calls, 0);
      ASSERT_EQ(dst.now(), same.now()) << layout.format << " rotation " << rotation;
    }
}

TEST(ResizePictures, KnowTheirFormats) {
  for (int32_t format = -1; format <= 600; ++format) {
    const bool yuv = format >= 0 && format < 100 && format != PIVRA_FORMAT_T64X32;
    const bool rgb =
        format >= 100 && std::any_of(kLayouts.begin(), kLayouts.end(),
                                     [&](auto &known) { return known.format == format; });
    const Layout layout = {format, {"8b8b8b8b", "8b8b8b8b", "8b8b8b8b"}};
    Picture src(layout, 9, 7, 0), dst(layout, 7, 5, 0);
    EXPECT_EQ(resize(src, dst).result, yuv || rgb ? PIVRA_OK : PIVRA_UNSUPPORTED) << format;
    for (const int32_t rotation : {-2, 0, 5, 6})
      EXPECT_EQ(resize(src, dst, rotation).result,
                yuv && rotation % 5 == 0 ? PIVRA_OK : PIVRA_UNSUPPORTED);
    ++src.desc.format;
    for (const int32_t rotation : {kNoRotation, 0, 1})
      EXPECT_EQ(resize(src, dst, rotation).result, PIVRA_REFUSED) << format;
  }
}

// And the planes before it.
TEST(ResizePictures, KeepTheirScratchWhenAPlaneIsRefused) {
  for (const Layout &layout : kLayouts)
    for (size_t p = 0; p < layout.planes.size(); ++p)
      for (int which = 0; which < 4; ++which)
        for (const int32_t rotation : {kNoRotation, 0, 2}) {
          Picture src(layout, 9, 7, 0), dst(layout, 20, 24, 0);
          int32_t *const sizes[] = {src.desc.width, src.desc.height, dst.desc.width,
                                    dst.desc.height};
          sizes[which][p] = 0;
          const Outcome outcome = resize(src, dst, layout.format < 100 ? rotation : kNoRotation);
          EXPECT_EQ(outcome.result, PIVRA_REFUSED);
          EXPECT_EQ(outcome.calls, 1);
          EXPECT_EQ(outcome.kept, 1u);
          for (size_t other = 0; other < layout.planes.size(); ++other)
            EXPECT_EQ(dst.now()[other] != dst.before[other], other < p) << layout.format;
          sizes[which][p] = -1;
          EXPECT_EQ(resize(src, dst).result, PIVRA_REFUSED);
        }
}

TEST(ResizePictures, NeedMemoryUnlessBothDirectionsShrink) {
  for (const Layout &layout : kLayouts)
    for (const bool grows : {true, false}) {
      Picture src(layout, 19, 15, 3), dst(layout, grows ? 38 : 8, 6, 1);
      EXPECT_EQ(resize(src, dst, kNoRotation, true).result, grows ? PIVRA_REFUSED : PIVRA_OK);
      if (grows)
        EXPECT_EQ(dst.now(), dst.before);
      else
        expect_planes(layout, "", src, dst, kPlane);
    }
}

// --- By cells ---

TEST(ResizePictures, ShrinkByCellsWhereTheWidthSaysSo) {
  at_every_level([](const std::string &) {
    for (int round = 0; round < 200 && !HasFatalFailure(); ++round) {
      const int32_t w = 2 * random_in(1, 20), h = 2 * random_in(1, 10), ratio = random_in(1, 9);
      Picture src(kNv12, w * ratio + 2 * random_in(0, w / 2 - 1),
                  h * (ratio < 4 ? random_in(2, 3) : random_in(4, 7)), random_in(0, 4)),
          dst(kNv12, w, h, random_in(0, 4));
      const auto call = [&] { return pivra_rsz_8b_down_special(&src.desc, &dst.desc); };
      const bool cells = ratio == 2 || ratio == 3, halves = 4 <= ratio && ratio <= 7;
      ASSERT_EQ(watch(call, true).result, halves ? PIVRA_REFUSED : PIVRA_OK);
      const Outcome outcome = watch(call, false);
      ASSERT_EQ(outcome.result, PIVRA_OK);
      ASSERT_EQ(outcome.kept, 0u);
      expect_planes(kNv12, "", src, dst, [&](ResizeModel &m) {
        if (cells) m.down_2xplus();
        if (halves) m.down_4xplus();
      });
    }
  });
}

// The planes end at inaccessible pages.
TEST(ResizePictures, ShrinkByCellsOnlyWhatIsThere) {
  for (int round = 0; round < 300; ++round) {
    const int32_t w = random_in(1, 20);
    Picture src(kNv12, random_in(w, 9 * w), random_in(1, 40), random_in(0, 4)),
        dst(kNv12, w, random_in(1, 40), 0);
    if (round % 8 == 0) dst.desc.width[random_in(0, 1)] = dst.desc.height[random_in(0, 1)] = 0;
    EXPECT_EQ(pivra_rsz_8b_down_special(&src.desc, &dst.desc), PIVRA_OK);
  }
}

}  // namespace
}  // namespace pivra::test
