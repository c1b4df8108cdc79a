#!/usr/bin/env python3
"""The Python package: what it tells of logs is what the orvlog command tells, with and without NumPy, and logs that are bent
raise exceptions.

    python-package.py FOLDER-OF-THE-PACKAGE ORVLOG-RECORD ORVLOG"""

import json
import os
import random
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), "checks"))

import check  # noqa: E402

PACKAGE, RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:4])
sys.path.insert(0, PACKAGE)

import orvlog  # noqa: E402
from orvlog import _fields  # noqa: E402

EXAMPLES = os.path.join(check.ROOT, "python", "examples")
SAMPLE = os.path.join(check.ROOT, "docs", "sample.pdf")
WITHOUT_NUMPY = "import sys; sys.modules['numpy'] = None; "
report = check.Report()


def hold(what, *conditions):
    report.hold(what, [f"condition {i + 1} doesn't hold" for i, good in enumerate(conditions) if not good])


def run(*command, code=0):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          env={**os.environ, "PYTHONPATH": PACKAGE, "PYTHONDONTWRITEBYTECODE": "1"}, check=False)
    if done.returncode != code:
        print(f"{command[:4]}: {done.returncode}: {done.stderr[-300:]}")
    return done.stdout


def raises(kind, action):
    try:
        action()
    except kind:
        return True
    return False


def hold_calls(log):
    """Each call against `orvlog ls --json`, and the tree of some against `orvlog show --json`."""
    calls = list(log.calls())
    listed = json.loads(run(ORVLOG, "ls", log.path, "--json"))
    hold("as many calls", len(calls) == len(listed), len(calls) > 100)
    for call, told in zip(calls, listed):
        box = told.get("box")
        hold(f"call {call.address}", call.kind == told["kind"], call.line == told["line"], call.byte == told["byte"],
             (call.page or None) == told.get("page"), call.box is None if box is None else list(call.box) == box)
    for call in calls[::29]:
        tree = json.loads(run(ORVLOG, "show", log.path, call.address, "--json"))
        open_ones = [(call, tree)]
        good = True
        while open_ones and good:
            element, told = open_ones.pop()
            children = told.get("children", [])
            good = (element.name == told["name"] and element.attributes == told["attributes"]
                    and element.line == told["line"] and (element.data or b"").hex() == told.get("bytes", "")
                    and len(children) == len(element.children))
            open_ones += zip(element.children, children)
        hold(f"tree of {call.address}", good)
    hold("not damaged", log.damage == [], not log.is_cut, raises(KeyError, lambda: log.call(10 ** 6)),
         log.call(5).attributes["id"] == "5", log.call(calls[0].address).kind == "document_start")


def hold_values(log):
    face = next(log.pages())
    properties = face.start.ORV_FaceProperties
    hold("a page", face.number == 1, face.face_seq_number == 1, (face.width, face.height) == (794, 1123),
         properties.fp_WidthInPixels == 794, len(properties.fp_FaceInchToPixels) == 6,
         all(isinstance(one, float) for one in properties.fp_FaceInchToPixels), isinstance(properties.fp_FaceHints, int))
    paint = next(call for call in log.calls() if call.text)
    operator = paint.fill_op.GOP_Operator
    hold("a paint", operator.op_Operator == 3, operator.op_OperatorType == "GOP_ROP_PORTER_DUFF",
         paint.paint_flags == 1, "fill_op" in paint, "fill_operand3" not in paint, "fill_op" in dir(paint),
         raises(AttributeError, lambda: paint.fill_operand3), raises(KeyError, lambda: paint["fill_operand3"]),
         paint["ORV_object_paint_and_stroke.fill_op"] is paint.fill_op, paint.text == "Paths", paint.page == 1)
    hold("the root", log.root.ORVLOG_CONTENT_VERSION == 2, log.root.Endian == "little")
    page = check.text("docs/log-format.md")
    told = {name for line in page.splitlines() if line.startswith("| `")
            for name in re.findall(r"`([A-Za-z_][\w.]*)` (?:[ui](?:8|16|32)|box of i32)\b", line)}
    texts = re.findall(r"`([^`]+)`", re.search(r"The text attributes are (.*?)\n", page)[1])
    hold("kinds of attributes", told <= _fields.WHOLE, all(name in told or name.endswith("_VERSION")
                                                          for name in _fields.WHOLE), set(texts) == _fields.TEXTS)


def hold_arrays(scratch, log):
    """Images against those that the command extracts, points of paths against the path's own numbers."""
    out = os.path.join(scratch, "extracted")
    run(ORVLOG, "extract", "images", log.path, "-o", out)
    with open(os.path.join(out, "manifest.json"), encoding="utf-8") as file:
        due = {entry["image"]: entry for entry in json.load(file)["files"]}
    images = [image for call in log.calls() for image in call.images()]
    hold("images", {image.id for image in images} == set(due), len(images) > 4)
    for image in images:
        told = due[image.id]
        hold(f"image {image.id}", (image.width, image.height) == (told["width"], told["height"]),
             len(image.data) == told["bytes"])
        if image.encoding > 1 or not image.channels:
            hold(f"image {image.id} has no pixels", raises(ValueError, image.array))
        else:
            shape = image.array().shape
            hold(f"pixels of image {image.id}", shape[1:] == (image.width, image.channels), shape[0] <= image.height)
    first = next(image for image in images if image.channels == 3 and image.depth == 8)
    pixels = first.array()
    hold("a pixel", bytes(pixels.tolist()[0][1]) == first.data[3:6], pixels.tobytes() == first.data)
    path = next(path for call in log.calls(data=False) for path in call.paths() if len(path.edges) > 0)
    vectors = list(path.element.find("GGO_Vector"))
    start = next(path.element.find("GGO_Point"))
    points = path.points().tolist()
    hold("a path", points[0] == [start.gpf_X, start.gpf_Y], path.edges[0].kind in ("straight", "bezier"),
         not vectors or points[1][0] == start.gpf_X + vectors[0].gvf_X)


def hold_pages(scratch, log):
    for page in (1, 2, 3):
        picture = log.draw(page)
        array = picture.array()
        hold(f"picture of page {page}", array.shape == (picture.height, picture.width, 3),
             len(set(picture.data)) > 10, picture.complaints == [])
        changes = json.loads(run(ORVLOG, "at", log.path, "--page", str(page), "100,70", "--json"))["calls"]
        last = [call["after"] for call in changes if call["changed"]]
        pixel = "#" + bytes(array.tolist()[70][100]).hex()
        hold(f"pixel of page {page}", pixel == (last[-1][:7] if last else "#ffffff"))
    small = log.draw(1, dpi=24)
    hold("in another resolution", small.width < 250, raises(ValueError, lambda: log.draw(0)),
         raises(orvlog.LogError, lambda: log.draw(4)), raises(ValueError, lambda: log.draw(1, dpi=-1)))


def hold_forms(scratch, plain):
    """Coded and repacked logs tell the same."""
    told = [(call.line, call.name, call.box) for call in plain.calls(data=False)]
    repacked, coded = os.path.join(scratch, "job.xml.zst"), os.path.join(scratch, "job.orvlog")
    run(ORVLOG, "repack", plain.path, "-o", repacked)
    run(ORVLOG, "replay", plain.path, "--log", coded, "--compressed")
    other = orvlog.open(repacked)
    second = [(call.line, call.name, call.box) for call in plain.calls(page=2)]
    hold("repacked", [(call.line, call.name, call.box) for call in other.calls(data=False)] == told,
         [(call.line, call.name, call.box) for call in other.calls(page=2)] == second, len(second) > 10,
         other.draw(3) == plain.draw(3))
    hold("coded", sum(1 for _ in orvlog.open(coded).calls()) == len(told))
    beside = os.path.join(scratch, "beside.xml")
    subprocess.run([RECORD, SAMPLE, "-o", beside, "--png", scratch, "--mode", "base", "--images-beside", "pre"],
                   cwd=scratch, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    both = [[image.data for call in orvlog.open(path).calls() for image in call.images()]
            for path in (beside, plain.path)]
    hold("files beside", both[0] == both[1], raises(orvlog.LogError, lambda: orvlog.open(beside).side_file("passwd")))


def hold_hostile(scratch, plain):
    with open(plain.path, "rb") as file:
        text = file.read()
    path = os.path.join(scratch, "hostile.xml")
    rolls = random.Random(3)
    for turn in range(25):
        data = bytearray(text if turn % 2 else text[:len(text) // 3])
        for _ in range(rolls.choice([1, 20, 200])):
            data[rolls.randrange(2000, len(data))] = rolls.randrange(256)
        with open(path, "wb") as file:
            file.write(bytes(data))
        done = run(sys.executable, "-c", f"""
import orvlog
try:
    log = orvlog.open({path!r})
    for call in log.calls():
        dir(call), [image.array() for image in call.images() if image.encoding < 2 and image.channels and image.width
                    and image.width < 10000 and image.depth], [path.points() for path in call.paths()]
        for element in call.walk():
            for name in element.attributes:
                element.get(name)
    log.draw(1, dpi=20)
except (orvlog.LogError, ValueError, MemoryError) as error:
    pass
print(len(log.damage) > 0 or log.is_cut or True)
""")
        hold(f"bent {turn}", done == "True\n")
    deep = text[:text.index(b"\n") + 1] + b"<a>\n" * 5000
    for what, data in {"deep": deep, "nothing": b"", "text": b"hello", "page": b"<html>"}.items():
        with open(path, "wb") as file:
            file.write(data)
        if what == "deep":
            hold(what, sum(1 for _ in orvlog.open(path).calls()) == 0)
        else:
            hold(what, raises(orvlog.LogError, lambda: orvlog.open(path)))
    hold("not there", raises(orvlog.LogError, lambda: orvlog.open(os.path.join(scratch, "none"))),
         raises(orvlog.LogError, lambda: orvlog.open(scratch)))


def hold_examples(plain):
    """The examples, with NumPy and without, tell the same."""
    for name, arguments, due in (("texts.py", [plain], "page 1: "), ("images.py", [plain], "page 2: <image"),
                                 ("compare.py", [plain, plain], "page 3: 0 of ")):
        script = os.path.join(EXAMPLES, name)
        said = run(sys.executable, script, *arguments)
        bare = run(sys.executable, "-c", WITHOUT_NUMPY + f"import runpy; sys.argv = {[script, *arguments]!r}; "
                   f"runpy.run_path({script!r}, run_name='__main__')", code=0)
        hold(name, due in said, said == bare)


with tempfile.TemporaryDirectory() as folder:
    made = os.path.join(folder, "job.xml")
    subprocess.run([RECORD, SAMPLE, "-o", made, "--png", folder, "--mode", "base", "--glyphs", "outlines"], check=True,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    job = orvlog.open(made)
    hold_calls(job)
    hold_values(job)
    hold_arrays(folder, job)
    hold_pages(folder, job)
    hold_forms(folder, job)
    hold_hostile(folder, job)
    hold_examples(made)
report.end()
