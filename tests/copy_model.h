#ifndef PIVRA_TESTS_COPY_MODEL_H
#define PIVRA_TESTS_COPY_MODEL_H

#include "guarded.h"

namespace pivra::test {

// The copy kernels told literally: blocks of 16 samples, then the tail sample by
// sample, each moving the position on by one byte.
struct CopyModel {
  int32_t sample_bytes, width, height, src_stride, dst_stride;
  ModelPlane in, out;

  void copy_byte(ptrdiff_t to, ptrdiff_t from) { out.write(to, in.read(from)); }

  void run() {
    if (width <= 0 || height <= 0) return;
    if (sample_bytes > 2) return whole_rows();
    const int32_t src_step = src_stride / sample_bytes, dst_step = dst_stride / sample_bytes;
    if (width == src_step && width == dst_step) return run_on(0, 0, width * height, true);
    for (ptrdiff_t y = 0; y < height; ++y) run_on(y * src_step, y * dst_step, width, false);
  }

  void run_on(ptrdiff_t from, ptrdiff_t to, int32_t samples, bool value_is_bound) {
    const int32_t blocks = samples / 16 * 16;
    for (int32_t i = 0; i < blocks * sample_bytes; ++i) copy_byte(to++, from++);
    int32_t bound = samples;
    for (int32_t i = blocks; i < bound; ++i, ++from, ++to) {
      int32_t value = in.read(from);
      if (sample_bytes == 2) value |= in.read(from + 1) << 8;
      for (int32_t b = 0; b < sample_bytes; ++b) out.write(to + b, value >> (8 * b));
      if (value_is_bound) bound = value;
    }
  }

  void whole_rows() {
    for (ptrdiff_t y = 0; y < height; ++y)
      for (ptrdiff_t i = 0; i < ptrdiff_t{width} * sample_bytes; ++i)
        copy_byte(y * dst_stride + i, y * src_stride + i);
  }
};

}  // namespace pivra::test

#endif
