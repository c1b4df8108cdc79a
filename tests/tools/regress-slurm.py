#!/usr/bin/env python3
"""A regression run shared by the tasks of a job array: all shards together do what one run does.

usage: regress-slurm.py ORVLOG RENDERER SAMPLE.pdf

The tasks are those of a Slurm of this test's own, with one machine, started in a folder that goes. Where there is no
Slurm, or it doesn't come up, they are plain processes; that is said.
"""

import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as xml

ORVLOG, RENDERER, SAMPLE = sys.argv[1:]
SHARDS = 3
TIMEOUT = 120


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def orvlog(*words, status=0):
    done = subprocess.run([ORVLOG, *words], capture_output=True, text=True, timeout=TIMEOUT)
    assert done.returncode == status, (words, done.returncode, done.stdout, done.stderr)
    return done.stdout


class Slurm:
    """The two daemons, without a system around them; `ready` says whether they came up."""

    def __init__(self, folder):
        self.daemons = []
        self.ready = False
        self.folder = folder
        if not all(shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin")
                   for name in ("slurmctld", "slurmd", "sbatch", "sinfo")):
            return
        self.configure()
        for name in ("slurmctld", "slurmd"):
            program = shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin")
            self.daemons.append(subprocess.Popen([program, "-D"], stdout=subprocess.DEVNULL,
                                                 stderr=subprocess.DEVNULL, env=self.environment))
        end = time.monotonic() + 20
        while time.monotonic() < end and not self.ready:
            time.sleep(0.3)
            told = subprocess.run(["sinfo", "-h", "-o", "%t"], capture_output=True, text=True, env=self.environment)
            self.ready = told.stdout.strip() == "idle"

    def configure(self):
        os.mkdir(f"{self.folder}/state")
        os.mkdir(f"{self.folder}/spool")
        user = subprocess.run(["id", "-un"], capture_output=True, text=True, check=True).stdout.strip()
        host = socket.gethostname().split(".")[0]
        with open(f"{self.folder}/slurm.conf", "w", encoding="utf-8") as file:
            file.write(f"""ClusterName=one
SlurmctldHost={host}(127.0.0.1)
AuthType=auth/none
CredType=cred/none
SlurmUser={user}
SlurmdUser={user}
SlurmctldPort={free_port()}
SlurmdPort={free_port()}
SlurmctldPidFile={self.folder}/slurmctld.pid
SlurmdPidFile={self.folder}/slurmd.pid
SlurmctldLogFile={self.folder}/slurmctld.log
SlurmdLogFile={self.folder}/slurmd.log
StateSaveLocation={self.folder}/state
SlurmdSpoolDir={self.folder}/spool
ProctrackType=proctrack/pgid
TaskPlugin=task/none
SelectType=select/linear
JobAcctGatherType=jobacct_gather/none
MpiDefault=none
ReturnToService=2
SchedulerType=sched/builtin
SchedulerParameters=sched_interval=1
NodeName={host} NodeAddr=127.0.0.1 CPUs=1 State=UNKNOWN
PartitionName=all Nodes={host} Default=YES MaxTime=INFINITE State=UP OverSubscribe=FORCE:4
""")
        self.environment = dict(os.environ, SLURM_CONF=f"{self.folder}/slurm.conf")

    def run(self, script):
        done = subprocess.run(["sbatch", "--wait", f"--array=1-{SHARDS}", "-o", f"{self.folder}/task-%a.out", script],
                              capture_output=True, text=True, env=self.environment, cwd=self.folder, timeout=TIMEOUT)
        return done.returncode

    def end(self):
        for one in reversed(self.daemons):
            one.terminate()
        for one in self.daemons:
            try:
                one.wait(timeout=10)
            except subprocess.TimeoutExpired:
                one.kill()
                one.wait()


def run_as_processes(script):
    tasks = [subprocess.Popen(["sh", script], stdout=subprocess.DEVNULL,
                              env=dict(os.environ, SLURM_ARRAY_TASK_ID=str(number)))
             for number in range(1, SHARDS + 1)]
    return max(task.wait(timeout=TIMEOUT) for task in tasks)


def cases(file):
    return [(one.get("name"), [(part.tag, part.get("message")) for part in one])
            for one in xml.parse(file).getroot().iter("testcase")]


def check(folder, run):
    logs, baseline = f"{folder}/logs", f"{folder}/baseline"
    os.mkdir(logs)
    orvlog("record", SAMPLE, "-o", f"{folder}/job.xml", "--no-renderer")
    for number in range(1, 8):
        page = str(1 + number % 3)
        orvlog("trim", f"{folder}/job.xml", "--pages", page, "-o", f"{logs}/log-{number}.xml")
    common = ["regress", logs, "--renderer", RENDERER, "--baseline", baseline, "--memory", "0", "--jobs", "1"]
    orvlog(*common, "--update")
    for options, expected in (("none", 0), ("wrong=3", 1)):
        whole = f"{folder}/whole.xml"
        orvlog(*common, "--renderer-options", options, "--junit", whole, status=expected)
        script = f"{folder}/run.sh"
        with open(script, "w", encoding="utf-8") as file:
            words = " ".join(f"'{word}'" for word in [ORVLOG, *common, "--renderer-options", options])
            file.write(f'#!/bin/sh\nexec {words} --shard "$SLURM_ARRAY_TASK_ID/{SHARDS}" '
                       f'--junit "{folder}/part-$SLURM_ARRAY_TASK_ID.xml"\n')
        status = run(script)
        assert status == expected, (options, status)
        parts = [cases(f"{folder}/part-{number}.xml") for number in range(1, SHARDS + 1)]
        assert [len(part) for part in parts] == [3, 2, 2], parts
        assert sorted(sum(parts, [])) == cases(whole), (parts, cases(whole))
        for number in range(1, SHARDS + 1):
            os.remove(f"{folder}/part-{number}.xml")


with tempfile.TemporaryDirectory() as scratch:
    slurm = Slurm(os.path.join(scratch))
    try:
        if slurm.ready:
            print(f"{SHARDS} shards as a job array of Slurm")
        else:
            print(f"no Slurm here: {SHARDS} shards as processes")
        check(scratch, slurm.run if slurm.ready else run_as_processes)
    finally:
        slurm.end()
