#!/usr/bin/env python3
"""The documentation as one page: each page is in it, each link within it leads somewhere, names stand once, and nothing
comes from elsewhere.

usage: docs-page.py CMARK
"""

import collections
import os
import re
import sys
import tempfile

import check

report = check.Report()
with tempfile.TemporaryDirectory() as folder:
    output = os.path.join(folder, "orvlog.html")
    status, said = check.run(sys.executable, "scripts/docs-page", sys.argv[1], output)
    report.hold("scripts/docs-page", [] if status == 0 else [said])
    with open(output, encoding="utf-8") as file:
        page = file.read()
names = collections.Counter(re.findall(r'\bid="([^"]*)"', page))
report.hold("names", [f"{name} stands {count} times" for name, count in names.items() if count > 1])
targets = re.findall(r'href="#([^"]*)"', page)
report.hold("links", [f"#{target} leads nowhere" for target in sorted(set(targets)) if target not in names])
report.hold("links", [] if len(targets) > 150 else [f"only {len(targets)}"])
report.hold("sources", re.findall(r'\bsrc="(?!data:)[^"]*"', page))
for path in ["README.md", *check.files(".md", under=("docs/",))]:
    report.hold(path, [] if path.removesuffix(".md").replace("/", "-") in names else ["isn't in the page"])
report.end()
