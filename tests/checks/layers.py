#!/usr/bin/env python3
"""The library's files include only what stands below them, nothing in a circle, and no part of the standard
library that takes memory by itself. No other folder is included by the library."""

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
report.hold("no circles", circles(graph))
report.end()
