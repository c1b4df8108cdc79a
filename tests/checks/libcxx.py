#!/usr/bin/env python3
"""The library's sources compile with the other standard library of C++, libc++, too.

usage: libcxx.py CLANG++
"""

import concurrent.futures
import os
import sys

import check

COMMAND = [sys.argv[1], "-stdlib=libc++", "-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow",
           "-Werror", "-fno-exceptions", "-fno-rtti", "-DORVLOG_BUILD", f"-I{check.ROOT}", "-fsyntax-only", "-x", "c++"]
# Those of the other system.
ELSEWHERE = ("-windows.cpp", "-wininet.cpp")


def compile_it(path):
    status, output = check.run(*COMMAND, path)
    return path, [] if status == 0 else [output]


report = check.Report()
sources = [path for path in check.files(".cpp", under=check.LIBRARY_FOLDERS) if not path.endswith(ELSEWHERE)]
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
    for path, faults in workers.map(compile_it, sources):
        report.hold(path, faults)
report.hold("the sources", [] if len(sources) > 50 else [f"only {len(sources)}"])
report.end()
