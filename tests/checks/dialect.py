#!/usr/bin/env python3
"""The sources speak one dialect where neither layout nor clang-tidy holds it: no braces round a single statement,
++i where the value isn't used, and namespaces within orvlog.

usage: dialect.py CLANG-FORMAT
"""

import concurrent.futures
import os
import re
import sys

import check

format_program = sys.argv[1]
CODE = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.S)
COUNTED_UP_BEHIND = re.compile(r"^[ \t]*[A-Za-z_][\w.\[\]]*(?:->[\w.\[\]]+)*(?:\+\+|--);|;[^;\n()]*\w(?:\+\+|--)\)[ \t]*$", re.M)
NAMESPACE = re.compile(r"^namespace (?!orvlog\b|fs\b|py\b)\w[\w:]*", re.M)


def line_of(text, at):
    return text.count("\n", 0, at) + 1


def braces(text):
    return CODE.sub("", text).count("{")


def style():
    """That of the project, in which clang-format takes away the braces that aren't needed. It lays out lambdas in
    another way then, so its output is counted and not compared."""
    status, output = check.run(format_program, "--dump-config")
    if status != 0:
        sys.exit(output)
    path = os.path.join(os.environ.get("TMPDIR", "/tmp"), f"orvlog-dialect-{os.getpid()}.yaml")
    with open(path, "w", encoding="utf-8") as file:
        file.write(re.sub(r"RemoveBracesLLVM: +false", "RemoveBracesLLVM: true", output))
    return path


def faults_of(path, config):
    text = check.text(path)
    status, output = check.run(format_program, f"--style=file:{config}", path)
    if status != 0:
        yield output
    elif braces(output) != braces(text):
        yield f"{braces(text) - braces(output)} pairs of braces round single statements"
    for found in COUNTED_UP_BEHIND.finditer(CODE.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)):
        yield f"line {line_of(text, found.start())}: {found.group().strip()!r}: the sign stands before"
    for found in NAMESPACE.finditer(text):
        yield f"line {line_of(text, found.start())}: {found.group()!r}: not within orvlog"


def main():
    report = check.Report()
    config = style()
    paths = list(check.files(".h", ".cpp", ".c"))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        for path, faults in zip(paths, workers.map(lambda path: list(faults_of(path, config)), paths)):
            report.hold(path, faults)
    os.remove(config)
    report.end()


main()
