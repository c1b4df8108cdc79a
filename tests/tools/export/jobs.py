"""Logs to be exported, and what their tables have to hold, for the tests beside this one."""

import gzip
import json
import os
import re
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
SAMPLE = os.path.join(ROOT, "docs", "sample.pdf")
TABLES = ("jobs", "pages", "calls", "operators", "operands", "colours", "paths", "shapes", "clips", "images", "engines",
          "fonts", "texts", "glyphs", "tickets", "warnings", "damage")


# A page on which a clip without rectangles shuts the only paint out.
SHUT_PAGE = b"""  <ORV_face_start document_context="0" drawing_context="900" font_engine_functions="FALSE" face_seq_number="900">
    <ORV_FaceProperties fp_FaceInchToPixels="100 0 0 100 0 0 " fp_WidthInPixels="200" fp_HeightInPixels="300">
    </ORV_FaceProperties>
  </ORV_face_start>
  <ORV_object_paint id="90000" drawing_context="900" object_type_and_flag="4">
    <ORV_object_paint.clip>
      <GSH_ShapeList sl_Hints="[0] GSH_SLH_NONE " sl_ClipIn="TRUE" sl_UniqueId="1">
        <GSH_ShapeList.sl_Shape>
          <GSH_ShapePointer>
            <GSH_ShapePointer.sp_HeaderPtr>
              <GSH_MultiRectShape mrs_RectCount="0">
                <GSH_Shape sh_ShapeType="GSH_SHAPE_MULTI_RECT" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
              </GSH_MultiRectShape>
            </GSH_ShapePointer.sp_HeaderPtr>
          </GSH_ShapePointer>
        </GSH_ShapeList.sl_Shape>
      </GSH_ShapeList>
    </ORV_object_paint.clip>
  </ORV_object_paint>
"""
WARNING = b"\n<!--\nORVLOG: WARNING: GPA_PathPointer without a path.\n-->\n"


def run(*words, status=0, **more):
    done = subprocess.run([str(word) for word in words], capture_output=True, timeout=600, check=False, **more)
    if status is not None and done.returncode != status:
        raise SystemExit(f"{' '.join(map(str, words))}: status {done.returncode}, {done.stderr.decode()!r}")
    return done


def record(program, folder, pdf=SAMPLE, name="job.xml", *options):
    path = os.path.join(folder, name)
    run(program, pdf, "-o", path, "--stream", "file", *options)
    return path


def vary(log, path, number):
    """The same log with attributes that no other number has; the log of another job, as far as anybody can tell."""
    with open(log, "rb") as file:
        text = file.read()
    text = re.sub(rb'document_id="\d+"', b'document_id="%d"' % (100000 + number), text, count=1)
    text = re.sub(rb'sl_UniqueId="(\d+)"', lambda found: b'sl_UniqueId="%d"' % (int(found[1]) + number), text)
    if number % 10 == 3:
        text = re.sub(rb'op_OperatorType="GOP_ROP_PORTER_DUFF" op_Operator="3"',
                      b'op_OperatorType="GOP_ROP_PDF_SEPARABLE" op_Operator="%d"' % (20 + number % 7), text, count=1)
    if number % 10 == 1:
        text += WARNING * (1 + number % 3)
    if number % 10 == 5:
        text = re.sub(rb'im_Transform="([^ ]+) ([^ ]+) ([^ ]+) ([^ ]+) ', b'im_Transform="0.001 0 0 0.001 ', text)
    if number % 10 == 9:
        text = text.replace(b"</ORV>", SHUT_PAGE + b"</ORV>")
    if number % 10 == 7:
        text = text[:len(text) // 2 + number]
    with open(path, "wb") as file:
        file.write(text)


def counts_told(orvlog, log):
    """What orvlog info says of a log, as the rows that each table has to have."""
    info = json.loads(run(orvlog, "info", "--json", "--records", log).stdout)
    total = lambda name: sum(info[name].values())
    return {"jobs": 1, "pages": info["page_count"], "calls": total("calls"), "images": total("images"),
            "engines": total("engines"), "texts": info["strings"], "glyphs": total("glyphs"),
            "tickets": info["ticket_uses"], "warnings": total("warnings"), "damage": info["damage_count"],
            **info["records"]}


def rows_of(folder, table):
    path = os.path.join(folder, table + ".jsonl")
    if os.path.exists(path + ".gz"):
        with gzip.open(path + ".gz", "rb") as file:
            return file.read().splitlines()
    if os.path.exists(path + ".zst"):
        return run("zstd", "-dcq", path + ".zst").stdout.splitlines()
    if not os.path.exists(path):
        return []
    with open(path, "rb") as file:
        return file.read().splitlines()


def trouble_with_folder(folder, expected):
    """What is wrong with a folder of tables that should hold these logs, {name: counts}; None if nothing is."""
    if not os.path.exists(os.path.join(folder, "jobs.jsonl")):
        return f"{folder}: no tables"
    jobs = [json.loads(row) for row in rows_of(folder, "jobs")]
    names = {job["job"]: job["name"] for job in jobs}
    if len(names) != len(jobs):
        return "a job is there twice"
    if sorted(names.values()) != sorted(expected):
        return f"{len(names)} jobs instead of {len(expected)}"
    for table in TABLES:
        keys, counts = set(), dict.fromkeys(names, 0)
        for row in map(json.loads, rows_of(folder, table)):
            counts[row["job"]] += 1
            keys.add((row["job"], row.get("call"), row.get("item")))
        if len(keys) != sum(counts.values()):
            return f"{table}: rows with the same key"
        for job, count in counts.items():
            if count != expected[names[job]][table]:
                return f"{table} of {names[job]}: {count} rows instead of {expected[names[job]][table]}"
    return None


def trouble_while_written(folder, expected):
    """What is wrong for one who reads lines that end, of jobs that have a row, while others write or were killed."""
    def lines(table):
        path = os.path.join(folder, table + ".jsonl")
        if not os.path.exists(path):
            return []
        with open(path, "rb") as file:
            return [json.loads(line) for line in file if line.endswith(b"\n")]
    names = {job["job"]: job["name"] for job in lines("jobs")}
    for table in TABLES:
        counts = dict.fromkeys(names, 0)
        for row in lines(table):
            if row["job"] in counts:
                counts[row["job"]] += 1
        for job, count in counts.items():
            if count != expected[names[job]][table]:
                return f"{table} of {names[job]}: {count} rows instead of {expected[names[job]][table]}"
    return None


def trouble_with_database(orvlog, file, expected):
    """The same of a database."""
    def ask(sql):
        return json.loads(run(orvlog, "query", file, sql, "--json").stdout)
    names = {row["job"]: row["name"] for row in ask("SELECT job, name FROM jobs")}
    if sorted(names.values()) != sorted(expected):
        return f"{len(names)} jobs instead of {len(expected)}"
    for table in TABLES:
        counts = {row["job"]: row["n"] for row in ask(f"SELECT job, count(*) AS n FROM {table} GROUP BY job")}
        for job, name in names.items():
            if counts.get(job, 0) != expected[name][table]:
                return f"{table} of {name}: {counts.get(job, 0)} rows instead of {expected[name][table]}"
    return None
