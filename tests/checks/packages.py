#!/usr/bin/env python3
"""The packages are whole: Debian's checker has no error, two builds in two folders are the same bytes, the second of them
from the archive of sources without git; the records and exports are those of the interface's first version; installed
in an empty Debian system the library and the commands run, and purged they leave nothing.

usage: packages.py CMAKE C-COMPILER BUILD-FOLDER [--quick]

`--quick` packs the commands and the package for Python out of BUILD-FOLDER and looks at these packages alone: it builds
nothing and makes no system. The whole takes five minutes.
"""

import filecmp
import os
import shutil
import subprocess
import sys
import tarfile
import tempfile
import zipfile

import check

cmake, compiler, build = sys.argv[1:4]
quick = sys.argv[4:] == ["--quick"]
BASELINE = os.path.join(check.ROOT, "tests/package/orvlog.abi")
report = check.Report()
skipped = 0
# What each package is to hold at least, by the beginning of its name.
CONTENTS = {
    "orvlog_": ["usr/bin/orvlog", "usr/libexec/orvlog/orvlog-record", "usr/share/man/man1/orvlog.1.gz",
                "usr/share/man/man1/orvlog-record.1.gz", "usr/share/bash-completion/completions/orvlog",
                "usr/share/doc/orvlog/copyright", "usr/share/doc/orvlog/changelog.gz"],
    "python3-orvlog_": ["usr/lib/python3/dist-packages/orvlog/__init__.py", "usr/share/doc/python3-orvlog/copyright"],
    "liborvlog1_": ["usr/lib/x86_64-linux-gnu/liborvlog.so.1", "usr/share/doc/liborvlog1/copyright"],
    "liborvlog-dev_": ["usr/lib/x86_64-linux-gnu/liborvlog.so", "usr/lib/x86_64-linux-gnu/liborvlog-static.a",
                       "usr/lib/x86_64-linux-gnu/pkgconfig/orvlog.pc",
                       "usr/lib/x86_64-linux-gnu/cmake/orvlog/orvlog-config.cmake",
                       "usr/include/orvlog/orvlog-host.h", "usr/include/orvlog/orvlog/interface/orvlog.h",
                       "usr/share/doc/liborvlog-dev/orvlog.html"],
    "orvlog-1": ["bin/orvlog.dll", "lib/liborvlog.dll.a", "lib/orvlog.lib", "include/orvlog/orvlog-host.h",
                 "docs/orvlog.html", "README.md", "LICENSE", "CHANGELOG.md"],
}


def run(*command, **more):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", check=False, **more)
    return done.returncode, done.stdout


def hold(what, status, said):
    report.hold(what, [] if status == 0 else [f"status {status}: {said[-2000:]}"])


def skip(what, why):
    global skipped
    skipped += 1
    print(f"skipped: {what}: {why}")


def packaged(root, folder):
    status, said = run(os.path.join(root, "scripts/package"), folder, "--library-only")
    hold(f"scripts/package in {os.path.basename(root)}", status, said)
    return sorted(os.listdir(folder)) if os.path.isdir(folder) else []


def names_within(package):
    if package.endswith(".zip"):
        with zipfile.ZipFile(package) as archive:
            return {name.partition("/")[2] for name in archive.namelist()}
    listed = run("dpkg-deb", "--contents", package)[1].splitlines()
    return {line.split(" ./", 1)[1].split(" -> ")[0] for line in listed if " ./" in line}


def hold_contents(package):
    name = os.path.basename(package)
    there = names_within(package)
    for beginning, wanted in CONTENTS.items():
        if name.startswith(beginning):
            report.hold(name, [f"{path} isn't in it" for path in wanted if path not in there])
            return
    report.hold(name, ["it isn't known what this is to hold"])


def built_twice(work):
    """Packages the project and, in another folder and with another umask, what its archive of sources holds."""
    first, second = os.path.join(work, "first"), os.path.join(work, "second")
    names = packaged(check.ROOT, first)
    sources = [name for name in names if name.endswith(".tar.gz")]
    report.hold("packages", [] if len(names) == 5 and len(sources) == 1 else [f"are {names}"])
    for name in sources:
        with tarfile.open(os.path.join(first, name)) as archive:
            archive.extractall(os.path.join(work, "a", "deeper", "folder"))
        before = os.umask(0o077)
        packaged(os.path.join(work, "a", "deeper", "folder", name.removesuffix(".tar.gz")), second)
        os.umask(before)
    for name in names:
        same = os.path.isfile(os.path.join(second, name)) and filecmp.cmp(
            os.path.join(first, name), os.path.join(second, name), shallow=False)
        report.hold(name, [] if same else ["another build gives other bytes"])
    for name in names:
        if name.endswith((".deb", ".zip")):
            hold_contents(os.path.join(first, name))
    return [os.path.join(first, name) for name in names if name.endswith(".deb")]


def packed(folder):
    """The packages of the commands and for Python, from the build that is tested here."""
    status, said = run("cpack", "-G", "DEB", "-B", folder, "-D", "CPACK_COMPONENTS_ALL=commands;python", cwd=build,
                       env=dict(os.environ, SOURCE_DATE_EPOCH="1700000000"))
    hold("cpack", status, said)
    return [os.path.join(folder, name) for name in sorted(os.listdir(folder)) if name.endswith(".deb")]


def commands_packages(work):
    """Packed twice, the same bytes; with all that they are to hold."""
    first, second = packed(os.path.join(work, "commands")), packed(os.path.join(work, "again"))
    names = [os.path.basename(package).partition("_")[0] for package in first]
    report.hold("packages of the commands", [] if names == ["orvlog", "python3-orvlog"] else [f"are {names}"])
    for package, again in zip(first, second):
        same = filecmp.cmp(package, again, shallow=False)
        report.hold(os.path.basename(package), [] if same else ["another packing gives other bytes"])
    for package in first:
        hold_contents(package)
    return first


def checked_by_debian(packages):
    if not shutil.which("lintian"):
        return skip("lintian", "isn't installed")
    status, said = run("lintian", "--fail-on", "error", "--allow-root", *packages)
    hold("lintian", status, said)


def same_interface(work):
    """Records and exports against those of the first version, from the library's debug information."""
    if not shutil.which("abidiff"):
        return skip("abidiff", "isn't installed")
    folder = os.path.join(work, "abi")
    status, said = run(cmake, "-S", check.ROOT, "-B", folder, "-G", "Ninja", "-DORVLOG_TOOLS=OFF", "-DORVLOG_TESTS=OFF",
                       "-DCMAKE_BUILD_TYPE=Debug", f"-DCMAKE_CXX_FLAGS=-ffile-prefix-map={check.ROOT}=.")
    hold("configuring with debug information", status, said)
    status, said = run(cmake, "--build", folder, "--target", "orvlog")
    hold("building with debug information", status, said)
    library = os.path.join(folder, "liborvlog.so.1.0.0")
    # A new version that may break programs gets a new baseline: the output of the first of these two commands.
    now = os.path.join(work, "now.abi")
    status, said = run("abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--drop-private-types",
                       "--headers-dir", os.path.join(check.ROOT, "orvlog/interface"), "--out-file", now, library)
    hold("abidw", status, said)
    status, said = run("abidiff", "--no-added-syms", BASELINE, now)
    hold("abidiff", status, said)


def in_system(system, *command):
    return run("chroot", system, "/usr/bin/env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "HOME=/root",
               "DEBIAN_FRONTEND=noninteractive", *command)


def installed(work, packages):
    """Installs, runs and purges the packages in a system that has nothing else."""
    if os.geteuid() != 0 or not shutil.which("debootstrap"):
        return skip("installation in an empty system", "needs root and debootstrap")
    system = os.path.join(work, "system")
    status, said = run("debootstrap", "--variant=minbase", "bookworm", system)
    if status != 0:
        return skip("installation in an empty system", "debootstrap can't make one: " + said[-300:].replace("\n", " "))
    before = set(run("find", os.path.join(system, "usr"), "-not", "-path", "*/share/doc/*")[1].splitlines())
    for package in packages:
        shutil.copy(package, os.path.join(system, "tmp"))
    names = ["/tmp/" + os.path.basename(package) for package in packages]
    status, said = in_system(system, "apt-get", "install", "-y", "-q", "--no-install-recommends", *names)
    hold("installation", status, said)
    shutil.copy(os.path.join(check.ROOT, "docs/sample.pdf"), os.path.join(system, "tmp"))
    status, said = in_system(system, "orvlog", "record", "/tmp/sample.pdf", "-o", "/tmp/job.xml")
    hold("orvlog record", status, said)
    hold("orvlog check", *in_system(system, "orvlog", "check", "/tmp/job.xml"))
    status, said = in_system(system, "python3", "-c",
                             "import orvlog; print(len(list(orvlog.open('/tmp/job.xml').pages())), 'pages')")
    report.hold("the package for Python", [] if (status, said) == (0, "3 pages\n") else [f"status {status}: {said}"])
    include = os.path.join(system, "usr/include/orvlog")
    libraries = os.path.join(system, "usr/lib/x86_64-linux-gnu")
    status, said = run(compiler, "-std=c11", "-I", include, os.path.join(check.ROOT, "clients/examples/page.c"),
                       "-L", libraries, "-lorvlog", "-o", os.path.join(system, "tmp/client"))
    hold("building against the packages", status, said)
    hold("client", *in_system(system, "/tmp/client", "/tmp/client.xml"))
    status, said = in_system(system, "apt-get", "purge", "-y", "-q", "orvlog", "python3-orvlog", "liborvlog-dev",
                             "liborvlog1")
    hold("purge", status, said)
    left = set(run("find", os.path.join(system, "usr"), "-name", "*orvlog*")[1].splitlines()) - before
    report.hold("purge", [f"leaves {path}" for path in sorted(left)])


with tempfile.TemporaryDirectory() as work:
    debs = commands_packages(work)
    if not quick:
        debs += built_twice(work)
    checked_by_debian(debs)
    if not quick:
        same_interface(work)
        installed(work, debs)
if skipped:
    print(f"{report.passed} passed, {report.failed} failed, {skipped} skipped")
    sys.exit(0 if report.failed == 0 else 1)
report.end()
