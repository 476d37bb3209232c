// Rows of a few bytes, known when compiling, copied without a call. Baseline code,
// of no level: a processor of any level moves bytes alike.
#ifndef PIVRA_SIMD_COPY_H
#define PIVRA_SIMD_COPY_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace pivra {

typedef uint8_t Chunk __attribute__((vector_size(16), aligned(1), may_alias));

// Copies a row of kBytes and moves both pointers on by their strides.
template <int32_t kBytes>
static inline void copy_row(const uint8_t *&src, ptrdiff_t src_stride, uint8_t *&dst,
                            ptrdiff_t dst_stride) {
#if defined(__arm__)
  // No intrinsic of GCC 12 moves more than two registers at once as they are.
  if constexpr (kBytes == 64) {
    asm volatile(
        "vld1.8 {d16-d19}, [%[src]]!\n\t"
        "vld1.8 {d20-d23}, [%[src]], %[src_rest]\n\t"
        "vst1.8 {d16-d19}, [%[dst]]!\n\t"
        "vst1.8 {d20-d23}, [%[dst]], %[dst_rest]"
        : [src] "+r"(src), [dst] "+r"(dst)
        : [src_rest] "r"(src_stride - 32), [dst_rest] "r"(dst_stride - 32)
        : "d16", "d17", "d18", "d19", "d20", "d21", "d22", "d23", "memory");
    return;
  }
#endif
  if constexpr (kBytes % sizeof(Chunk) == 0)
    for (size_t x = 0; x < kBytes; x += sizeof(Chunk))
      *reinterpret_cast<Chunk *>(dst + x) = *reinterpret_cast<const Chunk *>(src + x);
  else
    memcpy(dst, src, kBytes);
  src += src_stride;
  dst += dst_stride;
}

// Any number of bytes, known when running.
static inline void copy_bytes(const uint8_t *src, size_t bytes, uint8_t *dst) {
#if defined(__arm__)
  // The C library's takes three times as many instructions.
  for (; bytes >= 64; bytes -= 64) copy_row<64>(src, 64, dst, 64);
#endif
  memcpy(dst, src, bytes);
}

}  // namespace pivra

#endif
