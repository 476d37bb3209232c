#include <set>

#include "compare.h"
#include "levels.h"
#include "yuv_to_rgb_model.h"

namespace pivra::test {
namespace {

struct Kernel {
  int32_t source, destination;
  std::string name;
  pivra_csc_kernel *YuvToRgb::*at_level;
  pivra_csc_kernel *exported;
};

#define PIVRA_KERNEL(SOURCE, source, DESTINATION, destination)                     \
  {PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION, #source "_to_" #destination, \
   &YuvToRgb::source##_to_##destination, PIVRA_CSC_NAME(source, destination)},
const std::vector<Kernel> kKernels = {PIVRA_YUV_TO_RGB_DIRECT(PIVRA_KERNEL)};

// Small heights of both parities. Some strides are far from the row size: rows all in one
// place, far apart, or of one kernel upside down.
ConversionModel random_job(const Kernel &kernel) {
  ConversionModel m{};
  m.source = kernel.source;
  m.destination = kernel.destination;
  m.width = random_width();
  m.height = random_in(1, 7);
  const int32_t pairs = (m.width + 1) / 2;
  const bool packed = m.from({PIVRA_FORMAT_UYVY, PIVRA_FORMAT_YUYV});
  const int32_t chroma = m.from({PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV422N}) ? pairs
                         : m.from({PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV21})    ? 2 * pairs
                                                                             : m.width;
  m.stride = {(packed ? 4 * pairs : m.width) + random_padding(), chroma + random_padding(),
              chroma + random_padding()};
  m.dst_stride = m.width * m.pixel_bytes() + random_padding();
  if (random_in(0, 63) == 0) {
    m.width = random_in(32, 80) & ~3;
    m.height = 4;
    m.stride = {random_in(0, 500), random_in(0, 500), random_in(0, 500)};
    m.dst_stride = random_in(0, 700);
  } else if (kernel.name == "yuv400_to_rgb565" && random_in(0, 3) == 0) {
    m.out.origin = ptrdiff_t{m.height - 1} * m.dst_stride;
    m.dst_stride = -m.dst_stride;
  }
  return m;
}

TEST_P(EachLevel, EqualsTheModelAtRandomSizes) {
  for (const Kernel &kernel : kKernels)
    for (int round = 0; round < 120 && !HasFatalFailure(); ++round) {
      ConversionModel m = random_job(kernel);
      pivra_csc_kernel *const chosen =
          round ? GetParam().yuv_to_rgb.*kernel.at_level : kernel.exported;
      compare_with_model(
          all(m.in), {&m.out}, [&] { m.run(); },
          [&](uint8_t **src, uint8_t **dst) {
            call(chosen, m.width, m.height, m.stride, {m.dst_stride}, src, dst);
          },
          std::tuple(round ? GetParam().name : "exported", kernel.name, m.width, m.height,
                     "strides", m.stride, m.dst_stride));
    }
}

// All (Y, U, V): one picture for each V, a row for each U, a column for each Y.
TEST_P(EachLevel, ComputesTheMatrixForEveryTriple) {
  constexpr int32_t kSide = 256;
  std::vector<uint8_t> y(kSide), u(kSide * kSide), v(kSide), out(3 * kSide * kSide);
  for (int32_t i = 0; i < kSide; ++i) y[i] = static_cast<uint8_t>(i);
  for (int32_t i = 0; i < kSide * kSide; ++i) u[i] = static_cast<uint8_t>(i / kSide);
  for (int32_t cr = 0; cr < kSide; ++cr) {
    std::fill(v.begin(), v.end(), static_cast<uint8_t>(cr));
    std::array<uint8_t *, 4> src = {y.data(), u.data(), v.data()}, dst = {out.data()};
    call(GetParam().yuv_to_rgb.yuv444_to_rgb888, kSide, kSide, {0, kSide, 0}, {3 * kSide},
         src.data(), dst.data());
    const uint8_t *p = out.data();
    for (int32_t cb = 0; cb < kSide; ++cb)
      for (int32_t luma = 0; luma < kSide; ++luma, p += 3)
        if (const Colour c = model_matrix(luma, cb, cr);
            p[0] != c[0] || p[1] != c[1] || p[2] != c[2])
          FAIL() << "Y " << luma << " U " << cb << " V " << cr;
  }
}

TEST_P(EachLevel, LeavesEmptyPicturesAlone) {
  std::array<uint8_t *, 4> none{};
  for (const Kernel &kernel : kKernels)
    for (const auto &[w, h] : kEmptySizes)
      call(GetParam().yuv_to_rgb.*kernel.at_level, w, h, {}, {}, none.data(), none.data());
}

// --- The dispatcher ---

TEST(Dispatcher, ConvertsThePairsOfTheListAndNoOthers) {
  std::set<std::pair<int32_t, int32_t>> pairs;
#define PIVRA_INSERT(SOURCE, source, DESTINATION, destination) \
  pairs.insert({PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION});
  PIVRA_CSC_PAIRS(PIVRA_INSERT)
  pairs.erase({PIVRA_FORMAT_T256X16, PIVRA_FORMAT_RGBA8888});  // not at this size
  Image src(0, 8, 8), dst(0, 8, 8);
  for (int32_t from = -1; from <= 600; ++from)
    for (int32_t to = -1; to <= 600; ++to) {
      src.desc.format = from;
      dst.desc.format = to;
      const auto before = dst.bytes[0];
      const int32_t expected = from == to                   ? PIVRA_REFUSED
                               : pairs.contains({from, to}) ? PIVRA_OK
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

// And it passes the size of the source on.
TEST(Dispatcher, ChoosesTheKernelOfThePair) {
  for (const Kernel &kernel : kKernels) {
    Image src(kernel.source, 38, 10), dst(kernel.destination, 38, 10), expected = dst;
    dst.desc.width[0] = dst.desc.height[0] = 1000;
    expected.take(kernel.exported, src);
    ASSERT_EQ(pivra_csc(&src.desc, &dst.desc), PIVRA_OK);
    EXPECT_EQ(dst.bytes, expected.bytes) << kernel.name;
  }
}

// yv12 is yuv420 with the chroma planes exchanged, and stays exchanged.
TEST(Dispatcher, LeavesYv12WithUFirst) {
  for (const Kernel &kernel : kKernels) {
    if (kernel.source != PIVRA_FORMAT_YUV420) continue;
    Image src(PIVRA_FORMAT_YV12, 38, 10), dst(kernel.destination, 38, 10), expected = dst;
    const ImageDesc before = src.desc;
    std::swap(src.desc.plane[1], src.desc.plane[2]);
    std::swap(src.desc.stride[1], src.desc.stride[2]);
    expected.take(kernel.exported, src);
    ImageDesc exchanged = before;
    ASSERT_EQ(pivra_csc(&exchanged, &dst.desc), PIVRA_OK);
    EXPECT_EQ(dst.bytes, expected.bytes) << kernel.name;
    EXPECT_TRUE(std::ranges::equal(exchanged.plane, src.desc.plane));
    EXPECT_TRUE(std::ranges::equal(exchanged.stride, src.desc.stride));
    EXPECT_EQ(exchanged.format, PIVRA_FORMAT_YV12);

    ASSERT_EQ(pivra_csc(&exchanged, &dst.desc), PIVRA_OK);  // now in the opposite roles
    EXPECT_NE(dst.bytes, expected.bytes) << kernel.name;
  }
}

}  // namespace
}  // namespace pivra::test
