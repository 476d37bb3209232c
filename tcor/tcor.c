/* Aligned memory by that of the C runtime. */
#include "tcor.h"

#include <stdlib.h>

enum { kAlignment = 32 };

void *tcor_malloc_align32(uint32_t size) {
  void *block = NULL;
  return posix_memalign(&block, kAlignment, size > 0 ? size : 1) == 0 ? block : NULL;
}

void tcor_mfree_align32(void *block) { free(block); }
