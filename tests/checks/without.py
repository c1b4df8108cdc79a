#!/usr/bin/env python3
"""The tools can be built without each library that they may have: without it CMake says so and goes on, unless the
library is asked for; what needs it then says so in one line, and fails, and all else is there.

usage: without.py CMAKE C-COMPILER C++-COMPILER [--build]

Only configures; with --build it builds each of them too, and runs what is refused, which takes half an hour of
processor time.
"""

import os
import subprocess
import sys
import tempfile

import check

cmake, c, cxx = sys.argv[1:4]
LOG = os.path.join(check.ROOT, "tests/expected/examples/page.xml")
SAMPLE = os.path.join(check.ROOT, "docs/sample.pdf")

# Behind the option of each: command lines that need the library, and what they say.
CAIRO = [(["at", LOG, "1,1"], "no Cairo, which orvlog at needs"),
         (["report", LOG, "-o", "report.html"], "no Cairo, which orvlog report needs"),
         (["replay", LOG, "--png", "pages"], "no Cairo, which")]
POPPLER = [(["record", SAMPLE], "no poppler, which orvlog record needs")]
LIBRARIES = {
    "ZSTD": [(["repack", LOG, "-o", "log.xml.zst"], "no Zstandard, which orvlog repack needs")],
    "SQLITE": [(["export", LOG, "--sqlite", "jobs.sqlite"], "no SQLite, which orvlog export needs"),
               (["query", "jobs.sqlite", "fonts"], "no SQLite, which orvlog query needs"),
               (["watch", ".", "--jsonl", "tables"], "no SQLite, which orvlog watch needs")],
    "CURL": [(["info", "http://localhost:9/log.xml"], "no libcurl, which a name that begins with http: needs")],
    "LCMS": CAIRO + POPPLER,
    "CAIRO": CAIRO + POPPLER,
    "POPPLER": POPPLER,
}
# What every build can.
ALWAYS = (["info", LOG], ["ls", LOG], ["check", LOG], ["show", LOG, "1"], ["state", LOG, "1"], ["diff", LOG, LOG],
          ["replay", LOG, "--renderer", "none"], ["pack", LOG, "-o", "coded"], ["unpack", "coded", "-o", "plain.xml"])

report = check.Report()


def run(*command, **more):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          errors="replace", check=False, **more)
    return done.returncode, done.stdout, done.stderr


def configure(folder, *words, **more):
    return run(cmake, "-S", check.ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DORVLOG_TESTS=OFF",
               f"-DCMAKE_C_COMPILER={c}", f"-DCMAKE_CXX_COMPILER={cxx}", "-U", "ORVLOG_WITH_*", *words, **more)


def hold_configured(folder, libraries):
    """One without these, though they may be there."""
    status, said, wrong = configure(folder, *[f"-DORVLOG_WITH_{library}=OFF" for library in libraries])
    report.hold(f"configured without {', '.join(libraries)}", [] if status == 0 else [wrong])
    report.hold(f"told of {', '.join(libraries)}", [f"nothing is said of {library}" for library in libraries
                                                     if f"Built without ORVLOG_WITH_{library}:" not in said])


def hold_nothing_found(folder):
    """On a system where pkg-config knows of nothing: CMake goes on, but not past what it is told to take."""
    nothing = dict(os.environ, PKG_CONFIG_LIBDIR=folder, PKG_CONFIG_PATH="")
    status, said, wrong = configure(folder, env=nothing)
    missing = [library for library in LIBRARIES if library != "CURL"]
    report.hold("with nothing there", [wrong] if status != 0 else [
        f"nothing is said of {library}" for library in missing if f"Built without ORVLOG_WITH_{library}:" not in said])
    status, said, wrong = configure(folder, "-DORVLOG_WITH_ZSTD=ON", env=nothing)
    report.hold("asked for what isn't there", [] if status != 0 and
                "ORVLOG_WITH_ZSTD is on, but what it needs is not there" in " ".join(wrong.split()) else [said + wrong])


def hold_built(folder, libraries):
    status, said, _ = run(cmake, "--build", folder)
    report.hold(f"built without {', '.join(libraries)}", [] if status == 0 else [said[-3000:]])
    if status != 0:
        return
    program = os.path.join(folder, "tools", "orvlog")
    with tempfile.TemporaryDirectory() as place:
        for library in libraries:
            for words, wanted in LIBRARIES[library]:
                status, said, wrong = run(program, *words, cwd=place)
                true = (status, said, wrong.count("\n")) == (1, "", 1) and f"this build has {wanted}" in wrong
                report.hold(f"without {library}: {' '.join(words)}", [] if true else [f"{status}: {said}{wrong}"])
        for words in ALWAYS:
            status, said, wrong = run(program, *words, cwd=place)
            report.hold(f"without {', '.join(libraries)}: {' '.join(words)}", [] if status == 0 else [said + wrong])


with tempfile.TemporaryDirectory() as folder:
    for libraries in [[library] for library in LIBRARIES] + [list(LIBRARIES)]:
        hold_configured(folder, libraries)
        if sys.argv[4:] == ["--build"]:
            hold_built(folder, libraries)
with tempfile.TemporaryDirectory() as folder:
    hold_nothing_found(folder)
report.end()
