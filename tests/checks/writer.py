#!/usr/bin/env python3
"""The fields of the log's writer are its own: no source outside orvlog/log/ touches one, by whatever name it holds the
writer, and none moves the depth by hand. Tests look inside.

The library's sources and the benchmarks are compiled against copies of the headers in orvlog/log/ in which each field
is marked as one that is not to be used; what these headers do themselves counts as the system's. Programs of the
other folders, which need more than this project to compile, are looked through for the names.

usage: writer.py C++-COMPILER
"""

import concurrent.futures
import os
import re
import sys
import tempfile

import check

HOME = "orvlog/log/"
HEADER = HOME + "orvlog-writer.h"
COMPILED = check.LIBRARY_FOLDERS + ("bench/",)
RECORD = re.compile(r"struct ORVLOG_Writer\n\{\n(.*?)\n\};", re.S)
FIELD = re.compile(r"^( +)([^/;]*?\b(\w+);)", re.M)
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.M)

# What a planted source may do with a writer, and what not.
ALLOWED = ["orvlog_writer_print(writer, \"x\");", "ORVLOG_Writer copy = *writer; orvlog_writer_copy(&copy);",
           "const ORVLOG_Element element(writer, \"x\");", "orvlog_writer_is_coded(writer);"]
FORBIDDEN = ["writer->FIELD = {};", "auto& other = *writer; (void)other.FIELD;", "(void)session->writer.FIELD;",
             "(void)[](const auto* other) { return other->FIELD; }(writer);"]
SEEN_IN_TEXT = ["orvlog_writer_depth_up(writer);", "orvlog_writer_depth_down(&session->writer);",
                "const ORVLOG_Writer other = {nullptr, 0};", "*writer = ORVLOG_Writer{.depth = 1};",
                "auto depth = &ORVLOG_Writer::depth;", "offsetof(ORVLOG_Writer, depth)"]


def by_hand(text):
    """What a compiler would let pass, or not every one would see."""
    for form in re.findall(r"\borvlog_writer_depth_(?:up|down)\b", text):
        yield f"calls {form}"
    if re.search(r"\bORVLOG_Writer(?:\s+\w+)?\s*=?\s*\{\s*[^\s}]", text):
        yield "fills in a writer field by field"
    if re.search(r"\bORVLOG_Writer\s*::|\boffsetof\s*\(\s*ORVLOG_Writer\b", text):
        yield "names a field of the writer"


def reaches(path, known):
    """Whether a file includes the writer's header, by whatever way."""
    if path not in known:
        known[path] = False
        full = os.path.join(check.ROOT, path)
        known[path] = path == HEADER or (os.path.exists(full) and any(
            [reaches(target, known) for target in INCLUDE.findall(check.text(path))]))
    return known[path]


def mark_headers(folder):
    """Copies the headers, with the fields marked. Gives the names of the fields."""
    os.makedirs(os.path.join(folder, HOME))
    record = RECORD.search(check.text(HEADER))
    fields = [match[3] for match in FIELD.finditer(record[1])]
    for path in check.files(".h", under=(HOME,)):
        text = check.text(path)
        if path == HEADER:
            text = text.replace(record[1], FIELD.sub(r"\1[[deprecated]] \2", record[1]))
        with open(os.path.join(folder, path), "w", encoding="utf-8") as file:
            file.write("#pragma GCC system_header\n" + text)
    return fields


class Compiler:
    def __init__(self, program, folder):
        self.command = [program, "-std=c++20", "-fsyntax-only", "-Werror=deprecated-declarations", f"-I{folder}",
                        f"-I{check.ROOT}", "-x", "c++"]

    def faults(self, path):
        status, output = check.run(*self.command, path)
        lines = [line for line in output.splitlines() if "error:" in line]
        return [] if status == 0 else list(dict.fromkeys(lines)) or [output]


def planted(compiler, folder, statement):
    path = os.path.join(folder, "planted.cpp")
    with open(path, "w", encoding="utf-8") as file:
        file.write('#include "orvlog/log/orvlog-coding.h"\n#include "orvlog/log/orvlog-scope.h"\n'
                   '#include "orvlog/session/orvlog-session.h"\n'
                   "void planted(ORVLOG_Writer* writer, ORVLOG_Session* session);\n"
                   f"void planted(ORVLOG_Writer* writer, ORVLOG_Session* session)\n{{ {statement} (void)session; }}\n")
    return compiler.faults(path)


def hold_itself(report, compiler, folder, fields):
    """The check sees what it is there for: each field, by each way to it, and nothing else."""
    for statement in ALLOWED:
        report.hold(f"allowed: {statement}", planted(compiler, folder, statement))
    for number, field in enumerate(fields):
        statement = FORBIDDEN[number % len(FORBIDDEN)].replace("FIELD", field)
        seen = any(field in fault and "deprecated" in fault for fault in planted(compiler, folder, statement))
        report.hold(f"forbidden: {statement}", [] if seen else ["is not seen"])
    for statement in SEEN_IN_TEXT:
        report.hold(f"forbidden: {statement}", [] if list(by_hand(statement)) else ["is not seen"])
    report.hold("allowed in text", (fault for statement in ALLOWED for fault in by_hand(statement)))


report = check.Report()
known = {}
paths = [path for path in check.files(".h", ".cpp")
         if not path.startswith((HOME, "tests/")) and reaches(path, known)]
with tempfile.TemporaryDirectory() as folder:
    fields = mark_headers(folder)
    report.hold(HEADER, [] if len(fields) == 7 else [f"has the fields {fields}"])
    compiler = Compiler(sys.argv[1], folder)
    hold_itself(report, compiler, folder, fields)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        sources = [path for path in paths if path.startswith(COMPILED)]
        for path, faults in zip(sources, workers.map(compiler.faults, sources)):
            report.hold(path, faults)
    access = re.compile(rf"\bwriter\s*(?:\.|->)\s*(?:{'|'.join(fields)})\b")
    for path in paths:
        if path.startswith(check.LIBRARY_FOLDERS):
            report.hold(path, by_hand(check.text(path)))
        elif not path.startswith(COMPILED):
            report.hold(path, (f"touches {found}" for found in access.findall(check.text(path))))
report.end()
