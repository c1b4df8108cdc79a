#!/usr/bin/env python3
"""The library's sources stand before clang-tidy with the checks of .clang-tidy.

usage: tidy.py CLANG-TIDY BUILD-FOLDER
"""

import concurrent.futures
import json
import os
import sys

import check

tidy, build = sys.argv[1:]


def look(source):
    status, output = check.run(tidy, "--quiet", "-p", build, source)
    return source, [] if status == 0 else [output]


with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as commands:
    compiled = {os.path.relpath(entry["file"], check.ROOT) for entry in json.load(commands)}
sources = [path for path in check.files(".cpp", under=check.LIBRARY_FOLDERS) if path in compiled]
report = check.Report()
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
    for source, faults in workers.map(look, sources):
        report.hold(source, faults)
report.end()
