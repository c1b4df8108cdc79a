#!/usr/bin/env python3
"""Each source is named by a CMakeLists.txt of its folder or of one above it, so that none is left out."""

import os
import re

import check

# A list may name one file of several that differ by the system: gio-file-$<...>.cpp.
SYSTEM = r"\$[<{]\S+[>}]"


def is_listed(source):
    folder = os.path.dirname(source)
    while True:
        lists = os.path.join(folder, "CMakeLists.txt")
        if os.path.exists(os.path.join(check.ROOT, lists)):
            name = re.escape(os.path.relpath(source, folder or "."))
            by_system = name.replace("posix", SYSTEM).replace("windows", SYSTEM)
            if re.search(rf"(?:^|[\s/])(?:{name}|{by_system})(?:[\s)]|$)", check.text(lists), re.M):
                return True
        if not folder:
            return False
        folder = os.path.dirname(folder)


report = check.Report()
for source in check.files(".cpp", ".c"):
    report.hold(source, [] if is_listed(source) else ["is in no CMakeLists.txt"])
report.end()
