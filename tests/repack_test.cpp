#include <gtest/gtest.h>

#include "copy_model.h"
#include "levels.h"
#include "pivra.h"

namespace pivra::test {
namespace {

// --- Rows, at every level ---

class EveryLevel : public testing::TestWithParam<LevelUnderTest> {};
INSTANTIATE_TEST_SUITE_P(, EveryLevel, testing::ValuesIn(levels_under_test()),
                         [](const auto &level) { return level.param.name; });

TEST_P(EveryLevel, MovesRowsOfEveryLength) {
  const Repack &repack = GetParam().repack;
  GuardedPlane a, b, pairs;
  for (size_t n = 0; n <= 300; ++n) {
    const auto count = static_cast<ptrdiff_t>(n);
    const std::vector<uint8_t> first = random_bytes(n), second = random_bytes(n);
    std::vector<uint8_t> joined(2 * n), swapped(2 * n);
    for (size_t x = 0; x < n; ++x) {
      joined[2 * x] = swapped[2 * x + 1] = first[x];
      joined[2 * x + 1] = swapped[2 * x] = second[x];
    }
    const bool at_end = n % 2;
    a.place(first, at_end);
    b.place(second, at_end);
    pairs.place(random_bytes(2 * n), at_end);
    repack.interleave(a.data(), b.data(), count, pairs.data());
    ASSERT_EQ(pairs.content(), joined) << n;

    a.place(random_bytes(n), at_end);
    b.place(random_bytes(n), at_end);
    repack.deinterleave(pairs.data(), count, a.data(), b.data());
    ASSERT_EQ(a.content(), first) << n;
    ASSERT_EQ(b.content(), second) << n;

    a.place(random_bytes(2 * n), at_end);
    repack.swap_pairs(pairs.data(), count, a.data());
    ASSERT_EQ(a.content(), swapped) << n;
    repack.swap_pairs(pairs.data(), count, pairs.data());
    ASSERT_EQ(pairs.content(), swapped) << n;
  }
}

// --- Planes, told literally ---

struct PlanesModel {
  std::array<int32_t, 4> width, height, src_stride, dst_stride;
  std::array<ModelPlane, 3> in, out;

  void copy(int from, int to, int stride_of) {
    CopyModel m = {1,        width[from], height[from], src_stride[stride_of], dst_stride[to],
                   in[from], out[to]};
    m.run();
    in[from] = m.in;
    out[to] = m.out;
  }
  void double_rows(int plane) {
    for (ptrdiff_t y = 0; y < 2 * height[plane]; ++y)
      for (int32_t x = 0; x < width[plane]; ++x)
        out[plane].write(y * dst_stride[plane] + x, in[plane].read(y / 2 * src_stride[plane] + x));
  }
  void halve_rows(int from, int to) {
    for (ptrdiff_t y = 0; y < height[from]; y += 2)
      for (int32_t x = 0; x < width[from]; ++x)
        out[to].write(y / 2 * dst_stride[to] + x, in[from].read(y * src_stride[from] + x));
  }
  void pack(int a, int b) {
    for (ptrdiff_t y = 0; y < height[1]; ++y)
      for (int32_t x = 0; x < width[1]; ++x) {
        out[1].write(y * dst_stride[1] + 2 * x, in[a].read(y * src_stride[a] + x));
        out[1].write(y * dst_stride[1] + 2 * x + 1, in[b].read(y * src_stride[b] + x));
      }
  }
  void unpack(int32_t bytes, int a, int b) {
    for (ptrdiff_t y = 0; y < height[1]; ++y)
      for (int32_t x = 0; x < bytes; ++x) {
        const int to = x % 2 == 0 ? a : b;
        out[to].write(y * dst_stride[to] + x / 2, in[1].read(y * src_stride[1] + x));
      }
  }
  void exchange_in_one_run() {
    for (int32_t i = 0; i < width[0] * (height[0] >> 1); i += 2) {
      out[1].write(i, in[1].read(i + 1));
      out[1].write(i + 1, in[1].read(i));
    }
  }
};

enum class Luma { kCopied, kInOneRun, kNone };

struct Kernel {
  std::string name;
  pivra_csc_kernel *run;
  void (*chroma)(PlanesModel &);
  Luma luma = Luma::kCopied;
};

#define PIVRA_KERNEL(source, destination, ...)                               \
  {                                                                          \
#source " to " #destination,                                             \
        PIVRA_CSC_NAME(source, destination), [](PlanesModel & m) __VA_ARGS__ \
  }
const std::vector<Kernel> kKernels = {
    PIVRA_KERNEL(yuv420, yv12, { m.copy(1, 2, 2), m.copy(2, 1, 1); }),
    PIVRA_KERNEL(yuv420, yuv422n, { m.double_rows(1), m.double_rows(2); }),
    PIVRA_KERNEL(yuv420, nv12, { m.pack(1, 2); }),
    PIVRA_KERNEL(yuv420, nv21, { m.pack(2, 1); }),
    PIVRA_KERNEL(nv12, yuv420, { m.unpack(2 * m.width[1], 1, 2); }),
    PIVRA_KERNEL(nv12, yv12, { m.unpack(2 * m.width[1], 2, 1); }),
    PIVRA_KERNEL(nv21, yuv420, { m.unpack(2 * m.width[1], 2, 1); }),
    PIVRA_KERNEL(nv21, yv12, { m.unpack(2 * m.width[1], 1, 2); }),
    PIVRA_KERNEL(yuv422n, yuv420, { m.halve_rows(1, 1), m.halve_rows(2, 2); }),
    PIVRA_KERNEL(yuv422n, yv12, { m.halve_rows(1, 2), m.halve_rows(2, 1); }),
    PIVRA_KERNEL(yv16, yv12, { m.halve_rows(1, 1), m.halve_rows(2, 2); }),
    PIVRA_KERNEL(yv16, yuv420, { m.halve_rows(1, 2), m.halve_rows(2, 1); }),
    {"nv21 to nv12", pivra_csc_nv21_to_nv12, [](PlanesModel &m) { m.exchange_in_one_run(); },
     Luma::kInOneRun},
};
#undef PIVRA_KERNEL

// The primitives as kernels, so that they are tried on the same pictures.
const std::vector<Kernel> kPrimitives = {
    {"1x1_to_1x2",
     [](uint8_t **src, int32_t *w, int32_t *h, int32_t *from, int32_t *to, uint8_t **dst) {
       pivra_csc_1x1_to_1x2(src[1], w[1], h[1], from[1], to[1], dst[1]);
     },
     [](PlanesModel &m) { m.double_rows(1); }, Luma::kNone},
    {"1x2_to_1x1",
     [](uint8_t **src, int32_t *w, int32_t *h, int32_t *from, int32_t *to, uint8_t **dst) {
       pivra_csc_1x2_to_1x1(src[1], w[1], h[1], from[1], to[1], dst[1]);
     },
     [](PlanesModel &m) { m.halve_rows(1, 1); }, Luma::kNone},
    {"8b8b_pck",
     [](uint8_t **src, int32_t *w, int32_t *h, int32_t *from, int32_t *to, uint8_t **dst) {
       pivra_csc_8b8b_pck(src[1], src[2], w[1], h[1], from[1], from[2], to[1], dst[1]);
     },
     [](PlanesModel &m) { m.pack(1, 2); }, Luma::kNone},
    {"8b8b_unpck",
     [](uint8_t **src, int32_t *w, int32_t *h, int32_t *from, int32_t *to, uint8_t **dst) {
       pivra_csc_8b8b_unpck(src[1], w[1], h[1], from[1], to[1], to[2], dst[1], dst[2]);
     },
     [](PlanesModel &m) { m.unpack(m.width[1], 1, 2); }, Luma::kNone},
};

// Chroma of any size beside luma of any size: the kernels take each as it is said.
PlanesModel random_job() {
  PlanesModel m{};
  const bool packed = random_in(0, 1);
  for (size_t plane = 0; plane < 3; ++plane) {
    m.width[plane] = random_in(0, 3) == 0 ? random_in(1, 300) : random_in(1, 72);
    m.height[plane] = random_in(1, 9);
    if (plane == 2 && random_in(0, 1)) m.width[2] = m.width[1], m.height[2] = m.height[1];
    const int32_t elements = m.width[plane] * (plane == 0 || packed ? 1 : 2);
    for (auto *stride : {&m.src_stride, &m.dst_stride})
      (*stride)[plane] = elements + (packed ? 0 : random_in(0, 40));
  }
  return m;
}

void run_model(const Kernel &kernel, PlanesModel &m) {
  if (kernel.luma == Luma::kInOneRun) m.src_stride[0] = m.dst_stride[0] = m.width[0];
  if (kernel.luma != Luma::kNone) m.copy(0, 0, 0);
  kernel.chroma(m);
}

void expect_equal_to_model(const Kernel &kernel, const std::string &level) {
  PlanesModel m = random_job();
  auto [width, height, src_stride, dst_stride, in, out] = m;
  run_model(kernel, m);  // finds out what is touched,
  for (ModelPlane &plane : m.in) plane.bytes = random_bytes(plane.bytes.size());
  run_model(kernel, m);  // and again, for luma's last bytes say how far it goes

  std::array<GuardedPlane, 6> memory;
  std::array<uint8_t *, 4> src{}, dst{};
  for (size_t plane = 0; plane < 3; ++plane) {
    src[plane] = memory[plane].place(m.in[plane].bytes, random_in(0, 1));
    m.out[plane].bytes = random_bytes(m.out[plane].bytes.size());
    dst[plane] = memory[3 + plane].place(m.out[plane].bytes, random_in(0, 1));
  }
  kernel.run(src.data(), width.data(), height.data(), src_stride.data(), dst_stride.data(),
             dst.data());
  run_model(kernel, m);
  for (size_t plane = 0; plane < 3; ++plane)
    ASSERT_EQ(memory[3 + plane].content(), m.out[plane].bytes)
        << level << " " << kernel.name << " plane " << plane << ", " << width[0] << "x" << height[0]
        << " and " << width[1] << "x" << height[1] << ", strides " << src_stride[1] << " "
        << src_stride[2] << " to " << dst_stride[1] << " " << dst_stride[2];
}

TEST(Planes, EqualTheModelAtEveryLevel) {
  at_every_level([](const std::string &level) {
    for (const auto *kernels : {&kKernels, &kPrimitives})
      for (const Kernel &kernel : *kernels)
        for (int round = 0; round < 200 && !HasFatalFailure(); ++round)
          expect_equal_to_model(kernel, level);
  });
}

TEST(Planes, LeaveEmptyOnesAlone) {
  for (const auto *kernels : {&kKernels, &kPrimitives})
    for (const Kernel &kernel : *kernels)
      for (const auto &[w, h] : {std::pair{0, 8}, {8, 0}, {-7, 8}, {8, -7}, {-8, -8}}) {
        std::array<uint8_t *, 4> planes{};
        std::array<int32_t, 4> width = {w, w, w}, height = {h, h, h}, stride{};
        kernel.run(planes.data(), width.data(), height.data(), stride.data(), stride.data(),
                   planes.data());
      }
}

// nv21 to nv12 does not ask for strides, and leaves the rest of luma after one byte.
TEST(Planes, Nv21ToNv12KeepsItsTail) {
  std::vector<uint8_t> luma(300, 7), chroma = random_bytes(140), to_luma(300), to_chroma(140);
  std::array<uint8_t *, 4> src = {luma.data(), chroma.data()},
                           dst = {to_luma.data(), to_chroma.data()};
  std::array<int32_t, 4> width = {20, 10}, height = {15, 7}, stride = {999, 999};
  pivra_csc_nv21_to_nv12(src.data(), width.data(), height.data(), stride.data(), stride.data(),
                         dst.data());
  EXPECT_EQ(std::count(to_luma.begin(), to_luma.end(), 7), 289);
  for (size_t i = 0; i < to_chroma.size(); ++i) ASSERT_EQ(to_chroma[i], chroma[i ^ 1]);
}

}  // namespace
}  // namespace pivra::test
