"""Coded logs: an adaptive Huffman stream behind 35 bytes, with the text of tickets between coded bytes."""

import re

import ticket_text

HEADER = b'<ORV compression="Adaptive Huffman"'
MASK = (1 << 64) - 1


class Node:
    __slots__ = ("weight", "code", "parent", "left", "right", "symbol")

    def __init__(self, weight, code, parent):
        self.weight, self.code, self.parent = weight, code, parent
        self.left = self.right = self.symbol = None


def place(node, parent, is_left):
    """Hangs a node, with all below it, where another one was."""
    if is_left:
        parent.left = node
    else:
        parent.right = node
    node.parent = parent
    node.code = (parent.code * 2 + (0 if is_left else 1)) & MASK
    waiting = [node]
    while waiting:
        above = waiting.pop()
        if above.left:
            above.left.code = (above.code * 2) & MASK
            above.right.code = (above.code * 2 + 1) & MASK
            waiting += (above.left, above.right)


class Tree:
    def __init__(self):
        self.root = self.escape = Node(0, 1, None)
        self.by_weight = {0: {self.root}}
        self.symbols = 0

    def add(self, symbol):
        """The escape node gets a leaf for the symbol and a new escape node; it is what is counted then."""
        node = self.escape
        node.left = Node(1, (node.code * 2) & MASK, node)
        node.right = self.escape = Node(0, (node.code * 2 + 1) & MASK, node)
        node.left.symbol = symbol
        self.by_weight.setdefault(1, set()).add(node.left)
        self.by_weight[0].add(node.right)
        self.symbols += 1
        return node

    def count(self, node):
        by_weight = self.by_weight
        while node:
            weight = node.weight
            same = by_weight[weight]
            if len(same) > 1:
                if node.parent:
                    self.move_up(node, min(same, key=lambda other: other.code))
                same.discard(node)
            else:
                del by_weight[weight]
            node.weight = weight + 1
            if weight + 1 in by_weight:
                by_weight[weight + 1].add(node)
            else:
                by_weight[weight + 1] = {node}
            node = node.parent

    @staticmethod
    def move_up(node, lowest):
        if lowest is node or lowest is node.parent:
            return
        to, to_left = lowest.parent, lowest.parent.left is lowest
        back, back_left = node.parent, node.parent.left is node
        place(node, to, to_left)
        place(lowest, back, back_left)


def ticket_places(coded):
    """Where plain ticket text may begin: places in the file, each with the number of blanks it would have."""
    places = {}
    for found in re.finditer(b" {0,50}" + ticket_text.FIRST, coded):
        first = coded.index(b"<", found.start())
        for blanks in range(first - found.start() + 1):
            places[first - blanks] = blanks
    return places


TICKET_TAG = re.compile(rb"( *)<GCM_ColorTicket [^\n]*\n?\Z")


def is_ticket_here(text, blanks):
    last_line = text.rfind(b"\n", 0, -1) + 1
    tag = TICKET_TAG.match(text, last_line)
    return tag is not None and min(len(tag[1]) + 2, 50) == blanks


def decode(coded):
    """The text of a coded log, up to its end or to where no coder goes on."""
    if coded[35:37] == b"<O":
        return coded[35:]
    if coded[35:] == b"\0":
        return b""
    tree, text, pending = Tree(), bytearray(), b""
    node, literal, places = tree.root, 1, ticket_places(coded)
    at = len(HEADER)
    while at < len(coded):
        if at in places and is_ticket_here(text, places[at]):
            end = ticket_text.end(coded, at, places[at])
            pending, at = coded[at:end], end
            if text.endswith(b"\n"):
                text += pending
                pending = b""
            continue
        byte = coded[at]
        at += 1
        for shift in (7, 6, 5, 4, 3, 2, 1, 0):
            bit = byte >> shift & 1
            if node is tree.escape:
                literal = literal * 2 + bit
                if literal < 256:
                    continue
                if tree.symbols == 256:
                    return bytes(text)
                symbol, literal = literal & 255, 1
                tree.count(tree.add(symbol))
            else:
                node = node.right if bit else node.left
                symbol = node.symbol
                if symbol is None:
                    continue
                tree.count(node)
            node = tree.root
            text.append(symbol)
            if symbol == 10 and pending:
                text += pending
                pending = b""
    return bytes(text + b"\n" + pending if pending else text)
