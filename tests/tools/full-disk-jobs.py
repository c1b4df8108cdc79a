#!/usr/bin/env python3
"""Disks that fill in the middle of a job, for every stream: the job prints to its end, one line says what failed, the
status is 1, and what was written is the beginning of the whole log.

A small file system is mounted where that is allowed, in a name space of its own that goes with the process; elsewhere
files may not get longer than so much.

usage: full-disk-jobs.py ORVLOG-RECORD ORVLOG
"""

import json
import os
import re
import resource
import subprocess
import sys
import tempfile

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:])
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SAMPLE = os.path.join(ROOT, "docs", "sample.pdf")
OWN_SPACE = "ORVLOG_FULL_DISK_SPACE"
LONGEST = 120
# The bytes that the disk has, by what writes. The journal of frames takes a megabyte of them; where it is only files
# that may not get longer, it has a limit of its own, below the frames of the whole log.
LONGEST_FRAMES = 60000
WAYS = {"mapped": (1 << 20, ["--stream", "mapped"]), "file": (1 << 20, ["--stream", "file"]),
        "zstd": ((1 << 20) + (48 << 10), ["--stream", "zstd"]),
        "coded": (1 << 20, ["--stream", "mapped", "--compressed"]),
        "coded to a file": (1 << 20, ["--stream", "file", "--compressed"])}


def command_of(options, folder, summary):
    return [RECORD, SAMPLE, "--mode", "base", "-o", os.path.join(folder, "log.xml"), "--summary", summary, *options]


def text_of(log, folder):
    """The text of a log, and whether it has an end."""
    text = os.path.join(folder, "text.xml")
    done = subprocess.run([ORVLOG, "unpack", log, "-o", text], capture_output=True, timeout=LONGEST, check=False)
    if not os.path.exists(text):
        return b""
    with open(text, "rb") as file:
        content = file.read()
    os.remove(text)
    if (done.returncode == 0) != content.endswith(b"</ORV>\n"):
        return b"(the status of unpack is wrong) " + done.stderr
    return content


def run_on_small_disk(size, options, folder, summary):
    """What a job says, its status, and the text that it leaves."""
    small = os.path.join(folder, "small")
    os.mkdir(small)
    mounted = OWN_SPACE in os.environ
    if mounted:
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", small], check=True)
    limit = None if mounted else lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    done = subprocess.run(command_of(options, small, summary), capture_output=True, text=True, timeout=LONGEST,
                          preexec_fn=limit, check=False)
    text = text_of(os.path.join(small, "log.xml"), folder)
    if mounted:
        subprocess.run(["umount", small], check=True)
    return done, text


def trouble_with(name, size, options, mounted):
    with tempfile.TemporaryDirectory() as folder:
        summary = os.path.join(folder, "summary.json")
        subprocess.run(command_of(options, folder, summary), check=True, timeout=LONGEST)
        with open(summary, encoding="utf-8") as file:
            whole_job = json.load(file)
        whole = text_of(os.path.join(folder, "log.xml"), folder)
        done, text = run_on_small_disk(size, options, folder, summary)
        with open(summary, encoding="utf-8") as file:
            job = json.load(file)
    print(f"{name}: {len(text)} of {len(whole)} bytes of text, {done.stderr.strip()!r}")
    reason = "No space left on device" if mounted else "File too large"
    pattern = rf"orvlog-record: \S+: {reason}; the log is incomplete(, and its end is in \S+)?\n"
    if done.returncode != 1:
        return f"the status is {done.returncode}"
    if not re.fullmatch(pattern, done.stderr):
        return "that is not the one line"
    if job["calls"] != whole_job["calls"] or job["pages"] != whole_job["pages"]:
        return "the job didn't print to its end"
    if not whole.startswith(text) or len(text) >= len(whole):
        return "the text is not the beginning of the whole log"
    return None if len(text) > size // 2 else "too little was written"


def main():
    space = ["unshare", "--mount", "--propagation", "private"]
    if OWN_SPACE not in os.environ and os.geteuid() == 0:
        trial = [*space, "sh", "-c", "mount -t tmpfs -o size=65536 tmpfs /mnt"]
        if subprocess.run(trial, capture_output=True, check=False).returncode == 0:
            os.environ[OWN_SPACE] = "1"
            os.execvp(space[0], [*space, sys.executable, "-B", *sys.argv])
    mounted = OWN_SPACE in os.environ
    print("a small file system" if mounted else "files that may not get longer")
    if not mounted:
        WAYS["zstd"] = (LONGEST_FRAMES, WAYS["zstd"][1])
    faults = 0
    for name, (size, options) in WAYS.items():
        trouble = trouble_with(name, size, options, mounted)
        if trouble:
            faults += 1
            print(f"{name}: {trouble}")
    sys.exit(1 if faults else 0)


main()
