"""The text of a colour ticket within a log: its lines, of which some hold strings with anything in them."""

import hashlib
import re

FIRST = rb"<GXC_ColorTickets>\r?\n"
STRING = re.compile(rb'\t*<[\w-]+ String="')
STRING_END = re.compile(rb'" />\r?\n')
LAST = b"</GXC_ColorTickets>"
PROFILE = re.compile(rb"\t*<ProfileBuffer>([0-9A-F]*)(?:</ProfileBuffer>)?")


def line_end(text, at, prefix):
    """Behind the line that begins here: a string goes on to the quote, slash and bracket that end a line."""
    string = STRING.match(text, at + prefix)
    if string:
        end = STRING_END.search(text, string.end())
        return end.end() if end else len(text)
    return text.find(b"\n", at) + 1 or len(text)


def end(text, at, prefix):
    """Behind the line that closes the text that begins here."""
    last = re.compile(b"^" + b" " * prefix + LAST + b"\r?(?:\n|\\Z)", re.M).search(text, at)
    return last.end() if last else len(text)


def facts(text, prefix):
    """A ticket's text as it stands in the log and each profile in it, as hashes."""
    profiles, at = [], 0
    while at < len(text):
        next_at = line_end(text, at, prefix)
        profile = PROFILE.match(text, at + prefix, next_at)
        if profile and len(profile[1]) > 1:
            digits = profile[1].decode()
            profiles.append(hashlib.sha256(bytes.fromhex(digits[:len(digits) & ~1])).hexdigest())
        at = next_at
    lines = text.replace(b"\r\n", b"\n").rstrip(b"\n") + b"\n"
    return {"sha256": hashlib.sha256(lines).hexdigest(), "profiles": profiles}


def is_whole(text, prefix):
    return re.search(b"^" + b" " * prefix + LAST + b"\r?(?:\n|\\Z)", text, re.M) is not None
