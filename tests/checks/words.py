#!/usr/bin/env python3
"""No file names a place that exists on one machine only, or the host of a package registry, or ends untidily."""

import re

import check

TEXTS = (".h", ".cpp", ".c", ".inc", ".py", ".md", ".txt", ".cmake", ".json", ".in", ".def", ".map", ".sh", ".bash", ".zsh")
FORBIDDEN = {
    "a place of one machine": re.compile(r"/(?:work|home|root|Users)/\w"),
    "the host of a registry": re.compile(r"\b(?:deb\.debian|snapshot\.debian|registry\.npmjs|pypi\.python|pypi\."
                                         r"|files\.pythonhosted|proxy\.golang|crates\.io|conan\.io)\S*"),
    "a carriage return": re.compile(r"\r"),
}
# Expected texts may end in blanks.
UNTIDY = re.compile(r"[ \t]+$", re.M)


def is_text(path):
    return path.endswith(TEXTS) or path.startswith(("scripts/", ".ci/")) or "." not in path.rpartition("/")[2]


def faults_of(path, content):
    for subject, pattern in FORBIDDEN.items():
        for found in pattern.finditer(content):
            yield f"line {content.count(chr(10), 0, found.start()) + 1}: {subject}: {found.group()!r}"
    if not path.startswith("tests/") and (found := UNTIDY.search(content)):
        yield f"line {content.count(chr(10), 0, found.start()) + 1}: a blank at the end"
    if content and not content.endswith("\n"):
        yield "no newline at the end"


report = check.Report()
for path in check.files():
    if is_text(path) and not path.startswith(("tests/expected/", "fuzz/corpus")) and path != "tests/checks/words.py":
        report.hold(path, faults_of(path, check.text(path)))
report.end()
