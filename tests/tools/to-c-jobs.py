#!/usr/bin/env python3
"""Logs of documents as programs in C: each is compiled, run, and its log held against the one it was made from. By hand.

    to-c-jobs.py BUILD [--pages A-B] [--calls N] [--compiler CC] [--limit SECONDS] DOCUMENT.pdf...

BUILD is the folder of a build. Each document is recorded in transparent and base mode, and the first page of its log,
with at most N paints if --calls says so, becomes a program. A line for each tells calls, bytes of source, seconds that
the compiler took in all and for 1,000 calls, and what came of it. The status is 0 if all logs are the same."""

import argparse
import os
import re
import resource
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))


def arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("documents", nargs="+")
    parser.add_argument("--pages", default="1-1")
    parser.add_argument("--calls", type=int, default=0)
    parser.add_argument("--compiler", default="gcc")
    parser.add_argument("--limit", type=int, default=600)
    return parser.parse_args()


class Job:
    def __init__(self, options, folder):
        self.options = options
        self.folder = folder
        build = os.path.abspath(options.build)
        self.record = os.path.join(build, "clients", "pdf", "orvlog-record")
        self.orvlog = os.path.join(build, "tools", "orvlog")
        self.library = build

    def path(self, name):
        return os.path.join(self.folder, name)

    def run(self, *words, good=(0,)):
        done = subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                              check=False, timeout=self.options.limit, cwd=self.folder)
        if done.returncode not in good:
            text = done.stderr.decode(errors="replace").strip().split("\n")[-1]
            raise RuntimeError(f"{os.path.basename(words[0])} ended with {done.returncode}: {text}")
        return done.stderr.decode(errors="replace")

    def make_log(self, document, mode):
        """A log of the pages, and the words that ask for the part of it that is wanted."""
        self.run(self.record, document, "-o", "whole.xml", "--mode", mode, "--pages", self.options.pages)
        if not self.options.calls:
            os.rename(self.path("whole.xml"), self.path("job.xml"))
            return "job.xml", []
        part = ["--ids", f"0-{self.options.calls - 1}"]
        self.run(self.orvlog, "trim", "whole.xml", *part, "-o", "job.xml")
        return "whole.xml", part

    def compile(self):
        """Seconds of the processor."""
        with open(self.path("job.c"), encoding="ascii") as source:
            static = "orvlog-session-options.h" in source.read(4096)
        library = ["-lorvlog-static", "-lstdc++", "-lm"] if static else ["-lorvlog", f"-Wl,-rpath,{self.library}"]
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.run(self.options.compiler, "-std=c11", "-Wall", "-Wextra", "-Werror", "-I", ROOT, "job.c", "-o", "job",
                 f"-L{self.library}", *library)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    def play(self, document, mode):
        """What is to be told, and whether the log is the same."""
        log, part = self.make_log(document, mode)
        said = self.run(self.orvlog, "to-c", log, *part, "-o", "job.c", good=(0, 1))
        calls = int(re.search(r"^(\d+) calls", said, re.MULTILINE).group(1))
        size = os.path.getsize(self.path("job.c"))
        seconds = self.compile()
        os.mkdir(self.path("run"))
        self.run("sh", "-c", "cd run && ../job job.xml ..")
        with open(self.path("job.xml"), "rb") as one, open(self.path("run/job.xml"), "rb") as other:
            same = one.read() == other.read()
        lacks = [line for line in said.split("\n") if line.startswith("orvlog: ")]
        word = "same" if same else "DIFFERS"
        return f"{calls:7} {size:10} {seconds:8.2f} {seconds * 1000 / calls:8.2f}  {word} {' '.join(lacks)}", same


def main():
    options = arguments()
    good = True
    print(f"{'calls':>7} {'bytes':>10} {'seconds':>8} {'per 1000':>8}")
    for document in options.documents:
        for mode in ("transparent", "base"):
            with tempfile.TemporaryDirectory() as folder:
                try:
                    line, same = Job(options, folder).play(os.path.abspath(document), mode)
                except (RuntimeError, subprocess.TimeoutExpired) as error:
                    line, same = f"{'FAILED':>37}  {str(error)[:300]}", False
            good = good and same
            print(f"{line} {os.path.basename(document)} {mode}", flush=True)
    sys.exit(0 if good else 1)


main()
