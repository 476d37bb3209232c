// BITEXACT is an absolute symbol, which C++ has no words for.
#include "pivra.h"

asm(".globl BITEXACT\n"
    ".set BITEXACT, 0\n");
