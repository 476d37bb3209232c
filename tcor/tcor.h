/**
 * @file tcor.h
 * @brief Memory in whole cache lines of 32 bytes, for hardware and vectors.
 *
 * Platforms that have this library bring their own; this one is for the others.
 * Both functions may be called by several threads at once.
 *
 * The header is valid C99 and C++.
 */
#ifndef TCOR_H
#define TCOR_H

#include <stdint.h>

/** Marks what the library exports. */
#if defined(__GNUC__)
#define TCOR_API __attribute__((visibility("default")))
#else
#define TCOR_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Allocates `size` bytes, not initialised, at an address that is a multiple of 32.
 * @return the block, also for a size of 0; NULL if there is no memory.
 */
TCOR_API void *tcor_malloc_align32(uint32_t size);

/** Frees a block of tcor_malloc_align32; NULL is left alone. */
TCOR_API void tcor_mfree_align32(void *block);

#ifdef __cplusplus
}
#endif

#endif /* TCOR_H */
