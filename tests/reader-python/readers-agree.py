#!/usr/bin/env python3
"""Holds two readers of logs against each other: the one here, which was written from docs/, and the project's own.

They read logs of all kinds, whole and cut, and have to tell the same facts of each.
"""

import json
import os
import random
import re
import struct
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), "checks"))

import check  # noqa: E402
import coded_log  # noqa: E402
import log_facts  # noqa: E402

SAMPLE = os.path.join(check.ROOT, "docs", "sample.pdf")
LOG_FACTS, RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:])

# How logs are made, and how many cut copies of each are read.
RECORDINGS = {
    "transparent": ([], 4),
    "base": (["--mode", "base", "--no-renderer"], 4),
    "base-drawn": (["--mode", "base", "--pages", "2-2"], 2),
    "images-beside": (["--mode", "base", "--images-beside", "pre"], 4),
    "kept": (["--keep-images"], 4),
    "merged": (["--keep-images", "--via-temporary-log"], 4),
    "coded": (["--mode", "base", "--no-renderer", "--compressed", "--pages", "2-2"], 3),
    "merged-coded": (["--keep-images", "--via-temporary-log", "--compressed", "--pages", "2-2"], 2),
}
IMAGES = [(10, 4800, None), (20, 4800, None), (30, 0, 1024), (40, 0, 512), (50, 0, 8), (60, 0, 16), (70, 0, 320),
          (80, 18963, None)]
CODED = {b"": "00", b"A": "41 80", b"AB": "41 a1 60", b"AAAA": "41 10", b"ABAB": "41 a1 2c", b"ABBA": "41 a1 56",
         b"aab": "61 58 b0", b"abracadabra": "61 b1 6e 56 c7 36 49 37", b"\0A": "00 a0 e0"}


def run(*command, folder=None):
    return subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=False)


def differences(mine, other, where=""):
    """Where two values of JSON differ, in words."""
    if isinstance(mine, dict) and isinstance(other, dict):
        for key in sorted(mine.keys() | other.keys()):
            yield from differences(mine.get(key), other.get(key), f"{where}.{key}")
    elif isinstance(mine, list) and isinstance(other, list) and len(mine) == len(other):
        for i, (one, two) in enumerate(zip(mine, other)):
            yield from differences(one, two, f"{where}[{i}]")
    elif mine != other:
        yield f"{where}: {str(mine)[:200]} and {str(other)[:200]}"


def disagreements(log):
    done = run(LOG_FACTS, log)
    if done.returncode != 0:
        return [f"log-facts ended with {done.returncode}"]
    return list(differences(log_facts.of_log(log), json.loads(done.stdout)))[:10]


def cut_copies(log, count):
    """Copies that end anywhere, beside the log, so that the files that it names are found."""
    with open(log, "rb") as file:
        text = file.read()
    lengths = random.Random(7)
    for i in range(count):
        name = f"{log}.{i}"
        with open(name, "wb") as file:
            file.write(text[:lengths.randrange(700, len(text))])
        yield name


def definition(profile, alternate=b""):
    """A serialised definition by a profile, with a named channel and maybe an alternate."""
    return (struct.pack("<IBBBBII", 2, 3, 1, 0, 1 if alternate else 0, 0, len(profile))
            + b'of "two"\nx lines <b>\0' + profile + struct.pack("<I", 0) + alternate)


def ticket():
    """A serialised ticket with three profiles and strings of all sorts."""
    return (bytes(8) + struct.pack("<II", 3, 1)
            + struct.pack("<I", 0) + definition(bytes(range(256)) * 3, definition(b"alternate"))
            + struct.pack("<I", 7) + definition(b"\0") + struct.pack("<I", 0xFFFFFFFF)
            + struct.pack("<IIB", 26, 1, 1)
            + struct.pack("<III2s", 16, 0, 2, b"\1\0") + b'first "a"\0second\n-->\0' + struct.pack("<I", 0))


def log_by_hand(root, ticket_text):
    """A log with what is not XML: comments in tags and rows, tags left open, strings with line ends."""
    text = re.sub(rb"^(?=\t*<)", b"      ", ticket_text, flags=re.M)
    return root + b"""  <ORV_document_start document_context="1" document_id="6" font_engine_functions="TRUE"  <ORV_document_start document_context="0" document_id="5" font_engine_functions="TRUE" fp_EngineIdGet="a\\x22b"
<!--
from within a tag
-->
 GfpId="0">
  </ORV_document_start>
  <ORV_face_start document_context="0" drawing_context="0" font_engine_functions="FALSE" face_seq_number="0">
    <ORV_FaceProperties fp_FaceHints="[0] ORV_FACE_HINT_NONE " fp_WidthInPixels="10" fp_HeightInPixels="20">
    </ORV_FaceProperties>
    <GCM_ColorTicket id="1">
""" + text + b"""    </GCM_ColorTicket>
  </ORV_face_start>

<!--
ORVLOG: WARNING: one
-->

<!--
two --> of it
--> and more
-->
rest of a comment
 another -->

<!--
no line feed-->
  <ORV_resource_paint drawing_context="0" resource_id="0"
<!--
three
-->

<!--
four
-->
>
    <ORV_object_paint id="0" drawing_context="0" object_type_and_flag="1">
      <ORV_object_paint.operand1>
        <GOP_OperandImagePointer Id="10" op_UniqueId="1" imp_DirectImage="TRUE">
          <imp_DirectImageData>
            <BufferUInt8 len="4">
00 11 

<!--
in rows
-->
22 33 
            </BufferUInt8>
          </imp_DirectImageData>
          <GOP_OperandImage im_ImageEncoding="0" im_ImageWidthPixels="2" im_ImageHeightPixels="2">
            <GOP_Operand go_OpType="GOP_OPERAND_IMAGE" go_ColorInfo="12" go_Count="3"/>
          </GOP_OperandImage>
        </GOP_OperandImagePointer>
  <GOP_ImageKeepFn Id="10"  return="TRUE">
  </GOP_ImageKeepFn>  <GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="4" img_returned="2">
    <img_buf>
      <BufferUInt8 len="2">
fe ff 
      </BufferUInt8>
    </img_buf>
  </GOP_ImageReadFn>

      </ORV_object_paint.operand1>
      <psp_DashLength>
        <BufferFloat len="4">
1 -inf nan 0.100000001 
        </BufferFloat>
        <BufferFloat len="0">

        </BufferFloat>
      </psp_DashLength>
    </ORV_object_paint>
    </ORV>

<!--
ORVLOG: WARNING: late
-->
"""


def hold_recordings(report, folder):
    for name, (options, cuts) in RECORDINGS.items():
        os.mkdir(os.path.join(folder, name))
        log = os.path.join(folder, name, "log")
        done = run(RECORD, *options, "-o", log, SAMPLE, folder=os.path.dirname(log))
        report.hold(f"recording {name}", [] if done.returncode == 0 else [f"ended with {done.returncode}"])
        report.hold(f"log {name}", disagreements(log))
        for copy in cut_copies(log, cuts):
            report.hold(f"cut log {copy}, {os.path.getsize(copy)} bytes", disagreements(copy))


def hold_images(report, folder):
    """The images of the sample, whose sizes the description tells, in all forms that they can have in a log."""
    for name in ("transparent", "base", "images-beside", "kept", "merged"):
        images = [(image["id"], image["read"]["bytes"], image["direct"] and image["direct"]["bytes"])
                  for image in log_facts.of_log(os.path.join(folder, name, "log"))["images"]]
        report.hold(f"images of {name}", [] if images == IMAGES else [str(images)])


def hold_by_hand(report, folder):
    name = os.path.join(folder, "by-hand")
    with open(name + ".ticket", "wb") as file:
        file.write(ticket())
    with open(os.path.join(folder, "transparent", "log"), "rb") as file:
        root = file.readline()
    with open(name, "wb") as file:
        file.write(log_by_hand(root, run(ORVLOG, "ticket", name + ".ticket").stdout))
    packed = run(ORVLOG, "pack", name, "-o", name + ".coded")
    report.hold("pack", [] if packed.returncode == 0 else [f"ended with {packed.returncode}"])
    for log in (name, name + ".coded", *cut_copies(name, 25), *cut_copies(name + ".coded", 5)):
        report.hold(f"{log}, {os.path.getsize(log)} bytes", disagreements(log))
    facts = log_facts.of_log(name)
    told = (facts["comments"], facts["warnings"], facts["left_open"], len(facts["tickets"][0]["profiles"]))
    report.hold("facts by hand", [] if told == (8, 2, {"ORV_document_start": 1, "ORV_resource_paint": 1}, 3) else [str(told)])


def main():
    report = check.Report()
    for text, coded in CODED.items():
        decoded = coded_log.decode(coded_log.HEADER + bytes.fromhex(coded))
        report.hold(f"the example {text}", [] if decoded == text else [str(decoded)])
    for name in ("base", "transparent"):
        report.hold(f"every call {name}", disagreements(f"{check.ROOT}/tests/expected/every-call-{name}.xml"))
    with tempfile.TemporaryDirectory() as folder:
        hold_recordings(report, folder)
        hold_images(report, folder)
        hold_by_hand(report, folder)
    report.end()


if __name__ == "__main__":
    main()
