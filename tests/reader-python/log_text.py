"""Tags, comments, rows and tickets of a log's text, given to a handler with the elements nested.

The handler has start(element, above), end(element, above), comment(text) and ticket(element, text, prefix), where
`above` are the elements around an element, the outermost first.
"""

import re

import ticket_text

NAME = re.compile(rb"<(/?)([A-Za-z_][\w.]*)")
ATTRIBUTE = re.compile(rb'[ \r\n]+([A-Za-z_][\w.]*)="([^"<>&\r\n]*)"')
TAG_END = re.compile(rb"[ \r\n]*(/?)>")
COMMENT = re.compile(rb"[ \r\n]*<!--(?:\r?\n|\Z)")
COMMENT_END = re.compile(rb"-->(?=\r?\n|\r?\Z)")
TWO_BLANKS = re.compile(rb"(?<! )  \Z")
BLANKS = re.compile(rb"[ \r\n]*")
ROWS = {
    "BufferUInt8": re.compile(rb"(?:[0-9a-f]{2} )+\r?\Z"),
    "BufferFloat": re.compile(rb"(?:[-+.0-9a-z]+ )+\r?\Z"),
}


class Element:
    __slots__ = ("name", "attributes", "rows", "left_open")

    def __init__(self, name, attributes):
        self.name, self.attributes = name, attributes
        self.rows = []
        self.left_open = False


class LogText:
    def __init__(self, handler):
        self.handler = handler
        self.open = []

    def read(self, text):
        """Reads all of a text; what it leaves open ends with it."""
        depth, at = len(self.open), 0
        while at < len(text):
            at = self.step(text, at)
        while len(self.open) > depth:
            self.close(left_open=True)

    def close(self, left_open=False):
        element = self.open.pop()
        element.left_open = left_open
        self.handler.end(element, self.open)

    def step(self, text, at):
        at = BLANKS.match(text, at).end()
        if at == len(text):
            return at
        comment = COMMENT.match(text, at)
        if comment:
            return self.comment(text, comment.end())
        tag = NAME.match(text, at)
        if not tag:
            return self.row(text, at)
        if tag.end() == len(text):
            return len(text)
        name = tag[2].decode()
        if tag[1]:
            return self.closing(text, tag.end(), name)
        if name == "GXC_ColorTickets":
            return self.ticket(text, at)
        if name.startswith("ORV_") and "." not in name and TWO_BLANKS.search(text, max(0, at - 3), at):
            while len(self.open) > 1:
                self.close(left_open=True)
        return self.opening(text, tag.end(), name)

    def comment(self, text, at):
        end = COMMENT_END.search(text, at)
        self.handler.comment(text[at:end.start() if end else len(text)])
        return end.end() if end else len(text)

    def row(self, text, at):
        """A line that is no tag: rows of data, or what a comment left behind."""
        line_end = text.find(b"\n", at)
        line = text[at:] if line_end < 0 else text[at:line_end]
        if line_end < 0:
            line = line[:line.rfind(b" ") + 1]
        if self.open and self.open[-1].name in ROWS and ROWS[self.open[-1].name].match(line):
            self.open[-1].rows.append(line)
        return len(text) if line_end < 0 else line_end + 1

    def closing(self, text, at, name):
        end = text.find(b">", at)
        if end < 0:
            return len(text)
        if any(name == element.name for element in self.open):
            while self.open[-1].name != name:
                self.close(left_open=True)
            self.close()
        return end + 1

    def opening(self, text, at, name):
        attributes, closed = {}, False
        while True:
            attribute = ATTRIBUTE.match(text, at)
            if attribute:
                attributes[attribute[1].decode()] = attribute[2].decode("latin-1")
                at = attribute.end()
                continue
            end = TAG_END.match(text, at)
            if end:
                at, closed = end.end(), bool(end[1])
                break
            comment = COMMENT.match(text, at)
            if not comment:
                at = self.left_open(text, at)
                break
            at = self.comment(text, comment.end())
        element = Element(name, attributes)
        self.handler.start(element, self.open)
        self.open.append(element)
        if closed:
            self.close()
        return at

    def left_open(self, text, at):
        """A tag without its end: at the next tag, or at the end of a log that was cut."""
        next_tag = text.find(b"<", at)
        return next_tag if next_tag >= 0 else len(text)

    def ticket(self, text, at):
        start = text.rfind(b"\n", 0, at) + 1
        end = ticket_text.end(text, start, at - start)
        self.handler.ticket(self.open[-1] if self.open else None, text[start:end], at - start)
        return end
