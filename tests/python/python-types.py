#!/usr/bin/env python3
"""The types that the Python package tells: mypy finds nothing wrong in the package and in its examples, but finds what is
wrong in a program that uses it; the stub of the compiled part has the names and parameters that this part has. Where
there is no mypy, the test is skipped by name.

    python-types.py FOLDER-OF-THE-PACKAGE"""

import ast
import os
import re
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), "checks"))

import check  # noqa: E402

PACKAGE = os.path.abspath(sys.argv[1])
SKIPPED = 77
WRONG = """import orvlog
with orvlog.open(3) as log:
    for call in log.calls(page="2"):
        print(call.page.upper(), call.box[0], call.nothing(1) + 1)
        orvlog.Log.draw(log, 1).widht
"""
MISTAKES = {2: "arg-type", 3: "arg-type", 4: "attr-defined", 5: "attr-defined"}
report = check.Report()


def mypy(*paths):
    """What mypy finds, a line each."""
    done = subprocess.run(["mypy", "--strict", "--ignore-missing-imports", "--no-error-summary", "--cache-dir=/dev/null",
                           *paths], cwd=os.path.join(check.ROOT, "python"), text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)
    return done.stdout.splitlines()


def hold_stub():
    sys.path.insert(0, PACKAGE)
    from orvlog import _native  # pylint: disable=import-outside-toplevel
    with open(os.path.join(check.ROOT, "python", "orvlog", "_native.pyi"), encoding="utf-8") as file:
        stub = ast.parse(file.read())
    places = {"": (stub.body, _native)}
    for one in stub.body:
        if isinstance(one, ast.ClassDef):
            places[one.name] = (one.body, getattr(_native, one.name, None))
    for name, (body, there) in places.items():
        told = {one.name: one for one in body if isinstance(one, (ast.FunctionDef, ast.ClassDef))}
        names = {found for found in vars(there) if not found.startswith("_") or found == "__init__" and name != "LogError"}
        if name == "LogError":
            names = set()
        report.hold(f"names of {name or 'the module'}", [f"{one} is in one alone" for one in names ^ set(told)])
        for function in told.values():
            if isinstance(function, ast.FunctionDef):
                due = [argument.arg for argument in function.args.args]
                head = getattr(there, function.name).__doc__.splitlines()[0]
                found = re.findall(r"(\w+):", head.split("->")[0])
                report.hold(f"{name}.{function.name}", [] if found == due else [f"{found} instead of {due}"])


def main():
    hold_stub()
    if shutil.which("mypy") is None:
        print("skipped: mypy isn't there")
        return 1 if report.failed else SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        wrong = os.path.join(folder, "wrong.py")
        with open(wrong, "w", encoding="utf-8") as file:
            file.write(WRONG)
        said = mypy("orvlog", "examples", wrong)
        report.hold("the package and its examples", [line for line in said if "wrong.py:" not in line])
        found = re.findall(r"wrong\.py:(\d+): error: .*\[([a-z-]+)\]", "\n".join(said))
        for line, kind in MISTAKES.items():
            report.hold(f"a mistake in line {line}", [] if (str(line), kind) in found else [found])
    report.end()
    return 0


sys.exit(main())
