// The exported kernels: what each kind is made of, and the lists of kinds, shapes and
// turns that pivra/resize.h has.
#include "pivra.h"
#include "rsz/passes.h"

namespace pivra {
namespace {

// Strides of 5-6-5 kernels count words.
constexpr ptrdiff_t stride_bytes(Shape shape, int32_t stride) {
  return shape == k5b6b5b ? ptrdiff_t{stride} * 2 : stride;
}

template <Shape kShape, int32_t kTurn>
Place place(uint8_t *dst, int32_t dst_stride, int32_t width, int32_t height) {
  return {kTurn, kShape, dst, stride_bytes(kShape, dst_stride), width, height};
}

template <Shape kShape>
Source source(const uint8_t *src, int32_t src_stride) {
  return {src, stride_bytes(kShape, src_stride)};
}

template <Shape kShape, int32_t kTurn>
void down_mult(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, int32_t qx,
               int32_t src_stride, int32_t row_step, int32_t dst_stride) {
  const Place to = place<kShape, kTurn>(dst, dst_stride, dw, dh);
  shrink_both(kShape, {Axis::kPairs, to.columns(), 0, qx, 0}, {Axis::kPairs, to.lines(), 0, 0, 0},
              source<kShape>(src, src_stride), stride_bytes(kShape, row_step), to);
}

template <Shape kShape, int32_t kTurn>
void down_non_mult(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, int32_t qx,
                   int32_t src_stride, int32_t row_step, int32_t rx, int32_t ry,
                   int32_t dst_stride) {
  const Place to = place<kShape, kTurn>(dst, dst_stride, dw, dh);
  shrink_both(kShape, {Axis::kCarries, to.columns(), 0, qx, rx},
              {Axis::kCarries, to.lines(), 0, 0, ry}, source<kShape>(src, src_stride),
              stride_bytes(kShape, row_step), to);
}

// The pass over rows does not turn.

template <Shape kShape, int32_t>
void down_w(const uint8_t *src, uint8_t *scratch, int32_t src_stride, int32_t dw, int32_t rows,
            int32_t qx, int32_t rx) {
  resize_width(kShape, shrink_axis(dw, qx, rx), source<kShape>(src, src_stride), rows, scratch);
}

template <Shape kShape, int32_t, Axis::Rule kRule = Axis::kRepeats>
void up(const uint8_t *src, uint8_t *scratch, int32_t dw, int32_t sw, int32_t rows, int32_t ux,
        int32_t rx, int32_t src_stride) {
  resize_width(kShape, {kRule, dw, sw, ux, rx}, source<kShape>(src, src_stride), rows, scratch);
}

template <Shape kShape, int32_t>
constexpr auto *up_mode1 = up<kShape, kStraight, Axis::kRamps>;

// The scratch has rows of as many samples as the place has columns.

template <Shape kShape, int32_t kTurn>
void columns(const uint8_t *scratch, const Axis &down, const Place &to) {
  resize_height(kShape, down, {scratch, ptrdiff_t{to.columns()} * kSampleBytes[kShape]}, to);
}

template <Shape kShape, int32_t kTurn>
void down_h(const uint8_t *scratch, uint8_t *dst, int32_t width, int32_t dst_stride, int32_t dh,
            int32_t qy, int32_t ry) {
  const Place to = place<kShape, kTurn>(dst, dst_stride, width, dh);
  columns<kShape, kTurn>(scratch, shrink_axis(to.lines(), qy, ry), to);
}

template <Shape kShape, int32_t kTurn, Axis::Rule kRule = Axis::kRepeats>
void up_h(const uint8_t *scratch, uint8_t *dst, int32_t width, int32_t sh, int32_t dh, int32_t uy,
          int32_t ry, int32_t dst_stride) {
  const Place to = place<kShape, kTurn>(dst, dst_stride, width, dh);
  columns<kShape, kTurn>(scratch, {kRule, to.lines(), sh, uy, ry}, to);
}

template <Shape kShape, int32_t kTurn>
constexpr auto *up_h_mode1 = up_h<kShape, kTurn, Axis::kRamps>;

}  // namespace
}  // namespace pivra

// An exported function that hands its arguments on, by the type of kernel.
#define PIVRA_HAND_ON_down_mult(name, function)                                   \
  void name(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, int32_t qx, \
            int32_t src_stride, int32_t row_step, int32_t dst_stride) {           \
    function(src, dst, dw, dh, qx, src_stride, row_step, dst_stride);             \
  }
#define PIVRA_HAND_ON_down_non_mult(name, function)                                             \
  void name(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh, int32_t qx,               \
            int32_t src_stride, int32_t row_step, int32_t rx, int32_t ry, int32_t dst_stride) { \
    function(src, dst, dw, dh, qx, src_stride, row_step, rx, ry, dst_stride);                   \
  }
#define PIVRA_HAND_ON_down_w(name, function)                                                    \
  void name(const uint8_t *src, uint8_t *scratch, int32_t src_stride, int32_t dw, int32_t rows, \
            int32_t qx, int32_t rx) {                                                           \
    function(src, scratch, src_stride, dw, rows, qx, rx);                                       \
  }
#define PIVRA_HAND_ON_up(name, function)                                                \
  void name(const uint8_t *src, uint8_t *scratch, int32_t dw, int32_t sw, int32_t rows, \
            int32_t ux, int32_t rx, int32_t src_stride) {                               \
    function(src, scratch, dw, sw, rows, ux, rx, src_stride);                           \
  }
#define PIVRA_HAND_ON_down_h(name, function)                                                     \
  void name(const uint8_t *scratch, uint8_t *dst, int32_t width, int32_t dst_stride, int32_t dh, \
            int32_t qy, int32_t ry) {                                                            \
    function(scratch, dst, width, dst_stride, dh, qy, ry);                                       \
  }
#define PIVRA_HAND_ON_up_h(name, function)                                               \
  void name(const uint8_t *scratch, uint8_t *dst, int32_t width, int32_t sh, int32_t dh, \
            int32_t uy, int32_t ry, int32_t dst_stride) {                                \
    function(scratch, dst, width, sh, dh, uy, ry, dst_stride);                           \
  }

#define PIVRA_DEFINE(kind, arguments, shape)            \
  PIVRA_HAND_ON_##arguments(pivra_##shape##_rsz_##kind, \
                            (pivra::kind<pivra::k##shape, pivra::kStraight>))
PIVRA_RSZ_KERNELS(PIVRA_DEFINE)
#undef PIVRA_DEFINE

#define PIVRA_DEFINE(kind, arguments, shape, turn)                   \
  PIVRA_HAND_ON_##arguments(pivra_##shape##_rsz_rot_##turn##_##kind, \
                            (pivra::kind<pivra::k##shape, pivra::k##turn>))
PIVRA_RSZ_ROT_KERNELS(PIVRA_DEFINE)
#undef PIVRA_DEFINE

// The rule of down_non_mult, with the size known.
#define PIVRA_DEFINE(shape, width, height, source_width)                                        \
  void pivra_##shape##_rsz_down_non_mult_720p_720x404(                                          \
      const uint8_t *src, uint8_t *dst, int32_t, int32_t, int32_t, int32_t src_stride, int32_t, \
      int32_t, int32_t ry, int32_t dst_stride) {                                                \
    pivra_##shape##_rsz_down_non_mult(src, dst, width, height, 1, src_stride, src_stride,       \
                                      (source_width) - (width), ry, dst_stride);                \
  }
PIVRA_DEFINE(8b, 720, 404, 1280)
PIVRA_DEFINE(8b8b, 360, 202, 640)
#undef PIVRA_DEFINE
