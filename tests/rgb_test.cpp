// The kernels from RGB, to YUV and to other RGB layouts, against their model.
#include "compare.h"
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

// Packed pictures, padded ones, and rows that overlap; paddings of every plane apart. The
// one kernel that is luma alone also turns pictures upside down.
RgbModel random_job(const Kernel &kernel) {
  RgbModel m{};
  m.source = kernel.source;
  m.destination = kernel.destination;
  m.width = random_width();
  m.height = random_in(1, 7);
  const bool packed = random_in(0, 1) == 0;
  const auto padding = [&] { return packed && random_in(0, 3) > 0 ? 0 : random_in(0, 40); };
  const int32_t row = m.width * pixel_bytes(m.source), half = m.width / 2;
  m.stride = packed ? row : random_in(0, 9) == 0 ? random_in(0, row) : row + padding();
  const bool rgb = m.destination >= PIVRA_FORMAT_RGB565;
  m.dst_stride[0] = m.width * (rgb ? pixel_bytes(m.destination) : 1) + padding();
  m.dst_stride[1] = (m.pairs() ? 2 * half : half) + padding();
  m.dst_stride[2] = half + padding();
  if (kernel.name == "rgba8888_to_yuv444" && random_in(0, 3) == 0) {
    m.out[0].origin = ptrdiff_t{m.height - 1} * m.dst_stride[0];
    m.dst_stride[0] = -m.dst_stride[0];
  }
  return m;
}

void run(pivra_csc_kernel *kernel, const RgbModel &m, uint8_t **src, uint8_t **dst) {
  call(kernel, m.width, m.height, {m.stride}, m.dst_stride, src, dst);
}

TEST_P(EachLevel, EqualsTheModelAtRandomSizes) {
  for (const Kernel &kernel : kKernels)
    for (int round = 0; round < 120 && !HasFatalFailure(); ++round) {
      RgbModel m = random_job(kernel);
      pivra_csc_kernel *const chosen = round ? kernel.at_level(GetParam()) : kernel.exported;
      compare_with_model(
          {&m.in}, all(m.out), [&] { m.run(); },
          [&](uint8_t **src, uint8_t **dst) { run(chosen, m, src, dst); },
          std::tuple(round ? GetParam().name : "exported", kernel.name, m.width, m.height,
                     "strides", m.stride, m.dst_stride));
    }
}

// All colours in luma and chroma, from each layout's bytes or words.
TEST_P(EachLevel, ComputesTheMatrixForEveryColour) {
  for (const Kernel &kernel : kKernels) {
    if (kernel.destination != PIVRA_FORMAT_YUV420) continue;
    const int32_t bytes = pixel_bytes(kernel.source), pictures = bytes == 2 ? 256 : 65536;
    const bool alpha_first = channels(kernel.source)[0] == 3;
    RgbModel m = {kernel.source, kernel.destination, 512, 2, 512 * bytes, {512, 256, 256}, {}, {}};
    std::vector<uint8_t> y(1024), u(256), v(256);
    m.in.bytes.assign(2 * m.stride, 0x77);
    for (int32_t picture = 0; picture < pictures; ++picture) {
      for (int32_t i = 0; i < 256; ++i) {  // the even pixels of row 0
        uint8_t *p = &m.in.bytes[2 * i * bytes + alpha_first];
        p[0] = static_cast<uint8_t>(i);
        p[1] = static_cast<uint8_t>(picture);
        if (bytes > 2) p[2] = static_cast<uint8_t>(picture >> 8);
      }
      std::array<uint8_t *, 4> src = {m.in.bytes.data()}, dst = {y.data(), u.data(), v.data()};
      run(kernel.at_level(GetParam()), m, src.data(), dst.data());
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
TEST_P(EachLevel, WritesLumaBeforeChroma) {
  RgbModel m{PIVRA_FORMAT_RGB565, PIVRA_FORMAT_YUV420, 32, 8, 64, {40, 20, 20}, {}, {}};
  constexpr ptrdiff_t kU = 40 * 8, kV = kU + 20 * 4;
  m.in.bytes = random_bytes(64 * 8);
  m.run();
  std::vector<uint8_t> expected(1024), memory(1024);
  for (const auto &[plane, start] : {std::pair<size_t, ptrdiff_t>{0, 0}, {1, kU}, {2, kV}})
    for (int32_t row = 0; row < (plane == 0 ? 8 : 4); ++row) {
      const ptrdiff_t bytes = plane == 0 ? 32 : 16, at = row * m.dst_step(int(plane), bytes);
      std::copy_n(m.out[plane].bytes.begin() + at, bytes, expected.begin() + start + at);
    }
  std::array<uint8_t *, 4> src = {m.in.bytes.data()},
                           dst = {memory.data(), &memory[kU], &memory[kV]};
  run(GetParam().rgb_to_yuv.rgb565_to_yuv420, m, src.data(), dst.data());
  EXPECT_EQ(memory, expected);
}

TEST_P(EachLevel, LeavesEmptyPicturesAlone) {
  std::array<uint8_t *, 4> none{};
  for (const Kernel &kernel : kKernels)
    for (const auto &[w, h] : kEmptySizes)
      call(kernel.at_level(GetParam()), w, h, {}, {}, none.data(), none.data());
}

}  // namespace
}  // namespace pivra::test
