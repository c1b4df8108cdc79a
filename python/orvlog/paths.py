"""Paths as arrays of points."""

from __future__ import annotations

import array
from typing import Any, List, NamedTuple

from .elements import Element

# The kind, the numbers of a segment, and where they stand.
_KINDS = {
    "GPA_StraightEdge": ("straight", 2, ("gvf_X", "gvf_Y")),
    "GPA_BezierEdge": ("bezier", 6, ("bs_StartTangent", "bs_EndTangent", "bs_EndPoint")),
    "GPA_QuadBezierEdge": ("quad-bezier", 4, ("qs_ControlPoint", "qs_EndPoint")),
    "GPA_StaircaseEdge": ("staircase", 2, ("ss_XOffset", "ss_YOffset")),
    "GPA_EllipticalEdge": ("elliptical", 5, ("es_XRadius", "es_YRadius", "es_AngleToXAxis", "es_EndPoint")),
}


class Edge(NamedTuple):
    """An edge: its kind, its start point, and a row for each segment, with the numbers that the record has.

    Straight: x, y. Bezier: three vectors, six numbers. Quad-bezier: two vectors. Staircase: two offsets. Elliptical: two
    radii, the angle, and a vector. docs/data-model.md tells what they mean; vectors lead from the point before.
    """

    kind: str
    start: Any
    segments: Any
    closed: bool


class Path:
    """A GPA_PathPointer."""

    def __init__(self, pointer: Element) -> None:
        self.element = pointer
        record = pointer.child("GPA_Path")
        starts = list(record.find("GGO_Point")) if record else []
        edges = [edge for edge in pointer.find("GPA_EdgePointer")]
        #: the edges, in order
        self.edges: List[Edge] = [_edge(start, edge) for start, edge in zip(starts, edges)]

    def points(self) -> Any:
        """All start points and the ends of all segments, in the path's own space: a row of x and y for each."""
        numbers: List[float] = []
        for edge in self.edges:
            x, y = _row(edge.start)
            numbers += [x, y]
            for row in _rows(edge.segments):
                x, y = x + row[-2], y + row[-1]
                numbers += [x, y]
        return _array(numbers, 2)


def paths_of(element: Element) -> List[Path]:
    """All paths that stand in an element."""
    return [Path(pointer) for pointer in element.find("GPA_PathPointer")]


def _array(numbers: List[float], width: int) -> Any:
    """Rows of doubles: a NumPy array, or a memoryview where there is no NumPy. Without rows, of zero rows."""
    try:
        import numpy
    except ImportError:
        view = memoryview(array.array("d", numbers))
        # A view of no rows can have no width.
        return view.cast("B").cast("d", (len(numbers) // width, width)) if numbers else view
    return numpy.array(numbers, dtype=numpy.float64).reshape(-1, width)


def _rows(table: Any) -> List[List[float]]:
    return [list(map(float, row)) for row in table.tolist()]


def _row(table: Any) -> List[float]:
    return _rows(table)[0]


def _numbers(element: Element, names: Any) -> List[float]:
    numbers: List[float] = []
    for name in names:
        value = element.get(name, 0.0)
        numbers += [float(one) for one in (value if isinstance(value, tuple) else (value,))
                    if isinstance(one, (int, float))]
    return numbers


def _edge(start: Element, pointer: Element) -> Edge:
    member = pointer.children[0] if pointer.children else pointer
    record = member.children[0] if member.children else member
    kind, width, names = _KINDS.get(record.name, ("unknown", 2, ()))
    holder = record.children[-1] if record.children else record
    rows = [_numbers(segment, names) for segment in holder.children if segment.name != "GPA_Edge"]
    # A segment of a damaged log may lack some.
    rows = [row for row in rows if len(row) == width]
    begin = _numbers(start, ("gpf_X", "gpf_Y"))
    head = record.child("GPA_Edge")
    closed = "GPA_SUBPATH_END_CLOSED" in (head.attributes.get("ed_EdgeFlag", "") if head else "")
    return Edge(kind, _array(begin if len(begin) == 2 else [0.0, 0.0], 2),
                _array([one for row in rows for one in row], width), closed)
