#!/usr/bin/env python3
"""The installed libraries are whole: put into an empty folder, they declare what they have and no more, clients find
them by find_package and by pkg-config, as C11 and as C++20, and they run; also after the folder has been moved.

usage: package.py CMAKE BUILD-FOLDER C-COMPILER C++-COMPILER
"""

import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile

import check

CLIENT = "clients/examples/own-parts.c"
STATIC_CLIENT = "clients/examples/every-option.c"
EXPORTS = {"ORVLOG_DLL_initialise", "ORVLOG_DLL_set_parameters", "ORVLOG_DLL_shutdown"}
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]

DRAWN = """document 7 starts
page 1 starts, 850 pixels wide
page finishes
document finishes
"""

# Behind the line of the root's opening tag, which tells the versions.
LOG = """  <ORV_document_start document_context="0" document_id="7" font_engine_functions="FALSE">
  </ORV_document_start>
  <ORV_face_start document_context="0" drawing_context="0" font_engine_functions="FALSE" face_seq_number="1" \
pixel_placement_orientation="GPA_PP_ORIENTATION_0_DEG" pixel_placement="GPA_PLACEMENT_GDI">
    <ORV_FaceProperties fp_FaceHints="[0] ORV_FACE_HINT_NONE " fp_FaceInchToPixels="0 0 0 0 0 0 " \
fp_WidthInPixels="850" fp_HeightInPixels="0" fp_TrimBox="0 0 0 0 " fp_ClipBox="0 0 0 0 " fp_MediaSize="0 0 ">
    </ORV_FaceProperties>
  </ORV_face_start>
  <ORV_drawing_finish drawing_context="0">
  </ORV_drawing_finish>
  <ORV_document_finish document_context="0">
  </ORV_document_finish>
</ORV>
"""


# What the log of the static client begins with, by its kind, and whether it ends as text.
STATIC_LOGS = {
    "base": (r'<ORV MIRDA.* LoggingMode="base" ', True),
    "content": (r'<ORV MIRDA.* LoggingMode="transparent" ', True),
    "coded": (r'<ORV compression="Adaptive Huffman"(?!.*MIRDA)', False),
    "merged": (r'<ORV compression="Adaptive Huffman"(?!.*MIRDA)', False),
}


def functions_of_archives(prefix):
    """What the static libraries define: the creator with named options, the log streams."""
    archives = glob.glob(os.path.join(prefix, "**", "*.a"), recursive=True)
    names = set()
    for archive in archives:
        listed = subprocess.run(["nm", "--defined-only", "-g", archive], stdout=subprocess.PIPE, text=True, check=True)
        names |= set(re.findall(r" T (orvlog_\w+)$", listed.stdout, re.MULTILINE))
    return names


def declared_functions(c, include):
    """Names of the functions that the installed headers declare without giving a body."""
    names = set()
    headers = sorted(glob.glob(os.path.join(include, "**", "*.h"), recursive=True))
    source = "".join(f"#include <{os.path.relpath(header, include)}>\n" for header in headers)
    done = subprocess.run([c, "-std=c11", "-E", f"-I{include}", "-xc", "-"], input=source, stdout=subprocess.PIPE,
                          text=True, check=True)
    ours, text = False, []
    for line in done.stdout.splitlines():
        marker = re.match(r'# \d+ "(.*?)"', line)
        if marker:
            ours = os.path.abspath(marker[1]).startswith(os.path.abspath(include))
        elif ours:
            text.append(line)
    text = re.sub(r"static inline [^{;]*(?=\{)", "", "\n".join(text))
    while re.search(r"\{[^{}]*\}", text):
        text = re.sub(r"\{[^{}]*\}", " ", text)
    for declaration in text.split(";"):
        found = re.match(r"[^()]*\b(\w+)\s*\(", declaration)
        if found and declaration.split()[0] != "typedef":
            names.add(found[1])
    return headers, names


def run(*command, **more):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **more)
    return done.returncode, done.stdout


def faults_of_run(program, library, folder):
    """What is wrong with a client's output and log, when the logger begins and when it can't."""
    log = os.path.join(folder, "log.xml")
    environment = dict(os.environ, LD_LIBRARY_PATH=library)
    for refused in ("", "allocator", "memory", "identity", "number"):
        status, output = run(program, log, refused, env=environment)
        expected = DRAWN + ("not logged\n" if refused else "logged\n")
        if (status, output) != (0, expected):
            yield f"refusing {refused or 'nothing'}: status {status}, says {output!r}"
        with open(log, encoding="utf-8") as file:
            text = file.read()
        if refused and text:
            yield f"refusing {refused}: the log is {text!r}"
        elif not refused and not (text.startswith("<ORV MIRDA") and text.partition("\n")[2] == LOG):
            yield f"the log is {text!r}"


def faults_of_static_run(program, library, folder):
    """What is wrong with the logs of the static client; where it would have to look for a library it has none."""
    del library
    for kind, (beginning, whole) in STATIC_LOGS.items():
        log = os.path.join(folder, "static.xml")
        status, output = run(program, log, kind, cwd=folder)
        with open(log, "rb") as file:
            text = file.read().decode("latin-1")
        if (status, output) != (0, ""):
            yield f"{kind}: status {status}, says {output!r}"
        if not re.match(beginning, text, re.S) or (whole and text.partition("\n")[2] != LOG):
            yield f"{kind}: the log is {text!r}"
    if glob.glob(os.path.join(folder, "*.tmp")):
        yield "a temporary log is left"


def build_with_cmake(cmake, c, cxx, prefix, folder):
    """Builds the clients' project; gives its programs."""
    status, output = run(cmake, "-S", os.path.join(check.ROOT, "tests/package"), "-B", folder,
                         f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_C_COMPILER={c}", f"-DCMAKE_CXX_COMPILER={cxx}",
                         "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF")
    if status == 0:
        status, output = run(cmake, "--build", folder)
    return [output] if status != 0 else [], folder


def build_with_pkg_config(source, name, more, compiler, language, standard, prefix, folder):
    """Builds a client by what pkg-config says; gives its program and the library's folder."""
    places = glob.glob(os.path.join(prefix, "**", f"{name}.pc"), recursive=True)
    if len(places) != 1:
        return [f"{len(places)} files {name}.pc"], None, None
    environment = dict(os.environ, PKG_CONFIG_LIBDIR=os.path.dirname(places[0]))
    environment.pop("PKG_CONFIG_PATH", None)

    def ask(what):
        status, output = run("pkg-config", what, name, env=environment)
        return output.split() if status == 0 else [f"--pkg-config-failed={output}"]

    program = os.path.join(folder, f"{name}-{standard}")
    status, output = run(compiler, f"-std={standard}", *WARNINGS, *ask("--cflags"), "-x", language,
                         os.path.join(check.ROOT, source), "-x", "none", "-o", program, *more, *ask("--libs"))
    return [output] if status != 0 else [], program, "".join(ask("--variable=libdir"))


# Each client: source, package of pkg-config, what is linked besides, and what is held of its runs.
CLIENTS = (
    (CLIENT, "orvlog", [], faults_of_run),
    (STATIC_CLIENT, "orvlog-static", ["-lorvlog-stream"], faults_of_static_run),
)


def hold_package(report, cmake, c, cxx, prefix, where):
    with tempfile.TemporaryDirectory() as folder:
        missing, programs = build_with_cmake(cmake, c, cxx, prefix, folder)
        report.hold(f"{where}, find_package", missing)
        for source, name, more, faults_of in CLIENTS:
            stem = os.path.splitext(os.path.basename(source))[0]
            for program in [f"{stem}-c", f"{stem}-cxx"] if not missing else []:
                report.hold(f"{where}, {program} of find_package",
                            faults_of(os.path.join(programs, program), "", folder))
            for compiler, language, standard in ((c, "c", "c11"), (cxx, "c++", "c++20")):
                libraries = ["-L" + place for place in {os.path.dirname(found) for found in glob.glob(
                    os.path.join(prefix, "**", "liborvlog-stream.a"), recursive=True)}] if more else []
                faults, program, library = build_with_pkg_config(source, name, libraries + more, compiler, language,
                                                                 standard, prefix, folder)
                report.hold(f"{where}, {name} in {standard} by pkg-config",
                            faults or faults_of(program, library, folder))


def main(cmake, build, c, cxx):
    report = check.Report()
    with tempfile.TemporaryDirectory() as folder:
        first = os.path.join(folder, "first")
        status, output = run(cmake, "--install", build, "--prefix", first, "--component", "library")
        report.hold("install", [] if status == 0 else [output])
        headers, declared = declared_functions(c, os.path.join(first, "include", "orvlog"))
        report.hold("headers", [] if len(headers) > 8 else [f"only {headers}"])
        there = EXPORTS | functions_of_archives(first)
        report.hold("declared functions", [f"{name} is not in the package" for name in sorted(declared - there)] +
                    [f"{name} is not declared" for name in sorted(EXPORTS - declared)])
        hold_package(report, cmake, c, cxx, first, "as installed")
        second = os.path.join(folder, "elsewhere", "second")
        os.makedirs(os.path.dirname(second))
        shutil.move(first, second)
        hold_package(report, cmake, c, cxx, second, "moved")
    report.end()


main(*sys.argv[1:])
