#!/usr/bin/env python3
"""A program of its own finds, builds with and runs on the installed library."""
import argparse
import pathlib
import re
import shlex
import tempfile

from commands import run

CONSUMER = pathlib.Path(__file__).parent / "package"
# The pixel that the consumer prints: (298 (Y - 16) + 409 v + 128) >> 8 and so on.
ORANGE = "240 134 1\n"
# The C runtime, by the names it has on x86-64, ARM and AArch64.
RUNTIME = re.compile(r"lib[cm]\.so\.6|ld-linux.*")
# And beside it the allocator.
NEEDED = ["libtcor.so.1"]


def check(args, temp):
    flags = shlex.split(args.cflags)
    # Moved after installation: nothing may hold on to where it was installed.
    run(args.cmake, "--install", args.build, "--prefix", temp / "before")
    root = (temp / "before").rename(temp / "installed")
    library, = root.rglob("libpivra.so")
    static = library.with_name("libpivra.a")

    def compiles(compiler, *options, language, header):
        run(compiler, *flags, "-I", root / "include", "-Wall", "-Wextra", "-Werror", *options,
            "-fsyntax-only", "-x", language, "-", input=f"#include <{header}>\n")

    def runs(program):
        emulator = args.emulator.split()
        printed = run(*emulator, program, env={"LD_LIBRARY_PATH": str(library.parent)})
        assert printed == ORANGE, f"{program} prints {printed}"

    # The headers alone, in both languages.
    for header in "pivra.h", "tcor.h":
        compiles(args.cc, "-std=c99", "-pedantic", language="c", header=header)
        compiles(args.cxx, "-std=c++11", "-pedantic", language="c++", header=header)
    compiles(args.cxx, "-std=c++20", "-pedantic", language="c++", header="pivra.hpp")

    # By pkg-config, with the C compiler alone.
    pkg_config = shlex.split(run("pkg-config", "--cflags", "--libs", "pivra",
                                 env={"PKG_CONFIG_LIBDIR": str(library.parent / "pkgconfig")}))
    includes = [word for word in pkg_config if word.startswith("-I")]
    allocator = library.with_name("libtcor.so")
    for name, words in {"shared": pkg_config, "static": [*includes, static, allocator]}.items():
        run(args.cc, *flags, CONSUMER / "consumer.c", "-o", temp / name, *words)
        runs(temp / name)

    # By find_package, in a project without C++.
    build = temp / "build"
    run(args.cmake, "-S", CONSUMER, "-B", build, "-G", "Ninja", f"-Dpivra_ROOT={root}",
        f"-DCMAKE_C_COMPILER={args.cc}", f"-DCMAKE_C_FLAGS={args.cflags}")
    run(args.cmake, "--build", build)
    runs(build / "with_pivra")
    runs(build / "with_pivra_static")

    # The shared library needs nothing but the C runtime and libtcor, sanitizers apart.
    dynamic = run(args.readelf, "-d", library)
    assert "SONAME" in dynamic and "[libpivra.so.1]" in dynamic, dynamic
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)
    if "-fsanitize" not in args.cflags:
        others = [name for name in needed if not RUNTIME.fullmatch(name)]
        assert others == NEEDED, f"needs {others}"


parser = argparse.ArgumentParser(description=__doc__)
for option in "build", "cmake", "cc", "cxx", "cflags", "readelf", "emulator":
    parser.add_argument(f"--{option}", required=True)
with tempfile.TemporaryDirectory() as folder:
    check(parser.parse_args(), pathlib.Path(folder))
