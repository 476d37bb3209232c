// The smaller and the larger of two numbers, without the C++ library.
#ifndef PIVRA_CORE_BOUNDS_H
#define PIVRA_CORE_BOUNDS_H

#include <stdint.h>

namespace pivra {

// Static: code of two instruction-set levels must not be merged.
static constexpr int32_t smaller(int32_t a, int32_t b) { return a < b ? a : b; }
static constexpr int32_t larger(int32_t a, int32_t b) { return a > b ? a : b; }

}  // namespace pivra

#endif
