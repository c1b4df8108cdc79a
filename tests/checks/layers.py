#!/usr/bin/env python3
"""Each file includes only what stands below it, and nothing in a circle.

The library's layers include no part of the standard library that takes memory by itself, and no other folder. The rooms
around it include what is named for them here, and of the library what stands open to them: the interface, the base
library, and a few things that can be had without a session. A library of others is touched by the rooms named for it.
"""

import re

import check

# Each layer may include itself and those above it in this list.
LAYERS = [
    ("interfaces of the base library", ["holv-core/gmm/gmm-allocator.h", "holv-core/gio/gio-stream.h"]),
    ("base library", ["holv-core/"]),
    ("interface", ["orvlog/interface/"]),
    ("names", ["orvlog/names/"]),
    ("log", ["orvlog/log/"]),
    ("session", ["orvlog/session/"]),
    ("records and colour", ["orvlog/records/", "orvlog/colour/"]),
    ("font", ["orvlog/font/"]),
    ("image", ["orvlog/image/"]),
    ("core", ["orvlog/core/"]),
]

# A shape with text pulls its glyphs, and glyphs are paths: the one dumper that stands above the font layer.
EXCEPTIONS = {"orvlog/records/gsh-shape-dump.h": "font", "orvlog/records/gsh-shape-dump.cpp": "font"}

# The ticket reader can be had without the logger: from it, it takes one list of names, which includes nothing. What
# tells a ticket's family asks the client's table.
APART = {"orvlog/colour/gxc/": ("orvlog/colour/gxc/", "holv-core/", "orvlog/names/colour-enumerations.inc")}
NOT_APART = {"orvlog/colour/gxc/gxc-family.h", "orvlog/colour/gxc/gxc-family.cpp"}

HEAPED = set("string vector deque list forward_list map set unordered_map unordered_set queue stack memory "
             "memory_resource functional any iostream istream ostream sstream fstream iomanip locale regex thread "
             "mutex shared_mutex future condition_variable stdexcept exception typeinfo typeindex filesystem "
             "format valarray random new".split())

# The rooms around the library, each with what it may include besides itself. The longest name that fits counts.
CODED_LOGS = ("orvlog/log/ahc-coder.h", "orvlog/log/orvlog-compressed-stream.h")
MERGE = ("orvlog/log/orvlog-merge.h",)
TICKETS = ("orvlog/colour/gxc/",)
IMAGES = ("orvlog/image/gop-image-geometry.h",)
LIBRARY = ("orvlog/interface/", "orvlog/names/", "holv-core/")
PDF = ("clients/pdf/", "clients/colour/", "clients/command-line/", "clients/session/", "clients/stream/", "reader/",
       "renderers/cairo/")
ROOMS = {
    "reader/tickets/": LIBRARY + TICKETS,
    "reader/text/": LIBRARY + CODED_LOGS + ("reader/tickets/",),
    "reader/tree/": LIBRARY + ("reader/text/", "reader/tickets/"),
    "reader/look/": LIBRARY + ("reader/tree/", "reader/text/", "reader/tickets/"),
    "reader/records/": LIBRARY + ("reader/tree/", "reader/text/", "reader/tickets/"),
    "reader/check/": LIBRARY + IMAGES + ("reader/",),
    "renderers/cairo/": LIBRARY,
    "clients/colour/": LIBRARY,
    "clients/command-line/": ("clients/system/",),
    "clients/host/": ("orvlog/interface/", "holv-core/gio/gio-stream.h", "holv-core/gmm/gmm-allocator.h"),
    "clients/renderer-library/": LIBRARY,
    "clients/replay/": LIBRARY + IMAGES + ("reader/",),
    "clients/session/": LIBRARY + ("clients/stream/", "clients/system/", "reader/check/"),
    "clients/stream/": LIBRARY + MERGE + ("clients/system/",),
    "clients/system/": (),
    "clients/pdf/": LIBRARY + PDF,
    "clients/pdf/content/": LIBRARY,
    "python/": LIBRARY + ("reader/", "clients/replay/", "inspect/drawing/", "renderers/cairo/"),
    "inspect/": LIBRARY + ("reader/", "clients/replay/", "clients/system/", "renderers/cairo/"),
    "tools/": LIBRARY + CODED_LOGS + MERGE + TICKETS + IMAGES + (
        "tools/", "inspect/", "reader/", "renderers/cairo/", "clients/command-line/", "clients/renderer-library/",
        "clients/replay/", "clients/session/", "clients/stream/", "clients/system/"),
}

# What is reached by few: room, who may include it, and what of it any other may.
KEPT = (
    ("clients/pdf/poppler/", ("clients/pdf/poppler/",), ("clients/pdf/poppler/pdf-document.h",)),
    ("clients/pdf/job/", ("clients/pdf/job/", "clients/pdf/job.cpp"), ()),
    ("tools/commands/", ("tools/commands/",), ()),
)

# Headers of the systems, and those of other libraries with the rooms that touch them.
SYSTEM = re.compile(r"(?:dlfcn|errno|fcntl|io|malloc|poll|psapi|shellapi|spawn|stddef|stdint|stdio|stdlib|string|termios|unistd|windows)\.h"
                    r"|sys/\w+\.h|ext/stdio_filebuf\.h")
OTHERS = (
    (re.compile(r"CLI/.*"), ("clients/command-line/", "clients/pdf/main.cpp", "tools/")),
    (re.compile(r"nlohmann/.*"), ("clients/pdf/", "inspect/", "tools/")),
    (re.compile(r"cairo(?:-\w+)?\.h"), ("renderers/cairo/", "inspect/", "tools/")),
    (re.compile(r"png\.h"), ("renderers/cairo/",)),
    (re.compile(r"lcms2\.h"), ("clients/colour/", "renderers/cairo/")),
    (re.compile(r"zlib\.h"), ("inspect/export/", "inspect/report/", "tools/shared/png-writer.cpp")),
    (re.compile(r"nettle/.*"), ("inspect/export/", "inspect/report/")),
    (re.compile(r"zstd\.h"), ("clients/stream/", "inspect/export/", "reader/text/")),
    (re.compile(r"pybind11/.*"), ("python/",)),
    (re.compile(r"sqlite3\.h"), ("inspect/export/",)),
    (re.compile(r".*"), ("clients/pdf/poppler/",)),
)

# The two HTTP clients are a library of their own, which ordinary C++ may use.
ORDINARY = {"holv-core/gio/gio-http-curl.cpp", "holv-core/gio/gio-http-wininet.cpp"}

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.M)


def layer_of(path):
    for rank, (name, places) in enumerate(LAYERS):
        if any(path == place or (place.endswith("/") and path.startswith(place)) for place in places):
            return rank, name
    return None, None


def rank_of(path):
    name = EXCEPTIONS.get(path)
    if name:
        return [layer for layer, _ in LAYERS].index(name)
    return layer_of(path)[0]


def faults_of(path, includes):
    for quote, target in includes:
        if quote == "<":
            if target in HEAPED and path not in ORDINARY:
                yield f"includes <{target}>"
        elif rank_of(target) is None:
            yield f"includes {target}, which is not of the library"
        elif rank_of(target) > rank_of(path):
            yield f"includes {target}, which stands above it"
        for room, allowed in APART.items():
            held = path.startswith(room) and path not in NOT_APART
            if held and quote == '"' and not target.startswith(allowed):
                yield f"includes {target}, but {room} stands apart"


def room_of(path):
    return max((room for room in ROOMS if path.startswith(room)), key=len, default=None)


def faults_around(path, includes):
    """Those of a file that is not of the library."""
    room = room_of(path)
    if room is None:
        yield "stands in a room that is not named here"
        return
    for quote, target in includes:
        if quote == "<":
            of_others = not SYSTEM.fullmatch(target) and ("." in target or "/" in target)
            if of_others and not any(path.startswith(rooms) for name, rooms in OTHERS if name.fullmatch(target)):
                yield f"includes <{target}>, which is not for this room"
            continue
        if not target.startswith((room,) + ROOMS[room]):
            yield f"includes {target}, which is not for {room}"
        for kept, users, shown in KEPT:
            if target.startswith(kept) and not path.startswith(users) and target not in shown:
                yield f"includes {target}, which {kept} keeps to itself"


# Includes that must be found; a check that lets them pass holds nothing.
PLANTED = (
    ("tools/commands/replay.cpp", '"', "orvlog/session/orvlog-session.h"),
    ("tools/commands/replay.cpp", '"', "clients/pdf/job.h"),
    ("tools/shared/output.cpp", '"', "tools/commands/show.h"),
    ("tools/shared/output.cpp", "<", "GlobalParams.h"),
    ("clients/pdf/job.cpp", '"', "orvlog/session/orvlog-creators.h"),
    ("clients/pdf/job.cpp", '"', "clients/pdf/poppler/canvas.h"),
    ("clients/pdf/painter/painter.cpp", "<", "GfxState.h"),
    ("clients/pdf/painter/painter.cpp", "<", "goo/gmem.h"),
    ("clients/pdf/content/graphics.cpp", '"', "clients/pdf/painter/painter.h"),
    ("clients/session/logged-session.cpp", '"', "orvlog/core/orvlog-orv.h"),
    ("clients/stream/log-file.cpp", '"', "reader/tree/element.h"),
    ("clients/replay/replay.cpp", '"', "clients/stream/log-file.h"),
    ("inspect/history/history.cpp", '"', "tools/shared/output.h"),
    ("reader/text/log-text.cpp", '"', "reader/tree/element.h"),
    ("reader/tree/element.cpp", "<", "cairo.h"),
    ("renderers/cairo/matrix.h", '"', "reader/tree/element.h"),
    ("somewhere/else.cpp", '"', "orvlog/interface/orvlog.h"),
)


def circles(graph):
    """Each circle of includes once, as the line of files that leads round it."""
    done, found = set(), []

    def walk(path, line):
        if path in line:
            found.append(" -> ".join(line[line.index(path):] + [path]))
        elif path not in done:
            for target in graph.get(path, ()):
                walk(target, line + [path])
            done.add(path)

    for path in sorted(graph):
        walk(path, [])
    return found


report = check.Report()
graph = {}
for path in check.files(".h", ".cpp", ".inc", under=check.LIBRARY_FOLDERS):
    includes = INCLUDE.findall(check.text(path))
    graph[path] = [target for quote, target in includes if quote == '"']
    report.hold(path, faults_of(path, includes))
around = [path for path in check.files(".h", ".cpp") if path.startswith(("reader/", "renderers/", "clients/", "inspect/",
                                                                         "tools/"))]
for path in around:
    includes = INCLUDE.findall(check.text(path))
    graph[path] = [target for quote, target in includes if quote == '"']
    report.hold(path, faults_around(path, includes))
for path, quote, target in PLANTED:
    report.hold(f"{target} in {path}", [] if list(faults_around(path, [(quote, target)])) else ["is let pass"])
report.hold("a planted circle", [] if circles({"a.h": ["b.h"], "b.h": ["a.h"]}) else ["is let pass"])
report.hold("no circles", circles(graph))
report.end()
