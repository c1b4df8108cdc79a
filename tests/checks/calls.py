#!/usr/bin/env python3
"""Each call of the interface stands in the list of calls, in the order of the tables, and in a file named after it;
the record of its arguments is filled by name, with every field: two arguments of one type that change places by
position would compile."""

import re

import check

LIST = "orvlog/names/calls.inc"
INTERFACE = "orvlog/interface/orv-interface.h"
TABLES = {"ORV_DOCUMENT_CALL": "ORV_Interface", "ORV_DRAWING_CALL": "ORV_DrawingInterface"}
# Calls that stand with the one that begins or ends the same thing, or ends it otherwise.
TOGETHER = {
    "document_start": "document", "document_finish": "document", "resource_start": "resource",
    "resource_destroy": "resource", "face_start": "face", "memory_context_start": "memory_context",
    "group_start": "group", "group_finish": "group", "drawing_finish": "drawing", "drawing_discard": "drawing",
}


def plain(text):
    return re.sub(r"//.*", "", text)


def body(text, opening):
    """What stands between the brace at `opening` and its own closing one."""
    depth = 0
    for at in range(opening, len(text)):
        depth += {"{": 1, "}": -1}.get(text[at], 0)
        if depth == 0:
            return text[opening + 1:at]
    return text[opening + 1:]


def parts(text):
    """The parts of an initialiser, between the commas that stand in no bracket."""
    depth, found = 0, [""]
    for letter in text:
        depth += {"{": 1, "(": 1, "[": 1, "}": -1, ")": -1, "]": -1}.get(letter, 0)
        if letter == "," and depth == 0:
            found.append("")
        else:
            found[-1] += letter
    return [part.strip() for part in found if part.strip()]


def entries(table):
    """The calls of a table of the interface, in order."""
    text = plain(check.text(INTERFACE))
    inside = body(text, text.index("{", re.search(rf"^struct {table}\s*\{{", text, re.M).start()))
    return re.findall(r"ORV_\w+_fn fn;\s*void\* context;\s*\} (\w+);", inside)


def listed(macro):
    return re.findall(rf"^{macro}\((\w+)\)$", check.text(LIST), re.M)


def home(call):
    return "orvlog/core/orvlog-orv-" + TOGETHER.get(call, call).replace("_", "-") + ".cpp"


def fields(record):
    return [re.sub(r"\[.*\]", "", line.split("=")[0]).split()[-1].lstrip("*&")
            for line in plain(record).split(";") if line.strip()]


def record_faults(text):
    text = plain(text)
    records = {match[1]: fields(body(text, match.end() - 1))
               for match in re.finditer(r"^struct (\w+Call)\s*\{", text, re.M)}
    for name, known in records.items():
        made = list(re.finditer(rf"\b{name} \w+( =)? ?([{{(;])|\b{name}\s*([{{(])|\bmemset\(", text))
        made = [match for match in made if not text[:match.start()].endswith("struct ")]
        if not made:
            yield f"{name} is never made"
        for match in made:
            opening = match.end() - 1
            if text[opening] != "{":
                yield f"{name} is not filled where it is made"
                continue
            told = [re.match(r"\.(\w+) = (\w*)", part) for part in parts(body(text, opening))]
            if [match and match[1] for match in told] != known:
                yield f"{name} is not filled by the names of all its fields: {', '.join(known)}"
            yield from (f"{name}.{match[1]} takes {match[2]}" for match in told
                        if match and match[2] in known and match[2] != match[1])
    for match in re.finditer(r"(?<!\w )\bcall = \{", text):
        if not body(text, match.end() - 1).strip().startswith("."):
            yield "a call is assigned by position"


def call_faults(call):
    place = home(call)
    try:
        text = check.text(place)
    except FileNotFoundError:
        yield f"stands in no file {place}"
        return
    if not re.search(rf"^[\w*]+ \**orvlog_{call}\(", text, re.M):
        yield f"is not in {place}"


report = check.Report()
for macro, table in TABLES.items():
    report.hold(LIST, [] if listed(macro) == entries(table) != [] else [f"has not the entries of {table}, in order"])
    for call in listed(macro):
        report.hold(call, call_faults(call))
for path in check.files(".cpp", ".h", under=("orvlog/core/",)):
    report.hold(path, record_faults(check.text(path)))
    if "/orvlog-orv-" in path and path not in {home(call) for macro in TABLES for call in listed(macro)}:
        report.hold(path, ["is named after no call"])
report.end()
