#!/usr/bin/env python3
"""Each source is named by a CMakeLists.txt of its folder or of one above it, so that none is left out. Lists of sources
are in the order of the alphabet, with those of other rooms behind."""

import os
import re

import check

# A list may name one file of several that differ by the system: gio-file-$<...>.cpp.
LISTS = check.files("CMakeLists.txt")
CHOICE = re.compile(r"\$<.*>|\$\{\w+\}")


def names_in(lists):
    for word in check.text(lists).split():
        yield "".join(re.escape(part) if i % 2 == 0 else r"[\w-]+"
                      for i, part in enumerate(re.split(f"({CHOICE.pattern})", word.strip("()"))))


def is_listed(source):
    """Named by its own folder or one above, or anywhere by its path from the project's root."""
    rooted = "/" + source
    if any(rooted in check.text(lists).replace("${PROJECT_SOURCE_DIR}", "").split() for lists in LISTS):
        return True
    folder = os.path.dirname(source)
    while True:
        lists = os.path.join(folder, "CMakeLists.txt")
        if os.path.exists(os.path.join(check.ROOT, lists)):
            name = os.path.relpath(source, folder or ".")
            if any(re.fullmatch(rf"(?:.*/)?{pattern}", name) for pattern in names_in(lists)):
                return True
        if not folder:
            return False
        folder = os.path.dirname(folder)


def disorders(text):
    """Each source that stands alone on its line, behind one that it should be ahead of."""
    before = None
    for line in text.splitlines():
        name = line.strip()
        if not re.fullmatch(r"\S+\.(?:c|cpp)", name):
            before = None
            continue
        place = (name.startswith(("$", "..")), name)
        if before and place < before:
            yield f"{name} should stand ahead of {before[1]}"
        before = place


report = check.Report()
for lists in LISTS:
    report.hold(lists, disorders(check.text(lists)))
report.hold("a planted disorder", [] if list(disorders("    b.cpp\n    a.cpp\n")) else ["is let pass"])
for source in check.files(".cpp", ".c"):
    report.hold(source, [] if is_listed(source) else ["is in no CMakeLists.txt"])
report.end()
