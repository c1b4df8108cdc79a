#!/usr/bin/env python3
"""Repacked logs: they come back byte for byte, commands tell of them what they tell of the plain log, without reading the
rest, and what doesn't fit in an index or a table is refused with a line.

    repacked-logs.py ORVLOG-RECORD ORVLOG [ROUNDS]

bends so many copies at random, 60 without a number, and the text of a fifth as many."""

import hashlib
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

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:3])
ROUNDS = int(sys.argv[3]) if len(sys.argv) > 3 else 60
SAMPLE = os.path.join(check.ROOT, "docs", "sample.pdf")
TABLE, INDEX, REPEAT, FRAME, FOOTER = 0x184D2A5E, 0x184D2A5B, 0x184D2A5C, 0xFD2FB528, 0x8F92EAB1
REFUSED = "; the log is read from its beginning"
report = check.Report()


def run(*arguments, data=None, timeout=60):
    done = subprocess.run([ORVLOG, *arguments], input=data, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                          timeout=timeout, **({} if data is not None else {"stdin": subprocess.DEVNULL}))
    return done.returncode, done.stdout, done.stderr.decode(errors="replace")


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)
    return path


def hold(what, *conditions):
    report.hold(what, [f"condition {i + 1} doesn't hold" for i, good in enumerate(conditions) if not good])


def table_of(data):
    """The entries of the table for seeking, read as its published form says: sizes in the file and of text, sums."""
    count, flags, magic = struct.unpack("<IBI", data[-9:])
    place = len(data) - 9 - 12 * count - 8
    assert magic == FOOTER and flags == 0x80
    assert struct.unpack("<II", data[place:place + 8]) == (TABLE, 12 * count + 9)
    return place, [struct.unpack_from("<III", data, place + 8 + 12 * i) for i in range(count)]


def fnv(data):
    total = 0xCBF29CE484222325
    for byte in data:
        total = (total ^ byte) * 0x100000001B3 & (1 << 64) - 1
    return total


def zstd(*arguments, data):
    return subprocess.run(["zstd", "-q", "-c", *arguments], input=data, stdout=subprocess.PIPE, check=False).stdout


class Packed:
    """A repacked log, taken apart, to be put together again with other numbers in it and right sums over them."""

    def __init__(self, data):
        self.place, self.entries = table_of(data)
        self.index_place = self.place - self.entries[-1][0]
        self.frames = data[:self.index_place]
        index = data[self.index_place:self.place]
        assert struct.unpack("<I", index[:4])[0] == INDEX and index[8:16] == b"ORVLOGIX"
        self.version, self.flags = struct.unpack("<II", index[16:24])
        self.payload = zstd("-d", data=index[48:])

    def data(self, payload=None, size=None, flags=None, version=None, entries=None):
        payload = self.payload if payload is None else payload
        packed = zstd("--no-progress", f"--stream-size={len(payload)}", data=payload)
        told = list(self.entries[:-1] if entries is None else entries)
        rows = b"".join(struct.pack("<III", *entry) for entry in told)
        index = struct.pack("<II8sIIQQQ", INDEX, 40 + len(packed), b"ORVLOGIX",
                            self.version if version is None else version, self.flags if flags is None else flags,
                            fnv(rows), fnv(packed), len(payload) if size is None else size) + packed
        rows += struct.pack("<III", len(index), 0, 0)
        return (self.frames + index + struct.pack("<II", TABLE, len(rows) + 9) + rows
                + struct.pack("<IBI", len(rows) // 12, 0x80, FOOTER))


def hashes(folder):
    return {re.sub(r"^[^0-9]*", "", name): hashlib.sha256(read(os.path.join(folder, name))).hexdigest()
            for name in os.listdir(folder)}


def replayed(scratch, log, page, name):
    folder = os.path.join(scratch, name)
    new = os.path.join(scratch, name + "-log.xml")
    status, _, _ = run("replay", log, "--pages", str(page), "--png", folder)
    logged, _, _ = run("replay", log, "--pages", str(page), "--log", new)
    return status, hashes(folder), logged, read(new)


def same(plain, packed, *arguments):
    """Whether a command tells the same of both."""
    one, other = run(arguments[0], plain, *arguments[1:]), run(arguments[0], packed, *arguments[1:])
    return one[:2] == other[:2] and one[2].replace(plain, "") == other[2].replace(packed, "")


def hold_round_trip(scratch, name, text, plain):
    packed = os.path.join(scratch, name + ".xml.zst")
    status, out, err = run("repack", plain, "-o", packed)
    data = read(packed)
    place, entries = table_of(data)
    hold(f"{name}: repacked", status == 0, out == b"", err == "", zstd("-d", data=data) == text,
         run("unpack", packed, "-o", "-") == (0, text, ""), run("unpack", "-", "-o", "-", data=data) == (0, text, ""),
         sum(entry[0] for entry in entries) == place, sum(entry[1] for entry in entries) == len(text),
         10 * len(data) < len(text))
    again = os.path.join(scratch, name + "-again.xml.zst")
    run("repack", packed, "-o", again)
    hold(f"{name}: repacked again", read(again) == data, same(plain, packed, "check"))
    begin = 0
    offset = 0
    for size, text_size, _ in entries[:-1]:
        hold(f"{name}: a frame", struct.unpack_from("<I", data, offset)[0] == FRAME,
             re.match(rb"<ORV |  <ORV_[a-z]|<!--", text[begin:begin + 40]))
        begin, offset = begin + text_size, offset + size
    return packed


def hold_looks(scratch, name, plain, packed):
    pages = int(re.search(rb'"faces": *(\d+)|pages *(\d+)', run("info", plain)[1]).group(2) or 0)
    calls = [line.split()[0] for line in run("ls", plain, "--columns", "call")[1].decode().splitlines()[1:]]
    for call in calls[::37] + [calls[0], calls[-1], "1000000", "line:1", "line:999999", "byte:0"]:
        hold(f"{name}: show {call}", same(plain, packed, "show", call), same(plain, packed, "show", call, "--json"))
    for page in range(1, 4):
        hold(f"{name}: page {page}", same(plain, packed, "ls", "--page", str(page)),
             same(plain, packed, "ls", "--page", str(page), "--json"),
             same(plain, packed, "at", "--page", str(page), "--all", "100,90"),
             same(plain, packed, "at", "--page", str(page), "--json", "--box", "0,0,90,90"))
        hold(f"{name}: replay of page {page}",
             replayed(scratch, plain, page, "plain") == replayed(scratch, packed, page, "packed"))
    hold(f"{name}: pages", pages == 3, same(plain, packed, "ls", "--page", "4"), same(plain, packed, "ls", "--page", "2-"))


def hold_nothing_before(scratch, text, packed):
    """A page and a call are read although what stands before them can't be."""
    data = bytearray(read(packed))
    _, entries = table_of(bytes(data))
    begin = text.rindex(b"  <ORV_face_start")
    last = max(i for i in range(len(entries) - 1) if sum(entry[1] for entry in entries[:i]) <= begin)
    end = sum(entry[0] for entry in entries[:last])
    for at in range(20, end):
        data[at] ^= 0x55
    torn = write(os.path.join(scratch, "torn.xml.zst"), bytes(data))
    call = run("ls", packed, "--columns", "call")[1].split()[-1].decode()
    hold("the last call without what is before", last > 0, same(packed, torn, "show", call))
    hold("the last page without what is before", same(packed, torn, "ls", "--page", "3"),
         same(packed, torn, "at", "--page", "3", "100,90"))
    status, _, err = run("ls", torn)
    hold("all of it", "damaged" in err or status == 1)


def hold_only_what_is_asked(scratch, plain, packed):
    """What holds at a call, paints of some ids, and a replay up to a call: without what stands before the page, and
    without what comes long behind the call."""
    data = bytearray(read(packed))
    _, entries = table_of(bytes(data))
    text = read(plain)
    listed = run("ls", plain, "--page", "3", "--columns", "call")[1].decode().split()
    call = [found for found in listed if found.isdigit()][5]
    place = re.search(rb'^  <ORV_[a-z_]+ id="%s"' % call.encode(), text, re.MULTILINE).start()
    line = "line:" + str(text.count(b"\n", 0, place) + 1)
    page = text.rindex(b"  <ORV_face_start", 0, place)
    begin, offset, torn = 0, 0, 0
    for size, text_size, _ in entries[:-1]:
        if begin + text_size <= page or begin > place + (2 << 20):
            torn += 1
            for at in range(offset + 20, offset + size - 4):
                data[at] ^= 0x55
        begin, offset = begin + text_size, offset + size
    path = write(os.path.join(scratch, "torn-elsewhere.xml.zst"), bytes(data))
    hold("frames that aren't read", torn > 0, run("unpack", path, "-o", os.path.join(scratch, "none.xml"))[0] == 1)
    for address in (call, line):
        hold(f"the state at {address}", same(plain, path, "state", address), same(plain, path, "state", address, "--json"))
    hold("paints of some ids", same(plain, path, "ls", "--id", call),
         same(plain, path, "ls", "--id", f"{call}-{int(call) + 1}"),
         same(plain, path, "ls", "--id", call, "--page", "3", "--json"), same(plain, path, "ls", "--id", call, "--page", "1"))
    drawn = {}
    for log in (plain, path):
        folder, clip = os.path.join(scratch, "up-to"), os.path.join(scratch, "clip.png")
        status, _, err = run("replay", log, "--pages", "3", "--up-to", call, "--png", folder)
        drawn[log] = [status, hashes(folder), re.sub(r"\d+ calls", "", err).replace(log, ""),
                      run("state", log, call, "--clip-png", clip)[0], read(clip)]
    hold("a replay up to a call", drawn[plain] == drawn[path], drawn[plain][0] == 0, len(drawn[plain][1]) >= 1)
    for words in (["state", "99999"], ["ls", "--id", "99999"], ["state", "line:3"]):
        hold(f"{words} isn't there", same(plain, packed, *words), run(words[0], packed, *words[1:])[0] == 1)
    nowhere = run("replay", packed, "--up-to", "99999", "--png", os.path.join(scratch, "nowhere"))
    hold("a replay up to no call", nowhere[0] == 1, "has no paint 99999" in nowhere[2])


def bent_text(rolls, lines):
    """A log in which some lines are gone, others are torn, and some are anything."""
    lines = list(lines)
    for _ in range(rolls.choice([1, 1, 3])):
        at = rolls.randrange(5, len(lines) - 3)
        way = rolls.randrange(5)
        if way == 0:
            del lines[at:at + rolls.choice([1, 1, 100])]
        elif way == 1:
            lines[at] = lines[at][:len(lines[at]) // 2]
        elif way == 2:
            lines.insert(at, rolls.choice([b"junk", b"<a>", b"</ORV>", b"  </ORV_object_paint>", b"<!-- c -->", b"0a 0b",
                                           b"  <ORV_face_start>", b'  <ORV_object_paint id="7" drawing_context="1">']))
        elif way == 3:
            lines[at], lines[at + 1] = lines[at + 1], lines[at]
        else:
            lines[at] = bytes([rolls.randrange(256)]) + lines[at]
    text = b"\n".join(lines)
    return text[:rolls.randrange(2000, len(text))] if rolls.randrange(4) == 0 else text


def hold_pages_of_bent_logs(scratch, plain):
    """Pages of damaged logs are told by an index, and are the same as without it."""
    rolls = random.Random(8)
    lines = read(plain).split(b"\n")
    bent, packed = os.path.join(scratch, "bent.xml"), os.path.join(scratch, "bent.xml.zst")
    for turn in range(ROUNDS // 5):
        write(bent, bent_text(rolls, lines))
        status, _, err = run("repack", bent, "-o", packed)
        hold(f"text {turn}", status in (0, 1), Packed(read(packed)).flags & 2 or "can't be told apart" in err)
        for command in (["ls", "--page", "1"], ["ls", "--page", "3"], ["ls", "--id", "100-120"], ["state", "70"],
                        ["state", "330"], ["show", "200"], ["at", "--page", "2", "--all", "100,90"]):
            hold(f"text {turn}: {command}", same(bent, packed, *command))


def words_at(payload, at, size, value):
    return payload[:at] + value.to_bytes(size, "little") + payload[at + size:]


def hold_bent_index(scratch, plain, packed):
    """Numbers that don't fit, under right sums: refused with a line, and the text is the truth."""
    whole = Packed(read(packed))
    frames = len(whole.entries) - 1
    pages = 40 + 33 * frames  # behind text, head, calls, frames and warnings
    path = os.path.join(scratch, "bent.xml.zst")
    truth = run("ls", plain, "--page", "2")[1]
    hold("put together again", same(plain, write(path, whole.data()), "ls", "--page", "2"))
    big = (1 << 64) - 1
    bends = {
        "a longer text": whole.data(words_at(whole.payload, 0, 8, big)),
        "a head beyond the text": whole.data(words_at(whole.payload, 8, 8, big)),
        "no calls": whole.data(words_at(whole.payload, 16, 8, 0)),
        "more frames": whole.data(words_at(whole.payload, 24, 8, frames + 1)),
        "frames without end": whole.data(words_at(whole.payload, 24, 8, big)),
        "lines that fall": whole.data(words_at(whole.payload, 32, 8, 7)),
        "pages without end": whole.data(words_at(whole.payload, pages, 8, big)),
        "no pages": whole.data(words_at(whole.payload, pages, 8, 0)),
        "drawings without end": whole.data(words_at(whole.payload, pages + 8, 8, big // 16)),
        "a page that isn't due": whole.data(words_at(whole.payload, pages + 16, 4, 9)),
        "paints without end": whole.data(words_at(whole.payload, pages + 20, 8, big)),
        "cut": whole.data(whole.payload[:-1]),
        "longer": whole.data(whole.payload + b"\0"),
        "another size": whole.data(size=len(whole.payload) + 1),
        "a bomb": whole.data(b"\0" * (80 << 20)),
        "a size beyond the limit": whole.data(size=1 << 40),
        "another version": whole.data(version=2),
        "without its pages": whole.data(flags=1),
        "a frame of no size": whole.data(entries=[(0, *whole.entries[0][1:]), *whole.entries[1:-1]]),
        "a longer frame": whole.data(entries=[(whole.entries[0][0] + 1, *whole.entries[0][1:]), *whole.entries[1:-1]]),
        "another sum": whole.data(entries=[(*whole.entries[0][:2], 1), *whole.entries[1:-1]]),
    }
    for what, data in bends.items():
        write(path, data)
        status, out, err = run("ls", path, "--page", "2")
        hold(f"an index with {what}", status == 0, out == truth, REFUSED in err, err.count("\n") == 1,
             run("show", path, "5")[:2] == run("show", plain, "5")[:2],
             run("unpack", path, "-o", "-")[:2] == (0, read(plain)))


def hold_wrong_index(scratch, plain, packed):
    """Numbers that fit one another, and not the text: `check` says what is wrong, and nothing of a right one."""
    whole = Packed(read(packed))
    frames = len(whole.entries) - 1
    path = os.path.join(scratch, "wrong.xml.zst")
    hold("a right index", run("check", packed)[:2] == run("check", plain)[:2], run("check", packed)[0] == 0)
    payload = whole.payload
    last = 32 + 33 * (frames - 1)
    kept = payload.rindex(b"<ORV_document_finish")
    number = lambda at, size=8: int.from_bytes(payload[at:at + size], "little")
    wrongs = {
        "the size of the head": words_at(payload, 8, 8, number(8) - 1),
        "the count of all calls": words_at(payload, 16, 8, number(16) + 1),
        f"the line of frame {frames}": words_at(payload, last, 8, number(last) + 1),
        f"the count of calls of frame {frames}": words_at(payload, last + 8, 8, number(last + 8) + 1),
        f"the first paint of frame {frames}": words_at(payload, last + 16, 8, number(last + 16) + 1),
        f"the mark of a call that goes on of frame {frames}": words_at(payload, last + 32, 1, number(last + 32, 1) ^ 1),
        "the count of warnings": words_at(payload, 32 + 33 * frames, 8, number(32 + 33 * frames) + 1),
        "the copy": payload[:kept + 4] + b"X" + payload[kept + 5:],
        "what a replay has to know": words_at(payload, payload.rindex(b"<ORV ") - 16, 8, 7),
    }
    for what, bent in wrongs.items():
        write(path, whole.data(bent))
        status, out, err = run("check", path)
        line = f"line 1: the index is wrong: {what} is another one in the text".encode()
        hold(f"wrong: {what}", status == 1, out.splitlines() == [line], err == "")
    write(path, whole.data(version=2))
    status, out, _ = run("check", path)
    hold("an index of another version", status == 1, out == b"line 1: the index is of a version that is not known\n")


def hold_foreign_ends(scratch, plain, packed):
    data = read(packed)
    path = os.path.join(scratch, "ends.xml.zst")
    place, _ = table_of(data)
    for what, bent in {"no table": data[:place], "half a table": data[:-30], "bytes behind": data + b"\0" * 20,
                       "only frames": zstd(data=read(plain))}.items():
        write(path, bent)
        hold(f"a log with {what}", run("ls", path, "--page", "2")[1] == run("ls", plain, "--page", "2")[1],
             run("show", path, "5")[1] == run("show", plain, "5")[1])


def hold_random_bends(scratch, packed, deduped):
    """No bend makes a command crash or hang; what it shows then is told as damaged, or it is the truth."""
    rolls = random.Random(5)
    path = os.path.join(scratch, "random.xml.zst")
    for turn in range(ROUNDS):
        data = bytearray(read(deduped if turn % 3 == 0 else packed))
        place, _ = table_of(bytes(data))
        low = rolls.choice([0, place - 300, place])
        for _ in range(rolls.choice([1, 1, 4])):
            data[rolls.randrange(max(low, 0), len(data))] = rolls.randrange(256)
        if turn % 7 == 0:
            del data[rolls.randrange(len(data)):]
        write(path, bytes(data))
        for command in (["ls", path, "--page", "2"], ["show", path, "40"], ["at", path, "--page", "3", "100,90"],
                        ["unpack", path, "-o", os.path.join(scratch, "out.xml")]):
            status, _, err = run(*command)
            hold(f"bend {turn}: {command[0]}", status in (0, 1), status == 0 or err.startswith("orvlog: "))


def hold_cut_and_damaged(scratch, plain):
    text = read(plain)
    cut = write(os.path.join(scratch, "cut.xml"), text[:len(text) * 2 // 3])
    packed = os.path.join(scratch, "cut.xml.zst")
    status, _, err = run("repack", cut, "-o", packed)
    hold("a log that is cut short", status == 1, "is cut short; " in err, zstd("-d", data=read(packed)) == read(cut),
         same(cut, packed, "show", "20"), same(cut, packed, "ls", "--page", "2"), same(cut, packed, "check"),
         same(cut, packed, "state", "20"), Packed(read(packed)).flags & 2)
    bent = write(os.path.join(scratch, "bent.xml"), text.replace(b"</GPA_Path>", b"</GPA_Pth>", 1))
    status, _, err = run("repack", bent, "-o", packed)
    hold("a log that is damaged", status == 0, "is damaged in " in err, "; all of the text is in " in err,
         zstd("-d", data=read(packed)) == read(bent), same(bent, packed, "show", "60"),
         same(bent, packed, "ls", "--page", "3"), Packed(read(packed)).flags & 2)
    nested = text.replace(b"    <ORV_object_paint.op>\n", b"""    <ORV_object_paint id="0" drawing_context="0">
    </ORV_object_paint>
    <ORV_object_paint.op>
""", 1)
    write(bent, nested)
    status, _, err = run("repack", bent, "-o", packed)
    hold("a call within a call", nested != text, status == 0, err == "", Packed(read(packed)).flags & 2,
         same(bent, packed, "ls", "--page", "1"), same(bent, packed, "ls", "--page", "2"), same(bent, packed, "show", "60"))
    none = write(os.path.join(scratch, "none.xml"), b"<html></html>")
    gone = os.path.join(scratch, "gone.zst")
    hold("what is no log", run("repack", none, "-o", gone)[0] == 1, not os.path.exists(gone))
    before = read(plain)
    status, _, err = run("repack", plain, "-o", plain)
    hold("onto itself", status == 1, "is the log to be repacked" in err, read(plain) == before)
    hold("beyond reach", run("repack", plain, "-o", os.path.join(scratch, "no", "where"))[0] == 1,
         run("repack", plain)[0] == 2, run("repack", plain, "-o", gone, "--level", "20")[0] == 2)


def image_log(text, count):
    """The sample's log with one image painted often, larger than a frame."""
    begin = text.index(b"  <ORV_object_paint ", text.index(b"GOP_ImageReadFn") - 20000)
    begin = text.rindex(b"  <ORV_object_paint ", 0, text.index(b"<GOP_ImageReadFn"))
    end = text.index(b"</ORV_object_paint>\n", begin) + len(b"</ORV_object_paint>\n")
    paint = text[begin:end]
    read_begin = paint.index(b"  <GOP_ImageReadFn")
    read_end = paint.index(b"</GOP_ImageReadFn>\n", read_begin) + len(b"</GOP_ImageReadFn>\n")
    row = paint[read_begin:read_end]
    noise = random.Random(1)

    def rows():
        for _ in range(2000):
            digits = b"".join(b"%02x " % noise.randrange(256) for _ in range(50)) + b"\n"
            yield re.sub(rb"(?:[0-9a-f]{2} )+\n(?:(?:[0-9a-f]{2} )+\n)*", digits * 2, row, count=1)
    image = b"".join(rows())
    many = []
    for i in range(count):
        own = b'Id="%d"' % (11 + 10 * i)
        many.append(paint[:read_begin] + image.replace(b'Id="11"', own) + paint[read_begin:])
    return text[:begin] + b"".join(many) + text[end:]


def hold_dedupe(scratch, text):
    log = image_log(text, 6)
    plain = write(os.path.join(scratch, "many.xml"), log)
    packed = os.path.join(scratch, "many.xml.zst")
    deduped = os.path.join(scratch, "many-once.xml.zst")
    hold("many images", run("repack", plain, "-o", packed)[0] == 0,
         run("repack", "--dedupe", plain, "-o", deduped)[0] == 0)
    data = read(deduped)
    _, entries = table_of(data)
    starts = [sum(entry[0] for entry in entries[:i]) for i in range(len(entries))]
    repeats = sum(struct.unpack_from("<I", data, at)[0] == REPEAT for at in starts)
    hold("many images once", repeats >= 5, len(data) + 300000 < len(read(packed)),
         run("unpack", deduped, "-o", "-") == (0, log, ""), len(zstd("-d", data=data)) < len(log),
         same(plain, deduped, "ls"), same(plain, deduped, "ls", "--page", "3"), same(plain, deduped, "show", "line:900"))
    hold("repeats through a pipe", run("unpack", "-", "-o", "-", data=data) == (0, log, ""))
    hold("an index of repeats", same(plain, deduped, "check"), same(plain, packed, "check"))
    return deduped


with tempfile.TemporaryDirectory() as scratch:
    for mode, options in {"transparent": [], "base": ["--mode", "base", "--glyphs", "all"]}.items():
        log = os.path.join(scratch, mode + ".xml")
        subprocess.run([RECORD, SAMPLE, "-o", log, "--png", os.path.join(scratch, "png"), *options], check=True,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        repacked = hold_round_trip(scratch, mode, read(log), log)
        hold_looks(scratch, mode, log, repacked)
    hold_nothing_before(scratch, read(log), repacked)
    hold_bent_index(scratch, log, repacked)
    hold_wrong_index(scratch, log, repacked)
    hold_foreign_ends(scratch, log, repacked)
    hold_only_what_is_asked(scratch, log, repacked)
    hold_cut_and_damaged(scratch, log)
    hold_pages_of_bent_logs(scratch, log)
    once = hold_dedupe(scratch, read(log))
    hold_random_bends(scratch, repacked, once)
report.end()
