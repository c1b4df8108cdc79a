#!/usr/bin/env python3
"""The project can be had within another one, by add_subdirectory and by FetchContent: that makes the library and
nothing else, leaves the other's settings alone, and its client runs.

usage: subproject.py CMAKE C-COMPILER C++-COMPILER
"""

import os
import subprocess
import sys
import tempfile

import check

DRAWN = """document 7 starts
page 1 starts, 850 pixels wide
page finishes
document finishes
logged
"""


def configure(cmake, c, cxx, folder, *more):
    return check.run(cmake, "-S", os.path.join(check.ROOT, "tests/subproject"), "-B", folder, "-G", "Ninja",
                     f"-DCMAKE_C_COMPILER={c}", f"-DCMAKE_CXX_COMPILER={cxx}", f"-DORVLOG_SOURCE={check.ROOT}", *more)


def faults_of_client(cmake, folder):
    status, output = check.run(cmake, "--build", folder, "--target", "client")
    if status != 0:
        yield output
        return
    done = subprocess.run([os.path.join(folder, "client"), os.path.join(folder, "log.xml")], stdout=subprocess.PIPE,
                          text=True, check=False)
    if (done.returncode, done.stdout) != (0, DRAWN):
        yield f"status {done.returncode}, says {done.stdout!r}"


def main(cmake, c, cxx):
    report = check.Report()
    with tempfile.TemporaryDirectory() as folder:
        for how, more in (("FetchContent", ["-DORVLOG_FETCH=ON"]), ("add_subdirectory", [])):
            build = os.path.join(folder, how)
            status, output = configure(cmake, c, cxx, build, *more)
            report.hold(how, [] if status == 0 else [output])
        report.hold("the client", faults_of_client(cmake, build))
    report.end()


main(*sys.argv[1:])
