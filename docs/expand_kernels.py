#!/usr/bin/env python3
"""Doxygen's input filter: prints a header with the kernels declared in full.

A declaration by a function type, as `PIVRA_API pivra_cpy_kernel name;`, becomes
one that lists the parameters of the type.
"""
import re
import sys

with open(sys.argv[1], encoding="utf-8") as header:
    text = header.read()
for kernel, parameters in re.findall(r"typedef void (\w+)\(([^)]*)\);", text):
    text = re.sub(rf"PIVRA_API {kernel} (.+);",
                  rf"PIVRA_API void \1({' '.join(parameters.split())});", text)
print(text, end="")
