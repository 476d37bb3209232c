#!/usr/bin/env python3
"""The shared library exports what the header declares, and nothing else."""
import argparse
import re

from commands import run

# A declaration, as the compiler sees it: the mark, a type, a name.
DECLARED = re.compile(r'__attribute__\(\(visibility\("default"\)\)\)[^();]*?\b(\w+)\s*[(;]')


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cc", required=True, help="C compiler")
    parser.add_argument("--nm", required=True)
    parser.add_argument("header")
    parser.add_argument("library")
    args = parser.parse_args()

    expected = {name: "T" for name in DECLARED.findall(run(args.cc, "-E", "-P", args.header))}
    expected["BITEXACT"] = "A"

    exported = {}
    for line in run(args.nm, "--dynamic", "--defined-only", args.library).splitlines():
        value, kind, name = line.split()
        exported[name] = kind
        assert name != "BITEXACT" or int(value, 16) == 0, f"BITEXACT has the value 0x{value}"

    wrong = sorted(set(expected.items()) ^ set(exported.items()))
    assert not wrong, "declared and exported differ: " + ", ".join(
        f"{name} ({kind}, {'only declared' if (name, kind) in expected.items() else 'exported'})"
        for name, kind in wrong)
    print(f"{len(exported)} names")


main()
