#include <gtest/gtest.h>

#include <array>

#include "copy_model.h"
#include "pivra.h"

namespace pivra::test {
namespace {

pivra_cpy_kernel *const kKernels[] = {pivra_cpy_8b, pivra_cpy_16b, pivra_cpy_24b, pivra_cpy_32b};

void expect_equal_to_model(const CopyModel &job) {
  // Content decides how far a contiguous tail runs: the model on ample memory
  // finds out, then the kernel gets exactly that much.
  CopyModel probe = job;
  const std::vector<uint8_t> content = random_bytes(1 << 17);
  probe.in.bytes = content;
  probe.run();

  const size_t row = static_cast<size_t>(job.width) * job.sample_bytes;
  const size_t rows = (job.height - 1) * size_t{static_cast<uint32_t>(job.src_stride)} + row;
  const std::vector<uint8_t> source(content.begin(),
                                    content.begin() + std::max(rows, probe.out.bytes.size()));
  GuardedPlane in, out;
  in.place(source, true);
  out.place(random_bytes(probe.out.bytes.size()), true);
  CopyModel m = job;
  m.in.bytes = source;
  m.out.bytes = out.content();
  m.run();
  kKernels[job.sample_bytes - 1](in.data(), job.width, job.height, job.src_stride, job.dst_stride,
                                 out.data());
  ASSERT_EQ(out.content(), m.out.bytes)
      << 8 * job.sample_bytes << "b " << job.width << "x" << job.height << " strides "
      << job.src_stride << " " << job.dst_stride;
}

TEST(CopyKernels, EqualTheModel) {
  for (int32_t sample_bytes = 1; sample_bytes <= 4; ++sample_bytes)
    for (int round = 0; round < 400; ++round) {
      CopyModel m{};
      m.sample_bytes = sample_bytes;
      m.width = random_in(1, 70);
      m.height = random_in(1, 12);
      const bool contiguous = random_in(0, 1);
      m.src_stride = m.width * sample_bytes + (contiguous ? 0 : random_in(0, 33));
      m.dst_stride = m.width * sample_bytes + (contiguous ? 0 : random_in(0, 33));
      expect_equal_to_model(m);
      if (HasFatalFailure()) return;
    }
}

TEST(CopyKernels, CopyNothingOfAnEmptyPlane) {
  for (pivra_cpy_kernel *kernel : kKernels)
    for (const auto &[w, h] : {std::pair{0, 4}, {4, 0}, {-4, 4}, {4, -4}, {-4, -4}})
      kernel(nullptr, w, h, w, w, nullptr);
}

TEST(CopyKernels, KeepTheContiguousTailsOfKnownSizes) {
  std::vector<uint8_t> src(300, 7), dst(300, 0);
  pivra_cpy_8b(src.data(), 20, 15, 20, 20, dst.data());  // 288 in blocks, then one
  EXPECT_EQ(std::count(dst.begin(), dst.end(), 7), 289);
  std::fill(dst.begin(), dst.end(), 0);
  pivra_cpy_16b(src.data(), 8, 2, 32, 32, dst.data());  // two rows of 9 bytes, 16 apart
  EXPECT_EQ(std::count(dst.begin(), dst.end(), 7), 18);
  EXPECT_EQ(dst[24], 7);
}

struct Planes {
  explicit Planes(int32_t format) {
    desc.format = format;
    for (int plane = 0; plane < 4; ++plane) {
      bytes[plane].resize(64 * 8);  // never all the same, or copies would not show
      for (uint8_t &b : bytes[plane]) b = static_cast<uint8_t>(random_engine()());
      desc.plane[plane] = bytes[plane].data();
      desc.width[plane] = 16;
      desc.height[plane] = 8;
      desc.stride[plane] = 32;
    }
  }
  std::array<std::vector<uint8_t>, 4> bytes;
  ImageDesc desc{};
};

// Bytes in row 1 of the destination plane that come from the source, and where they start.
enum class Copied { kNothing, kBytes, kWords };

Copied copied(const Planes &src, const Planes &dst, const Planes &before, int plane) {
  if (dst.bytes[plane] == before.bytes[plane]) return Copied::kNothing;
  const auto same = [&](size_t from, size_t count) {
    return std::equal(&src.bytes[plane][from], &src.bytes[plane][from] + count,
                      &dst.bytes[plane][from]);
  };
  return same(0, 32 * 8)               ? Copied::kWords
         : same(0, 16) && same(32, 16) ? Copied::kBytes
                                       : Copied::kNothing;
}

TEST(Copy, ChoosesKernelsByFormat) {
  for (int32_t format = -5; format < 610; ++format) {
    const Planes src(format);
    Planes dst(format), other(format + 1);
    dst.bytes = other.bytes;
    for (int plane = 0; plane < 4; ++plane) dst.desc.plane[plane] = dst.bytes[plane].data();
    const Planes before = other;

    const bool yuv = format >= 0 && format < 100 && format != PIVRA_FORMAT_T64X32;
    const bool words = format >= 200 && format < 300;
    EXPECT_EQ(pivra_cpy(&src.desc, &dst.desc), yuv || words ? PIVRA_OK : PIVRA_UNSUPPORTED);
    EXPECT_EQ(pivra_cpy(&src.desc, &other.desc), PIVRA_REFUSED);

    const Copied b = Copied::kBytes, w = Copied::kWords, n = Copied::kNothing;
    const std::array<Copied, 4> expected = words                           ? std::array{w, n, n, n}
                                           : !yuv                          ? std::array{n, n, n, n}
                                           : format == PIVRA_FORMAT_NV12   ? std::array{b, w, n, n}
                                           : format == PIVRA_FORMAT_YUV400 ? std::array{b, n, n, n}
                                                                           : std::array{b, b, b, n};
    for (int plane = 0; plane < 4; ++plane)
      EXPECT_EQ(copied(src, dst, before, plane), expected[plane]) << format << " plane " << plane;
  }
}

}  // namespace
}  // namespace pivra::test
