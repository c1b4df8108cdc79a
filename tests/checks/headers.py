#!/usr/bin/env python3
"""Each header compiles alone: those that clients include as C11 and as C++20, the others as C++20.

usage: headers.py C-COMPILER C++-COMPILER
"""

import concurrent.futures
import os
import sys

import check

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]


def compile_alone(job):
    compiler, language, standard, header = job
    status, output = check.run(compiler, f"-std={standard}", *WARNINGS, f"-I{check.ROOT}", "-fsyntax-only",
                               "-x", language, "-include", header, os.devnull)
    return f"{header} as {standard}", [] if status == 0 else [output]


def jobs(c, cxx):
    for header in check.files(".h", under=check.LIBRARY_FOLDERS + ("clients/host/",)):
        for_c = "#pragma once" not in check.text(header)
        if for_c:
            yield (c, "c", "c11", header)
        elif header.startswith("orvlog/interface/"):
            yield ("false", "c", "c11", header)
        yield (cxx, "c++", "c++20", header)


report = check.Report()
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
    for what, faults in workers.map(compile_alone, jobs(*sys.argv[1:])):
        report.hold(what, faults)
report.end()
