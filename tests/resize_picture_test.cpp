// Pictures: which planes are resized and by what, what is copied, what is refused, and
// the memory that a call asks for.
#include "compare.h"
#include "heap.h"
#include "resize_model.h"

namespace pivra::test {
namespace {

// --- Pictures ---

const std::vector<int32_t> kFormats = [] {
  std::vector<int32_t> all = {1, 2, 3, 4, 5, 8, 9, 10, 12, 13, 14, 99};
  all.insert(all.end(),
             {PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV21, PIVRA_FORMAT_YUV400, PIVRA_FORMAT_RGB565,
              PIVRA_FORMAT_BGR565, PIVRA_FORMAT_RGB888, PIVRA_FORMAT_BGR888});
  for (int32_t format = PIVRA_FORMAT_RGBA8888; format <= PIVRA_FORMAT_ABGR8888; ++format)
    all.push_back(format);
  return all;
}();

using Picture = NoisyPicture;

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
void expect_planes(const std::string &turn, const Picture &src, const Picture &dst, Model model) {
  const ImageDesc &s = src.desc, &d = dst.desc;
  const std::string shapes[] = {"", "8b", s.format < 100 ? "8b8b" : "5b6b5b", "8b8b8b", "8b8b8b8b"};
  const bool mode1 = d.resize_mode == PIVRA_RSZ_MODE1;
  for (size_t p = 0; p < src.before.size(); ++p) {
    const std::string &shape = shapes[sample_bytes(s.format)[p]];
    ResizeModel m = {shape,      turn,        mode1,       s.width[p], s.height[p],
                     d.width[p], d.height[p], s.stride[p], d.stride[p]};
    m.in.bytes = src.before[p];
    m.out.bytes = dst.before[p];
    std::invoke(model, m);
    ASSERT_EQ(dst.now()[p], m.out.bytes)
        << s.format << " plane " << p << " " << turn << " " << sizes(m.sw, m.sh, m.dw, m.dh);
  }
}

TEST(ResizePictures, ResizeAndTurnEveryPlane) {
  rounds_at_every_level(30, [](int round) {
    for (const int32_t format : kFormats) {
      Picture src(format, random_in(1, 80), random_in(1, 60), random_in(0, 5)),
          dst(format, random_in(1, 80), random_in(1, 60), random_in(0, 5));
      const int32_t rotation = format < 100 ? random_in(kNoRotation, 7) : kNoRotation;
      const int32_t w = is_quarter(rotation) ? dst.desc.height[0] : dst.desc.width[0];
      if (src.desc.width[0] == w) continue;  // perhaps of the same size
      dst.desc.resize_mode = std::array{0u, 1u, PIVRA_RSZ_MODE1}[round % 3];
      const Outcome outcome = resize(src, dst, rotation);
      ASSERT_EQ(outcome.result, PIVRA_OK);
      ASSERT_EQ(outcome.calls, 1);
      ASSERT_EQ(outcome.kept, 0u);
      const bool straight = rotation == PIVRA_ROT_COPY || rotation > PIVRA_ROT_180,
                 by_stride = format >= 100 || (straight && src.before.size() != 2);
      ASSERT_GE(outcome.bytes, size_t(by_stride ? dst.desc.stride[0] : w) * src.desc.height[0]);
      const std::string turns[] = {"", "", "90l", "90r", "180"};
      expect_planes(rotation > PIVRA_ROT_180 ? "" : turns[rotation + 1], src, dst,
                    &ResizeModel::plane);
    }
  });
}

// Of plane 0 alone the size counts. The copy kernels may go past the planes.
TEST(ResizePictures, CopyOrTurnWhatKeepsItsSize) {
  constexpr pivra_cpy_kernel *kCopies[] = {pivra_cpy_8b, pivra_cpy_16b, pivra_cpy_24b,
                                           pivra_cpy_32b};
  for (const int32_t format : kFormats)
    for (int32_t rotation = kNoRotation; rotation <= PIVRA_ROT_CODES; ++rotation) {
      const int32_t w = random_in(9, 40), h = random_in(9, 30), padding = random_in(0, 3),
                    dw = is_quarter(rotation) ? h : w, dh = is_quarter(rotation) ? w : h;
      Picture src(format, w, h, padding, 999), dst(format, dw, dh, padding, 999),
          same(format, dw, dh, padding, 999);
      same.become(dst);
      const ImageDesc &s = src.desc;
      for (size_t p = 0; p < src.before.size() && rotation == kNoRotation; ++p) {
        const int32_t bytes = sample_bytes(format)[p];
        const int32_t unit = format < 100 ? 1 : bytes;
        kCopies[unit - 1](s.plane[p], s.width[p] * bytes / unit, s.height[p], s.stride[p],
                          same.desc.stride[p], same.desc.plane[p]);
      }
      const int32_t result =
          rotation == kNoRotation ? PIVRA_OK : pivra_rot(&s, rotation, &same.desc);
      dst.desc.width[1] = dst.desc.height[2] = 3;
      const Outcome outcome = resize(src, dst, rotation);
      EXPECT_EQ(outcome.result, result);
      EXPECT_EQ(outcome.calls, 0);
      ASSERT_EQ(dst.now(), same.now()) << format << " rotation " << rotation;
    }
}

TEST(ResizePictures, KnowTheirFormats) {
  for (int32_t format = -1; format <= 600; ++format) {
    const bool yuv = format >= 0 && format < 100 && format != PIVRA_FORMAT_T64X32;
    const bool rgb = format >= 100 && std::ranges::count(kFormats, format) != 0;
    // With room for samples of four bytes.
    Picture src(PIVRA_FORMAT_YUV420, 9, 7, 27, 27), dst(PIVRA_FORMAT_YUV420, 7, 5, 27, 27);
    src.desc.format = dst.desc.format = format;
    EXPECT_EQ(resize(src, dst).result, yuv || rgb ? PIVRA_OK : PIVRA_UNSUPPORTED) << format;
    for (const int32_t rotation : {-2, 0, 5, 6})
      EXPECT_EQ(resize(src, dst, rotation).result, yuv ? PIVRA_OK : PIVRA_UNSUPPORTED);
    ++src.desc.format;
    for (const int32_t rotation : {kNoRotation, 0, 1})
      EXPECT_EQ(resize(src, dst, rotation).result, PIVRA_REFUSED) << format;
  }
}

// And the planes before it.
TEST(ResizePictures, KeepTheirScratchWhenAPlaneIsRefused) {
  for (const int32_t format : kFormats)
    for (size_t p = 0; p < sample_bytes(format).size(); ++p)
      for (int which = 0; which < 4; ++which)
        for (int32_t rotation = kNoRotation; rotation < (format < 100 ? 4 : 0); ++rotation) {
          Picture src(format, 9, 7), dst(format, 20, 24);
          std::array{src.desc.width, src.desc.height, dst.desc.width, dst.desc.height}[which][p] =
              random_in(0, 1) ? 0 : -random_in(1, 9);
          const Outcome outcome = resize(src, dst, rotation);
          EXPECT_EQ(outcome.result, PIVRA_REFUSED);
          EXPECT_EQ(outcome.calls, 1);
          EXPECT_EQ(outcome.kept, 1u);
          for (size_t other = 0; other < dst.before.size(); ++other)
            EXPECT_EQ(dst.now()[other] != dst.before[other], other < p) << format;
        }
}

TEST(ResizePictures, NeedMemoryUnlessBothDirectionsShrink) {
  for (const int32_t format : kFormats) {
    Picture src(format, 19, 15, 3), larger(format, 38, 6, 1), smaller(format, 8, 6, 1);
    EXPECT_EQ(resize(src, larger, kNoRotation, true).result, PIVRA_REFUSED);
    EXPECT_EQ(larger.now(), larger.before);
    EXPECT_EQ(resize(src, smaller, kNoRotation, true).result, PIVRA_OK);
    expect_planes("", src, smaller, &ResizeModel::plane);
  }
}

// --- By cells ---

TEST(ResizePictures, ShrinkByCellsWhereTheWidthSaysSo) {
  rounds_at_every_level(200, [](int) {
    const int32_t w = 2 * random_in(1, 20), h = 2 * random_in(1, 10), ratio = random_in(1, 9);
    Picture src(PIVRA_FORMAT_NV12, w * ratio + 2 * random_in(0, w / 2 - 1),
                h * (ratio < 4 ? random_in(2, 3) : random_in(4, 7)), random_in(0, 4)),
        dst(PIVRA_FORMAT_NV12, w, h, random_in(0, 4));
    const auto call = [&] { return pivra_rsz_8b_down_special(&src.desc, &dst.desc); };
    const bool cells = ratio == 2 || ratio == 3, halves = 4 <= ratio && ratio <= 7;
    ASSERT_EQ(watch(call, true).result, halves ? PIVRA_REFUSED : PIVRA_OK);
    const Outcome outcome = watch(call, false);
    ASSERT_EQ(outcome.result, PIVRA_OK);
    ASSERT_EQ(outcome.kept, 0u);
    expect_planes("", src, dst, [&](ResizeModel &m) {
      if (cells) m.down_2xplus();
      if (halves) m.down_4xplus();
    });
  });
}

// The planes end at inaccessible pages.
TEST(ResizePictures, ShrinkByCellsOnlyWhatIsThere) {
  for (int round = 0; round < 300; ++round) {
    const int32_t w = random_in(1, 20);
    Picture src(PIVRA_FORMAT_NV12, random_in(w, 9 * w), random_in(1, 40), random_in(0, 4)),
        dst(PIVRA_FORMAT_NV12, w, random_in(1, 40), 0);
    if (round % 8 == 0) dst.desc.width[random_in(0, 1)] = dst.desc.height[random_in(0, 1)] = 0;
    EXPECT_EQ(pivra_rsz_8b_down_special(&src.desc, &dst.desc), PIVRA_OK);
  }
  Picture src(PIVRA_FORMAT_NV12, 8, 8), dst(PIVRA_FORMAT_NV12, 4, 4);
  src.desc.width[0] = INT32_MIN;
  dst.desc.width[0] = -1;  // the quotient has 33 bits
  EXPECT_EQ(pivra_rsz_8b_down_special(&src.desc, &dst.desc), PIVRA_OK);
  EXPECT_EQ(dst.now(), dst.before);
}

}  // namespace
}  // namespace pivra::test
