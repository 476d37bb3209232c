// The kernels from RGB, to YUV and to other RGB layouts, against their model.
#include <gtest/gtest.h>

#include <sstream>

#include "levels.h"
#include "rgb_model.h"

namespace pivra::test {
namespace {

struct Kernel {
  int32_t source, destination;
  std::string name;
  pivra_csc_kernel *(*at_level)(const LevelUnderTest &);
  pivra_csc_kernel *exported;
};

#define PIVRA_KERNEL(family, SOURCE, source, DESTINATION, destination)                 \
  {PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION, #source "_to_" #destination,     \
   [](const LevelUnderTest &level) { return level.family.source##_to_##destination; }, \
   PIVRA_CSC_NAME(source, destination)},
#define PIVRA_TO_YUV(...) PIVRA_KERNEL(rgb_to_yuv, __VA_ARGS__)
#define PIVRA_TO_RGB(...) PIVRA_KERNEL(rgb_to_rgb, __VA_ARGS__)
const std::vector<Kernel> kKernels = {PIVRA_RGB_TO_YUV(PIVRA_TO_YUV)
                                          PIVRA_RGB_TO_RGB(PIVRA_TO_RGB)};

// Sizes around the block widths and the tails. Packed pictures, padded ones, and
// rows that overlap; paddings of every plane apart.
RgbModel random_job(const Kernel &kernel) {
  RgbModel m{};
  m.source = kernel.source;
  m.destination = kernel.destination;
  m.width = random_in(0, 3) == 0 ? random_in(1, 300) : random_in(1, 72);
  m.height = random_in(1, 7);
  const bool packed = random_in(0, 1) == 0;
  const auto padding = [&] { return packed && random_in(0, 3) > 0 ? 0 : random_in(0, 40); };
  const int32_t row = m.width * pixel_bytes(m.source), half = m.width / 2;
  m.stride = packed ? row : random_in(0, 9) == 0 ? random_in(0, row) : row + padding();
  const bool pairs = m.destination == PIVRA_FORMAT_NV12 || m.destination == PIVRA_FORMAT_NV21;
  const bool rgb = m.destination >= PIVRA_FORMAT_RGB565;
  m.dst_stride[0] = m.width * (rgb ? pixel_bytes(m.destination) : 1) + padding();
  m.dst_stride[1] = (pairs ? 2 * half : half) + padding();
  m.dst_stride[2] = half + padding();
  return m;
}

std::string describe(const Kernel &kernel, const std::string &level, const RgbModel &m) {
  std::ostringstream text;
  text << level << " " << kernel.name << " " << m.width << "x" << m.height << " stride " << m.stride
       << " to";
  for (int plane = 0; plane < 3; ++plane) text << " " << m.dst_stride[plane];
  return text.str();
}

void run(pivra_csc_kernel *kernel, const RgbModel &m, std::array<uint8_t *, 4> src,
         std::array<uint8_t *, 4> dst) {
  std::array<int32_t, 4> width = {m.width}, height = {m.height}, stride = {m.stride},
                         dst_stride = m.dst_stride;
  kernel(src.data(), width.data(), height.data(), stride.data(), dst_stride.data(), dst.data());
}

// The planes hold exactly what the model touches, and inaccessible pages around it.
void expect_equal_to_model(const Kernel &kernel, const std::string &level,
                           pivra_csc_kernel *function, RgbModel m) {
  m.run();  // finds out what is touched
  std::array<GuardedPlane, 4> memory;
  std::array<uint8_t *, 4> dst{};
  m.in.bytes = random_bytes(m.in.bytes.size());
  uint8_t *src = memory[3].place(m.in.bytes, random_in(0, 1));
  for (size_t plane = 0; plane < 3; ++plane) {
    m.out[plane].bytes = random_bytes(m.out[plane].bytes.size());
    dst[plane] = memory[plane].place(m.out[plane].bytes, random_in(0, 1));
  }
  run(function, m, {src}, dst);
  m.run();

  for (size_t plane = 0; plane < 3; ++plane)
    ASSERT_EQ(memory[plane].content(), m.out[plane].bytes)
        << describe(kernel, level, m) << ", plane " << plane;
  ASSERT_EQ(memory[3].content(), m.in.bytes) << describe(kernel, level, m);
}

class FromRgb : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, FromRgb, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

TEST_P(FromRgb, EqualsTheModelAtRandomSizes) {
  for (const Kernel &kernel : kKernels)
    for (int round = 0; round < 120; ++round) {
      expect_equal_to_model(kernel, GetParam().name, kernel.at_level(GetParam()),
                            random_job(kernel));
      if (HasFatalFailure()) return;
    }
}

// All colours in luma and chroma, from each layout's bytes or words.
TEST_P(FromRgb, ComputesTheMatrixForEveryColour) {
  for (const Kernel &kernel : kKernels) {
    if (kernel.destination != PIVRA_FORMAT_YUV420) continue;
    RgbModel m{};
    m.source = kernel.source;
    m.destination = kernel.destination;
    m.width = 512;
    m.height = 2;
    const int32_t bytes = pixel_bytes(m.source), pictures = bytes == 2 ? 256 : 65536;
    m.stride = m.width * bytes;
    m.dst_stride = {512, 256, 256};
    std::vector<uint8_t> pixels(2 * m.stride, 0x77), y(1024), u(256), v(256);
    for (int32_t picture = 0; picture < pictures; ++picture) {
      for (int32_t i = 0; i < 256; ++i) {  // the even pixels of row 0
        uint8_t *p = &pixels[2 * i * bytes];
        const bool alpha_first = m.source >= PIVRA_FORMAT_ARGB8888;
        p[alpha_first] = static_cast<uint8_t>(i);
        p[alpha_first + 1] = static_cast<uint8_t>(picture);
        if (bytes > 2) p[alpha_first + 2] = static_cast<uint8_t>(picture >> 8);
      }
      run(kernel.at_level(GetParam()), m, {pixels.data()}, {y.data(), u.data(), v.data()});
      m.in.bytes.assign(pixels.begin(), pixels.begin() + m.stride);
      for (int32_t i = 0; i < 256; ++i) {
        const Colour c = m.fetch(2 * i * bytes);
        if (y[2 * i] != RgbModel::y(c) || u[i] != RgbModel::u(c) || v[i] != RgbModel::v(c))
          FAIL() << kernel.name << ": " << c[0] << " " << c[1] << " " << c[2];
      }
    }
  }
}

// Planes in one piece of memory, whose padded rows from 16-bit sources run into the
// next plane: chroma has the last word.
TEST_P(FromRgb, WritesLumaBeforeChroma) {
  RgbModel m{PIVRA_FORMAT_RGB565, PIVRA_FORMAT_YUV420, 32, 8, 64, {40, 20, 20}, {}, {}};
  constexpr size_t kU = 40 * 8, kV = kU + 20 * 4;
  m.in.bytes = random_bytes(64 * 8);
  m.run();
  std::vector<uint8_t> expected(1024), memory(1024);
  for (const auto &[plane, start] : {std::pair<size_t, size_t>{0, 0}, {1, kU}, {2, kV}})
    for (int32_t row = 0; row < (plane == 0 ? 8 : 4); ++row) {
      const ptrdiff_t bytes = plane == 0 ? 32 : 16, at = row * m.dst_step(int(plane), bytes);
      std::copy_n(m.out[plane].bytes.begin() + at, bytes, expected.begin() + start + at);
    }
  run(GetParam().rgb_to_yuv.rgb565_to_yuv420, m, {m.in.bytes.data()},
      {memory.data(), &memory[kU], &memory[kV]});
  EXPECT_EQ(memory, expected);
}

TEST_P(FromRgb, TurnsAPictureUpsideDownByNegativeStrides) {
  RgbModel m{PIVRA_FORMAT_BGRA8888, PIVRA_FORMAT_YUV444, 70, 6, 280, {70}, {}, {}};
  const std::vector<uint8_t> pixels = random_bytes(280 * 6);
  std::vector<uint8_t> upright(70 * 6), turned(70 * 6);
  std::array<uint8_t *, 4> src = {const_cast<uint8_t *>(pixels.data())};
  run(GetParam().rgb_to_yuv.rgba8888_to_yuv444, m, src, {upright.data()});
  m.dst_stride[0] = -70;
  run(GetParam().rgb_to_yuv.rgba8888_to_yuv444, m, src, {&turned[70 * 5]});
  for (int32_t y = 0; y < 6; ++y)
    EXPECT_TRUE(std::equal(&upright[70 * y], &upright[70 * y] + 70, &turned[70 * (5 - y)]));
}

TEST_P(FromRgb, LeavesEmptyPicturesAlone) {
  for (const Kernel &kernel : kKernels)
    for (const auto &[w, h] : {std::pair{0, 8}, {8, 0}, {-8, 8}, {8, -8}, {-8, -8}}) {
      RgbModel m{};
      m.width = w;
      m.height = h;
      run(kernel.at_level(GetParam()), m, {}, {});
    }
}

TEST(FromRgbExported, AreThoseOfTheChosenLevel) {
  for (const Kernel &kernel : kKernels)
    expect_equal_to_model(kernel, "exported", kernel.exported, random_job(kernel));
}

TEST(FromRgbExported, GiveTheKnownColours) {
  const auto convert = [](pivra_csc_kernel *kernel, std::vector<uint8_t> pixel) {
    std::vector<uint8_t> pixels, y(4), u(1), v(1);
    for (int i = 0; i < 4; ++i) pixels.insert(pixels.end(), pixel.begin(), pixel.end());
    RgbModel m{};
    m.width = m.height = 2;
    m.stride = 2 * static_cast<int32_t>(pixel.size());
    m.dst_stride = {2, 1, 1};
    run(kernel, m, {pixels.data()}, {y.data(), u.data(), v.data()});
    return Colour{y[3], u[0], v[0]};
  };
  EXPECT_EQ(convert(pivra_csc_rgb565_to_yuv420, {255, 255}), (Colour{231, 127, 127}));
  EXPECT_EQ(convert(pivra_csc_rgb888_to_yuv420, {255, 255, 255}), (Colour{235, 128, 128}));
  EXPECT_EQ(convert(pivra_csc_rgb888_to_yuv420, {0, 0, 0}), (Colour{16, 128, 128}));
  EXPECT_EQ(convert(pivra_csc_rgb888_to_yuv420, {255, 0, 0}), (Colour{81, 90, 240}));
  EXPECT_EQ(convert(pivra_csc_rgb888_to_yuv420, {0, 0, 255}), (Colour{40, 240, 110}));
}

}  // namespace
}  // namespace pivra::test
