#!/usr/bin/env python3
"""A README.md beside sources names each of them, without its ending, and in its tables no file that isn't there. What it
names without a folder may lie in any folder below it."""

import os
import re

import check

ROOMS = ("clients/", "reader/", "renderers/", "tools/", "inspect/")
SOURCES = (".h", ".cpp", ".c")
QUOTED = re.compile(r"`([\w./-]+)`")


def readme_of(path, readmes):
    """The nearest one above the file; None without one."""
    folder = os.path.dirname(path)
    while folder:
        if os.path.join(folder, "README.md") in readmes:
            return os.path.join(folder, "README.md")
        folder = os.path.dirname(folder)
    return None


def stem(path):
    return os.path.splitext(path)[0]


def names_in_tables(readme):
    for line in check.text(readme).splitlines():
        if line.startswith("| ") and not line.startswith("| ---"):
            yield from QUOTED.findall(line.split("|")[1])


report = check.Report()
files = check.files(under=ROOMS)
readmes = [path for path in files if path.endswith("/README.md")]
rooms = {readme: [path for path in files if readme_of(path, readmes) == readme] for readme in readmes}
for readme, held in rooms.items():
    folder = os.path.dirname(readme)
    named = set(QUOTED.findall(check.text(readme)))
    stems = {}
    for path in held:
        stems.setdefault(os.path.relpath(stem(path), folder), path)
    for name, path in sorted(stems.items()):
        if path.endswith(SOURCES):
            told = name in named or os.path.basename(name) in named
            report.hold(path, [] if told else [f"isn't in {readme}"])
    ends = set(stems) | {os.path.basename(name) for name in stems}
    for name in names_in_tables(readme):
        is_folder = os.path.isdir(os.path.join(check.ROOT, folder, name))
        report.hold(readme, [] if is_folder or name in ends else [f"names {name}, which isn't there"])
report.hold("READMEs", [] if len(rooms) > 4 else ["fewer than are known"])
report.end()
