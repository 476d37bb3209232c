// The C++ layer: the format table, descriptors and what is refused, and convert()
// at sizes and strides for which the kernels alone are not exact.
#include <gtest/gtest.h>

#include <pivra.hpp>

#include "guarded.h"
#include "yuv_to_rgb_model.h"

namespace pivra::test {
namespace {

// The sentence that a call refuses its arguments with.
template <class Call>
std::string refusal(Call call) {
  try {
    call();
  } catch (const std::invalid_argument &error) {
    return error.what();
  }
  return "accepted";
}

TEST(Formats, AnswerToTheirNamesInAnyCase) {
  for (const FormatInfo &info : formats()) {
    EXPECT_EQ(find_format(info.code), &info);
    for (const std::string_view given : {info.name, info.ffmpeg, info.gstreamer}) {
      if (given.empty()) continue;
      EXPECT_EQ(find_format(given), &info) << given;
      for (const auto change : {::toupper, ::tolower}) {
        std::string name(given);
        std::ranges::transform(name, name.begin(), change);
        EXPECT_EQ(find_format(name), &info) << name;
      }
    }
  }
  for (const char *unknown : {"", "yuv", "rgb565be", "nv12 "})
    EXPECT_EQ(find_format(unknown), nullptr);
  EXPECT_EQ(find_format(10), nullptr);
}

TEST(Layout, RoundsOddSizesUp) {
  constexpr size_t width = 321, height = 241, half_width = 161, half_height = 121;
  constexpr size_t luma = width * height;
  const std::pair<size_t, std::vector<int32_t>> sizes[] = {
      {luma, {PIVRA_FORMAT_YUV400}},
      {luma + 2 * half_width * half_height,
       {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YV12, PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV21}},
      {luma + 2 * half_width * height, {PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_YV16}},
      {luma + 2 * width * half_height, {PIVRA_FORMAT_YUV422W}},
      {4 * half_width * height, {PIVRA_FORMAT_UYVY, PIVRA_FORMAT_YUYV}},
      {2 * luma, {PIVRA_FORMAT_RGB565, PIVRA_FORMAT_BGR565}},
      {3 * luma, {PIVRA_FORMAT_YUV444, PIVRA_FORMAT_RGB888, PIVRA_FORMAT_BGR888}},
      {4 * luma, {PIVRA_FORMAT_RGBA8888, PIVRA_FORMAT_ABGR8888}},
  };
  for (const auto &[size, codes] : sizes)
    for (const int32_t code : codes) EXPECT_EQ(size_in_bytes(code, width, height), size) << code;
}

TEST(Layout, PutsAlignedPlanesOneBehindTheOther) {
  Picture picture(PIVRA_FORMAT_NV12, 321, 241, 64), copy = picture;
  const ImageDesc desc = picture.desc();
  EXPECT_EQ(std::to_array(desc.width), (std::array{321, 161, 0, 0}));  // pixels, then pairs
  EXPECT_EQ(std::to_array(desc.height), (std::array{241, 121, 0, 0}));
  EXPECT_EQ(std::to_array(desc.stride), (std::array{384, 384, 0, 0}));
  EXPECT_EQ(desc.plane[0], picture.bytes().data());
  EXPECT_EQ(desc.plane[1], desc.plane[0] + 384 * 241);
  EXPECT_EQ(picture.bytes().size(), size_t{384} * (241 + 121));
  EXPECT_EQ(copy.desc().plane[0], copy.bytes().data());
  EXPECT_EQ(describe(PIVRA_FORMAT_UYVY, 321, 241, nullptr).width[0], 321);
}

TEST(Layout, RefusesWhatHasNone) {
  const auto expect = [](const char *sentence, auto... arguments) {
    EXPECT_EQ(refusal([&] { size_in_bytes(arguments...); }), sentence);
  };
  expect("unknown format code 77", 77, 8, 8);
  expect("the tiled format t64x32 has no rows to describe", PIVRA_FORMAT_T64X32, 64, 32);
  expect("the size 0x8 is below 1x1", PIVRA_FORMAT_NV12, 0, 8);
  expect("the size 8x-8 is below 1x1", PIVRA_FORMAT_NV12, 8, -8);
  expect("the alignment 0 is below 1", PIVRA_FORMAT_NV12, 8, 8, 0);
  expect("the width 536870912 is too large for rgba8888", PIVRA_FORMAT_RGBA8888, 1 << 29, 1);
  expect("the width 2147483647 is too large for yuv400", PIVRA_FORMAT_YUV400, INT32_MAX, 1, 2);
  expect("the size 2147483647x2147483647 is too large for memory", PIVRA_FORMAT_YUV444, INT32_MAX,
         INT32_MAX);
}

TEST(Check, TakesPaddingAndRefusesTheFirstFault) {
  Picture picture(PIVRA_FORMAT_YUV420, 9, 11);
  const auto expect = [&](const char *sentence, auto spoil) {
    ImageDesc desc = picture.desc();
    spoil(desc);
    EXPECT_EQ(refusal([&] { check(desc); }), sentence);
  };
  expect("accepted", [](auto &d) { d.stride[0] = 13, d.stride[1] = 7, d.width[2] = 6; });
  expect("accepted", [](auto &d) { d.plane[3] = nullptr, d.stride[3] = -1; });
  expect("unknown format code -1", [](auto &d) { d.format = -1; });
  expect("the size -9x11 is below 1x1", [](auto &d) { d.width[0] = -9; });
  expect("the size 9x0 is below 1x1", [](auto &d) { d.height[0] = 0; });
  expect("plane 2 of yuv420 is null", [](auto &d) { d.plane[2] = nullptr; });
  expect("plane 0 of yuv420 has a stride of 8 bytes, but a row takes 9",
         [](auto &d) { d.stride[0] = 8; });
  expect("plane 1 of yuv420 has a stride of -5 bytes, but a row takes 5",
         [](auto &d) { d.stride[1] = -5; });
  expect("plane 1 of yuv420 is 4x6, but 9x11 pixels take 5x6", [](auto &d) { d.width[1] = 4; });
  expect("plane 2 of yuv420 is 5x5, but 9x11 pixels take 5x6", [](auto &d) { d.height[2] = 5; });
}

TEST(Convert, RefusesBeforeItWrites) {
  const auto expect = [](const char *sentence, Picture src, Picture dst) {
    EXPECT_EQ(refusal([&] { convert(src.desc(), dst.desc()); }), sentence);
    EXPECT_EQ(std::ranges::count(dst.bytes(), 0), std::ssize(dst.bytes()));
  };
  expect("the size 7x8 is below 8x8", {PIVRA_FORMAT_NV12, 7, 8}, {PIVRA_FORMAT_RGBA8888, 7, 8});
  expect("the source is 16x8, but the destination is 8x8", {PIVRA_FORMAT_NV12, 16, 8},
         {PIVRA_FORMAT_RGBA8888, 8, 8});
  expect("yuv400 does not convert to bgr565", {PIVRA_FORMAT_YUV400, 8, 8},
         {PIVRA_FORMAT_BGR565, 8, 8});
}

// A picture of random bytes, each plane guarded and with strides of its own.
struct GuardedPicture {
  GuardedPicture(int32_t format, int32_t width, int32_t height)
      : desc(describe(format, width, height, nullptr)) {
    const FormatInfo &info = *find_format(format);
    const bool padded = random_in(0, 1), at_end = random_in(0, 1);
    for (size_t p = 0; p < info.planes.size(); ++p) {
      const auto row = int32_t(info.planes[p].row_bytes(width));
      desc.stride[p] += padded ? random_in(0, 9) : 0;
      content[p].bytes = random_bytes(size_t(desc.stride[p]) * (desc.height[p] - 1) + row);
      desc.plane[p] = memory[p].place(content[p].bytes, at_end);
    }
  }

  ImageDesc desc;
  std::array<GuardedPlane, 3> memory;
  std::array<ModelPlane, 3> content;
};

void follow_the_matrix(const FormatInfo &from, const FormatInfo &to, int32_t width,
                       int32_t height) {
  GuardedPicture src(from.code, width, height), dst(to.code, width, height);
  const ImageDesc before = src.desc;
  convert(src.desc, dst.desc);
  ASSERT_TRUE(std::ranges::equal(src.desc.plane, before.plane));

  ConversionModel model = {};
  model.source = from.code, model.destination = to.code;
  model.in = src.content, model.out = dst.content[0];
  auto stride = std::to_array(src.desc.stride);
  if (from.code == PIVRA_FORMAT_YV12) {
    model.source = PIVRA_FORMAT_YUV420;
    std::swap(model.in[1], model.in[2]);
    std::swap(stride[1], stride[2]);
  }
  for (ptrdiff_t y = 0; y < height; ++y)
    for (int32_t x = 0; x < width; ++x) {
      const ptrdiff_t chroma = model.halves_height() ? y / 2 : y;
      model.put(y * dst.desc.stride[0] + x * model.pixel_bytes(),
                model.fetch(x, y * stride[0], chroma * stride[1], chroma * stride[2]));
    }
  ASSERT_EQ(dst.memory[0].content(), model.out.bytes)
      << from.name << " to " << to.name << ", " << width << "x" << height << ", strides "
      << testing::PrintToString(stride) << " to " << dst.desc.stride[0];
}

TEST(Convert, FollowsTheMatrixAtEverySize) {
  ptrdiff_t pairs = 0;
  for (const FormatInfo &from : formats())
    for (const FormatInfo &to : formats()) {
      if (!converts(from.code, to.code)) continue;
      ++pairs;
      for (const int32_t width : {8, 9, 10, 11, 13, 15, 16, 17, 34, 36, 67, 141})
        for (const int32_t height : {8, 9, 10, 15})
          ASSERT_NO_FATAL_FAILURE(follow_the_matrix(from, to, width, height));
    }
  EXPECT_EQ(pairs, std::ssize(detail::kPairs));
}

}  // namespace
}  // namespace pivra::test
