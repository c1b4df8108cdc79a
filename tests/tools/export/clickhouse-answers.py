#!/usr/bin/env python3
"""The questions that have a name, asked of a database and of ClickHouse: the same rows from both.

Runs a server of its own on loopback, with a folder and ports of its own, and ends it. Loads are made twice, and one is
broken off; no row is doubled. Where there is no clickhouse-server, the test is skipped by name.

usage: clickhouse-answers.py ORVLOG-RECORD ORVLOG
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

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:])
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


def main():
    program = shutil.which("clickhouse-server", path=os.environ.get("PATH", "") + ":/usr/sbin")
    if program is None:
        print("skipped: clickhouse-server isn't there")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        base = jobs.record(RECORD, folder, jobs.SAMPLE, "base.xml", "--mode", "base")
        sample = jobs.record(RECORD, folder)
        logs = [os.path.join(folder, f"job-{number}.xml") for number in range(14)]
        for number, log in enumerate(logs):
            jobs.vary(base if number % 2 else sample, log, number)
        database, tables = os.path.join(folder, "jobs.sqlite"), os.path.join(folder, "tables")
        jobs.run(ORVLOG, "export", *logs, "--sqlite", database)
        jobs.run(ORVLOG, "export", *logs[:7], "--jsonl", tables)
        home = os.path.join(folder, "server")
        os.mkdir(home)
        server, url = start_server(program, home)
        try:
            def loader(*words, status=0):
                return jobs.run(sys.executable, LOADER, "--url", url, "--orvlog", ORVLOG, *words, status=status).stdout
            # A job's rows have come, and the note that they have hasn't.
            loader("load", tables, "--day", "2026-11-21")
            urllib.request.urlopen(f"{url}/?database=orvlog", data=b"DROP TABLE loaded").read()
            jobs.run(ORVLOG, "export", *logs, "--jsonl", tables)
            loader("load", tables, "--day", "2026-11-22")
            again = loader("load", tables, "--day", "2026-11-22").decode()
            if not again.startswith("0 jobs loaded, 0 rows; 14 there"):
                raise SystemExit(f"the second load: {again}")
            for question in json.loads(jobs.run(ORVLOG, "query", "--list", "--json").stdout):
                ours = json.loads(jobs.run(ORVLOG, "query", database, question["name"], "--json").stdout)
                theirs = [json.loads(line) for line in
                          loader("ask", question["name"], "--format", "JSONEachRow").splitlines()]
                ours, theirs = in_order(ours), in_order(theirs)
                equal = ours == theirs
                if not ours:
                    raise SystemExit(f"{question['name']}: no rows, which prove nothing")
                if not equal:
                    raise SystemExit(f"{question['name']}: {ours[:3]}... but {theirs[:3]}...")
                print(f"{question['name']}: {len(ours)} rows from both")
            for table in jobs.TABLES:
                count = int(loader("ask", f"SELECT count() FROM {table}", "--format", "TabSeparated"))
                wanted = len(jobs.rows_of(tables, table))
                if count != wanted:
                    raise SystemExit(f"{table}: {count} rows instead of {wanted}")
        finally:
            server.terminate()
            try:
                server.wait(20)
            except subprocess.TimeoutExpired:
                server.kill()
                server.wait()
    return 0


sys.exit(main())
