#!/usr/bin/env python3
"""Every declaration of the installed headers is documented: doxygen, told by docs/Doxyfile, has nothing to warn of, and
its pages take in each header that the package installs.

usage: api.py DOXYGEN CMAKE BUILD-FOLDER
"""

import os
import re
import subprocess
import sys
import tempfile

import check

doxygen, cmake, build = sys.argv[1:]
report = check.Report()


def installed_headers(folder):
    """What the build installs as headers, relative to the project."""
    subprocess.run([cmake, "--install", build, "--prefix", folder, "--component", "library"], check=True,
                   stdout=subprocess.DEVNULL)
    include = os.path.join(folder, "include", "orvlog")
    for place, _, names in os.walk(include):
        for name in names:
            if name.endswith(".h"):
                yield os.path.relpath(os.path.join(place, name), include)


def pages(folder):
    """What doxygen says, and the headers that its pages tell."""
    settings = check.text("docs/Doxyfile") + f"\nOUTPUT_DIRECTORY={folder}\nGENERATE_XML=YES\n"
    done = subprocess.run([doxygen, "-"], input=settings, cwd=check.ROOT, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    with open(os.path.join(folder, "xml", "index.xml"), encoding="utf-8") as index:
        told = re.findall(r'kind="file"><name>([^<]+)</name>', index.read())
    return done.stdout.splitlines(), set(told)


with tempfile.TemporaryDirectory() as folder:
    said, told = pages(folder)
    report.hold("doxygen", said)
with tempfile.TemporaryDirectory() as folder:
    for header in sorted(installed_headers(folder)):
        report.hold(header, [] if os.path.basename(header) in told else ["isn't in docs/Doxyfile"])
report.end()
