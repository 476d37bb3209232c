#include <gtest/gtest.h>

#include <map>

#include "dither_model.h"
#include "levels.h"

namespace pivra::test {
namespace {

// --- The perturbation ---

// A sky: a slope with a little noise.
std::vector<uint8_t> slope(size_t count) {
  const int32_t base = random_in(0, 300), noise = random_in(1, 12), run = random_in(1, 40);
  std::vector<uint8_t> bytes(count);
  for (size_t i = 0; i < count; ++i)
    bytes[i] = static_cast<uint8_t>(
        std::clamp(base + static_cast<int32_t>(i) / run % 64 - random_in(0, noise), 0, 255));
  return bytes;
}

std::vector<uint8_t> luma(size_t count) {
  return random_in(0, 1) ? slope(count) : random_bytes(count);
}

struct Plane {
  int32_t width, height, src_stride, dst_stride;
};

std::string describe(const Plane &p) {
  return std::to_string(p.width) + "x" + std::to_string(p.height) + " strides " +
         std::to_string(p.src_stride) + " to " + std::to_string(p.dst_stride);
}

void expect_perturbed(pivra_cpy_kernel *run, const Plane &p, bool in_place) {
  ModelPlane src, dst;
  model_perturb(src, p.width, p.height, p.src_stride, p.dst_stride, dst, 0);
  src.bytes = luma(src.bytes.size());
  dst.bytes = in_place ? src.bytes : random_bytes(dst.bytes.size());
  GuardedPlane from, to;
  const uint8_t *source = from.place(src.bytes, random_in(0, 1));
  uint8_t *const destination = to.place(dst.bytes, random_in(0, 1));
  run(in_place ? destination : source, p.width, p.height, p.src_stride, p.dst_stride, destination);
  model_perturb(src, p.width, p.height, p.src_stride, p.dst_stride, dst, 0);
  ASSERT_EQ(to.content(), dst.bytes) << describe(p);
  ASSERT_EQ(from.content(), src.bytes) << describe(p);
}

Plane random_plane() {
  const int32_t width = random_in(0, 2) ? random_in(1, 90) : random_in(90, 400);
  const auto padding = [] { return random_in(0, 1) ? 0 : random_in(0, 40); };
  return {width, random_in(1, 9), width + padding(), width + padding()};
}

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

TEST_P(EveryLevel, PerturbsAsTheModel) {
  for (int round = 0; round < 2000 && !HasFatalFailure(); ++round)
    expect_perturbed(GetParam().dither.perturb, random_plane(), false);
}

TEST_P(EveryLevel, PerturbsEveryWidthInPlace) {
  for (int32_t width = 1; width < 300 && !HasFatalFailure(); ++width) {
    const int32_t stride = width + random_in(0, 9);
    expect_perturbed(GetParam().dither.perturb, {width, 5, stride, stride}, true);
  }
}

// All ones, so that each decision hangs on the one before, through whole rows.
TEST_P(EveryLevel, CarriesADecisionAlongTheRow) {
  for (int32_t width = 5; width < 300; ++width) {
    std::vector<uint8_t> plane(3 * width, 255);
    GetParam().dither.perturb(plane.data(), width, 3, width, width, plane.data());
    for (int32_t x = 0; x < width; ++x)
      ASSERT_EQ(plane[width + x], x % 4 == 0 && x > 0 ? 253 : 255) << x << " of " << width;
    std::fill(plane.begin(), plane.end(), 0);
    const std::vector<uint8_t> black = plane;
    GetParam().dither.perturb(plane.data(), width, 3, width, width, plane.data());
    ASSERT_EQ(plane, black);
  }
}

TEST_P(EveryLevel, LeavesEmptyPlanesAlone) {
  for (const auto &[w, h] : {std::pair{0, 8}, {8, 0}, {-8, 8}, {8, -8}})
    GetParam().dither.perturb(nullptr, w, h, 8, 8, nullptr);
}

TEST(Perturbation, LeavesFourColumnsOrTwoRowsAlone) {
  for (const auto &[w, h] : {std::pair{4, 30}, {30, 2}, {1, 1}}) {
    const std::vector<uint8_t> src = noise(static_cast<size_t>(w) * h);
    std::vector<uint8_t> dst(src.size());
    pivra_dit_8b(src.data(), w, h, w, w, dst.data());
    EXPECT_EQ(dst, src);
  }
}

// --- The kernels ---

struct Kernel {
  int32_t source, destination;
  std::string name;
  pivra_csc_kernel *run;
};

const std::map<std::string, int32_t> kFormats = {
    {"yuv400", PIVRA_FORMAT_YUV400},   {"yuv420", PIVRA_FORMAT_YUV420},
    {"yuv422n", PIVRA_FORMAT_YUV422N}, {"yuv422w", PIVRA_FORMAT_YUV422W},
    {"yuv444", PIVRA_FORMAT_YUV444},   {"rgb565", PIVRA_FORMAT_RGB565},
    {"bgr565", PIVRA_FORMAT_BGR565}};
#define PIVRA_KERNEL(source, destination)                                        \
  {kFormats.at(#source), kFormats.at(#destination), #source "_to_" #destination, \
   PIVRA_DITHER_NAME(source, destination)},
const std::vector<Kernel> kKernels = {PIVRA_DITHER(PIVRA_KERNEL)};
#undef PIVRA_KERNEL

std::string describe(const Kernel &kernel, const DitherModel &m) {
  return kernel.name + " " + std::to_string(m.width) + "x" + std::to_string(m.height[0]) +
         " strides " + std::to_string(m.stride[0]) + " " + std::to_string(m.stride[1]) + " " +
         std::to_string(m.stride[2]) + " to " + std::to_string(m.dst_stride);
}

int32_t chroma_width(const Kernel &kernel, int32_t width) {
  return kernel.source == PIVRA_FORMAT_YUV420 || kernel.source == PIVRA_FORMAT_YUV422N
             ? (width + 1) / 2
             : width;
}
int32_t chroma_height(const Kernel &kernel, int32_t height) {
  return kernel.source == PIVRA_FORMAT_YUV420 || kernel.source == PIVRA_FORMAT_YUV422W
             ? (height + 1) / 2
             : height;
}

DitherModel job(const Kernel &kernel, int32_t width, int32_t height) {
  DitherModel m{};
  m.source = kernel.source;
  m.destination = kernel.destination;
  m.width = width;
  const int32_t rows = chroma_height(kernel, height);
  m.height = {height, rows, rows};
  const auto padding = [] { return random_in(0, 1) ? 0 : random_in(0, 40); };
  m.stride = {width + padding(), chroma_width(kernel, width) + padding(), 0};
  m.stride[2] = kernel.source == PIVRA_FORMAT_YUV420 && width % 4 == 0
                    ? m.stride[1]
                    : chroma_width(kernel, width) + padding();
  m.dst_stride = 2 * width + (padding() & ~1);
  return m;
}

void expect_equal_to_model(const Kernel &kernel, DitherModel m) {
  m.run();  // finds out what is touched
  std::array<GuardedPlane, 4> memory;
  std::array<uint8_t *, 4> src{}, dst{};
  for (size_t plane = 0; plane < 3; ++plane) {
    m.in[plane].bytes = luma(m.in[plane].bytes.size());
    src[plane] = memory[plane].place(m.in[plane].bytes, random_in(0, 1));
  }
  m.out.bytes = random_bytes(m.out.bytes.size());
  dst[0] = memory[3].place(m.out.bytes, random_in(0, 1));

  std::array<int32_t, 4> width = {m.width, -1, -1, -1}, height = m.height, stride = m.stride,
                         dst_stride = {m.dst_stride};
  kernel.run(src.data(), width.data(), height.data(), stride.data(), dst_stride.data(), dst.data());
  m.run();
  ASSERT_EQ(memory[3].content(), m.out.bytes) << describe(kernel, m);
  for (size_t plane = 0; plane < 3; ++plane)
    ASSERT_EQ(memory[plane].content(), m.in[plane].bytes) << describe(kernel, m);
}

// As the library was loaded with any of its levels.
class EveryKernel : public testing::TestWithParam<size_t> {
 protected:
  void SetUp() override {
    if (!levels[GetParam()].supported()) GTEST_SKIP();
    chosen_level = GetParam();
  }
  void TearDown() override { chosen_level = loaded_; }

 private:
  const size_t loaded_ = chosen_level;
};
INSTANTIATE_TEST_SUITE_P(, EveryKernel, testing::Range(size_t{0}, kLevels),
                         [](const auto &level) { return levels[level.param].name; });

TEST_P(EveryKernel, EqualsTheModelAtRandomSizes) {
  for (const Kernel &kernel : kKernels)
    for (int round = 0; round < 150; ++round) {
      const int32_t width = random_in(0, 2) ? random_in(1, 72) : random_in(72, 300);
      expect_equal_to_model(kernel, job(kernel, width, random_in(4, 24)));
      if (HasFatalFailure()) return;
    }
}

// Every end of a row that is written over its own luma.
TEST_P(EveryKernel, EqualsTheModelAtEveryWidth) {
  for (const Kernel &kernel : kKernels)
    for (int32_t width = 1; width < 200; ++width) {
      DitherModel m = job(kernel, width, random_in(3, 8) * 2);
      m.dst_stride = 2 * width;
      expect_equal_to_model(kernel, m);
      if (HasFatalFailure()) return;
    }
}

// A picture so high that rows run into luma which is still to be read.
TEST_P(EveryKernel, EqualsTheModelWhereRowsDrift) {
  for (const Kernel &kernel : kKernels)
    for (int round = 0; round < 60; ++round) {
      const int32_t width = random_in(1, 90);
      DitherModel m = job(kernel, width, random_in(5, 300));
      m.dst_stride += kernel.source != PIVRA_FORMAT_YUV420 && random_in(0, 1);
      expect_equal_to_model(kernel, m);
      if (HasFatalFailure()) return;
    }
}

TEST_P(EveryKernel, ConvertsLowPicturesAsTheyAre) {
  for (const Kernel &kernel : kKernels)
    for (int32_t height = 0; height <= 6; ++height)
      for (int round = 0; round < 8; ++round) {
        expect_equal_to_model(kernel, job(kernel, random_in(1, 150), height));
        if (HasFatalFailure()) return;
      }
}

TEST(Dither, LeavesTheLastFourRowsAsTheyAre) {
  constexpr int32_t kWidth = 64, kHeight = 20;
  std::vector<uint8_t> y = slope(kWidth * kHeight), u = noise(kWidth * kHeight), v = u;
  std::array<uint8_t *, 4> src = {y.data(), u.data(), v.data()};
  std::array<int32_t, 4> width = {kWidth, kWidth / 2, kWidth / 2}, height = {kHeight, 10, 10},
                         stride = width, to = {2 * kWidth};
  const auto converted = [&](pivra_csc_kernel *run) {
    std::vector<uint8_t> out(2 * kWidth * kHeight);
    std::array<uint8_t *, 4> dst = {out.data()};
    run(src.data(), width.data(), height.data(), stride.data(), to.data(), dst.data());
    return out;
  };
  const std::vector<uint8_t> plain = converted(pivra_csc_yuv420_to_bgr565),
                             dithered = converted(pivra_csc_yuv420_to_bgr565_dither);
  const ptrdiff_t last_four = 2 * kWidth * (kHeight - 4);
  EXPECT_TRUE(std::equal(plain.begin() + last_four, plain.end(), dithered.begin() + last_four));
  EXPECT_FALSE(std::equal(plain.begin(), plain.begin() + last_four, dithered.begin()));
}

// --- The dispatcher ---

// A picture of 24 x 16 in the lower left of planes that are large enough for any format.
struct Image {
  explicit Image(int32_t format) {
    desc.format = format;
    for (int i = 0; i < 4; ++i) {
      bytes[i] = noise(64 * 32);
      desc.plane[i] = bytes[i].data();
      desc.width[i] = i == 0 ? 24 : 12;
      desc.height[i] = i == 0 ? 16 : 8;
      desc.stride[i] = i == 0 ? 64 : 32 + 2 * i;
    }
  }
  std::array<std::vector<uint8_t>, 4> bytes;
  ImageDesc desc{};
};

const std::map<std::pair<int32_t, int32_t>, std::string> kPairs = {
    {{PIVRA_FORMAT_YUV400, PIVRA_FORMAT_RGB565}, "yuv400_to_rgb565"},
    {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_BGR565}, "yuv420_to_bgr565"},
    {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565}, "yuv420_to_rgb565"},
    {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV420}, "copy"},
    {{PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_BGR565}, "yuv422n_to_rgb565"},
    {{PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_RGB565}, "yuv422n_to_rgb565"},
    {{PIVRA_FORMAT_YUV422W, PIVRA_FORMAT_BGR565}, "yuv422w_to_rgb565"},
    {{PIVRA_FORMAT_YUV422W, PIVRA_FORMAT_RGB565}, "yuv422w_to_rgb565"},
    {{PIVRA_FORMAT_YUV444, PIVRA_FORMAT_BGR565}, "yuv444_to_bgr565"},
    {{PIVRA_FORMAT_YUV444, PIVRA_FORMAT_RGB565}, "yuv444_to_rgb565"},
    {{PIVRA_FORMAT_YV12, PIVRA_FORMAT_BGR565}, "yuv420_to_bgr565"},
    {{PIVRA_FORMAT_YV12, PIVRA_FORMAT_RGB565}, "yuv420_to_rgb565"}};

TEST(Dispatcher, DithersThePairsOfTheListAndNoOthers) {
  Image src(0), dst(0);
  for (int32_t from = -1; from <= 600; ++from)
    for (int32_t to = -1; to <= 600; ++to) {
      src.desc.format = from;
      dst.desc.format = to;
      const bool listed = kPairs.count({from, to}) != 0;
      const auto before = dst.bytes;
      ASSERT_EQ(pivra_csc_dither(&src.desc, &dst.desc), listed ? PIVRA_OK : PIVRA_UNSUPPORTED)
          << from << " to " << to;
      ASSERT_EQ(dst.bytes != before, listed) << from << " to " << to;
      for (auto &plane : dst.bytes) std::fill(plane.begin(), plane.end(), 0x5A);
    }
}

TEST(Dispatcher, ChoosesTheKernelOfThePair) {
  for (const auto &[pair, name] : kPairs) {
    if (name == "copy") continue;
    const Image src(pair.first);
    Image dst(pair.second), expected(pair.second), planes = src;
    expected.bytes[0] = dst.bytes[0];
    expected.desc.plane[0] = expected.bytes[0].data();
    ImageDesc from = src.desc, before = src.desc;
    if (pair.first == PIVRA_FORMAT_YV12) std::swap(from.plane[1], from.plane[2]);
    for (const Kernel &kernel : kKernels)
      if (kernel.name == name)
        kernel.run(from.plane, from.width, from.height, from.stride, expected.desc.stride,
                   expected.desc.plane);
    ASSERT_EQ(pivra_csc_dither(&src.desc, &dst.desc), PIVRA_OK) << name;
    EXPECT_EQ(dst.bytes[0], expected.bytes[0]) << pair.first << " to " << pair.second;
    EXPECT_TRUE(std::equal(std::begin(src.desc.plane), std::end(src.desc.plane), before.plane));
  }
}

TEST(Dispatcher, CopiesYuv420WithItsLumaPerturbed) {
  const Image src(PIVRA_FORMAT_YUV420);
  Image dst(PIVRA_FORMAT_YUV420), expected(PIVRA_FORMAT_YUV420);
  expected.bytes = dst.bytes;
  const ImageDesc &d = src.desc;
  pivra_dit_8b(d.plane[0], 24, 16, d.stride[0], d.stride[0], expected.bytes[0].data());
  for (int i = 1; i < 3; ++i)
    pivra_cpy_8b(d.plane[i], 12, 8, d.stride[i], d.stride[i], expected.bytes[i].data());
  ASSERT_EQ(pivra_csc_dither(&src.desc, &dst.desc), PIVRA_OK);
  EXPECT_EQ(dst.bytes, expected.bytes);
}

}  // namespace
}  // namespace pivra::test
