#!/usr/bin/env python3
"""Kills exports and watches at random moments, starts them again, and counts what is there in the end.

No row is doubled and none is lost, in the folder of tables and in the database, whenever the process is killed and
however often; and what stands there between two starts is whole jobs, in a database, and in files for one who goes by
the rows of jobs.

usage: killed-exports.py ORVLOG-RECORD ORVLOG; ORVLOG_KILLS tells how many processes are killed, ORVLOG_SEED when.
"""

import os
import random
import signal
import subprocess
import sys
import tempfile
import time

import jobs

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:])
KILLS = int(os.environ.get("ORVLOG_KILLS", "18"))
SEED = int(os.environ.get("ORVLOG_SEED", "1"))
LOGS = 8


def kill_after(command, seconds):
    """Whether the process was killed before it ended by itself."""
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as process:
        try:
            process.wait(seconds)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGKILL)
        why = process.stderr.read().decode()
        process.wait()
    if process.returncode not in (0, -signal.SIGKILL):
        raise SystemExit(f"status {process.returncode}: {why}")
    return process.returncode != 0


def trouble_between(way, out, expected):
    """What is wrong with what a process leaves that was killed, for one who reads it as it is; None if nothing is."""
    if way != "sqlite":
        return jobs.trouble_while_written(out, expected) if os.path.exists(out) else None
    if not os.path.exists(out):
        return None
    held = jobs.run(ORVLOG, "query", out, "SELECT name FROM jobs", "--csv", status=None)
    if held.returncode != 0:
        # Killed before it was made.
        told = (b"not a database that orvlog export has made", b"was left half written")
        return None if any(why in held.stderr for why in told) else held.stderr.decode()
    names = [name.strip('"') for name in held.stdout.decode().splitlines()[1:]]
    return jobs.trouble_with_database(ORVLOG, out, {name: expected[name] for name in names})


def hold_half_written(logs, folder, expected):
    """A database that was left in the midst of a change: a question says so, the next export sets it right."""
    out = os.path.join(folder, "half.sqlite")
    jobs.run(ORVLOG, "export", *logs[:2], "--sqlite", out)
    subprocess.run([sys.executable, "-c", """if True:
        import os, sqlite3, sys
        database = sqlite3.connect(sys.argv[1], isolation_level=None)
        database.execute("PRAGMA cache_size = 1")
        database.execute("BEGIN")
        database.execute("DELETE FROM calls")
        database.execute("DELETE FROM paths")
        os._exit(0)
        """, out], check=True)
    asked = jobs.run(ORVLOG, "query", out, "heavy-kinds", status=1)
    if b"was left half written" not in asked.stderr or asked.stderr.count(b"\n") != 1 or asked.stdout:
        raise SystemExit(f"half written: {asked.stdout} {asked.stderr}")
    jobs.run(ORVLOG, "export", *logs, "--sqlite", out)
    trouble = jobs.trouble_with_database(ORVLOG, out, expected)
    if trouble:
        raise SystemExit(f"half written: {trouble}")


def main():
    chance = random.Random(SEED)
    kills = 0
    with tempfile.TemporaryDirectory() as folder:
        sample = jobs.record(RECORD, folder)
        spool = os.path.join(folder, "spool")
        os.mkdir(spool)
        for number in range(LOGS):
            jobs.vary(sample, os.path.join(spool, f"{number}.xml"), number)
        logs = [os.path.join(spool, name) for name in sorted(os.listdir(spool))]
        expected = {os.path.basename(log): jobs.counts_told(ORVLOG, log) for log in logs}
        ways = {
            "sqlite": lambda out: [ORVLOG, "export", *logs, "--sqlite", out],
            "jsonl": lambda out: [ORVLOG, "export", *logs, "--jsonl", out, "--threads", "2"],
            "watch": lambda out: [ORVLOG, "watch", spool, "--jsonl", out, "--once", "--rest", "0", "--settle", "0"],
        }
        hold_half_written(logs, folder, expected)
        longest = {}
        for way, command in ways.items():
            start = time.monotonic()
            jobs.run(*command(os.path.join(folder, "whole-" + way)))
            longest[way] = time.monotonic() - start
        turn = 0
        while kills < KILLS:
            turn += 1
            way = list(ways)[turn % len(ways)]
            out = os.path.join(folder, f"{way}-{turn}")
            # Several in one life: what a killed one left is met by one that is killed, too.
            for _ in range(chance.randint(1, 4)):
                kills += kill_after(ways[way](out), chance.uniform(0, longest[way] * 1.1))
                trouble = trouble_between(way, out, expected)
                if trouble:
                    raise SystemExit(f"{way}, seed {SEED}, turn {turn}, between: {trouble}")
            jobs.run(*ways[way](out))
            trouble = (jobs.trouble_with_database(ORVLOG, out, expected) if way == "sqlite"
                       else jobs.trouble_with_folder(out, expected))
            if trouble:
                raise SystemExit(f"{way}, seed {SEED}, turn {turn}: {trouble}")
            if way == "sqlite":
                os.remove(out)
    print(f"{kills} processes killed in {turn} turns; no row doubled, none lost")


main()
