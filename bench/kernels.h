// The conversion kernels by name.
#ifndef PIVRA_BENCH_KERNELS_H
#define PIVRA_BENCH_KERNELS_H

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "pivra.h"

struct Kernel {
  std::string_view name;
  pivra_csc_kernel *run;
  std::int32_t from, to;

  void operator()(ImageDesc src, ImageDesc dst) const {
    run(src.plane, src.width, src.height, src.stride, dst.stride, dst.plane);
  }
};

#define PIVRA_KERNEL(SOURCE, source, DESTINATION, destination)                              \
  {#source "_to_" #destination, PIVRA_CSC_NAME(source, destination), PIVRA_FORMAT_##SOURCE, \
   PIVRA_FORMAT_##DESTINATION},
inline constexpr Kernel kKernels[] = {PIVRA_CSC_PAIRS(PIVRA_KERNEL)};
#undef PIVRA_KERNEL

// The kernel of a name like yuv420_to_rgb565, or null.
inline const Kernel *find_kernel(std::string_view name) {
  const Kernel *found = std::ranges::find(kKernels, name, &Kernel::name);
  return found == std::end(kKernels) ? nullptr : found;
}

#endif
