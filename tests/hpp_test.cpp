// The C++ layer: the format table, descriptors and what is refused, and convert()
// at sizes and strides for which the kernels alone are not exact.
#include <gtest/gtest.h>

#include <pivra.hpp>
#include <set>

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

std::string in_case(std::string_view name, int (*change)(int)) {
  std::string changed(name);
  std::ranges::transform(changed, changed.begin(), change);
  return changed;
}

TEST(Formats, AnswerToTheirNamesInAnyCase) {
  std::set<int32_t> codes;
  for (const FormatInfo &info : formats()) {
    codes.insert(info.code);
    EXPECT_EQ(find_format(info.code), &info);
    for (const std::string_view name : {info.name, info.ffmpeg, info.gstreamer}) {
      if (name.empty()) continue;
      EXPECT_EQ(find_format(name), &info) << name;
      EXPECT_EQ(find_format(in_case(name, std::toupper)), &info) << name;
      EXPECT_EQ(find_format(in_case(name, std::tolower)), &info) << name;
    }
  }
  EXPECT_EQ(codes.size(), formats().size());
  for (const char *unknown : {"", "yuv", "rgb565be", "nv12 "})
    EXPECT_EQ(find_format(unknown), nullptr);
  EXPECT_EQ(find_format(10), nullptr);
}

TEST(Formats, ConvertWhereTheLibraryDoes) {
  uint8_t samples[3 * 8 * 8] = {}, pixels[4 * 8 * 8];
  for (const FormatInfo &from : formats()) {
    for (const FormatInfo &to : formats()) {
      ImageDesc src = {}, dst = {};
      src.format = from.code, dst.format = to.code;
      src.width[0] = src.height[0] = dst.width[0] = dst.height[0] = 8;
      for (int p = 0; p < 3; ++p) src.plane[p] = samples, dst.plane[p] = pixels;
      EXPECT_EQ(converts(from.code, to.code), pivra_csc(&src, &dst) == PIVRA_OK)
          << from.name << " to " << to.name;
    }
  }
}

TEST(Layout, RoundsOddSizesUp) {
  constexpr int32_t width = 321, height = 241, half_width = 161, half_height = 121;
  constexpr int32_t luma = width * height;
  const std::pair<int32_t, int32_t> sizes[] = {
      {PIVRA_FORMAT_YUV400, luma},
      {PIVRA_FORMAT_YUV420, luma + 2 * half_width * half_height},
      {PIVRA_FORMAT_YV12, luma + 2 * half_width * half_height},
      {PIVRA_FORMAT_NV12, luma + 2 * half_width * half_height},
      {PIVRA_FORMAT_NV21, luma + 2 * half_width * half_height},
      {PIVRA_FORMAT_YUV422N, luma + 2 * half_width * height},
      {PIVRA_FORMAT_YV16, luma + 2 * half_width * height},
      {PIVRA_FORMAT_YUV422W, luma + 2 * width * half_height},
      {PIVRA_FORMAT_YUV444, 3 * luma},
      {PIVRA_FORMAT_UYVY, 4 * half_width * height},
      {PIVRA_FORMAT_YUYV, 4 * half_width * height},
      {PIVRA_FORMAT_RGB565, 2 * luma},
      {PIVRA_FORMAT_BGR888, 3 * luma},
      {PIVRA_FORMAT_ARGB8888, 4 * luma},
  };
  for (const auto &[format, size] : sizes)
    EXPECT_EQ(size_in_bytes(format, width, height), size_t(size)) << format;
}

TEST(Layout, PutsAlignedPlanesOneBehindTheOther) {
  Picture picture(PIVRA_FORMAT_NV12, 321, 241, 64);
  const ImageDesc desc = picture.desc();
  EXPECT_EQ(desc.width[0], 321);
  EXPECT_EQ(desc.height[0], 241);
  EXPECT_EQ(desc.stride[0], 384);
  EXPECT_EQ(desc.width[1], 161);  // pairs
  EXPECT_EQ(desc.height[1], 121);
  EXPECT_EQ(desc.stride[1], 384);
  EXPECT_EQ(desc.plane[0], picture.bytes().data());
  EXPECT_EQ(desc.plane[1], desc.plane[0] + 384 * 241);
  EXPECT_EQ(picture.bytes().size(), size_t{384} * (241 + 121));
  EXPECT_EQ(describe(PIVRA_FORMAT_UYVY, 321, 241, nullptr).width[0], 321);  // pixels
  Picture copy = picture;
  EXPECT_EQ(copy.desc().plane[0], copy.bytes().data());
}

TEST(Layout, RefusesWhatHasNone) {
  const auto sentence = [](int32_t format, int32_t width, int32_t height, int32_t alignment = 1) {
    return refusal([&] { size_in_bytes(format, width, height, alignment); });
  };
  EXPECT_EQ(sentence(77, 8, 8), "unknown format code 77");
  EXPECT_EQ(sentence(PIVRA_FORMAT_T64X32, 64, 32),
            "the tiled format t64x32 has no rows to describe");
  EXPECT_EQ(sentence(PIVRA_FORMAT_NV12, 0, 8), "the size 0x8 is below 1x1");
  EXPECT_EQ(sentence(PIVRA_FORMAT_NV12, 8, -8), "the size 8x-8 is below 1x1");
  EXPECT_EQ(sentence(PIVRA_FORMAT_NV12, 8, 8, 0), "the alignment 0 is below 1");
  EXPECT_EQ(sentence(PIVRA_FORMAT_RGBA8888, 1 << 29, 1),
            "the width 536870912 is too large for rgba8888");
  EXPECT_EQ(sentence(PIVRA_FORMAT_YUV400, INT32_MAX, 1, 2),
            "the width 2147483647 is too large for yuv400");
  EXPECT_EQ(sentence(PIVRA_FORMAT_YUV444, INT32_MAX, INT32_MAX),
            "the size 2147483647x2147483647 is too large for memory");
}

TEST(Check, TakesPaddingAndRefusesTheFirstFault) {
  Picture picture(PIVRA_FORMAT_YUV420, 9, 11);
  const ImageDesc good = picture.desc();
  const auto sentence = [&](auto spoil) {
    ImageDesc desc = good;
    spoil(desc);
    return refusal([&] { check(desc); });
  };
  EXPECT_EQ(sentence([](ImageDesc &d) { d.stride[0] = 13, d.stride[1] = 7, d.width[2] = 6; }),
            "accepted");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.plane[3] = nullptr, d.stride[3] = -1; }), "accepted");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.format = -1; }), "unknown format code -1");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.width[0] = -9; }), "the size -9x11 is below 1x1");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.height[0] = 0; }), "the size 9x0 is below 1x1");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.plane[2] = nullptr; }), "plane 2 of yuv420 is null");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.stride[0] = 8; }),
            "plane 0 of yuv420 has a stride of 8 bytes, but a row takes 9");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.stride[1] = -5; }),
            "plane 1 of yuv420 has a stride of -5 bytes, but a row takes 5");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.width[1] = 4; }),
            "plane 1 of yuv420 is 4x6, but 9x11 pixels take 5x6");
  EXPECT_EQ(sentence([](ImageDesc &d) { d.height[2] = 5; }),
            "plane 2 of yuv420 is 5x5, but 9x11 pixels take 5x6");
}

TEST(Convert, RefusesBeforeItWrites) {
  const auto sentence = [](int32_t from, int32_t width, int32_t height, int32_t to,
                           int32_t to_width) {
    Picture src(from, width, height), dst(to, to_width, height);
    std::string said = refusal([&] { convert(src.desc(), dst.desc()); });
    EXPECT_EQ(std::ranges::count(dst.bytes(), 0), std::ssize(dst.bytes()));
    return said;
  };
  EXPECT_EQ(sentence(PIVRA_FORMAT_NV12, 7, 8, PIVRA_FORMAT_RGBA8888, 7),
            "the size 7x8 is below 8x8");
  EXPECT_EQ(sentence(PIVRA_FORMAT_NV12, 16, 8, PIVRA_FORMAT_RGBA8888, 8),
            "the source is 16x8, but the destination is 8x8");
  EXPECT_EQ(sentence(PIVRA_FORMAT_YUV400, 8, 8, PIVRA_FORMAT_BGR565, 8),
            "yuv400 does not convert to bgr565");
  EXPECT_EQ(sentence(PIVRA_FORMAT_NV12, 8, 8, PIVRA_FORMAT_NV12, 8),
            "nv12 does not convert to nv12");
  EXPECT_EQ(sentence(PIVRA_FORMAT_YV16, 8, 8, PIVRA_FORMAT_RGB888, 8),
            "yv16 does not convert to rgb888");
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
  GuardedPlane memory[3];
  ModelPlane content[3];
};

TEST(Convert, FollowsTheMatrixAtEverySize) {
  for (const FormatInfo &from : formats()) {
    for (const FormatInfo &to : formats()) {
      if (!converts(from.code, to.code)) continue;
      for (const int32_t width : {8, 9, 10, 11, 13, 15, 16, 17, 34, 36, 67, 141})
        for (const int32_t height : {8, 9, 10, 15}) {
          GuardedPicture src(from.code, width, height), dst(to.code, width, height);
          const ImageDesc before = src.desc;
          convert(src.desc, dst.desc);

          const bool v_first = from.code == PIVRA_FORMAT_YV12;
          const int32_t *stride = src.desc.stride;
          ConversionModel model = {};
          model.source = v_first ? PIVRA_FORMAT_YUV420 : from.code;
          model.destination = to.code;
          model.in = {src.content[0], src.content[v_first ? 2 : 1], src.content[v_first ? 1 : 2]};
          model.out = dst.content[0];
          for (ptrdiff_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) {
              const ptrdiff_t chroma = model.halves_height() ? y / 2 : y;
              model.put(y * dst.desc.stride[0] + x * model.pixel_bytes(),
                        model.fetch(x, y * stride[0], chroma * stride[v_first ? 2 : 1],
                                    chroma * stride[v_first ? 1 : 2]));
            }
          ASSERT_EQ(dst.memory[0].content(), model.out.bytes)
              << from.name << " to " << to.name << ", " << width << "x" << height << ", strides "
              << stride[0] << " " << stride[1] << " " << stride[2] << " to " << dst.desc.stride[0];
          ASSERT_TRUE(std::ranges::equal(src.desc.plane, before.plane));
          ASSERT_TRUE(std::ranges::equal(src.desc.stride, before.stride));
        }
    }
  }
}

}  // namespace
}  // namespace pivra::test
