"""The images of a call, with their pixels."""

from __future__ import annotations

import functools
from typing import Any, Callable, Dict, List, Optional, Tuple

from .elements import Element

_BITS = (1, 2, 4, 8, 16, 32)
_FAMILIES = {"GCM_CSF_GRAY": 1, "GCM_CSF_RGB": 3, "GCM_CSF_CMYK": 4}
_HAS_ALPHA, _INDEXED, _BIG_ENDIAN = 0x4, 0x2, 0x8000
_LARGEST_ROW = 0x7FFFFFFF


class Image:
    """An image operand, and the bytes that were read of it: the pass that delivered most."""

    def __init__(self, operand: Element, data: bytes) -> None:
        #: the GOP_OperandImagePointer
        self.operand = operand
        self.data = data
        record = operand.child("GOP_OperandImage")
        head = record.child("GOP_Operand") if record else None
        self._flags = _whole(record, "im_Flags")
        self.id: int = _whole(operand, "Id")
        self.width: int = _whole(record, "im_ImageWidthPixels")
        self.height: int = _whole(record, "im_ImageHeightPixels")
        #: bits of a channel; 32 are floats
        self.depth: int = _BITS[_whole(head, "go_Count")] if 0 <= _whole(head, "go_Count") < len(_BITS) else 0
        self.indexed: bool = bool(self._flags & _INDEXED)
        self.has_alpha: bool = bool(self._flags & _HAS_ALPHA) and not self.indexed
        #: 0: all channels of a pixel side by side; 1: a plane for each; above: a compressed stream
        self.encoding: int = _whole(record, "im_ImageEncoding")
        #: of a pixel, alpha with them; 0 if they can't be told
        self.channels: int = 1 if self.indexed else self._channels(record, head)

    def _channels(self, record: Optional[Element], head: Optional[Element]) -> int:
        space = head.get("go_ColorInfo.GOP_OperandColorSpace") if head else None
        count = 0
        if space == "GOP_OCS_INPUT" and head is not None:
            count = _FAMILIES.get(str(head.get("go_ColorSpaceFamily")), 0)
        elif space == "GOP_OCS_OTHER":
            pointer = self.operand.child("GCM_CsdPointer")
            csd = pointer.child("GCM_Csd") if pointer else None
            count = _whole(csd, "csd_NumBaseChans") + _whole(csd, "csd_NumNamedChans")
        elif space == "GOP_OCS_RENDER":
            count = _whole(record, "im_NumNonalphaChans")
        return count + int(self.has_alpha) if count else 0

    def array(self) -> Any:
        """Height by width by channels, alpha last: bytes, words of 16 bits, or floats; samples of fewer bits have a byte
        each, an indexed image its indices. Rows that the log doesn't have are missing. A NumPy array, or a memoryview
        where there is no NumPy. ValueError for compressed streams and for what has no size.
        """
        if self.encoding > 1 or not self.depth or not self.channels or not self.width:
            raise ValueError(f"image {self.id} is not made of pixels")
        planes = self.channels if self.encoding == 1 else 1
        samples = self.width * (self.channels // planes)
        row_size = (samples * self.depth + 7) // 8
        if row_size > _LARGEST_ROW:
            raise ValueError(f"image {self.id} has rows of {row_size} bytes")
        rows = min(self.height, len(self.data) // row_size // planes)
        data = self.data[:rows * planes * row_size]
        if self.depth < 8:
            data = b"".join(_unpack(data[at:at + row_size], self.depth, samples)
                            for at in range(0, len(data), row_size))
        return self._shaped(data, rows, planes)

    def _shaped(self, data: bytes, rows: int, planes: int) -> Any:
        big = bool(self._flags & _BIG_ENDIAN)
        try:
            import numpy
        except ImportError:
            return self._view(data, rows, planes)
        form = {16: ">u2" if big else "<u2", 32: ">f4" if big else "<f4"}.get(self.depth, "u1")
        flat = numpy.frombuffer(data, dtype=form)
        flat = flat.astype(flat.dtype.newbyteorder("="))
        if planes > 1:
            return flat.reshape(rows, planes, self.width).transpose(0, 2, 1)
        return flat.reshape(rows, self.width, self.channels)

    def _view(self, data: bytes, rows: int, planes: int) -> memoryview:
        form, size = {16: ("H", 2), 32: ("f", 4)}.get(self.depth, ("B", 1))
        if planes > 1:
            row = self.width * size
            data = b"".join(data[(line * planes + plane) * row + x * size:][:size] for line in range(rows)
                            for x in range(self.width) for plane in range(planes))
        if not data:
            return memoryview(b"")
        return memoryview(data).cast("B").cast(form, (rows, self.width, self.channels))

    def __repr__(self) -> str:
        return f"<image {self.id}, {self.width} by {self.height}, {self.channels} channels of {self.depth} bits>"


def images_of(call: Element, side_file: Optional[Callable[[str], bytes]] = None) -> List[Image]:
    """The images that a call brings. Bytes in files beside the log are fetched by `side_file`."""
    if side_file is not None:
        side_file = functools.lru_cache(maxsize=4)(side_file)
    operands = [element for element in call.walk() if element.name == "GOP_OperandImagePointer"]
    inner = {id(child) for element in call.walk() if element.name.startswith("GOP_Image") and element.name.endswith("Fn")
             for child in element.children}
    own = [operand for operand in operands if id(operand) not in inner]
    passes = _passes(call, side_file)
    return [Image(operand, _direct(operand, side_file) or passes.get(_whole(operand, "Id"), b"")) for operand in own]


def _whole(element: Optional[Element], name: str) -> int:
    value = element.get(name, 0) if element is not None else 0
    return value if isinstance(value, int) else 0


def _direct(operand: Element, side_file: Optional[Callable[[str], bytes]]) -> bytes:
    member = operand.child("imp_DirectImageData")
    if member is not None and member.children:
        return member.children[0].data or b""
    name = operand.get("imp_DirectImageFileName")
    return side_file(name) if isinstance(name, str) and name and side_file else b""


def _passes(call: Element, side_file: Optional[Callable[[str], bytes]]) -> Dict[int, bytes]:
    """By the Id of an image: the bytes of its fullest pass."""
    first: Dict[int, int] = {}
    found: Dict[int, List[bytes]] = {}
    places: Dict[Tuple[int, str], int] = {}
    best: Dict[int, bytes] = {}

    def close(image: int) -> None:
        data = b"".join(found.pop(image, []))
        if len(data) > len(best.get(image, b"")):
            best[image] = data

    for callback in call.walk():
        image = first.get(_whole(callback, "Id"), _whole(callback, "Id"))
        if callback.name == "GOP_ImagePrepareFn":
            close(image)
            after = callback.child("GOP_OperandImagePointer")
            first[_whole(after, "Id")] = image
        elif callback.name in ("GOP_ImageResetFn", "GOP_ImageFinishFn"):
            close(image)
        elif callback.name == "GOP_ImageReadFn":
            found.setdefault(image, []).append(_read(callback, image, places, side_file))
    for image in list(found):
        close(image)
    return best


def _read(callback: Element, image: int, places: Dict[Tuple[int, str], int],
          side_file: Optional[Callable[[str], bytes]]) -> bytes:
    name = callback.get("ImageFileName")
    if isinstance(name, str) and name and side_file:
        count = max(_whole(callback, "img_returned"), 0)
        begin = places.get((image, name), 0)
        places[image, name] = begin + count
        return side_file(name)[begin:begin + count]
    buffer = callback.child("img_buf")
    return (buffer.children[0].data or b"") if buffer is not None and buffer.children else b""


def _unpack(row: bytes, depth: int, count: int) -> bytes:
    mask = (1 << depth) - 1
    shifts = range(8 - depth, -1, -depth)
    return bytes(byte >> shift & mask for byte in row for shift in shifts)[:count]
