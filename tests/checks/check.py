"""What the checks share: the project's files, running a program, and a report that ends with a count."""

import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SKIPPED_FOLDERS = {"build", ".git", ".cache", "__pycache__"}
LIBRARY_FOLDERS = ("holv-core/", "orvlog/")


def files(*endings, under=("",)):
    """Paths of the project's files below the folders named, relative to its root, in order."""
    found = []
    for folder, folders, names in os.walk(ROOT):
        folders[:] = sorted(set(folders) - SKIPPED_FOLDERS)
        for name in names:
            path = os.path.relpath(os.path.join(folder, name), ROOT)
            if path.endswith(endings or ("",)) and path.startswith(tuple(under)):
                found.append(path)
    return sorted(found)


def text(path):
    with open(os.path.join(ROOT, path), encoding="utf-8", errors="replace") as file:
        return file.read()


def run(*command):
    """Runs a program in the project's root: its exit status, and what it said."""
    done = subprocess.run(command, cwd=ROOT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
    return done.returncode, done.stdout


class Report:
    def __init__(self):
        self.passed = 0
        self.failed = 0

    def hold(self, what, faults):
        """Counts one thing held: it passed when there are no faults; these are named otherwise."""
        faults = list(faults)
        if faults:
            self.failed += 1
            for fault in faults:
                print(f"{what}: {fault}")
        else:
            self.passed += 1

    def end(self):
        print(f"{self.passed} passed, {self.failed} failed")
        sys.exit(0 if self.failed == 0 and self.passed > 0 else 1)
