#!/usr/bin/env python3
"""The shared library exports three functions and nothing else.

usage: exports.py so NM LIBRARY | exports.py dll OBJDUMP LIBRARY
"""

import re
import sys

import check

EXPECTED = ["ORVLOG_DLL_initialise", "ORVLOG_DLL_set_parameters", "ORVLOG_DLL_shutdown"]


def exports_of_so(nm, library):
    _, output = check.run(nm, "-D", "--defined-only", library)
    return [line.split()[-1].split("@")[0] for line in output.splitlines() if line.strip()]


def exports_of_dll(objdump, library):
    _, output = check.run(objdump, "-p", library)
    table = output.partition("[Ordinal/Name Pointer] Table")[2].split("\n\n")[0]
    return re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+[0-9a-f]+\s+)?(\S+)\s*$", table, re.M)


kind, program, library = sys.argv[1:]
exports = (exports_of_so if kind == "so" else exports_of_dll)(program, library)
report = check.Report()
report.hold(library, [] if sorted(exports) == EXPECTED else [f"exports {sorted(exports)}"])
report.end()
