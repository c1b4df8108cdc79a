#!/usr/bin/env python3
"""The questions that have a name, asked of a database and of ClickHouse: the same rows from both.

Runs a server of its own on loopback, with a folder and ports of its own, and ends it. Loads are made twice, and one is
broken off; no row is doubled. Where there is no clickhouse-server, the test is skipped by name.

usage: clickhouse-answers.py ORVLOG-RECORD ORVLOG [DATABASE FOLDER]; the latter of one's own, that hold the same jobs
"""

import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

import jobs

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:3])
GIVEN = sys.argv[3:5]
SKIPPED = 77
LOADER = os.path.join(jobs.ROOT, "scripts", "clickhouse")
CONFIG = """<yandex>
  <logger><level>warning</level><log>{folder}/log</log><errorlog>{folder}/errors</errorlog></logger>
  <listen_host>127.0.0.1</listen_host><http_port>{http}</http_port><tcp_port>{tcp}</tcp_port>
  <interserver_http_port>{inter}</interserver_http_port>
  <path>{folder}/data/</path><tmp_path>{folder}/tmp/</tmp_path><user_files_path>{folder}/files/</user_files_path>
  <format_schema_path>{folder}/formats/</format_schema_path>
  <users_config>{folder}/users.xml</users_config><default_profile>default</default_profile>
  <default_database>default</default_database><mark_cache_size>67108864</mark_cache_size>
</yandex>
"""
USERS = """<yandex><profiles><default><max_memory_usage>2000000000</max_memory_usage></default></profiles>
<users><default><password></password><networks><ip>127.0.0.1</ip></networks><profile>default</profile>
<quota>default</quota></default></users><quotas><default></default></quotas></yandex>
"""


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def start_server(program, folder):
    http, tcp, inter = free_ports(3)
    for name, text in (("config.xml", CONFIG.format(folder=folder, http=http, tcp=tcp, inter=inter)),
                       ("users.xml", USERS)):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(text)
    with open(os.path.join(folder, "output"), "wb") as output:
        server = subprocess.Popen([program, "--config-file", os.path.join(folder, "config.xml")], cwd=folder,
                                  stdout=output, stderr=output)
    for _ in range(300):
        try:
            with urllib.request.urlopen(f"http://127.0.0.1:{http}/", timeout=5):
                return server, f"http://127.0.0.1:{http}"
        except OSError:
            if server.poll() is not None:
                break
            time.sleep(0.1)
    server.kill()
    server.wait()
    with open(os.path.join(folder, "output"), encoding="utf-8", errors="replace") as file:
        raise SystemExit("the server doesn't start: " + file.read()[-2000:])


def in_order(rows):
    """Rows with numbers as numbers; the engines differ in where nulls stand in an order."""
    plain = [[float(value) if isinstance(value, (int, float)) else value for value in row.values()] for row in rows]
    return sorted(plain, key=repr)


def hold_answers(loader, database, tables, may_be_empty=False):
    """The questions of both, and as many rows in ClickHouse as in the folder."""
    for question in json.loads(jobs.run(ORVLOG, "query", "--list", "--json").stdout):
        ours = json.loads(jobs.run(ORVLOG, "query", database, question["name"], "--json").stdout)
        theirs = [json.loads(line) for line in
                  loader("ask", question["name"], "--format", "JSONEachRow").splitlines()]
        ours, theirs = in_order(ours), in_order(theirs)
        equal = ours == theirs
        if not ours and not may_be_empty:
            raise SystemExit(f"{question['name']}: no rows, which prove nothing")
        if not equal:
            raise SystemExit(f"{question['name']}: {ours[:3]}... but {theirs[:3]}...")
        print(f"{question['name']}: {len(ours)} rows from both")
    for table in jobs.TABLES:
        count = int(loader("ask", f"SELECT count() FROM {table}", "--format", "TabSeparated"))
        wanted = len(jobs.rows_of(tables, table))
        if count != wanted:
            raise SystemExit(f"{table}: {count} rows instead of {wanted}")


def tear(tables):
    """What a process that was killed may leave: rows that the ledger doesn't know, and half a line."""
    for name in os.listdir(tables):
        if not name.startswith("ledger"):
            with open(os.path.join(tables, name), "r+b") as file:
                row = file.readline().replace(b'{"job":"', b'{"job":"x', 1) if name == "jobs.jsonl" else b""
                file.seek(0, os.SEEK_END)
                file.write(row + b'{"job":"0123')


def hold_load(loader, folder, logs):
    """Loads that are broken off, made again, and of folders in which something is torn: each job once."""
    tables = os.path.join(folder, "tables")
    jobs.run(ORVLOG, "export", *logs[:7], "--jsonl", tables)
    tear(tables)
    first = loader("load", tables, "--day", "2026-11-21").decode()
    if not first.startswith("7 jobs loaded, "):
        raise SystemExit(f"the first load: {first}")
    # A job's rows have come, and the note that they have hasn't.
    loader("ask", "DROP TABLE loaded", "--format", "Null")
    jobs.run(ORVLOG, "export", *logs, "--jsonl", tables)
    loader("load", tables, "--day", "2026-11-22")
    again = loader("load", tables, "--day", "2026-11-22").decode()
    if not again.startswith("0 jobs loaded, 0 rows; 14 there"):
        raise SystemExit(f"the second load: {again}")
    return tables


def hold_compressed(loader, folder, logs, form):
    """The same rows from files that are compressed, whatever stands behind what the ledger knows."""
    tables = os.path.join(folder, form)
    jobs.run(ORVLOG, "export", *logs, "--jsonl", tables, "--compress", form)
    tear(tables)
    loaded = loader("--database", form, "load", tables, "--day", "2026-11-22").decode()
    if not loaded.startswith("14 jobs loaded, "):
        raise SystemExit(f"{form}: {loaded}")
    for table in jobs.TABLES:
        counts = [loader("--database", name, "ask", f"SELECT count() FROM {table}", "--format", "TabSeparated")
                  for name in ("orvlog", form)]
        if counts[0] != counts[1]:
            raise SystemExit(f"{form}, {table}: {counts}")
    print(f"{form}: the same rows")


def main():
    program = shutil.which("clickhouse-server", path=os.environ.get("PATH", "") + ":/usr/sbin")
    if program is None:
        print("skipped: clickhouse-server isn't there")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        home = os.path.join(folder, "server")
        os.mkdir(home)
        server, url = start_server(program, home)
        try:
            def loader(*words, status=0):
                return jobs.run(sys.executable, LOADER, "--url", url, "--orvlog", ORVLOG, *words, status=status).stdout
            if GIVEN:
                print(loader("load", GIVEN[1], "--day", "2026-11-22").decode().strip())
                hold_answers(loader, *GIVEN, may_be_empty=True)
                return 0
            base = jobs.record(RECORD, folder, jobs.SAMPLE, "base.xml", "--mode", "base")
            sample = jobs.record(RECORD, folder)
            logs = [os.path.join(folder, f"job-{number}.xml") for number in range(14)]
            for number, log in enumerate(logs):
                jobs.vary(base if number % 2 else sample, log, number)
            database = os.path.join(folder, "jobs.sqlite")
            jobs.run(ORVLOG, "export", *logs, "--sqlite", database)
            tables = hold_load(loader, folder, logs)
            hold_answers(loader, database, tables)
            for form in ("gzip", "zstd"):
                hold_compressed(loader, folder, logs, form)
            jobs.run(sys.executable, LOADER, "--url", url, "--orvlog", ORVLOG, "load", home, status=1)
        finally:
            server.terminate()
            try:
                server.wait(20)
            except subprocess.TimeoutExpired:
                server.kill()
                server.wait()
    return 0


sys.exit(main())
