#!/usr/bin/env python3
"""Programs that are not under the GPL don't link what is: only orvlog-record may have poppler behind it.

usage: links.py PROGRAM...
"""

import sys

import check

report = check.Report()
for program in sys.argv[1:]:
    status, output = check.run("ldd", program)
    faults = [line.strip() for line in output.splitlines() if "poppler" in line]
    report.hold(program, faults if status == 0 else [output])
report.end()
