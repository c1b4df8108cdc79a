"""Elements of a log, and the values of their attributes."""

from __future__ import annotations

import re
from typing import TYPE_CHECKING, Dict, Iterator, List, Optional, Tuple, Union

from ._fields import TEXTS, WHOLE

if TYPE_CHECKING:
    from ._native import Tree

#: bool, int, float or str; a tuple for an attribute of several numbers; bytes for one of hexadecimal digits.
Value = Union[bool, int, float, str, bytes, Tuple[int, ...], Tuple[float, ...]]

_FLAGS = re.compile(r"\[(0x[0-9a-f]+|0)\] ")
_UNKNOWN = re.compile(r"UNKNOWN_VALUE\((-?[0-9]+)\)")
_NUMBER = re.compile(r"-?(?:[0-9]+(?:\.[0-9]+)?(?:e[+-][0-9]+)?|inf|nan)")
_ESCAPE = re.compile(r"\\x([0-9a-f]{2})")


def _number(name: str, text: str) -> Union[int, float]:
    if not _NUMBER.fullmatch(text):
        raise ValueError(text)
    # Numbers beyond any range of a log aren't calculated with.
    return int(text) if name in WHOLE and len(text) < 25 and text.lstrip("-").isdigit() else float(text)


def value_of(name: str, text: str) -> Value:
    """The value of an attribute as it stands in the log. What has none of the log's forms stays a text."""
    if name in TEXTS:
        return _ESCAPE.sub(lambda found: chr(int(found[1], 16)), text)
    if text in ("TRUE", "FALSE"):
        return text == "TRUE"
    flags = _FLAGS.match(text)
    if flags:
        return int(flags[1], 16)
    unknown = _UNKNOWN.fullmatch(text)
    if unknown:
        return int(unknown[1])
    if name == "cl_HIJKDimensions" and re.fullmatch(r"(?:[0-9a-f]{2} )*", text):
        return bytes.fromhex(text)
    try:
        if text.endswith(" ") or text == "":
            return tuple(_number(name, part) for part in text.split())
        return _number(name, text)
    except ValueError:
        return text


class Element:
    """An element: a call, a record, a member or a callback.

    Its attributes and children are attributes of the object, by the names that the log has: ``operator.op_Operator``,
    ``shape.GSH_Shape``. A member, whose name is that of its record, a dot and the field's, has the field's name alone:
    ``call.paint_path`` is the element ``ORV_object_paint.paint_path``. Of several children of a name that is the first
    one; what isn't there raises AttributeError. Names with dots in them are had by ``element[name]``.
    """

    __slots__ = ("name", "line", "byte", "whole", "data", "rows", "attributes", "children")

    def __init__(self, tree: "Tree") -> None:
        # Not by calling itself: a bent log may have many levels.
        left: List[Tuple[Element, "Tree"]] = [(self, tree)]
        while left:
            element, own = left.pop()
            element._fill(own)
            left.extend(zip(element.children, own[7]))

    def _fill(self, tree: "Tree") -> None:
        name, line, byte, attributes, data, rows, whole, children = tree
        #: as it stands in the tag
        self.name: str = name
        #: of the log's text, where the tag begins: from 1, and from 0
        self.line: int = line
        self.byte: int = byte
        #: false where the log lacks its end
        self.whole: bool = whole
        #: the bytes of a BufferUInt8; None of others, and of logs that are read without data
        self.data: Optional[bytes] = data
        #: other rows, as they stand: floats, the text of a ticket
        self.rows: str = rows
        #: as they stand in the log, escapes and all
        self.attributes: Dict[str, str] = attributes
        self.children: List[Element] = [Element.__new__(Element) for _ in children]

    def get(self, name: str, default: Optional[Value] = None) -> Optional[Value]:
        """The value of an attribute."""
        text = self.attributes.get(name)
        return default if text is None else value_of(name, text)

    def __getitem__(self, name: str) -> Union[Value, "Element"]:
        """An attribute or a child by its full name, or a member by that of its field. KeyError if there is none."""
        if name in self.attributes:
            return value_of(name, self.attributes[name])
        found = self.child(name) or self.child(f"{self.name}.{name}")
        if found is None:
            raise KeyError(name)
        return found

    def __contains__(self, name: str) -> bool:
        return name in self.attributes or any(child.name in (name, f"{self.name}.{name}") for child in self.children)

    def __getattr__(self, name: str) -> Union[Value, "Element"]:
        if name.startswith("__"):
            raise AttributeError(name)
        try:
            return self[name]
        except KeyError:
            raise AttributeError(f"{self.name} has no {name}") from None

    def __dir__(self) -> List[str]:
        short = [child.name.rpartition(".")[2] for child in self.children]
        return sorted({*super().__dir__(), *self.attributes, *short})

    def child(self, name: str) -> Optional["Element"]:
        """The first child of this name."""
        return next((child for child in self.children if child.name == name), None)

    def find(self, name: str) -> Iterator["Element"]:
        """All elements of this name that stand in it, in the log's order."""
        for element in self.walk():
            if element.name == name and element is not self:
                yield element

    def walk(self) -> Iterator["Element"]:
        """It and all that stands in it, in the log's order."""
        open_ones = [self]
        while open_ones:
            element = open_ones.pop()
            yield element
            open_ones.extend(reversed(element.children))

    def __repr__(self) -> str:
        return f"<{self.name} at line {self.line}, {len(self.children)} children>"
