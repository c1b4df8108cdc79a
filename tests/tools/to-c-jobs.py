#!/usr/bin/env python3
"""Logs as programs in C: each is compiled, run, and its log held against the one that it was made from.

    to-c-jobs.py BUILD [--renderer LIBRARY] [--pages A-B] [--calls N] [--sessions N] [--seed S] [--compiler CC]
                 [--limit SECONDS] [PDF...]

BUILD is the folder of a build. Each document is recorded in transparent and base mode, drawn by the shared library if
one is named, and the first page of its log, or its first N paints, becomes a program; so do N jobs by chance, many of
whose logs can't be made again whole. A line for each tells calls, bytes of source, seconds of the processor that the
compiler took in all and for 1,000 calls, and what came of it. The status is 0 if all logs are the same."""

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
    parser.add_argument("documents", nargs="*")
    parser.add_argument("--renderer")
    parser.add_argument("--sessions", type=int, default=0)
    parser.add_argument("--seed", type=int, default=0)
    parser.add_argument("--pages", default="1-1")
    parser.add_argument("--calls", type=int, default=0)
    parser.add_argument("--compiler", default="gcc")
    parser.add_argument("--limit", type=int, default=600)
    return parser.parse_intermixed_args()


class Job:
    def __init__(self, options, folder):
        self.options = options
        self.folder = folder
        self.build = os.path.abspath(options.build)
        self.orvlog = os.path.join(self.build, "tools", "orvlog")
        self.log = "job.xml"
        self.part = []

    def path(self, name):
        return os.path.join(self.folder, name)

    def run(self, *words, good=(0,)):
        done = subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                              check=False, timeout=self.options.limit, cwd=self.folder)
        said = done.stderr.decode(errors="replace")
        if done.returncode not in good:
            raise RuntimeError(f"{os.path.basename(words[0])} ended with {done.returncode}: {said.strip()[-300:].splitlines()[-1:]}")
        return said

    def record(self, document, mode):
        """Leaves the log that is to come again in job.xml."""
        record = os.path.join(self.build, "clients", "pdf", "orvlog-record")
        self.log = "whole.xml" if self.options.calls else "job.xml"
        self.run(record, document, "-o", self.log, "--mode", mode, "--pages", self.options.pages)
        if self.options.renderer:
            os.rename(self.path(self.log), self.path("plain.xml"))
            self.run(self.orvlog, "replay", "plain.xml", "--renderer", self.options.renderer, "--log", self.log)
        if self.options.calls:
            self.part = ["--ids", f"0-{self.options.calls - 1}"]
            self.run(self.orvlog, "trim", self.log, *self.part, "-o", "job.xml")

    def make_by_chance(self, seed):
        self.run(os.path.join(self.build, "tests", "clients", "replay", "random-log"), str(seed))

    def compile(self):
        """Seconds of the processor."""
        with open(self.path("job.c"), encoding="ascii") as source:
            static = "orvlog-session-options.h" in source.read(4096)
        library = ["-lorvlog-static", "-lstdc++", "-lm"] if static else ["-lorvlog", f"-Wl,-rpath,{self.build}"]
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.run(self.options.compiler, "-std=c11", "-Wall", "-Wextra", "-Werror", "-I", ROOT, "job.c", "-o", "job",
                 f"-L{self.build}", *library)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    def same_files(self):
        """Whether the log, and all that lies beside it, is what the job has left."""
        os.rename(self.path("run/again.xml"), self.path("run/job.xml"))
        for name in os.listdir(self.path("run")):
            with open(self.path("run/" + name), "rb") as made:
                if not os.path.exists(self.path(name)):
                    return False
                with open(self.path(name), "rb") as wanted:
                    if made.read() != wanted.read():
                        return False
        return True

    def play(self):
        """What is to be told, and whether the log is the same."""
        said = self.run(self.orvlog, "to-c", self.log, *self.part, "-o", "job.c", good=(0, 1))
        calls = int(re.search(r"^(\d+) calls", said, re.MULTILINE).group(1))
        size = os.path.getsize(self.path("job.c"))
        seconds = self.compile()
        os.mkdir(self.path("run"))
        ran = self.run("sh", "-c", "cd run && ../job again.xml ..", good=(0, 1)).strip()
        same = self.same_files()
        lacks = [line for line in (said + ran).split("\n") if line and not line.endswith(" calls")]
        word = "same" if same else "DIFFERS"
        return f"{calls:7} {size:10} {seconds:8.2f} {seconds * 1000 / calls:8.2f}  {word} {' '.join(lacks)[:300]}", same


def hold(options, name, prepare):
    with tempfile.TemporaryDirectory() as folder:
        try:
            job = Job(options, folder)
            prepare(job)
            line, same = job.play()
        except (RuntimeError, subprocess.TimeoutExpired) as error:
            line, same = f"{'FAILED':>37}  {str(error)[:400]}", False
        print(f"{line} {name}", flush=True)
    return same


def main():
    options = arguments()
    good = True
    print(f"{'calls':>7} {'bytes':>10} {'seconds':>8} {'per 1000':>8}")
    for document in map(os.path.abspath, options.documents):
        for mode in ("transparent", "base"):
            good &= hold(options, f"{os.path.basename(document)} {mode}", lambda job: job.record(document, mode))
    for seed in range(options.seed, options.seed + options.sessions):
        good &= hold(options, f"seed {seed}", lambda job: job.make_by_chance(seed))
    sys.exit(0 if good else 1)


main()
