#!/usr/bin/env python3
"""The examples of the documents, clients/examples, are programs: built against the installed package, as C11 and as
C++20, they run and write the logs that stand in tests/expected/examples.

usage: examples.py linux CMAKE BUILD-FOLDER C-COMPILER C++-COMPILER
       examples.py windows CMAKE BUILD-FOLDER C-COMPILER C++-COMPILER
       examples.py msvc CMAKE BUILD-FOLDER CLANG CLANG++ START LLD-LINK LLVM-DLLTOOL

`windows` builds with MinGW, `msvc` for the ABI of Microsoft's compiler with none of its headers, and with the source
START for the start of a program; both run under Wine.
"""

import os
import shutil
import struct
import subprocess
import sys
import tempfile

import check

FOLDER = "clients/examples"
EXPECTED = "tests/expected/examples"
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]
LANGUAGES = (("c", "c11", []), ("c++", "c++20", ["-Wno-missing-field-initializers"]))
# What stands in for a C library's headers.
STANDINS = "tests/msvc-abi"

# Each example: the systems that it is for, what is linked besides, the log that it writes, its arguments behind the log.
EVERYWHERE = ("linux", "windows", "msvc")
EXAMPLES = {
    "smallest": (EVERYWHERE, [], "smallest", []),
    "page": (EVERYWHERE, [], "page", []),
    "load-library": (("windows",), None, "page", []),
    "dlopen": (("linux",), None, "page", []),
    "job": (("linux", "windows"), [], "job", []),
    "edges": (("linux", "windows"), [], "edges", []),
    "ticket": (("linux", "windows"), [], "ticket", ["profile.icc"]),
    "mapped": (("linux", "windows"), ["-lorvlog-stream"], "mapped", []),
}
# Those that check-package holds.
ELSEWHERE = {"own-parts", "every-option"}
# A page with a path, an image and a ticket takes fewer lines than these; the smallest log takes these.
FEWER_LINES = {"page": 60, "load-library": 60, "dlopen": 60, "smallest": 12}


def profile():
    """An ICC profile of the smallest kind: a description and a right to copy, and no colours."""
    texts = [(b"desc", b"desc\0\0\0\0" + struct.pack(">I", 8) + b"example\0" + bytes(79)),
             (b"cprt", b"text\0\0\0\0" + b"none\0\0\0\0")]
    table, data = struct.pack(">I", len(texts)), b""
    for name, text in texts:
        text += bytes(-len(text) % 4)
        table += struct.pack(">4sII", name, 132 + 12 * len(texts) + len(data), len(text))
        data += text
    head = struct.pack(">I4sI4s4s4s", 128 + len(table) + len(data), b"", 0x02400000, b"mntr", b"RGB ", b"XYZ ")
    head += struct.pack(">6H4s", 2026, 1, 1, 0, 0, 0, b"acsp")
    return head + bytes(128 - len(head)) + table + data


def run(*command, **more):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, text=True,
                          errors="replace", check=False, timeout=300, **more)
    return done.returncode, done.stdout


class System:
    """Builds and runs on one of the three."""

    def __init__(self, name, build, prefix, folder, tools):
        self.name, self.build, self.prefix, self.folder, self.tools = name, build, prefix, folder, tools
        self.include = os.path.join(prefix, "include", "orvlog")
        self.environment = dict(os.environ)
        if name == "linux":
            self.libraries = os.path.dirname(self.find("pkgconfig", "lib"))
            self.environment["LD_LIBRARY_PATH"] = self.libraries
        else:
            self.libraries = os.path.join(prefix, "lib")
            shutil.copy(os.path.join(prefix, "bin", "orvlog.dll"), folder)

    def find(self, name, under):
        for place, folders, _ in os.walk(os.path.join(self.prefix, under)):
            if name in folders:
                return os.path.join(place, name)
        return ""

    def compile(self, source, language, standard, more, libraries):
        """Gives faults and the program's path."""
        program = os.path.join(self.folder, f"{os.path.splitext(os.path.basename(source))[0]}-{standard}")
        compiler = self.tools[0 if language == "c" else 1]
        wanted = [compiler, f"-std={standard}", "-O2", *WARNINGS, *more, f"-I{self.include}", "-x", language,
                  os.path.join(check.ROOT, source), "-x", "none"]
        if self.name == "msvc":
            return self.compile_for_msvc(wanted[:-2], program)
        if self.name == "windows":
            program += ".exe"
            wanted.append("-static")
        # Without the library itself where a program finds it at run time.
        link = [] if libraries is None else [f"-L{self.libraries}", *libraries, "-lorvlog"]
        status, output = run(*wanted, *link, "-o", program)
        return [] if status == 0 else [output], program

    def compile_for_msvc(self, wanted, program):
        options = ["--target=x86_64-pc-windows-msvc", "-ffreestanding", "-fno-stack-protector",
                   f"-I{os.path.join(check.ROOT, STANDINS)}"]
        commands = (
            [wanted[0], *options, *wanted[1:], "-c", "-o", program + ".obj"],
            [self.tools[0], *options, "-c", self.tools[2], "-o",
             os.path.join(self.folder, "start.obj")],
            [self.tools[4], "-m", "i386:x86-64", "-d", os.path.join(check.ROOT, STANDINS, "msvcrt.def"), "-l",
             os.path.join(self.folder, "msvcrt.lib")],
            [self.tools[3], "/subsystem:console", "/entry:mainCRTStartup", "/nodefaultlib", f"/out:{program}.exe",
             program + ".obj", os.path.join(self.folder, "start.obj"), os.path.join(self.libraries, "orvlog.lib"),
             os.path.join(self.folder, "msvcrt.lib")],
        )
        for command in commands:
            status, output = run(*command)
            if status != 0:
                return [output], ""
        return [], program + ".exe"

    def execute(self, program, *arguments):
        if self.name == "linux":
            return run(program, *arguments, cwd=self.folder, env=self.environment)
        # What Wine says of its own processes goes to the same stderr.
        done = subprocess.run([os.path.join(check.ROOT, "scripts", "run-under-wine"), program, *arguments],
                              cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, errors="replace", check=False, timeout=300)
        return done.returncode, done.stdout + (done.stderr if done.returncode != 0 else "")


def faults_of_log(path, expected):
    if not os.path.isfile(path):
        yield "there is no log"
        return
    with open(path, "rb") as file:
        log = file.read()
    if log != check.text(expected).encode():
        yield f"the log isn't {expected}:\n{log.decode(errors='replace')}"


def hold_example(report, system, name, language, standard, more):
    _, libraries, expected, arguments = EXAMPLES[name]
    faults, program = system.compile(f"{FOLDER}/{name}.c", language, standard, more, libraries)
    log = f"{name}.xml"
    place = os.path.join(system.folder, log)
    if not faults:
        if os.path.exists(place):
            os.remove(place)
        status, output = system.execute(program, log, *arguments)
        faults = [] if (status, output) == (0, "") else [f"status {status}, says {output!r}"]
        faults += faults_of_log(place, f"{EXPECTED}/{expected}.xml")
    report.hold(f"{name} in {standard}", faults)


def hold_layout(report, system):
    """The layout of the records, as the library has it, for C and C++ of another ABI."""
    source = check.text("orvlog/interface/orvlog-layout.cpp")
    for language, standard, _ in LANGUAGES:
        text = source.replace("<cstddef>", "<stddef.h>")
        if language == "c":
            text = text.replace("static_assert(", "_Static_assert(").replace("sizeof(record)", "SIZE_OF(record)")
            text = "#define SIZE_OF(record) sizeof(record)\n" + c_sizes(text)
        path = os.path.join(system.folder, f"layout-{standard}.txt")
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        command = [system.tools[0 if language == "c" else 1], "--target=x86_64-pc-windows-msvc", "-ffreestanding",
                   f"-std={standard}", f"-I{check.ROOT}", "-fsyntax-only", "-x", language]
        status, output = run(*command, path)
        asserts = text.count("\nAT(") + text.count("\nSIZE(") + text.count("_Static_assert(sizeof(((")
        report.hold(f"layout in {standard}", [] if status == 0 and asserts > 300 else [output or f"{asserts} asserts"])
        with open(path, "w", encoding="utf-8") as file:
            file.write(text.replace("AT(GIO_Stream, ops, 16)", "AT(GIO_Stream, ops, 12)"))
        report.hold(f"a planted fault in {standard}", [] if run(*command, path)[0] != 0 else ["is let pass"])


def c_sizes(text):
    """The sizes of members, which C has no name for, as those of a member of no record."""
    lines = []
    for line in text.splitlines():
        if line.startswith("SIZE(") and "::" in line:
            record, size = line[len("SIZE("):].rstrip(");").rsplit(", ", 1)
            record, member = record.split("::", 1)
            line = f"_Static_assert(sizeof((({record}*)0)->{member}) == {size}, \"\");"
        lines.append(line)
    return "\n".join(lines).replace("== (offset))", "== (offset), \"\")").replace("== (size))", "== (size), \"\")").replace(
        "sizeof(void*) == 8)", "sizeof(void*) == 8, \"\")") + "\n"


def hold_sources(report):
    there = {os.path.splitext(os.path.basename(path))[0] for path in check.files(".c", under=(FOLDER + "/",))}
    report.hold(FOLDER, [f"{name} isn't built" for name in sorted(there - EXAMPLES.keys() - ELSEWHERE)])
    for name, lines in FEWER_LINES.items():
        has = check.text(f"{FOLDER}/{name}.c").count("\n")
        report.hold(f"{name}, lines", [] if has < lines else [f"{has} lines"])


def main(name, cmake, build, *tools):
    report = check.Report()
    with tempfile.TemporaryDirectory() as folder:
        prefix = os.path.join(folder, "package")
        status, output = run(cmake, "--install", build, "--prefix", prefix, "--component", "library")
        report.hold("install", [] if status == 0 else [output])
        with open(os.path.join(folder, "profile.icc"), "wb") as file:
            file.write(profile())
        system = System(name, build, prefix, folder, tools)
        for example, (systems, *_) in EXAMPLES.items():
            for language, standard, more in LANGUAGES if name in systems else ():
                hold_example(report, system, example, language, standard, more)
        if name == "msvc":
            hold_layout(report, system)
        if name == "linux":
            hold_sources(report)
    report.end()


main(*sys.argv[1:])
