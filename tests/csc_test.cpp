#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>
#include <thread>

#include "levels.h"
#include "yuv_to_rgb_model.h"

namespace pivra::test {
namespace {

struct Kernel {
  int32_t source, destination;
  std::string name;
  pivra_csc_kernel *YuvToRgb::*at_level;  // none for yv12, which is no level's own
  pivra_csc_kernel *exported;
};

#define PIVRA_KERNEL(SOURCE, source, DESTINATION, destination)                     \
  {PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION, #source "_to_" #destination, \
   &YuvToRgb::source##_to_##destination, PIVRA_CSC_NAME(source, destination)},
const std::vector<Kernel> kKernels = {PIVRA_YUV_TO_RGB_DIRECT(PIVRA_KERNEL)};
#undef PIVRA_KERNEL

int32_t row_bytes(int32_t format, int plane, int32_t width) {
  switch (format) {
    case PIVRA_FORMAT_UYVY:
    case PIVRA_FORMAT_YUYV:
      return (width + 1) / 2 * 4;
    case PIVRA_FORMAT_YUV420:
    case PIVRA_FORMAT_YUV422N:
      return plane == 0 ? width : (width + 1) / 2;
    case PIVRA_FORMAT_NV12:
    case PIVRA_FORMAT_NV21:
      return plane == 0 ? width : (width + 1) / 2 * 2;
    default:
      return width;
  }
}

// Sizes around the block widths and the tails, small heights of both parities.
ConversionModel random_job(const Kernel &kernel) {
  ConversionModel m{};
  m.source = kernel.source;
  m.destination = kernel.destination;
  m.width = random_in(0, 3) == 0 ? random_in(1, 300) : random_in(1, 72);
  m.height = random_in(1, 7);
  const auto padding = [] { return random_in(0, 2) == 0 ? 0 : random_in(0, 40); };
  for (int plane = 0; plane < 3; ++plane)
    m.stride[plane] = row_bytes(m.source, plane, m.width) + padding();
  m.dst_stride = m.width * m.pixel_bytes() + padding();
  return m;
}

std::string describe(const Kernel &kernel, const std::string &level, const ConversionModel &m) {
  return level + " " + kernel.name + " " + std::to_string(m.width) + "x" +
         std::to_string(m.height) + " strides " + std::to_string(m.stride[0]) + " " +
         std::to_string(m.stride[1]) + " " + std::to_string(m.stride[2]) + " to " +
         std::to_string(m.dst_stride);
}

// The planes hold exactly what the model touches, and inaccessible pages around it.
void expect_equal_to_model(const Kernel &kernel, const std::string &level, pivra_csc_kernel *run,
                           ConversionModel m) {
  m.run();  // finds out what is touched
  std::array<GuardedPlane, 4> memory;
  std::array<uint8_t *, 4> src{}, dst{};
  for (size_t plane = 0; plane < 3; ++plane) {
    m.in[plane].bytes = random_bytes(m.in[plane].bytes.size());
    src[plane] = memory[plane].place(m.in[plane].bytes, random_in(0, 1));
  }
  m.out.bytes = random_bytes(m.out.bytes.size());
  dst[0] = memory[3].place(m.out.bytes, random_in(0, 1));

  std::array<int32_t, 4> width = {m.width}, height = {m.height}, stride = m.stride,
                         dst_stride = {m.dst_stride};
  run(src.data(), width.data(), height.data(), stride.data(), dst_stride.data(), dst.data());
  m.run();

  ASSERT_EQ(memory[3].content(), m.out.bytes) << describe(kernel, level, m);
  for (size_t plane = 0; plane < 3; ++plane)
    ASSERT_EQ(memory[plane].content(), m.in[plane].bytes) << describe(kernel, level, m);
}

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

TEST_P(EveryLevel, EqualsTheModelAtRandomSizes) {
  for (const Kernel &kernel : kKernels)
    for (int round = 0; round < 120; ++round) {
      pivra_csc_kernel *run = GetParam().yuv_to_rgb.*kernel.at_level;
      expect_equal_to_model(kernel, GetParam().name, run, random_job(kernel));
      if (HasFatalFailure()) return;
    }
}

// Strides far from the row size: rows upside down, all in one place, far apart.
TEST_P(EveryLevel, TakesAnyStride) {
  for (const Kernel &kernel : kKernels) {
    ConversionModel m = random_job(kernel);
    m.width = random_in(32, 80) & ~3;
    m.height = 4;
    for (int32_t &stride : m.stride) stride = random_in(0, 500);
    m.dst_stride = random_in(0, 700);
    expect_equal_to_model(kernel, GetParam().name, GetParam().yuv_to_rgb.*kernel.at_level, m);
    if (HasFatalFailure()) return;
  }
}

TEST_P(EveryLevel, TurnsAPictureUpsideDownByNegativeStrides) {
  constexpr int32_t kWidth = 50, kHeight = 6;
  const std::vector<uint8_t> luma = random_bytes(kWidth * kHeight);
  std::vector<uint8_t> upright(kWidth * kHeight * 2), turned(kWidth * kHeight * 2);
  const auto run = [&](int32_t direction, std::vector<uint8_t> &out) {
    const ptrdiff_t last_row = direction < 0 ? kHeight - 1 : 0;
    std::array<uint8_t *, 4> src = {const_cast<uint8_t *>(luma.data())};
    std::array<uint8_t *, 4> dst = {out.data() + last_row * kWidth * 2};
    std::array<int32_t, 4> width = {kWidth}, height = {kHeight}, stride = {kWidth},
                           dst_stride = {direction * kWidth * 2};
    GetParam().yuv_to_rgb.yuv400_to_rgb565(src.data(), width.data(), height.data(), stride.data(),
                                           dst_stride.data(), dst.data());
  };
  run(1, upright);
  run(-1, turned);
  for (int32_t y = 0; y < kHeight; ++y)
    ASSERT_EQ(
        0, memcmp(&upright[y * kWidth * 2], &turned[(kHeight - 1 - y) * kWidth * 2], kWidth * 2));
}

// All (Y, U, V): one picture for each V, a row for each U, a column for each Y.
TEST_P(EveryLevel, ComputesTheMatrixForEveryTriple) {
  constexpr int32_t kSide = 256;
  std::vector<uint8_t> y(kSide), u(kSide * kSide), v(kSide), out(3 * kSide * kSide);
  for (int32_t i = 0; i < kSide; ++i) y[i] = static_cast<uint8_t>(i);
  for (int32_t i = 0; i < kSide * kSide; ++i) u[i] = static_cast<uint8_t>(i / kSide);
  for (int32_t cr = 0; cr < kSide; ++cr) {
    std::fill(v.begin(), v.end(), static_cast<uint8_t>(cr));
    std::array<uint8_t *, 4> src = {y.data(), u.data(), v.data()}, dst = {out.data()};
    std::array<int32_t, 4> width = {kSide}, height = {kSide}, stride = {0, kSide, 0},
                           dst_stride = {3 * kSide};
    GetParam().yuv_to_rgb.yuv444_to_rgb888(src.data(), width.data(), height.data(), stride.data(),
                                           dst_stride.data(), dst.data());
    const uint8_t *p = out.data();
    for (int32_t cb = 0; cb < kSide; ++cb)
      for (int32_t luma = 0; luma < kSide; ++luma, p += 3) {
        const Colour c = model_matrix(luma, cb, cr);
        if (p[0] != c[0] || p[1] != c[1] || p[2] != c[2])
          FAIL() << "Y " << luma << " U " << cb << " V " << cr;
      }
  }
}

TEST_P(EveryLevel, LeavesEmptyPicturesAlone) {
  for (const Kernel &kernel : kKernels)
    for (const auto &[w, h] : {std::pair{0, 8}, {8, 0}, {-8, 8}, {8, -8}}) {
      std::array<uint8_t *, 4> planes{};
      std::array<int32_t, 4> width = {w}, height = {h}, stride{};
      (GetParam().yuv_to_rgb.*kernel.at_level)(planes.data(), width.data(), height.data(),
                                               stride.data(), stride.data(), planes.data());
    }
}

TEST(Kernels, ExportedOnesAreThoseOfTheChosenLevel) {
  for (const Kernel &kernel : kKernels)
    expect_equal_to_model(kernel, "exported", kernel.exported, random_job(kernel));
}

// --- The dispatcher ---

struct Image {
  explicit Image(int32_t format, int32_t width, int32_t height) {
    desc.format = format;
    for (int plane = 0; plane < 4; ++plane) {
      bytes[plane] = noise(static_cast<size_t>(width) * height * 8 + 4096);  // tiles are whole
      desc.plane[plane] = bytes[plane].data();
      desc.width[plane] = width;
      desc.height[plane] = height;
      desc.stride[plane] = width * 4;
    }
  }
  std::array<std::vector<uint8_t>, 4> bytes;
  ImageDesc desc{};
};

TEST(Dispatcher, ConvertsThePairsOfTheListAndNoOthers) {
  std::set<std::pair<int32_t, int32_t>> pairs;
#define PIVRA_INSERT(SOURCE, source, DESTINATION, destination) \
  pairs.insert({PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION});
  PIVRA_CSC_PAIRS(PIVRA_INSERT)
#undef PIVRA_INSERT
  pairs.erase({PIVRA_FORMAT_T256X16, PIVRA_FORMAT_RGBA8888});  // not at this size
  Image src(0, 8, 8), dst(0, 8, 8);
  for (int32_t from = -1; from <= 600; ++from)
    for (int32_t to = -1; to <= 600; ++to) {
      src.desc.format = from;
      dst.desc.format = to;
      const auto before = dst.bytes[0];
      const int32_t expected = from == to                ? PIVRA_REFUSED
                               : pairs.count({from, to}) ? PIVRA_OK
                                                         : PIVRA_UNSUPPORTED;
      ASSERT_EQ(pivra_csc(&src.desc, &dst.desc), expected) << from << " to " << to;
      ASSERT_EQ(dst.bytes[0] != before, expected == PIVRA_OK) << from << " to " << to;
      std::fill(dst.bytes[0].begin(), dst.bytes[0].end(), 0x5A);
    }
}

TEST(Dispatcher, RefusesEqualFormatsBeforeSmallSizes) {
  Image src(PIVRA_FORMAT_NV12, 7, 7), same(PIVRA_FORMAT_NV12, 7, 7);
  EXPECT_EQ(pivra_csc(&src.desc, &same.desc), PIVRA_REFUSED);
  for (int which = 0; which < 4; ++which) {
    Image from(PIVRA_FORMAT_NV12, 8, 8), to(PIVRA_FORMAT_RGB565, 8, 8);
    EXPECT_EQ(pivra_csc(&from.desc, &to.desc), PIVRA_OK);
    int32_t *const sizes[] = {from.desc.width, from.desc.height, to.desc.width, to.desc.height};
    for (const int32_t small : {7, 0, -8}) {
      sizes[which][0] = small;
      EXPECT_EQ(pivra_csc(&from.desc, &to.desc), PIVRA_UNSUPPORTED);
    }
  }
}

TEST(Dispatcher, PassesTheSourceSize) {
  Image src(PIVRA_FORMAT_YUV400, 16, 8), dst(PIVRA_FORMAT_RGB888, 16, 8);
  dst.desc.width[0] = dst.desc.height[0] = 1000;
  EXPECT_EQ(pivra_csc(&src.desc, &dst.desc), PIVRA_OK);
  EXPECT_EQ(dst.bytes[0][15 * 3], src.bytes[0][15]);
}

// yv12 is yuv420 with the chroma planes exchanged, and stays exchanged.
TEST(Dispatcher, LeavesYv12WithUFirst) {
  for (const Kernel &kernel : kKernels) {
    if (kernel.source != PIVRA_FORMAT_YUV420) continue;
    Image src(PIVRA_FORMAT_YV12, 38, 10), dst(kernel.destination, 38, 10),
        expected(kernel.destination, 38, 10);
    src.desc.stride[1] = 23;
    src.desc.stride[2] = 31;
    Image planar = src;
    planar.desc = src.desc;
    planar.desc.format = PIVRA_FORMAT_YUV420;
    std::swap(planar.desc.plane[1], planar.desc.plane[2]);
    std::swap(planar.desc.stride[1], planar.desc.stride[2]);
    dst.bytes[0] = expected.bytes[0];
    dst.desc.plane[0] = dst.bytes[0].data();

    ASSERT_EQ(pivra_csc(&planar.desc, &expected.desc), PIVRA_OK);
    ASSERT_EQ(pivra_csc(&src.desc, &dst.desc), PIVRA_OK);
    EXPECT_EQ(dst.bytes[0], expected.bytes[0]) << kernel.name;
    EXPECT_EQ(src.desc.plane[1], planar.desc.plane[1]);
    EXPECT_EQ(src.desc.plane[2], planar.desc.plane[2]);
    EXPECT_EQ(src.desc.stride[1], 31);
    EXPECT_EQ(src.desc.stride[2], 23);
    EXPECT_EQ(src.desc.format, PIVRA_FORMAT_YV12);

    ASSERT_EQ(pivra_csc(&src.desc, &dst.desc), PIVRA_OK);  // now in the opposite roles
    EXPECT_NE(dst.bytes[0], expected.bytes[0]) << kernel.name;
  }
}

TEST(Dispatcher, RunsInManyThreads) {
  std::vector<std::pair<Image, Image>> pictures;
  for (int i = 0; i < 4; ++i)
    pictures.emplace_back(Image(PIVRA_FORMAT_NV12, 64, 64), Image(PIVRA_FORMAT_RGB565, 64, 64));
  std::vector<std::thread> threads;
  for (auto &[src, dst] : pictures)
    threads.emplace_back([&from = src.desc, &to = dst.desc] {
      for (int round = 0; round < 20; ++round) pivra_csc(&from, &to);
    });
  for (std::thread &thread : threads) thread.join();
}

}  // namespace
}  // namespace pivra::test
