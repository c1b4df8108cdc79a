#!/usr/bin/env python3
"""Runs the command lines of a transcript, in a folder of their own, and holds what they write against it. The transcript
is the same on each system.

usage: transcript.py TRANSCRIPT ORVLOG [WRAPPER] [--beside=FILE] [--write]

A line that begins with "$ " is a command line for `orvlog`, with words in the manner of a POSIX shell, "< FILE" for the
standard input and "> FILE" for the standard output; "$ sum FILE", "$ same FILE FILE", "$ copy FILE FILE", "$ cut FILE
BYTES FILE" and "$ files FOLDER" are done here. Below it stands what comes of it: standard output, standard error with
"! " in front, and the status if it isn't 0. WRAPPER runs programs of another system. FILE lies in the folder,
too. --write puts what comes in the transcript's place.
"""

import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
EXPECTED = os.path.join(HERE, "..", "..", "expected")
SECONDS = 120
# What Wine says when it can't reach its server, before the program begins; the next start mostly can.
NOT_BEGUN = b"wine client error"
STARTS = 4

words = [word for word in sys.argv[1:] if not word.startswith("--")]
beside = [os.path.abspath(word.split("=", 1)[1]) for word in sys.argv[1:] if word.startswith("--beside=")]
transcript, program = os.path.abspath(words[0]), [os.path.abspath(word) for word in reversed(words[1:3])]
with open(transcript, encoding="utf-8") as file:
    text = file.read()


def bytes_of(name):
    """Nothing of a file that isn't there."""
    if not os.path.exists(name):
        return b""
    with open(name, "rb") as data:
        return data.read()


def told(data, mark=""):
    return [mark + line for line in data.decode("utf-8", "backslashreplace").splitlines()]


def run(line):
    """The lines that come of a command line."""
    parts = shlex.split(line)
    if parts[0] == "sum":
        data = bytes_of(parts[1])
        return [f"{len(data)} {zlib.crc32(data):08x}"]
    if parts[0] == "same":
        return ["same" if bytes_of(parts[1]) == bytes_of(parts[2]) != b"" else "differ"]
    if parts[0] == "copy":
        shutil.copyfile(parts[1], parts[2])
        return []
    if parts[0] == "cut":
        with open(parts[3], "wb") as cut:
            cut.write(bytes_of(parts[1])[:int(parts[2])])
        return []
    if parts[0] == "files":
        return sorted(os.listdir(parts[1])) if os.path.isdir(parts[1]) else ["no folder"]
    # Into files: processes of the wrapper's outlive the command, and would keep a pipe open.
    files = {"<": os.devnull, ">": "standard-output"}
    for mark in files:
        if mark in parts:
            at = parts.index(mark)
            files[mark] = parts[at + 1]
            del parts[at:at + 2]
    for _ in range(STARTS):
        with open(files["<"], "rb") as source, open(files[">"], "wb") as target, open("standard-error", "wb") as errors:
            status = subprocess.run(program + parts[1:], stdin=source, stdout=target, stderr=errors, timeout=SECONDS,
                                    check=False).returncode
        if not bytes_of("standard-error").startswith(NOT_BEGUN):
            break
    shown = told(bytes_of("standard-output")) if files[">"] == "standard-output" else []
    shown += told(bytes_of("standard-error"), "! ") + [f"status {status}"] * (status != 0)
    for name in ("standard-output", "standard-error"):
        if os.path.exists(name):
            os.remove(name)
    return shown


def blocks():
    """Each command line with the lines below it."""
    block = None
    for line in text.splitlines():
        if line.startswith("$ "):
            if block:
                yield block
            block = (line[2:], [])
        elif block:
            block[1].append(line)
    if block:
        yield block


passed, failed, written = 0, 0, []
with tempfile.TemporaryDirectory() as folder:
    for name in sorted(os.listdir(os.path.join(EXPECTED, "examples"))):
        shutil.copyfile(os.path.join(EXPECTED, "examples", name), os.path.join(folder, name))
    shutil.copyfile(os.path.join(EXPECTED, "every-call-transparent.xml"), os.path.join(folder, "calls.xml"))
    for name in beside:
        shutil.copyfile(name, os.path.join(folder, os.path.basename(name)))
    os.chdir(folder)
    for line, expected in blocks():
        came = run(line)
        written += ["$ " + line] + came
        if came == expected:
            passed += 1
        else:
            failed += 1
            print(f"$ {line}\n  expected:", *expected, "  came:", *came, sep="\n")
    os.chdir(HERE)
if "--write" in sys.argv:
    with open(transcript, "w", encoding="utf-8") as file:
        file.write("\n".join(written) + "\n")
print(f"{passed} passed, {failed} failed")
sys.exit(failed > 0 or passed == 0)
