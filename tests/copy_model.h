#ifndef PIVRA_TESTS_COPY_MODEL_H
#define PIVRA_TESTS_COPY_MODEL_H

#include "guarded.h"

namespace pivra::test {

// The copy kernels told literally: blocks of 16 samples, then the tail sample by
// sample, each moving the position on by one byte.
struct CopyModel {
  int32_t sample_bytes, width, height, src_stride, dst_stride;
  ModelPlane in, out;

  void run() {
    const bool whole = sample_bytes > 2;
    const int32_t unit = whole ? 1 : sample_bytes;
    const ptrdiff_t src_step = src_stride / unit, dst_step = dst_stride / unit;
    if (!whole && width == src_step && width == dst_step) return run_on(0, 0, width * height, true);
    for (ptrdiff_t y = 0; y < height; ++y)
      if (whole)
        copy_bytes(y * src_step, y * dst_step, width * sample_bytes);
      else
        run_on(y * src_step, y * dst_step, width, false);
  }

  void copy_bytes(ptrdiff_t from, ptrdiff_t to, int32_t count) {
    for (int32_t i = 0; i < count; ++i) out.write(to + i, in.read(from + i));
  }

  void run_on(ptrdiff_t from, ptrdiff_t to, int32_t samples, bool value_is_bound) {
    const int32_t blocks = samples / 16 * 16, copied = blocks * sample_bytes;
    copy_bytes(from, to, copied);
    int32_t bound = samples;
    for (int32_t i = blocks, at = copied; i < bound; ++i, ++at) {
      copy_bytes(from + at, to + at, sample_bytes);
      if (value_is_bound)
        bound = in.read(from + at) | (sample_bytes == 2 ? in.read(from + at + 1) << 8 : 0);
    }
  }
};

}  // namespace pivra::test

#endif
