#!/usr/bin/env python3
"""The shared library exports what the header declares, and nothing else."""
import argparse
import re

from commands import run

# A declaration, as the compiler sees it: the mark, a type, a name; and of a table its size.
DECLARED = re.compile(r'__attribute__\(\(visibility\("default"\)\)\)[^();]*?\b(\w+)\s*([(;[])')
# nm's letters for code, and for data that is constant, relocated, written or zero at first.
FUNCTION, TABLE = "T", "RDB"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cc", required=True, help="C compiler")
    parser.add_argument("--nm", required=True)
    parser.add_argument("header")
    parser.add_argument("library")
    args = parser.parse_args()

    expected = {name: TABLE if mark == "[" else FUNCTION
                for name, mark in DECLARED.findall(run(args.cc, "-E", "-P", args.header))}
    expected["BITEXACT"] = "A"

    exported = {}
    for line in run(args.nm, "--dynamic", "--defined-only", args.library).splitlines():
        value, kind, name = line.split()
        exported[name] = kind
        assert name != "BITEXACT" or int(value, 16) == 0, f"BITEXACT has the value 0x{value}"

    wrong = [f"{name} is {exported.get(name, 'not exported')}, not {expected.get(name, 'declared')}"
             for name in sorted(expected.keys() | exported.keys())
             if exported.get(name, "absent") not in expected.get(name, "")]
    assert not wrong, "\n".join(wrong)
    print(f"{len(exported)} names")


main()
