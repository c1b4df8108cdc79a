#!/usr/bin/env python3
"""Whatever a log is, the rows of each table are as many as orvlog info counts: in a database and in files, one form as
the other, and the same files however many threads wrote them.

usage: exports-agree.py ORVLOG-RECORD ORVLOG
"""

import json
import os
import re
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


def hashes_of(folder, name):
    """Of each image of a log: the bytes that are there, and their hash."""
    database = os.path.join(folder, "images.sqlite")
    if os.path.exists(database):
        os.remove(database)
    jobs.run(ORVLOG, "export", os.path.join(folder, name), "--sqlite", database)
    rows = jobs.run(ORVLOG, "query", database, "SELECT id, data_bytes, data_hash FROM images ORDER BY item", "--json")
    return {row["id"]: (row["data_bytes"], row["data_hash"]) for row in json.loads(rows.stdout)}


def hold_image_hashes(folder):
    """An image has the same hash wherever its bytes went, and none where they aren't all there."""
    os.mkdir(folder)
    beside, keep = ["--images-beside", "job"], ["--keep-images"]
    for mode in ("transparent", "base"):
        found = {}
        for name, options in {"plain": [], "beside": beside, "kept": keep, "both": beside + keep,
                              "merged": ["--via-temporary-log", *keep]}.items():
            jobs.record(RECORD, folder, jobs.SAMPLE, name + ".xml", "--mode", mode, *options)
            found[name] = hashes_of(folder, name + ".xml")
        plain = found["plain"]
        if len(plain) < 8 or not all(size > 0 and digest for size, digest in plain.values()):
            raise SystemExit(f"{mode}: images without bytes: {plain}")
        for name, images in found.items():
            if images != plain:
                raise SystemExit(f"{mode}, {name}: {images} instead of {plain}")
    # In base mode the logger reads images itself, before they are kept.
    with open(jobs.record(RECORD, folder, jobs.SAMPLE, "kept.xml", *keep), "rb") as file:
        kept = re.findall(rb'Id="(\d+)" async_img_log_file_name="([^"]+)"', file.read())
    bends = [(10, "job-img-10.bin", "beside.xml", os.remove), (40, "job-dir-40.bin", "beside.xml", os.remove),
             (80, "job-img-80.bin", "beside.xml", lambda path: os.truncate(path, 100)),
             (20, "job-img-20.bin", "beside.xml", lambda path: replace_by_link(path, jobs.SAMPLE))]
    for (image, name), bend in zip(kept, (os.remove, lambda path: os.truncate(path, os.path.getsize(path) // 2))):
        bends.append((int(image) // 10 * 10, name.decode(), "kept.xml", bend))
    for image, name, log, bend in bends:
        before = hashes_of(folder, log)
        bend(os.path.join(folder, name))
        after = hashes_of(folder, log)
        if [one for one in after if after[one] != before[one]] != [image] or after[image][1] is not None:
            raise SystemExit(f"{name}: {before}, then {after}")
    print(f"{len(plain)} images: the same hashes in the log, beside it, kept and merged")


def replace_by_link(path, to):
    os.remove(path)
    os.symlink(to, path)


def main():
    with tempfile.TemporaryDirectory() as folder:
        hold_image_hashes(os.path.join(folder, "images"))
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
