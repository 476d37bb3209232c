// The pass over the rows of a plane in 64x32 tiles: a strip of a row is put together
// from the tiles and resized as any other. Pairs of chroma are parted afterwards.
#include <string.h>

#include "csc/repack.h"
#include "pivra.h"
#include "rsz/axis.h"
#include "rsz/engine.h"
#include "tile/layout.h"

namespace pivra {
namespace {

// A tiled plane: its width, and as many rows as a call resizes.
struct Tiled {
  const uint8_t *first;
  int32_t width, rows;
};

constexpr int32_t kBuffer = 2 * kStripBytes;

// As many outputs as can be sure to be made of a bufferful.
int32_t strip_limit(const Engine &engine, const Axis &across) {
  const int64_t samples = across.grows() ? 1 : int64_t{across.quotient} + 1;
  const int64_t outputs = (kBuffer / engine.bytes - 1) / samples;
  return outputs < 1 ? 1 : outputs < engine.limit ? static_cast<int32_t>(outputs) : engine.limit;
}

// Stores a strip of a row: put(row, first output, bytes, count).
template <class Store>
void resize_tiled(Shape shape, const Axis &across, const Tiled &src, Store store) {
  const Engine engine(shape);
  AxisWalk walk(across, strip_limit(engine, across));
  Strip strip;
  uint8_t in[kBuffer], out[kStripBytes];
  while (engine.next(walk, strip)) {
    for (int32_t row = 0; row < src.rows; ++row) {
      read_row<k64x32>(src.first, src.width, src.rows,
                       static_cast<int32_t>(strip.source * engine.bytes), row,
                       static_cast<int32_t>(strip.samples * engine.bytes), in);
      engine.resize(across, strip, in, out);
      store(row, strip, out);
    }
  }
}

void resize_luma(const Axis &across, const Tiled &src, uint8_t *dst) {
  resize_tiled(k8b, across, src, [=](ptrdiff_t row, const Strip &strip, const uint8_t *out) {
    memcpy(dst + row * across.outputs + strip.first, out, static_cast<size_t>(strip.count));
  });
}

void resize_chroma(const Axis &across, const Tiled &src, uint8_t *first, uint8_t *second) {
  const auto deinterleave = chosen(repack_tables).deinterleave;
  resize_tiled(k8b8b, across, src, [=](ptrdiff_t row, const Strip &strip, const uint8_t *out) {
    const ptrdiff_t at = row * across.outputs + strip.first;
    deinterleave(out, strip.count, first + at, second + at);
  });
}

constexpr Axis down_axis(int32_t dw, int32_t qx, int32_t rx) {
  return shrink_axis(dw, qx < 1 ? 1 : qx, rx);
}
constexpr bool kMode0 = false, kMode1 = true;

}  // namespace
}  // namespace pivra

using namespace pivra;

void pivra_nv12t_rsz_down_w(const uint8_t *src, uint8_t *dst, int32_t tw, int32_t dw, int32_t rows,
                            int32_t qx, int32_t rx) {
  resize_luma(down_axis(dw, qx, rx), {src, tw, rows}, dst);
}

void pivra_nv12t_rsz_down_w_c(const uint8_t *src, uint8_t *dst_first, uint8_t *dst_second,
                              int32_t tw, int32_t dw, int32_t rows, int32_t qx, int32_t rx) {
  resize_chroma(down_axis(dw, qx, rx), {src, tw, rows}, dst_first, dst_second);
}

#define PIVRA_DEFINE(name, mode)                                                               \
  void name(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t sw, int32_t rows, int32_t u, \
            int32_t r, int32_t tw) {                                                           \
    resize_luma(grow_axis(dw, sw, u, r, mode), {src, tw, rows}, dst);                          \
  }
PIVRA_DEFINE(pivra_nv12t_rsz_up, kMode0)
PIVRA_DEFINE(pivra_nv12t_rsz_up_mode1, kMode1)
#undef PIVRA_DEFINE

#define PIVRA_DEFINE(name, mode)                                                       \
  void name(const uint8_t *src, uint8_t *dst_first, uint8_t *dst_second, int32_t dw,   \
            int32_t sw_luma, int32_t rows, int32_t u, int32_t r, int32_t tw) {         \
    resize_chroma(grow_axis(dw, sw_luma >> 1, u, r, mode), {src, tw, rows}, dst_first, \
                  dst_second);                                                         \
  }
PIVRA_DEFINE(pivra_nv12t_rsz_up_c, kMode0)
PIVRA_DEFINE(pivra_nv12t_rsz_up_c_mode1, kMode1)
#undef PIVRA_DEFINE
