#!/usr/bin/env python3
"""The sources stand before clang-tidy with the checks of .clang-tidy: the library with all of them; and, where
ORVLOG_TIDY_AROUND is set, since it takes long, what stands around it without those that run through each path, and
without the one for what a program may still throw while it says why it ends. The commands, tests, fuzzers and
benchmarks are left out: their headers take long.

usage: tidy.py CLANG-TIDY BUILD-FOLDER
"""

import concurrent.futures
import json
import os
import sys

import check

AROUND_LIBRARY = ("clients/", "inspect/", "reader/", "renderers/") if os.environ.get("ORVLOG_TIDY_AROUND") else ()
tidy, build = sys.argv[1:]


def look(source):
    some = [] if source.startswith(check.LIBRARY_FOLDERS) else ["--checks=-clang-analyzer-*,-bugprone-exception-escape"]
    status, output = check.run(tidy, "--quiet", "-p", build, *some, source)
    return source, [] if status == 0 else [output]


with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as commands:
    compiled = {os.path.relpath(entry["file"], check.ROOT) for entry in json.load(commands)}
sources = [path for path in check.files(".cpp", under=check.LIBRARY_FOLDERS + AROUND_LIBRARY) if path in compiled]
report = check.Report()
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
    for source, faults in workers.map(look, sources):
        report.hold(source, faults)
report.end()
