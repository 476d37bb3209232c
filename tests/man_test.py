#!/usr/bin/env python3
"""The manual pages are sound, and the program's tells every option that there is."""
import argparse
import re

from commands import run

OPTION = re.compile(r"(?<![\w-])--?[a-z][\w-]*")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--groff", required=True)
    parser.add_argument("--tool", required=True, help="the pivra program")
    parser.add_argument("pages", nargs="+", help="the program's first")
    args = parser.parse_args()

    def groff(page, *options):
        return run(args.groff, "-ww", "-man", "-Tascii", "-P-cbou", *options, page)

    for page in args.pages:
        warnings = groff(page, "-z")
        assert not warnings, warnings

    told = set(OPTION.findall(groff(args.pages[0]).split("EXAMPLES")[0]))
    known = set(OPTION.findall(run(args.tool, "--help")))
    for command in ("convert", "anaglyph", "transcode"):
        known |= set(OPTION.findall(run(args.tool, command, "--help").split("Formats go")[0]))
    assert told == known, f"told or known, but not both: {told ^ known}"


main()
