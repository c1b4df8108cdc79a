#!/usr/bin/env python3
"""docs/orvlog.rnc is the schema of logs: logs of all kinds are valid by it, those that are wrong in one place aren't, and
it has the elements, attributes and names that docs/log-format.md tells, and no others.

Takes the validator, `jing`, and the commands `orvlog-record` and `orvlog`."""

import os
import re
import subprocess
import sys
import tempfile

import check

JING, RECORD, ORVLOG = sys.argv[1:]
SCHEMA, PAGE = "docs/orvlog.rnc", "docs/log-format.md"
NAME = r"[A-Za-z_][\w.]*"
TYPE = r"(?:[ui]\d|bool|float|double|point|vector|box|matrix|enum|flags|edge|text|hex)"

# How logs are made that have to be valid.
RECORDINGS = {
    "transparent": [],
    "base": ["--mode", "base", "--glyphs", "all"],
    "undrawn": ["--mode", "base", "--no-renderer", "--glyphs", "outlines"],
    "beside": ["--mode", "base", "--images-beside", "pre", "--pages", "2-2"],
    "kept": ["--keep-images", "--via-temporary-log", "--pages", "2-2"],
    "coded": ["--mode", "base", "--compressed", "--pages", "2-2"],
    "framed": ["--stream", "zstd", "--pages", "2-2"],
}

# A log is refused when this stands in it instead of that: the first place counts.
PAINT_END = "  </ORV_object_paint_and_stroke>\n"
WRONGS = {
    "an unknown attribute": ('<GPA_Path pa_NumEdges', '<GPA_Path colour="1" pa_NumEdges'),
    "an unknown element": (PAINT_END, "    <ORV_object_paint_and_stroke.fill_colour>\n"
                                      "    </ORV_object_paint_and_stroke.fill_colour>\n" + PAINT_END),
    "an unknown call": (PAINT_END, PAINT_END + '  <ORV_object_erase id="1"/>\n'),
    "a missing attribute": (' path_pixel_placement="GPA_PLACEMENT_PS"', ""),
    "a name that is none": ('op_MaskMode="GOP_MASK_NONE"', 'op_MaskMode="GOP_MASK_SOME"'),
    "a flag that is none": ("GSH_SH_FONT_HAS_DOC_SCOPE ", "GSH_SH_FONT_HAS_SCOPE "),
    "flags without their number": ('object_hints="[0] ', 'object_hints="'),
    "a number beyond its range": ('op_Operator="3"', 'op_Operator="65536"'),
    "a negative count": (' pa_NumEdges="', ' pa_NumEdges="-'),
    "a matrix of five": (re.compile(r'sh_Transform="\S+ '), 'sh_Transform="'),
    "a comma in a number": (re.compile(r'gpf_X="(\d+)\.?'), r'gpf_X="\1,'),
    "a word for a bool": ('lpp_PathOwned="FALSE"', 'lpp_PathOwned="no"'),
    "a row that isn't hexadecimal": (re.compile(r"^([0-9a-f]{2}) ", re.M), r"0x\1 "),
    "text between elements": (PAINT_END, "paint\n" + PAINT_END),
    "another version": ('ORVLOG_CONTENT_VERSION="2"', 'ORVLOG_CONTENT_VERSION="3"'),
    "another mode": (re.compile(r' LoggingMode="\w+"'), ' LoggingMode="debug"'),
    "the clip ahead of the path": (re.compile(r"(    <ORV_object_paint_and_stroke\.paint_path>.*?"
                                              r"</ORV_object_paint_and_stroke\.paint_path>\n)(.*?)"
                                              r"(    <ORV_object_paint_and_stroke\.fill_operand1>.*?"
                                              r"</ORV_object_paint_and_stroke\.fill_operand1>\n)", re.S), r"\3\2\1"),
    "a ticket ahead of the face": (re.compile(r"(    <ORV_FaceProperties.*?</ORV_FaceProperties>\n)"
                                              r"(    <GCM_ColorTicket.*?\n    </GCM_ColorTicket>\n)", re.S), r"\2\1"),
    "start points that are edges": (re.compile(r"(<GPA_Path\.pa_EdgeStart>\n\s*)<GGO_Point gpf_X=(.*) gpf_Y="),
                                    r"\1<GGO_Vector gvf_X=\2 gvf_Y="),
    "a member of another call": ("<ORV_object_paint_and_stroke.fill_op>", "<ORV_object_paint.op>"),
}


def invalid(paths):
    """What the validator says of logs, by their names."""
    if not paths:
        return {}
    done = subprocess.run([JING, "-c", os.path.join(check.ROOT, SCHEMA), *paths], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    said = {}
    for line in done.stdout.splitlines():
        path = next((path for path in paths if line.startswith(path + ":")), "the schema")
        said.setdefault(path, line[:300])
    if done.returncode not in (0, 1) or (done.returncode == 1 and not said):
        said["the schema"] = f"the validator ended with {done.returncode}"
    return said


def record(folder):
    """Logs of the sample, each as text."""
    for name, options in RECORDINGS.items():
        made = os.path.join(folder, name + (".xml.zst" if name == "framed" else ".xml"))
        pages = [] if name == "undrawn" else ["--png", folder]
        done = subprocess.run([RECORD, os.path.join(check.ROOT, "docs", "sample.pdf"), "-o", made, *options, *pages],
                              cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=False)
        text = os.path.join(folder, name + "-text.xml")
        subprocess.run([ORVLOG, "unpack", made, "-o", text], stdin=subprocess.DEVNULL, check=False)
        yield name, done.returncode, text


def planted(folder, text):
    """Logs that are wrong in one place: what is wrong, and the path. None if the place isn't there."""
    for number, (what, (old, new)) in enumerate(WRONGS.items()):
        wrong = re.sub(old, new, text, count=1) if isinstance(old, re.Pattern) else text.replace(old, new, 1)
        path = os.path.join(folder, f"wrong-{number}.xml")
        with open(path, "w", encoding="utf-8") as file:
            file.write(wrong)
        yield what, path if wrong != text else None


def told(page):
    """The elements and attributes of the page's tables."""
    elements, attributes = set(), set()
    for line in page.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split(" | ")] if line.startswith("| `") else []
        if len(cells) > 2 and re.search(r"^`(?:[A-Z][A-Z]+_\w+|psp_DashLength|Buffer\w+|CStr|imp_\w+)`", cells[0]):
            elements.update(re.findall(rf"`({NAME})`", cells[0]))
            attributes.update(re.findall(rf"`({NAME})` {TYPE}", cells[1]))
    return elements, attributes


def names_told(page):
    section = page[page.index("## Enumerations"):page.index("## Examples")]
    rows = [line.strip("|").split(" | ", 1)[1] for line in section.splitlines() if line.startswith("| `")]
    return set(re.findall(r"`([A-Z]\w+)`", "\n".join(rows)))


def page_faults(page, schema):
    elements, attributes = told(page)
    # No call writes the record; the version stands in the table of versions.
    elements -= {"GFI_FontSubstInfo", "ORVLOG_CONTENT_VERSION"}
    attributes = {name for name in attributes if not name.startswith("fsi_")}
    has_elements = set(re.findall(rf"element ({NAME}) {{", schema))
    has_attributes = set(re.findall(rf"attribute ({NAME}) {{", schema))
    for name in sorted(elements - has_elements):
        yield f"has no element {name}"
    for name in sorted(attributes - has_attributes):
        yield f"has no attribute {name}"
    for name in sorted(names_told(page) - set(re.findall(r"\w+", schema))):
        yield f"has no name {name}"
    words = set(re.findall(NAME, page)) | {"GXC_ColorTickets"}
    for name in sorted(has_elements | has_attributes | set(re.findall(r"\b(?:ORV|G[A-Z]{2})_\w+", schema))):
        # Members are told without the name of their call.
        if name not in words and "." + name.rpartition(".")[2] not in page:
            yield f"has {name}, which the page doesn't tell"
    if len(elements) < 60 or len(attributes) < 150:
        yield f"the page's tables are not read: {len(elements)} elements, {len(attributes)} attributes"


report = check.Report()
report.hold(SCHEMA, page_faults(check.text(PAGE), check.text(SCHEMA)))
with tempfile.TemporaryDirectory() as scratch:
    logs = {os.path.join(check.ROOT, path): path for path in check.files(".xml", under=("tests/expected/",))}
    for kind, status, log in record(scratch):
        report.hold(f"a log {kind}", [] if status == 0 else [f"recording ended with {status}"])
        logs[log] = f"a log {kind}"
    said = invalid(list(logs))
    report.hold(SCHEMA, [said["the schema"]] if "the schema" in said else [])
    for log, what in logs.items():
        report.hold(what, [said[log]] if log in said else [])
    with open(os.path.join(scratch, "base-text.xml"), encoding="utf-8") as file:
        wrongs = dict(planted(scratch, file.read()))
    said = invalid([path for path in wrongs.values() if path])
    for what, path in wrongs.items():
        report.hold(what, ["can't be planted"] if path is None else [] if path in said else ["is valid"])
report.end()
