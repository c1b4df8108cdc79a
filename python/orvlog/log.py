"""Logs, their pages and their calls."""

from __future__ import annotations

import os
from typing import Any, Iterator, List, NamedTuple, Optional, Tuple, Union

from . import _native
from .elements import Element
from .images import Image, images_of
from .paths import Path, paths_of

_LAST = 0xFFFFFFFF


class Damage(NamedTuple):
    """A place where a log isn't as a log should be."""

    line: int
    byte: int
    text: str


class Comment(NamedTuple):
    """A comment, of the client's or a warning of the logger's."""

    line: int
    text: str
    warning: bool


class Call(Element):
    """A call of the drawing interface, with what can be said of it in short."""

    __slots__ = ("kind", "page", "box", "operator", "colour", "text", "_log")

    def __init__(self, log: "Log", found: Tuple[Any, ...]) -> None:
        tree, page, box, operator, colour, text = found
        super().__init__(tree)
        self._log = log
        #: the name without "ORV_"
        self.kind: str = self.name[4:]
        #: from 1; 0 for what isn't on a page
        self.page: int = page
        #: what it paints, in pixels: minimum x, minimum y, maximum x, maximum y; None if the log doesn't tell
        self.box: Optional[Tuple[float, float, float, float]] = box
        #: "source-over", "multiply/mask-in"; "" for none
        self.operator: str = operator
        #: "rgb(1 0 0)", "image 40x40 rgb 8 bits"; "" for none
        self.colour: str = colour
        #: what the text of the call says
        self.text: str = text

    @property
    def address(self) -> str:
        """As all commands take it: the id of a paint, or line:N."""
        return self.attributes.get("id", f"line:{self.line}")

    def images(self) -> List[Image]:
        """The images that it brings, with the bytes that the log, or a file beside it, has of them."""
        return images_of(self, self._log.side_file)

    def paths(self) -> List[Path]:
        """Its own path, those of its clips, and of glyphs that are outlines, in the order of the log."""
        return paths_of(self)


class Page(NamedTuple):
    """A page: its place in the log, from 1, the client's number, its size in pixels, and its first call."""

    number: int
    face_seq_number: int
    width: int
    height: int
    start: Call


class Picture(NamedTuple):
    """A page that was drawn again: rows of red, green and blue, 8 bits each, and what couldn't be made again."""

    width: int
    height: int
    data: bytes
    complaints: List[str]

    def array(self) -> Any:
        """Height by width by 3: a NumPy array, or a memoryview where there is no NumPy."""
        view = memoryview(self.data).cast("B", (self.height, self.width, 3))
        try:
            import numpy
        except ImportError:
            return view
        return numpy.asarray(view)


class Log:
    """A log in a file. It is read anew by each of the methods, one call at a time: memory doesn't grow with it."""

    def __init__(self, path: Union[str, "os.PathLike[str]"]) -> None:
        self.path: str = os.fspath(path)
        self.damage: List[Damage] = []
        self.comments: List[Comment] = []
        self.is_cut = False
        reader = _native.Reader(self.path, 1, _LAST, False)
        reader.next()
        #: the element ORV: versions and modes
        self.root: Element = Element(reader.root())

    def __enter__(self) -> "Log":
        return self

    def __exit__(self, *_: object) -> None:
        pass

    def calls(self, page: Optional[int] = None, data: bool = True) -> Iterator[Call]:
        """The calls in order; those of one page, without the rest of a repacked log. Without `data` the bytes of images
        and glyphs are left out, which is quicker.

        Once all have been had, `damage`, `comments` and `is_cut` tell of what was read.
        """
        if page is not None and not 1 <= page < _LAST:
            raise ValueError(f"pages count from 1: {page}")
        reader = _native.Reader(self.path, page or 1, page or _LAST, data)
        while (found := reader.next()) is not None:
            if found[0][0].startswith("ORV_") and (page is None or found[1] == page):
                yield Call(self, found)
        self.damage = [Damage(*one) for one in reader.damage()]
        self.comments = [Comment(*one) for one in reader.comments()]
        self.is_cut = reader.is_cut()

    def call(self, address: Union[int, str]) -> Call:
        """The call of an address: the id of a paint, or "line:N". KeyError if there is none."""
        for call in self.calls():
            if call.address == str(address) or f"line:{call.line}" == address:
                return call
        raise KeyError(address)

    def pages(self) -> Iterator[Page]:
        """All pages in order."""
        for call in self.calls(data=False):
            if call.kind == "face_start":
                face = call.child("ORV_FaceProperties")
                size = [face.get(name) if face else 0 for name in ("fp_WidthInPixels", "fp_HeightInPixels")]
                yield Page(call.page, _whole(call.get("face_seq_number")), _whole(size[0]), _whole(size[1]), call)

    def draw(self, page: int, dpi: float = 0) -> Picture:
        """Draws a page from what the log has, in its own resolution or another one. LogError if there is none."""
        if not 1 <= page < _LAST or not 0 <= dpi <= 2400:
            raise ValueError(f"page {page} in {dpi} dots to the inch")
        return Picture(*_native.replay_page(self.path, page, dpi))

    def side_file(self, name: str) -> bytes:
        """The bytes of a file beside the log that it names. LogError if it isn't there, or none that its job can have
        left."""
        return _native.side_file(self.path, name)


def _whole(value: object) -> int:
    return value if isinstance(value, int) else 0


def open(path: Union[str, "os.PathLike[str]"]) -> Log:  # pylint: disable=redefined-builtin
    """Opens a log, of whatever form. LogError if it is none."""
    return Log(path)
