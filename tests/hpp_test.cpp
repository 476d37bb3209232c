// The C++ layer: the format table, descriptors and what is refused, and convert()
// at sizes and strides for which the kernels alone are not exact.
#include <map>
#include <pivra.hpp>

#include "compare.h"
#include "tile_model.h"

namespace pivra::test {
namespace {

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
      {384 * (8 * 32) + 384 * (4 * 32), {PIVRA_FORMAT_T64X32}},
      {336 * 256 + 336 * 128, {PIVRA_FORMAT_T16X16, PIVRA_FORMAT_T8X8}},
      {32768 * (16 + 8), {PIVRA_FORMAT_T256X16}},
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
  expect("the size 64x32767 is too large for t64x32", PIVRA_FORMAT_T64X32, 64, 32767);
  expect("the size 2049x8 is too large for t256x16", PIVRA_FORMAT_T256X16, 2049, 8);
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
struct AnyPicture : GuardedPicture {
  AnyPicture(const FormatInfo &format, int32_t width, int32_t height) : info(format) {
    desc = describe(info.code, width, height, nullptr);
    const bool padded = random_in(0, 1), at_end = random_in(0, 1);
    for (size_t p = 0; p < info.planes.size(); ++p) {
      const PlaneShape &shape = info.planes[p];
      desc.width[p] += p > 0 && padded, desc.height[p] += p > 0 && padded;  // more than needed
      const auto row = static_cast<int32_t>(shape.row_bytes(width));
      desc.stride[p] += padded && info.linear() ? random_in(0, 9) : 0;
      const size_t pitch = info.linear() ? desc.stride[p] : row;
      before.push_back(random_bytes(pitch * (shape.block_count(height) - 1) + row));
      desc.plane[p] = memory[p].place(before[p], at_end);
    }
  }

  // Where the sample of a pixel lies: channel 0 is Y, or all of RGB; 1 is U, 2 is V.
  uint8_t &at(int32_t channel, int32_t x, int32_t y) const {
    // How often chroma is halved across and down, and whether V comes before U.
    static const std::map<int32_t, std::array<int32_t, 3>> kChroma = {
        {PIVRA_FORMAT_YUV420, {1, 1, 0}},  {PIVRA_FORMAT_YV12, {1, 1, 1}},
        {PIVRA_FORMAT_YUV422N, {1, 0, 0}}, {PIVRA_FORMAT_YV16, {1, 0, 1}},
        {PIVRA_FORMAT_YUV422W, {0, 1, 0}}, {PIVRA_FORMAT_YUV444, {0, 0, 0}},
        {PIVRA_FORMAT_NV12, {1, 1, 0}},    {PIVRA_FORMAT_NV21, {1, 1, 1}}};
    const auto linear = [&](int plane, int32_t column, int32_t row) -> uint8_t & {
      return desc.plane[plane][ptrdiff_t{row} * desc.stride[plane] + column];
    };
    const int32_t second = channel == 2, across = (desc.width[0] + 15) / 16;
    const int32_t width = (desc.width[0] + 1) / 2 * 2, height = (desc.height[0] + 1) / 2 * 2;
    const int32_t pair = channel ? x / 2 * 2 + second : x, row = channel ? y / 2 : y;
    const int plane = channel != 0;
    switch (info.code) {
      case PIVRA_FORMAT_UYVY:
        return linear(0, x / 2 * 4 + (channel ? 2 * second : x % 2 * 2 + 1), y);
      case PIVRA_FORMAT_YUYV:
        return linear(0, x / 2 * 4 + (channel ? 2 * second + 1 : x % 2 * 2), y);
      case PIVRA_FORMAT_T64X32:
        return desc.plane[plane][address_64x32(width, height >> plane, pair, row)];
      case PIVRA_FORMAT_T16X16:
        return desc.plane[plane][Raster{16, 16 >> plane, 256 >> plane}.address(across, pair, row)];
      case PIVRA_FORMAT_T8X8:  // two strips a macroblock
        return desc.plane[0][plane * 256 * across * ((height + 15) / 16) +
                             Raster{8, 16 >> plane, 128 >> plane}.address(2 * across, pair, row)];
      case PIVRA_FORMAT_T256X16:
        return desc.plane[plane][Raster{256, 16, 4096}.address(8, pair, row)];
    }
    if (channel == 0) return linear(0, x * info.planes[0].bytes, y);
    const auto [halved_x, halved_y, swapped] = kChroma.at(info.code);
    if (info.planes.size() == 2) return linear(1, pair ^ swapped, y >> halved_y);
    return linear(swapped ? 3 - channel : channel, x >> halved_x, y >> halved_y);
  }

  const FormatInfo &info;
};

// Pixels of more than 16 bits have their bytes in the order of the format's name, and words
// their fields from the top.
Colour in_order(std::string_view name, const Colour &c) {
  return name[0] == 'r' ? c : Colour{c[2], c[1], c[0]};
}

Colour read_rgb(const AnyPicture &picture, int32_t x, int32_t y) {
  const uint8_t *bytes = &picture.at(0, x, y);
  const std::string_view name = picture.info.name;
  if (picture.info.planes[0].bytes > 2)
    return {bytes[name.find('r')], bytes[name.find('g')], bytes[name.find('b')]};
  const int32_t word = bytes[0] | bytes[1] << 8;
  return in_order(name, {word >> 11 << 3, (word >> 5 & 63) << 2, (word & 31) << 3});
}

void write_rgb(const AnyPicture &picture, int32_t x, int32_t y, const Colour &c) {
  uint8_t *bytes = &picture.at(0, x, y);
  const std::string_view name = picture.info.name;
  const auto [top, middle, bottom] = in_order(name, c);
  const int32_t count = picture.info.planes[0].bytes,
                word = top >> 3 << 11 | middle >> 2 << 5 | bottom >> 3;
  for (int i = 0; i < count; ++i)
    bytes[i] = uint8_t(count == 2       ? word >> 8 * i
                       : name[i] == 'a' ? 255
                                        : c[std::string_view("rgb").find(name[i])]);
}

Colour rgb_of(const AnyPicture &picture, int32_t x, int32_t y) {
  if (picture.info.rgb()) return read_rgb(picture, x, y);
  const int32_t luma = picture.at(0, x, y);
  if (picture.info.code == PIVRA_FORMAT_YUV400) return {luma, luma, luma};
  const int32_t u = picture.at(1, x, y), v = picture.at(2, x, y);
  if (picture.info.code != PIVRA_FORMAT_T8X8) return model_matrix(luma, u, v);
  Colour c = {298 * luma + 408 * v - 57059, 298 * luma - 100 * u - 208 * v + 34713,
              298 * luma + 516 * u - 70887};
  for (int32_t &sum : c) sum = std::clamp(sum >> 8, 0, 255);
  return {c[0] & 0xF8, c[1] & 0xFC, c[2] & 0xF8};
}

Colour yuv_of(const AnyPicture &picture, int32_t x, int32_t y) {
  if (!picture.info.rgb()) return {picture.at(0, x, y), picture.at(1, x, y), picture.at(2, x, y)};
  const auto [r, g, b] = read_rgb(picture, x, y);
  return {16 + ((66 * r + 129 * g + 25 * b) >> 8), 128 + ((-38 * r - 74 * g + 112 * b + 128) >> 8),
          128 + ((112 * r - 94 * g - 18 * b + 128) >> 8)};
}

void follow_the_model(const FormatInfo &from, const FormatInfo &to, int32_t width, int32_t height) {
  AnyPicture src(from, width, height), dst(to, width, height);
  const ImageDesc given = src.desc;
  convert(src.desc, dst.desc);
  ASSERT_TRUE(std::ranges::equal(src.desc.plane, given.plane));
  const auto result = dst.now();
  for (size_t p = 0; p < to.planes.size(); ++p) std::ranges::copy(dst.before[p], dst.desc.plane[p]);
  // From the end, so that of the pixels that share chroma the first one is the last.
  for (int32_t y = height; y-- > 0;)
    for (int32_t x = width; x-- > 0;) {
      if (to.rgb()) {
        write_rgb(dst, x, y, rgb_of(src, x, y));
        continue;
      }
      const Colour yuv = yuv_of(src, x, y);
      for (int c = 0; c < 3; ++c) dst.at(c, x, y) = static_cast<uint8_t>(yuv[c]);
    }
  // Pixels that tiles have beyond an odd size are zero.
  for (int32_t y = 0; !to.linear() && y < (height + 1) / 2 * 2; ++y)
    for (int32_t x = y < height ? width : 0; x < (width + 1) / 2 * 2; ++x) dst.at(0, x, y) = 0;
  ASSERT_EQ(dst.now(), result) << from.name << " to " << to.name << ", " << width << "x" << height
                               << ", strides " << testing::PrintToString(src.desc.stride) << " to "
                               << testing::PrintToString(dst.desc.stride);
}

TEST(Convert, GivesEveryPixelAtEverySize) {
  std::vector<std::pair<int32_t, int32_t>> sizes = {{64, 32}, {192, 64}, {36, 16},
                                                    {52, 48}, {129, 65}, {257, 33}};
  for (const int32_t width : {8, 9, 10, 11, 13, 15, 16, 17, 34, 36, 67, 141})
    for (const int32_t height : {8, 9, 10, 15}) sizes.emplace_back(width, height);
  for (int i = 0; i < 20; ++i) sizes.emplace_back(random_in(8, 320), random_in(8, 140));
  ptrdiff_t pairs = 0;
  for (const FormatInfo &from : formats())
    for (const FormatInfo &to : formats()) {
      if (!converts(from.code, to.code)) continue;
      ++pairs;
      for (const auto &[width, height] : sizes)
        ASSERT_NO_FATAL_FAILURE(follow_the_model(from, to, width, height));
    }
  EXPECT_EQ(pairs, std::ssize(detail::kPairs));
  for (const int32_t width : {1281, 1282, 1284, 1366, 1600, 1680, 1918, 1920, 2047, 2048})
    follow_the_model(*find_format("t256x16"), *find_format("rgba8888"), width, 37);
}

}  // namespace
}  // namespace pivra::test
