#!/usr/bin/env python3
"""Every declaration of the installed headers is documented: doxygen, told by docs/Doxyfile, has nothing to warn of, and
its pages take in each header that the package installs, and each function that the examples call.

usage: api.py DOXYGEN CMAKE BUILD-FOLDER
"""

import glob
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
    """What doxygen says, and the headers and functions that its pages tell."""
    settings = check.text("docs/Doxyfile") + f"\nOUTPUT_DIRECTORY={folder}\nGENERATE_XML=YES\n"
    done = subprocess.run([doxygen, "-"], input=settings, cwd=check.ROOT, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    with open(os.path.join(folder, "xml", "index.xml"), encoding="utf-8") as index:
        headers = set(re.findall(r'kind="file"><name>([^<]+)</name>', index.read()))
    functions = set()
    for path in glob.glob(os.path.join(folder, "html", "*.html")):
        with open(path, encoding="utf-8") as page:
            functions |= set(re.findall(r'<h2 class="memtitle">.*?(\w+)\(\)</h2>', page.read()))
    return done.stdout.splitlines(), headers, functions


def called_functions():
    """Of this project, by the examples."""
    sources = "".join(check.text(path) for path in check.files(".c", under=("clients/examples/",)))
    return set(re.findall(r"\b(orvlog_\w+|ORVLOG_DLL_\w+)\(", sources)) - {"orvlog_get_session_id"}


with tempfile.TemporaryDirectory() as folder:
    said, told, functions = pages(folder)
    report.hold("doxygen", said)
with tempfile.TemporaryDirectory() as folder:
    for header in sorted(installed_headers(folder)):
        report.hold(header, [] if os.path.basename(header) in told else ["isn't in docs/Doxyfile"])
called = called_functions()
report.hold("the examples", [] if {"orvlog_open", "ORVLOG_DLL_initialise"} < called else [f"only call {called}"])
for name in sorted(called):
    report.hold(name, [] if name in functions else ["isn't in the pages"])
report.end()
