#!/usr/bin/env python3
"""Each source is laid out as .clang-format says.

usage: format.py CLANG-FORMAT
"""

import sys

import check

report = check.Report()
for path in check.files(".h", ".cpp", ".c"):
    status, output = check.run(sys.argv[1], "--dry-run", "-Werror", path)
    report.hold(path, [] if status == 0 else ["not formatted: " + (output.splitlines() or [""])[0]])
report.end()
