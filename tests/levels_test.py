#!/usr/bin/env python3
"""The objects of an instruction-set level keep to themselves and use its instructions.

What an object defines for others lies in the level's namespace: a function that
two levels both define is merged by the linker, and then runs where its
instructions do not exist. And every kernel is the vector code it claims to be.
"""
import argparse
import re

from commands import run

# Level: what a matrix compiles to, and what no kernel may contain. The former are
# saturating sums, which no compiler makes of the scalar code, even where it vectorises
# it; from RGB, sums narrowed by saturation or to their upper half, which some do.
X86 = r"\bv?(paddsw|packssdw)\b"
NEON = r"\b(sqadd|vqadd\.s16|addhn|vaddhn\.i16)\b"
LEVELS = {
    "sse2": (X86 + ".*%xmm", r"%[yz]mm"),
    "avx2": (X86 + ".*%ymm", r"%zmm"),
    "avx512": (X86 + ".*%zmm", None),
    "neon": (NEON, None),
    "plain": (None, r"\bpaddsw\b|%[yz]mm|\bv?pmaddubsw\b|" + NEON),
}

# Kernels are told from other functions by their signature. Grey and RGB to RGB
# have no matrix, and luma alone is made by a function that kernels share.
NO_MATRIX = ("::GreyPlane", "::ToWords", "::ToBytes", "::convert_luma_only")
KERNEL = "(unsigned char**, int*, int*, int*, int*, unsigned char**)"


def functions(disassembly):
    """Yields name and instructions of every function that objdump prints."""
    for block in disassembly.split("\n\n"):
        if title := re.match(r"[0-9a-f]+ <(.*)>:\n", block):
            yield title[1], block[title.end():]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--nm", required=True)
    parser.add_argument("--objdump", required=True)
    parser.add_argument("level", choices=LEVELS)
    parser.add_argument("objects", nargs="+")
    args = parser.parse_args()
    wanted, unwanted = LEVELS[args.level]

    kernels = 0
    for path in args.objects:
        for line in run(args.nm, "-C", "--defined-only", "--extern-only", path).splitlines():
            name = line.split(maxsplit=2)[-1]
            assert name.startswith(f"pivra::{args.level}::"), f"{path} defines {name}"
        for name, code in functions(run(args.objdump, "-dC", "--no-show-raw-insn", path)):
            found = re.search(unwanted, code) if unwanted else None
            assert not found, f"{found[0]} in {name}"
            if not name.endswith(KERNEL) or any(part in name for part in NO_MATRIX):
                continue
            kernels += 1
            assert not wanted or re.search(wanted, code), f"no {args.level} code in {name}"
    assert kernels, "no kernels in " + " ".join(args.objects)
    print(f"{kernels} kernels")


main()
