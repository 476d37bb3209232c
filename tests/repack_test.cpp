#include "compare.h"
#include "copy_model.h"
#include "levels.h"

namespace pivra::test {
namespace {

// --- Rows, at every level ---

TEST_P(EachLevel, MovesRowsOfEveryLength) {
  const Repack &repack = GetParam().repack;
  GuardedPlane a, b, pairs;
  for (size_t n = 0; n <= 300; ++n) {
    const auto count = static_cast<ptrdiff_t>(n);
    const std::vector<uint8_t> first = random_bytes(n), second = random_bytes(n);
    std::vector<uint8_t> joined, swapped;
    for (size_t x = 0; x < n; ++x) {
      joined.insert(joined.end(), {first[x], second[x]});
      swapped.insert(swapped.end(), {second[x], first[x]});
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
  Four width, height, src_stride, dst_stride;
  std::array<ModelPlane, 3> in, out;

  // Sample x of source row y goes to sample `to_x` of row `to_y`.
  void move(int from, int32_t x, ptrdiff_t y, int to, int32_t to_x, ptrdiff_t to_y) {
    out[to].write(to_y * dst_stride[to] + to_x, in[from].read(y * src_stride[from] + x));
  }

  void copy(int from, int to) {
    CopyModel m = {1, width[from], height[from], src_stride[to], dst_stride[to], in[from], out[to]};
    m.run();
    in[from] = m.in;
    out[to] = m.out;
  }
  void double_rows(int plane) {
    for (ptrdiff_t y = 0; y < 2 * height[plane]; ++y)
      for (int32_t x = 0; x < width[plane]; ++x) move(plane, x, y / 2, plane, x, y);
  }
  void halve_rows(int from, int to) {
    for (ptrdiff_t y = 0; y < height[from]; y += 2)
      for (int32_t x = 0; x < width[from]; ++x) move(from, x, y, to, x, y / 2);
  }
  void pack(int a, int b) {
    for (ptrdiff_t y = 0; y < height[1]; ++y)
      for (int32_t x = 0; x < 2 * width[1]; ++x) move(x % 2 ? b : a, x / 2, y, 1, x, y);
  }
  void unpack(int32_t bytes, int a, int b) {
    for (ptrdiff_t y = 0; y < height[1]; ++y)
      for (int32_t x = 0; x < bytes; ++x) move(1, x, y, x % 2 ? b : a, x / 2, y);
  }
  void exchange_in_one_run() {
    for (int32_t i = 0; i < width[0] * (height[0] >> 1); i += 2) {
      move(1, i + 1, 0, 1, i, 0);
      move(1, i, 0, 1, i + 1, 0);
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

// The primitives as kernels, so that they are tried on the same pictures.
#define PIVRA_AS_KERNEL(...)                                                             \
  [](uint8_t **src, int32_t *w, int32_t *h, int32_t *from, int32_t *to, uint8_t **dst) { \
    __VA_ARGS__;                                                                         \
  }
#define PIVRA_KERNEL(source, destination, ...)                               \
  Kernel {                                                                   \
#source " to " #destination,                                             \
        PIVRA_CSC_NAME(source, destination), [](PlanesModel & m) __VA_ARGS__ \
  }
const std::vector<Kernel> kKernels = {
    PIVRA_KERNEL(yuv420, yv12, { m.copy(1, 2), m.copy(2, 1); }),
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
    {"1x1_to_1x2",
     PIVRA_AS_KERNEL(pivra_csc_1x1_to_1x2(src[1], w[1], h[1], from[1], to[1], dst[1])),
     [](PlanesModel &m) { m.double_rows(1); }, Luma::kNone},
    {"1x2_to_1x1",
     PIVRA_AS_KERNEL(pivra_csc_1x2_to_1x1(src[1], w[1], h[1], from[1], to[1], dst[1])),
     [](PlanesModel &m) { m.halve_rows(1, 1); }, Luma::kNone},
    {"8b8b_pck",
     PIVRA_AS_KERNEL(
         pivra_csc_8b8b_pck(src[1], src[2], w[1], h[1], from[1], from[2], to[1], dst[1])),
     [](PlanesModel &m) { m.pack(1, 2); }, Luma::kNone},
    {"8b8b_unpck",
     PIVRA_AS_KERNEL(
         pivra_csc_8b8b_unpck(src[1], w[1], h[1], from[1], to[1], to[2], dst[1], dst[2])),
     [](PlanesModel &m) { m.unpack(m.width[1], 1, 2); }, Luma::kNone},
};

// Chroma of any size beside luma of any size: the kernels take each as it is said. Content
// says how far planes without padding are copied, so there is more than enough.
PlanesModel random_job() {
  PlanesModel m{};
  const bool packed = random_in(0, 1);
  for (size_t plane = 0; plane < 3; ++plane) {
    m.width[plane] = random_width();
    m.height[plane] = random_in(1, 9);
    if (plane == 2 && random_in(0, 1)) m.width[2] = m.width[1], m.height[2] = m.height[1];
    const int32_t elements = m.width[plane] * (plane == 0 || packed ? 1 : 2);
    for (auto *stride : {&m.src_stride, &m.dst_stride})
      (*stride)[plane] = elements + (packed ? 0 : random_in(0, 40));
  }
  for (ModelPlane &plane : m.in) plane.bytes = random_bytes(8192);
  return m;
}

TEST(Planes, EqualTheModelAtEveryLevel) {
  at_every_level([](const std::string &level) {
    for (const Kernel &kernel : kKernels)
      for (int round = 0; round < 200 && !HasFatalFailure(); ++round) {
        PlanesModel m = random_job();
        Four width = m.width, height = m.height, from = m.src_stride, to = m.dst_stride;
        if (kernel.luma == Luma::kInOneRun) m.src_stride[0] = m.dst_stride[0] = m.width[0];
        const auto model = [&] {
          if (kernel.luma != Luma::kNone) m.copy(0, 0);
          kernel.chroma(m);
        };
        const auto run = [&](uint8_t **src, uint8_t **dst) {
          kernel.run(src, width.data(), height.data(), from.data(), to.data(), dst);
        };
        compare_with_model(all(m.in), all(m.out), model, run,
                           std::tuple(level, kernel.name, width, height, "strides", from, to));
      }
  });
}

TEST(Planes, LeaveEmptyOnesAlone) {
  for (const Kernel &kernel : kKernels)
    for (const auto &[w, h] : kEmptySizes) {
      std::array<uint8_t *, 4> planes{};
      Four width = {w, w, w}, height = {h, h, h}, stride{};
      kernel.run(planes.data(), width.data(), height.data(), stride.data(), stride.data(),
                 planes.data());
    }
}

}  // namespace
}  // namespace pivra::test
