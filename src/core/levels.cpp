#include "core/levels.h"

namespace pivra {
namespace {

bool always() { return true; }

[[maybe_unused]] constexpr auto sse2_supported = always;
[[maybe_unused]] constexpr auto neon_supported = always;
[[maybe_unused]] constexpr auto plain_supported = always;

#if defined(__x86_64__)
bool avx2_supported() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") != 0;
}
bool avx512_supported() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
         __builtin_cpu_supports("avx512vbmi") != 0 && __builtin_cpu_supports("avx512vnni") != 0;
}
#endif

// Runs before main and before the constructors of whoever uses the library.
// A caller that is earlier still gets the weakest level, with the same results.
[[gnu::constructor]] void choose_level() {
  for (size_t i = 0; i < kLevels; ++i)
    if (levels[i].supported()) chosen_level = i;
}

}  // namespace

#define PIVRA_LEVEL_ENTRY(level, ...) {#level, level##_supported},
const Level levels[kLevels] = {PIVRA_FOR_EACH_LEVEL(PIVRA_LEVEL_ENTRY, )};
#undef PIVRA_LEVEL_ENTRY

size_t chosen_level = 0;

}  // namespace pivra
