// The C++ layer's operations: strides of their own, what is refused, and that nothing is
// written then.
#include <pivra.hpp>

#include "compare.h"

namespace pivra::test {
namespace {

Picture noisy(int32_t format, int32_t width, int32_t height, int32_t alignment = 1) {
  Picture picture(format, width, height, alignment);
  std::ranges::copy(noise(picture.bytes().size()), picture.bytes().begin());
  return picture;
}

bool equal(Picture &a, Picture &b) { return std::ranges::equal(a.bytes(), b.bytes()); }

// Turns, and back.
constexpr std::pair<Turn, Turn> kTurns[] = {{Turn::kLeft90, Turn::kRight90},
                                            {Turn::kRight90, Turn::kLeft90},
                                            {Turn::k180, Turn::k180},
                                            {Turn::kHorizontalMirror, Turn::kHorizontalMirror},
                                            {Turn::kVerticalMirror, Turn::kVerticalMirror}};

// At odd sizes, by way of strides that kernels of 16-bit units do not take.
TEST(Operations, TurnThereAndBack) {
  for (const FormatInfo &info : formats())
    for (const auto &[turn, inverse] : kTurns) {
      const FormatInfo *turned = turned_format(info.code, turn);
      if (turned == nullptr) continue;
      const bool quarter = is_quarter(turn);
      const int32_t width = random_in(1, 70), height = random_in(1, 70);
      Picture upright = noisy(info.code, width, height), back(info.code, width, height);
      Picture lying(turned->code, quarter ? height : width, quarter ? width : height, 7);
      rotate(upright.desc(), turn, lying.desc());
      rotate(lying.desc(), inverse, back.desc());
      EXPECT_TRUE(equal(upright, back)) << info.name << " " << width << "x" << height;
    }
}

// A padded source, and another padding of what is made, change nothing; and to the same
// size nothing changes. operation(source, destination)
template <class Operation>
void expect_any_stride(const Picture &src, int32_t alignment, const Picture &dst,
                       Operation operation) {
  Picture tight = src, padded(src.format(), src.width(), src.height(), alignment), same = tight;
  if (resizes(src.format())) {
    resize(tight.desc(), padded.desc());
    resize(padded.desc(), same.desc());
    EXPECT_TRUE(equal(tight, same));
  } else {  // tiles, which have no padding
    padded = tight;
  }
  Picture a = dst, b(dst.format(), dst.width(), dst.height(), 7), c = dst;
  operation(tight, a);
  operation(padded, b);
  resize(b.desc(), c.desc());
  EXPECT_TRUE(equal(a, c)) << src.format() << " to " << dst.format() << ", "
                           << sizes(src.width(), src.height(), dst.width(), dst.height());
}

TEST(Operations, ResizeWithAnyStride) {
  for (const FormatInfo &info : formats())
    for (const Growth growth : {Growth::kRepeat, Growth::kRamp}) {
      if (!resizes(info.code)) continue;
      const Picture dst(info.code, random_in(1, 90), random_in(1, 90));
      expect_any_stride(noisy(info.code, random_in(1, 90), random_in(1, 90)), 7, dst,
                        [=](Picture &a, Picture &b) { resize(a.desc(), b.desc(), growth); });
    }
}

TEST(Operations, ConvertWithAnyStride) {
  for (const auto &[from, to] : detail::kResizedAndConverted)
    for (const auto &[width, height] : {std::pair(20, 14), std::pair(90, 66), std::pair(30, 80)})
      expect_any_stride(noisy(from, 64, 48), 32, Picture(to, width, height),
                        [](Picture &a, Picture &b) { resize_and_convert(a.desc(), b.desc()); });
  for (const auto &[from, to] : detail::kDithered)
    expect_any_stride(noisy(from, 34, 26), 32, Picture(to, 34, 26),
                      [](Picture &a, Picture &b) { dither(a.desc(), b.desc()); });
}

TEST(Operations, FilterWithAnyStride) {
  for (const int32_t format : {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV444}) {
    const Picture src = noisy(format, 67, 45), dst(format, 67, 45);
    expect_any_stride(src, 32, dst, [](Picture &a, Picture &b) {
      resize(a.desc(), b.desc());
      deblock(b.desc(), 9);
      saturate(b.desc(), 1.3);
    });
    expect_any_stride(src, 32, dst,
                      [](Picture &a, Picture &b) { enhance_detail(a.desc(), b.desc()); });
  }
}

TEST(Operations, RefuseBeforeTheyWrite) {
  Picture yuv = noisy(PIVRA_FORMAT_YUV420, 32, 24), nv12 = noisy(PIVRA_FORMAT_NV12, 32, 24),
          rgb = noisy(PIVRA_FORMAT_RGB888, 32, 24), words(PIVRA_FORMAT_RGB565, 32, 24),
          packed = noisy(PIVRA_FORMAT_YUYV, 32, 24), odd = noisy(PIVRA_FORMAT_YUV420, 31, 24);
  Picture out(PIVRA_FORMAT_YUV420, 32, 24), other(PIVRA_FORMAT_YUV420, 24, 30),
      rgb_half(PIVRA_FORMAT_RGB888, 15, 24);
  const std::pair<const char *, std::function<void()>> calls[] = {
      {"not 24x32", [&] { rotate(yuv.desc(), Turn::kLeft90, out.desc()); }},
      {"cannot be turned", [&] { rotate(packed.desc(), Turn::k180, out.desc()); }},
      {"not rgb888", [&] { rotate(rgb.desc(), Turn::k180, out.desc()); }},
      {"not nv12", [&] { resize(nv12.desc(), out.desc()); }},
      {"cannot be resized", [&] { resize(packed.desc(), out.desc()); }},
      {"but not both", [&] { resize(yuv.desc(), Turn::kVerticalMirror, other.desc()); }},
      {"is odd", [&] { dither(odd.desc(), Picture(PIVRA_FORMAT_RGB565, 31, 24).desc()); }},
      {"is not dithered to", [&] { dither(nv12.desc(), words.desc()); }},
      {"is not planar", [&] { deblock(nv12.desc(), 3); }},
      {"within 0 to 15", [&] { deblock(yuv.desc(), 16); }},
      {"within 0 to 15", [&] { deblock(yuv.desc(), -1); }},
      {"within 0 to 32", [&] { saturate(yuv.desc(), 32); }},
      {"has no plane of luma", [&] { enhance_detail(rgb.desc(), rgb.desc()); }},
      {"not 16x24", [&] { make_anaglyph(rgb.desc(), rgb_half.desc()); }},
  };
  for (const auto &[message, call] : calls)
    EXPECT_NE(refusal(call).find(message), std::string::npos) << message;
  for (Picture *picture : {&out, &other, &rgb_half, &words})
    EXPECT_EQ(std::ranges::count(picture->bytes(), 0), std::ssize(picture->bytes()));
}

}  // namespace
}  // namespace pivra::test
