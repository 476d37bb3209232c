// Rows of which only the first units of every few are kept. Compiled once per
// instruction-set level.
#include "simd/simd.h"
#include "txc/fixed_ratio.h"

namespace pivra::PIVRA_LEVEL {
namespace {

// The first `kept` of every `of` units.
template <int kept, int of, int unit>
void keep(const uint8_t *src, ptrdiff_t bytes, uint8_t *dst) {
  constexpr ptrdiff_t kBytes = kept * unit, kGroup = of * unit;
#if PIVRA_VECTORS
  // Blocks and rows begin with a group: so does the last block, if it overlaps.
  constexpr ptrdiff_t kStep = kKept<kept>;
  const ptrdiff_t last = bytes - kStep;
  if (last >= 0) {
    for (ptrdiff_t at = 0; at < last; at += kStep)
      copy_kept<kept, of, unit>(src + at / kBytes * kGroup, dst + at);
    copy_kept<kept, of, unit>(src + last / kBytes * kGroup, dst + last);
    return;
  }
#endif
  for (; bytes > 0; bytes -= kBytes, src += kGroup, dst += kBytes) memcpy(dst, src, kBytes);
}

}  // namespace

extern const FixedRatio fixed_ratio;
const FixedRatio fixed_ratio = {
    .one_of_two = {keep<1, 2, 1>, keep<1, 2, 2>},
    .two_of_three = {keep<2, 3, 1>, keep<2, 3, 2>},
    .three_of_four = {keep<3, 4, 1>, keep<3, 4, 2>},
};

}  // namespace pivra::PIVRA_LEVEL
