// The vector vocabulary: the few operations that kernels are written in.
//
// A kernel includes this header and is compiled once per instruction-set level.
// Everything here and everything in the kernel lives in the namespace of that
// level, pivra::PIVRA_LEVEL, so that the linker never merges code of two levels.
//
// Samples travel as 16-bit lanes, in two vectors: the samples at even positions
// and those at odd positions. A chroma sample serves an even and an odd pixel,
// so the lanes of a chroma vector match both without being repeated.
//
//   I16            kBlock / 2 signed 16-bit lanes; + - compile to vector code
//   Narrow         kBlock / 2 bytes, to be widened by the operation that uses them
//   Pair<T>        { even, odd }: kBlock consecutive samples
//   Bytes          kBlock bytes, in whatever order the level packs them
//
//   load_pairs(p)             kBlock bytes, split into even and odd ones
//   load_narrow(p)            kBlock / 2 bytes
//   load_interleaved2(p, v)   kBlock / 2 groups of 2 bytes, taken apart
//   load_interleaved4(p, v)   kBlock / 2 groups of 4 bytes, taken apart
//   splat<k>(), widen(n)      a constant in every lane; bytes as 16-bit lanes
//   subtract<k>(n)            n - k
//   multiply<k>(n or i)       the low 16 bits of the product
//   add(i, n)                 i + n
//   add_high_byte(i, j)       i + (j >> 8)
//   clamp(i)                  16-bit lanes clamped to bytes (Clamped, on some levels later)
//   join(even, odd)           both halves' Clamped as Bytes
//   store_interleaved3/4      byte triples or quadruples
//   clamp_565(a, b, c)        5-6-5 words with a in the top bits (Words565)
//   store_565(p, even, odd)   both halves' words; like the other stores it returns
//                             the address behind what they wrote
//
// Loads and stores touch exactly the bytes they name, at any alignment. A level
// without vectors defines no kBlock and leaves PIVRA_VECTORS at 0; its kernels
// are the scalar code that the others use for what is left of a row.
#ifndef PIVRA_SIMD_SIMD_H
#define PIVRA_SIMD_SIMD_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifndef PIVRA_LEVEL
#error "PIVRA_LEVEL names the namespace of the instruction-set level"
#endif

#define PIVRA_INLINE __attribute__((always_inline)) inline

#if defined(PIVRA_NO_VECTORS)
#define PIVRA_VECTORS 0
#elif defined(__ARM_NEON)
#define PIVRA_VECTORS 1
#include "simd/neon.h"
#elif defined(__SSE2__)
#define PIVRA_VECTORS 1
#include "simd/x86.h"
#else
#define PIVRA_VECTORS 0
#endif

#endif
