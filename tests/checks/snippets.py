#!/usr/bin/env python3
"""What the pages show in C, C++ and CMake is part of a file that a test compiles, and their command lines work as they
stand. Those of the orvlog command are run by the test `usage-tests`; here the others are.

usage: snippets.py C-COMPILER C++-COMPILER
"""

import os
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile

import check

PAGES = ["README.md"] + [path for path in check.files(".md") if path.startswith("docs/")]
BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.S | re.M)
EXAMPLES = check.files(".c", under=("clients/examples/",))

# Where the pieces of a page are from, by its language.
SOURCES = {
    "c": {"README.md": EXAMPLES, "docs/for-drivers.md": EXAMPLES},
    "cpp": {"docs/changing-the-code.md": ["orvlog/records/gpa-path-dump.cpp"]},
}
# Pages whose pieces aren't from a file but are compiled, as which language, and what stands around them.
COMPILED = {
    "docs/base-library.md": ("c++", '#include "holv-core/gio/gio-file.h"\n'
                             "void read(GMM_Allocator* allocator, void* buffer, uint64_t size)\n{\n", "}\n"),
    "docs/renderer-libraries.md": ("c", '#include "orvlog/interface/orv-interface.h"\n'
                                   "extern const ORV_document_start_fn document_start;\n", ""),
}
# A project with the page's lines for CMake in it.
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(driver LANGUAGES C)
add_executable(driver driver.c)
"""

# Command lines that take the whole build, or tools that are not for tests: what they name must be there.
TOO_LONG = {
    "PYTHONPATH=build/release/python python3 python/examples/texts.py job.xml": "is run by python-package",
    "scripts/record": "builds everything once more",
    "scripts/test": "is what runs this",
    "cmake --preset release && cmake --build --preset release && ctest --test-dir build/release -j2": "the same",
    "bench/run --documents FOLDER": "takes documents",
    "cmake --preset bench && cmake --build --preset bench": "builds everything once more",
    "build/bench/bench/call-bench": "is made by the line before",
    "valgrind --tool=callgrind build/bench/bench/stroke-bench 200": "takes a tool for benchmarks",
    "valgrind --tool=callgrind build/bench/bench/stroke-bench 1200": "takes a tool for benchmarks",
    "strace -f -c -e trace=write,pwritev,fallocate orvlog record docs/sample.pdf --no-renderer -o sample.xml "
    "--stream file": "may not be allowed to look into another process",
    "jing -c docs/orvlog.rnc job.xml": "check-schema runs it",
    "scripts/clickhouse load tables --day 2026-11-22": "takes a server; the test clickhouse-answers has one",
    "scripts/clickhouse ask fonts": "likewise",
    "scripts/clickhouse schema": "takes the command; likewise",
}


def blocks(page):
    return BLOCK.findall(check.text(page))


def plain(text):
    """Without comments and layout."""
    return "".join(re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.S).split())


def statements(text):
    """Of a piece that shows single lines of a file, each by itself."""
    return [line for line in re.sub(r"//[^\n]*", "", text).splitlines() if line.strip()]


def faults_of_compiled(page, text, compilers):
    language, before, behind = COMPILED[page]
    done = subprocess.run([compilers[language], "-fsyntax-only", f"-I{check.ROOT}", "-x", language, "-"],
                          input=before + text + behind, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)
    if done.returncode != 0:
        yield f"{done.stdout}\n{text}"


def faults_of_piece(language, page, text):
    files = SOURCES[language].get(page)
    if files is None:
        yield f"nothing is known that this is part of:\n{text}"
        return
    sources = [plain(check.text(path)) for path in files]
    pieces = statements(text) if language == "cpp" else [text]
    for piece in pieces:
        if not any(plain(piece) in source for source in sources):
            yield f"this isn't in {', '.join(files)}:\n{piece}"


def command_lines(text):
    """A block's lines, those that a backslash goes on with joined, without comments."""
    lines = re.sub(r"\\\n\s*", "", text).splitlines()
    return [line for line in (re.sub(r"\s+#.*", "", line).strip() for line in lines) if line]


def is_of_the_command(text):
    return re.search(r"^orvlog ", text, re.M) is not None


def faults_of_names(line):
    for word in line.split():
        if word.startswith(("scripts/", "bench/run")) and not os.access(os.path.join(check.ROOT, word), os.X_OK):
            yield f"{word} isn't there"
    presets = check.text("CMakePresets.json")
    for preset in re.findall(r"--preset (\w+)", line):
        if f'"name": "{preset}"' not in presets:
            yield f"there is no preset {preset}"


class Place:
    """A copy of the tree's folder as it is to whoever pastes, with the sources linked into it."""

    def __init__(self, folder, c, cxx):
        self.tree = os.path.join(folder, "tree")
        programs = os.path.join(folder, "programs")
        os.makedirs(self.tree)
        os.makedirs(programs)
        for name in os.listdir(check.ROOT):
            if name not in check.SKIPPED_FOLDERS:
                os.symlink(os.path.join(check.ROOT, name), os.path.join(self.tree, name))
        os.symlink(shutil.which(c), os.path.join(programs, "cc"))
        os.symlink(shutil.which(cxx), os.path.join(programs, "c++"))
        shutil.copy(os.path.join(check.ROOT, "clients/examples/smallest.c"), os.path.join(self.tree, "driver.c"))
        self.environment = dict(os.environ, PATH=programs + os.pathsep + os.environ["PATH"], CC=c, CXX=cxx)

    def paste(self, line):
        done = subprocess.run(["sh", "-euc", line], cwd=self.tree, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, timeout=600)
        return [] if done.returncode == 0 else [f"{line}\nstatus {done.returncode}: {done.stdout}"]

    def build_project(self, text):
        folder = os.path.join(self.tree, "build", "project")
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        shutil.copy(os.path.join(self.tree, "driver.c"), folder)
        with open(os.path.join(folder, "CMakeLists.txt"), "w", encoding="utf-8") as file:
            file.write(PROJECT + text)
        for archive in re.findall(r"[\w.-]+\.tar\.gz", text):
            self.pack_sources(os.path.join(folder, archive))
        return self.paste("cmake -S build/project -B build/project/made -DCMAKE_PREFIX_PATH=$PWD/build/package && "
                          "cmake --build build/project/made && build/project/made/driver made.xml")

    def pack_sources(self, path):
        """An archive as scripts/package makes it, by its name too."""
        name = os.path.basename(path).removesuffix(".tar.gz")
        version = re.search(r"^project\(orvlog VERSION ([\d.]+)", check.text("CMakeLists.txt"), re.M)[1]
        if name != f"orvlog-{version}":
            return
        with tarfile.open(path, "w:gz", compresslevel=1) as archive:
            for place in check.files():
                archive.add(os.path.join(check.ROOT, place), os.path.join(name, place))

    def use_package(self):
        """As the page says, pkg-config is told where the package is."""
        for place, _, names in os.walk(os.path.join(self.tree, "build", "package")):
            if "orvlog.pc" in names:
                self.environment["PKG_CONFIG_PATH"] = place
                self.environment["LD_LIBRARY_PATH"] = os.path.dirname(place)


def run_lines(report, c, cxx):
    lines = [(page, line) for page in PAGES for language, text in blocks(page)
             if language == "sh" and not is_of_the_command(text) for line in command_lines(text)]
    # Those that make the package are in front of those that take it.
    lines.sort(key=lambda found: not found[1].startswith("cmake "))
    ran = 0
    with tempfile.TemporaryDirectory() as folder:
        place = Place(folder, c, cxx)
        for page, line in lines:
            if line in TOO_LONG:
                report.hold(f"{page}: {line}", faults_of_names(line))
                continue
            place.use_package()
            report.hold(f"{page}: {line}", place.paste(line))
            if re.search(r"-o driver$", line):
                report.hold(f"{page}: driver", place.paste("./driver driver.xml && grep -q '^</ORV>$' driver.xml"))
            ran += 1
        for page in PAGES:
            for language, text in blocks(page):
                if language == "cmake":
                    report.hold(f"{page}: {text}", place.build_project(text))
                    ran += 1
    report.hold("command lines", [] if ran >= 5 else [f"only {ran} were run"])
    there = {line for _, line in lines}
    report.hold("lines that aren't run", [f"{line} stands in no page" for line in TOO_LONG if line not in there and
                                          "orvlog record" not in line])


def main(c, cxx):
    report = check.Report()
    pieces = 0
    for page in PAGES:
        for language, text in blocks(page):
            if language == "c" and page in COMPILED:
                report.hold(page, faults_of_compiled(page, text, {"c": c, "c++": cxx}))
            elif language in SOURCES:
                report.hold(page, faults_of_piece(language, page, text))
            pieces += language in SOURCES
    report.hold("pieces", [] if pieces > 15 else [f"only {pieces}"])
    report.hold("a planted piece", [] if list(faults_of_piece("c", "README.md", "draw_nothing();")) else ["is let pass"])
    run_lines(report, c, cxx)
    report.end()


main(*sys.argv[1:])
