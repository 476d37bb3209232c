#include <map>
#include <pivra.hpp>

#include "compare.h"
#include "dither_model.h"
#include "levels.h"

namespace pivra::test {
namespace {

// Any, or a sky, which is a slope with a little noise, or all white, so that each decision
// hangs on the one before through whole rows.
std::vector<uint8_t> luma(size_t count) {
  const int32_t kind = random_in(0, 7), base = random_in(0, 300);
  const int32_t noise = random_in(1, 12), run = random_in(1, 40);
  if (kind < 3) return random_bytes(count);
  std::vector<uint8_t> bytes(count, 255);
  for (size_t i = 0; kind > 3 && i < count; ++i)
    bytes[i] = static_cast<uint8_t>(
        std::clamp(base + static_cast<int32_t>(i) / run % 64 - random_in(0, noise), 0, 255));
  return bytes;
}

// --- The perturbation ---

// Of every width at first.
void expect_perturbed(pivra_cpy_kernel *kernel, int round) {
  ModelPlane src, dst;
  const int32_t width = round < 300 ? round + 1 : random_in(1, random_in(0, 2) ? 90 : 400),
                height = random_in(1, 9), stride = width + random_padding();
  if (random_in(0, 3) == 0) {  // in place: the source has the bytes of the destination
    src.bytes = luma(size_t{1} * stride * (height - 1) + width);
    GuardedPlane plane;
    uint8_t *const data = plane.place(src.bytes, random_in(0, 1));
    kernel(data, width, height, stride, stride, data);
    model_perturb(src, width, height, stride, stride, src, 0);
    ASSERT_EQ(plane.content(), src.bytes) << width << "x" << height;
    return;
  }
  const int32_t to = width + random_padding();
  compare_with_model(
      {&src}, {&dst}, [&] { model_perturb(src, width, height, stride, to, dst, 0); },
      [&](uint8_t **s, uint8_t **d) { kernel(*s, width, height, stride, to, *d); },
      std::tuple(width, height, "strides", stride, to), luma);
}

TEST_P(EachLevel, PerturbsAsTheModel) {
  for (int round = 0; round < 2300 && !HasFatalFailure(); ++round)
    expect_perturbed(GetParam().dither.perturb, round);
}

TEST_P(EachLevel, LeavesEmptyPlanesAlone) {
  for (const auto &[w, h] : kEmptySizes) GetParam().dither.perturb(nullptr, w, h, 8, 8, nullptr);
}

// --- The kernels ---

struct Kernel {
  int32_t source, destination;
  std::string name;
  pivra_csc_kernel *run;
};

#define PIVRA_KERNEL(source, destination)                                                    \
  {find_format(#source)->code, find_format(#destination)->code, #source "_to_" #destination, \
   PIVRA_DITHER_NAME(source, destination)},
const std::vector<Kernel> kKernels = {PIVRA_DITHER(PIVRA_KERNEL)};

// Of every width at first, for every end of a row that is written over its own luma. Some
// are so low that nothing is dithered, and some so high that rows run into luma which is
// still to be read.
DitherModel random_job(const Kernel &kernel, int round) {
  DitherModel m{};
  m.source = kernel.source;
  m.destination = kernel.destination;
  m.width = round < 200 ? round + 1 : random_width();
  const int32_t kind = random_in(0, 7);
  m.heights[0] = kind == 0 ? random_in(5, 300) : random_in(0, kind < 3 ? 6 : 24);
  const int32_t rows = m.halves_height() ? (m.heights[0] + 1) / 2 : m.heights[0];
  m.heights[1] = m.heights[2] = rows;
  const bool halved = m.from({PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV422N});
  const int32_t chroma = halved ? (m.width + 1) / 2 : m.width;
  m.stride = {m.width + random_padding(), chroma + random_padding(), chroma + random_padding()};
  m.dst_stride = 2 * m.width + random_padding();
  return m;
}

// As the library was loaded with any of its levels.
TEST(Kernels, EqualTheModelAtEveryLevel) {
  at_every_level([](const std::string &level) {
    for (int round = 0; round < 300; ++round)
      if (!HasFatalFailure()) expect_perturbed(pivra_dit_8b, round);
    for (const Kernel &kernel : kKernels)
      for (int round = 0; round < 470 && !HasFatalFailure(); ++round) {
        DitherModel m = random_job(kernel, round);
        const auto run = [&](uint8_t **src, uint8_t **dst) {
          Four width = {m.width, -1, -1, -1}, height = m.heights, stride = m.stride,
               dst_stride = {m.dst_stride};
          kernel.run(src, width.data(), height.data(), stride.data(), dst_stride.data(), dst);
        };
        compare_with_model(
            all(m.in), {&m.out}, [&] { m.run(); }, run,
            std::tuple(level, kernel.name, m.width, m.heights, "strides", m.stride, m.dst_stride),
            luma);
      }
  });
}

// --- The dispatcher ---

using Pair = std::pair<int32_t, int32_t>;
const std::map<Pair, pivra_csc_kernel *> kPairs = {
    {{PIVRA_FORMAT_YUV400, PIVRA_FORMAT_RGB565}, pivra_csc_yuv400_to_rgb565_dither},
    {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_BGR565}, pivra_csc_yuv420_to_bgr565_dither},
    {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565}, pivra_csc_yuv420_to_rgb565_dither},
    {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV420}, nullptr},  // a copy with its luma perturbed
    {{PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_BGR565}, pivra_csc_yuv422n_to_rgb565_dither},
    {{PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_RGB565}, pivra_csc_yuv422n_to_rgb565_dither},
    {{PIVRA_FORMAT_YUV422W, PIVRA_FORMAT_BGR565}, pivra_csc_yuv422w_to_rgb565_dither},
    {{PIVRA_FORMAT_YUV422W, PIVRA_FORMAT_RGB565}, pivra_csc_yuv422w_to_rgb565_dither},
    {{PIVRA_FORMAT_YUV444, PIVRA_FORMAT_BGR565}, pivra_csc_yuv444_to_bgr565_dither},
    {{PIVRA_FORMAT_YUV444, PIVRA_FORMAT_RGB565}, pivra_csc_yuv444_to_rgb565_dither},
    {{PIVRA_FORMAT_YV12, PIVRA_FORMAT_BGR565}, pivra_csc_yuv420_to_bgr565_dither},
    {{PIVRA_FORMAT_YV12, PIVRA_FORMAT_RGB565}, pivra_csc_yuv420_to_rgb565_dither}};

TEST(Dispatcher, DithersThePairsOfTheListAndNoOthers) {
  Image src(0), dst(0);
  for (int32_t from = -1; from <= 600; ++from)
    for (int32_t to = -1; to <= 600; ++to) {
      src.desc.format = from;
      dst.desc.format = to;
      const auto pair = kPairs.find({from, to});
      const bool listed = pair != kPairs.end();
      const auto before = dst.bytes;
      ASSERT_EQ(pivra_csc_dither(&src.desc, &dst.desc), listed ? PIVRA_OK : PIVRA_UNSUPPORTED)
          << from << " to " << to;
      if (!listed) {
        ASSERT_EQ(dst.bytes, before) << from << " to " << to;
        continue;
      }
      Image expected = dst, planes = src;
      expected.bytes = before;
      expected.own();
      if (from == PIVRA_FORMAT_YV12) std::swap(planes.desc.plane[1], planes.desc.plane[2]);
      if (pair->second != nullptr)
        expected.take(pair->second, planes);
      else
        for (int p = 0; p < 3; ++p) expected.take(p == 0 ? pivra_dit_8b : pivra_cpy_8b, src, p, p);
      ASSERT_EQ(dst.bytes, expected.bytes) << from << " to " << to;
      for (auto &plane : dst.bytes) std::fill(plane.begin(), plane.end(), 0x5A);
    }
}

}  // namespace
}  // namespace pivra::test
