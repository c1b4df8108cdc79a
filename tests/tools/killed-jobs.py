#!/usr/bin/env python3
"""Kills jobs at random moments, with every stream, with and without kept images, and reads what they left.

What `orvlog unpack` gives is the beginning of the whole job's log; `orvlog info` says that it is cut short, and names
the call that was in flight. An empty log whose job stands in a temporary one says how to get it. Nothing hangs.

usage: killed-jobs.py ORVLOG-RECORD ORVLOG; ORVLOG_KILLS tells how many jobs are killed, ORVLOG_SEED when.
"""

import os
import random
import re
import signal
import subprocess
import sys
import tempfile
import time

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:])
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SAMPLE = os.path.join(ROOT, "docs", "sample.pdf")
KILLS = int(os.environ.get("ORVLOG_KILLS", "24"))
STREAMS = {"mapped": ["--stream", "mapped"], "file": ["--stream", "file"], "zstd": ["--stream", "zstd"],
           "coded": ["--stream", "mapped", "--compressed"]}
LONGEST = 60
# The names of the logs of kept images differ from job to job.
RANDOM_NAME = re.compile(rb"orvlog-[0-9a-f]{8}(-[0-9a-f]{8}){3}")


def command_of(options):
    return [RECORD, SAMPLE, "-o", "log.xml", *options]


def read_log(folder):
    """The text of a log, as the command brings it back."""
    done = subprocess.run([ORVLOG, "unpack", "log.xml", "-o", "text.xml"], cwd=folder, capture_output=True,
                          timeout=LONGEST, check=False)
    name = os.path.join(folder, "text.xml")
    if not os.path.exists(name):
        return b"", done
    with open(name, "rb") as file:
        return file.read(), done


def call_in_flight(text):
    """The last call that was begun and not ended, by name; None between calls."""
    calls = re.findall(rb"(?m)^\s*<(/?)(ORV_[a-z_]+)(?=[\s>])", text)
    return calls[-1][1].decode() if calls and not calls[-1][0] else None


def trouble_with(folder, whole):
    """What is wrong with what a killed job left; None if nothing is."""
    text, unpacked = read_log(folder)
    told = subprocess.run([ORVLOG, "info", "log.xml"], cwd=folder, capture_output=True, text=True, timeout=LONGEST,
                          check=False)
    temporary = [name for name in os.listdir(folder) if re.fullmatch(r"orvlog(-[0-9a-f]{8}){4}\.tmp", name)]
    if temporary:
        wanted = f"orvlog merge {temporary[0]} -o log.xml"
        return None if text or wanted in told.stderr else f"the merge is not told: {told.stderr!r}"
    if not text:
        lines = told.stderr.count("\n")
        return None if told.returncode == 1 and lines == 1 else f"of an empty log is said {told.stderr!r}"
    lines = RANDOM_NAME.sub(b"NAME", text)
    # A name may be cut in the middle.
    sure = lines if lines.endswith(b"\n") else lines[:lines.rfind(b"\n") + 1]
    if not whole.startswith(sure):
        return f"the text differs from that of the whole job before byte {len(text)}"
    if text.endswith(b"</ORV>\n"):
        return None if unpacked.returncode == 0 else "a whole log is not read as one"
    if told.returncode != 0 or "cut short" not in told.stdout:
        return f"it is not said to be cut short: {told.stdout!r} {told.stderr!r}"
    call = call_in_flight(text)
    if call is not None and not re.search(rf"in flight   {call}[ ,]", told.stdout):
        return f"{call} is not said to be in flight: {told.stdout!r}"
    return None


def run_whole(options):
    with tempfile.TemporaryDirectory() as folder:
        start = time.monotonic()
        subprocess.run(command_of(options), cwd=folder, check=True, timeout=LONGEST)
        seconds = time.monotonic() - start
        return RANDOM_NAME.sub(b"NAME", read_log(folder)[0]), seconds


def kill_one(options, after):
    folder = tempfile.TemporaryDirectory()
    job = subprocess.Popen(command_of(options), cwd=folder.name, stderr=subprocess.DEVNULL)
    try:
        job.wait(after)
    except subprocess.TimeoutExpired:
        job.send_signal(signal.SIGKILL)
        job.wait()
    return folder


def main():
    seed = int(os.environ.get("ORVLOG_SEED", "1"))
    moments = random.Random(seed)
    ways = [(f"{name}{', kept images' if kept else ''}", options + (["--keep-images"] if kept else []))
            for kept in (False, True) for name, options in STREAMS.items()]
    wholes = {name: run_whole(options) for name, options in ways}
    faults = cut = 0
    for number in range(KILLS):
        name, options = ways[number % len(ways)]
        whole, seconds = wholes[name]
        after = moments.uniform(0, seconds)
        with kill_one(options, after) as folder:
            trouble = trouble_with(folder, whole)
            cut += os.path.exists(os.path.join(folder, "log.xml"))
        if trouble:
            faults += 1
            print(f"{name}, killed after {after:.4f} s: {trouble}")
    print(f"{KILLS} jobs killed, {cut} of them with a log, {faults} faults")
    if cut < KILLS // 3:
        sys.exit("too few jobs had begun")
    sys.exit(1 if faults else 0)


main()
