#include "compare.h"
#include "copy_model.h"

namespace pivra::test {
namespace {

pivra_cpy_kernel *const kKernels[] = {pivra_cpy_8b, pivra_cpy_16b, pivra_cpy_24b, pivra_cpy_32b};

TEST(CopyKernels, EqualTheModel) {
  for (int32_t sample_bytes = 1; sample_bytes <= 4; ++sample_bytes)
    for (int round = 0; round < 400 && !HasFatalFailure(); ++round) {
      CopyModel m{};
      m.sample_bytes = sample_bytes;
      m.width = random_in(1, 70);
      m.height = random_in(1, 12);
      const int32_t row = m.width * sample_bytes;
      const bool contiguous = random_in(0, 1);
      m.src_stride = row + (contiguous ? 0 : random_in(0, 33));
      m.dst_stride = row + (contiguous ? 0 : random_in(0, 33));
      // Content says how far a contiguous tail runs, so there is more than enough.
      m.in.bytes = random_bytes(1 << 17);
      const auto run = [&](uint8_t **src, uint8_t **dst) {
        kKernels[sample_bytes - 1](*src, m.width, m.height, m.src_stride, m.dst_stride, *dst);
      };
      compare_with_model(
          {&m.in}, {&m.out}, [&] { m.run(); }, run,
          std::tuple(sample_bytes, m.width, m.height, "strides", m.src_stride, m.dst_stride));
    }
}

TEST(CopyKernels, CopyNothingOfAnEmptyPlane) {
  for (pivra_cpy_kernel *kernel : kKernels)
    for (const auto &[w, h] : kEmptySizes) kernel(nullptr, w, h, w, w, nullptr);
}

TEST(Copy, ChoosesKernelsByFormat) {
  for (int32_t format = -5; format < 610; ++format) {
    const Image src(format);
    Image dst(format), expected = dst;
    const bool yuv = format >= 0 && format < 100 && format != PIVRA_FORMAT_T64X32;
    const bool words = format >= 200 && format < 300, pairs = format == PIVRA_FORMAT_NV12;
    dst.desc.format = format + 1;
    ASSERT_EQ(pivra_cpy(&src.desc, &dst.desc), PIVRA_REFUSED) << format;
    ASSERT_EQ(dst.bytes, expected.bytes) << format;
    dst.desc.format = format;
    if (yuv) expected.take(pivra_cpy_8b, src, 0, 0);
    if (words) expected.take(pivra_cpy_16b, src, 0, 0);
    for (const int plane : {1, 2})
      if (yuv && (pairs ? plane == 1 : format != PIVRA_FORMAT_YUV400))
        expected.take(pairs ? pivra_cpy_16b : pivra_cpy_8b, src, plane, plane);
    ASSERT_EQ(pivra_cpy(&src.desc, &dst.desc), yuv || words ? PIVRA_OK : PIVRA_UNSUPPORTED);
    ASSERT_EQ(dst.bytes, expected.bytes) << format;
  }
}

}  // namespace
}  // namespace pivra::test
