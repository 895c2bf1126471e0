"""Value types of zetformula: the named tuples for geometric values and records, and
the marker for an input left at its descriptor default."""
from typing import NamedTuple


class Point(NamedTuple):
    x: float
    y: float


class Line(NamedTuple):
    """A line as the library holds it: angle ``a`` in radians and distance ``d``."""
    a: float
    d: float


class Circle(NamedTuple):
    cx: float
    cy: float
    r: float


class Rect(NamedTuple):
    cx: float
    cy: float
    w: float
    h: float
    angle: float


class Report(NamedTuple):
    """One ReportError call: level, source and text."""
    level: int
    source: str
    text: str


class Event(NamedTuple):
    """One PostEvent call."""
    code: int
    value: int


class _Default:
    """An input left at its descriptor default (as an input missing from a zet exec request)."""
    __slots__ = ()

    def __repr__(self):
        return "DEFAULT"

    def __reduce__(self):
        return "DEFAULT"


DEFAULT = _Default()
