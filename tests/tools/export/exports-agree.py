#!/usr/bin/env python3
"""Whatever a log is, the rows of each table are as many as orvlog info counts: in a database and in files, one form as
the other, and the same files however many threads wrote them.

usage: exports-agree.py ORVLOG-RECORD ORVLOG
"""

import os
import sys
import tempfile

import jobs

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:])


def make_logs(folder):
    """Plain, coded and compressed ones, of both modes, whole, cut and damaged."""
    ways = {"plain.xml": [], "base.xml": ["--mode", "base", "--glyphs", "all"], "coded.xml": ["--compressed"],
            "bare.xml": ["--no-renderer"], "beside.xml": ["--images-beside", "job"]}
    logs = [jobs.record(RECORD, folder, jobs.SAMPLE, name, *options) for name, options in ways.items()]
    for number in range(10):
        logs.append(os.path.join(folder, f"varied-{number}.xml"))
        jobs.vary(logs[number % 2], logs[-1], number)
    with open(logs[1], "rb") as file:
        text = file.read()
    coded = jobs.run("cat", logs[2]).stdout
    for number in range(6):
        at = len(text) * (number + 1) // 7
        for name, bytes_of_it in ((f"cut-{number}.xml", text[:at]),
                                  (f"bent-{number}.xml", text[:at] + b"\n</GOP_None>\n<<\n" + text[at + 5000 * number:]),
                                  (f"coded-{number}.xml", coded[:len(coded) * (number + 1) // 7])):
            logs.append(os.path.join(folder, name))
            with open(logs[-1], "wb") as file:
                file.write(bytes_of_it)
    logs.append(logs[0].replace("plain.xml", "zstd.xml.zst"))
    jobs.run("zstd", "-q", logs[4], "-o", logs[-1])
    return logs


def main():
    with tempfile.TemporaryDirectory() as folder:
        logs = make_logs(folder)
        # Logs of the same text are one.
        texts = {}
        for log in logs:
            texts.setdefault(jobs.run(ORVLOG, "unpack", log, "-o", "-", status=None).stdout, log)
        if len(texts) in (0, len(logs)):
            raise SystemExit("no two logs have the same text")
        expected = {os.path.basename(log): jobs.counts_told(ORVLOG, log) for log in texts.values()}
        database, tables, again = (os.path.join(folder, name) for name in ("jobs.sqlite", "tables", "again"))
        jobs.run(ORVLOG, "export", *logs, "--sqlite", database)
        jobs.run(ORVLOG, "export", *logs, "--jsonl", tables, "--content", "--texts", "--threads", "1")
        jobs.run(ORVLOG, "export", *logs, "--jsonl", again, "--content", "--texts", "--threads", "4")
        for trouble in (jobs.trouble_with_database(ORVLOG, database, expected),
                        jobs.trouble_with_folder(tables, expected)):
            if trouble:
                raise SystemExit(trouble)
        for table in (*jobs.TABLES, "segments", "bytes"):
            rows = jobs.rows_of(tables, table)
            if rows != jobs.rows_of(again, table):
                raise SystemExit(f"{table}: other rows with other threads")
            print(f"{table}: {len(rows)} rows of {len(expected)} logs")


main()
