# SPDX-License-Identifier: MIT
"""Errors, and values that Python has no type of its own for."""

from typing import NamedTuple, Optional, Tuple


class Error(Exception):
    """What the library refuses, and where.

    text    what it says
    where   the functions that the error passed, innermost first
    source  the file, where there is one
    offset, line, column, path
            the place in a document that is read: bytes from its beginning, line and column from 1
            (of texts alone), the path of the node; None where they are not known
    """

    def __init__(self, text="", *, where=(), source=None, offset=None, line=None, column=None, path=None):
        super().__init__(text)
        self.text = text
        self.where: Tuple[str, ...] = tuple(where)
        self.source: Optional[str] = source
        self.offset: Optional[int] = offset
        self.line: Optional[int] = line
        self.column: Optional[int] = column
        self.path: Optional[str] = path

    def __str__(self):
        place = []
        if self.offset is not None:
            place.append(f"byte {self.offset}")
        if self.line is not None:
            place.append(f"line {self.line}, column {self.column}")
        if self.path:
            place.append(f"at {self.path}")
        parts = [self.source, ", ".join(place), self.text]
        return ": ".join(part for part in parts if part)

    def __reduce__(self):
        return _remake, (type(self), self.text, dict(self.__dict__))


def _remake(kind, text, state):
    error = kind(text)
    error.__dict__.update(state)
    return error


class LoadError(Error):
    """A document that cannot be read."""


class LimitError(Error):
    """Input that asks for more than `Limits` allows; the text names the limit to raise."""


class FileError(Error, OSError):
    """A file that cannot be opened, read or written; the text ends with the system's reason."""


class NotFoundError(Error, KeyError, IndexError):
    """A successor or attribute that is not there."""


class BusyError(Error, BufferError):
    """A change of a tree that is being read: by another thread, or through a memoryview."""


class NoMemoryError(Error, MemoryError):
    """Memory that the system does not have."""


class Long(int):
    """A whole number of 64 bits without sign that would fit 32 bits: a plain one is an Integer."""

    __slots__ = ()


class Char(int):
    """A code point; `str` gives the character.

    >>> str(vok.Char(65))
    'A'
    """

    __slots__ = ()

    def __str__(self):
        return chr(self) if 0 <= self < 0x110000 else "\ufffd"


class Float(float):
    """A real number of which documents keep 32 bits."""

    __slots__ = ()


class Date(float):
    """Seconds since 1970-01-01 UTC: a date that no `datetime` is exactly."""

    __slots__ = ()


class Quad(NamedTuple):
    """Four numbers of 32 bits without sign."""

    w0: int
    w1: int
    w2: int
    w3: int


class Link:
    """A link to another node of the document: a `Node`, its path, or None for one to nothing.

    >>> vok.Link("/total[0]").path
    '/total[0]'
    """

    __slots__ = ("target",)

    def __init__(self, target=None):
        self.target = target

    @property
    def path(self) -> Optional[str]:
        """The path of the target in its document."""
        return self.target if self.target is None or isinstance(self.target, str) else self.target.path

    def __eq__(self, other):
        return isinstance(other, Link) and self.path == other.path

    def __hash__(self):
        return hash(self.path)

    def __repr__(self):
        return f"Link({self.path!r})"


class Report(NamedTuple):
    """Where loading ended, and what of the document the tree does not hold: `Node.report`."""

    offset: int
    line: int
    column: int
    nodes: int
    path: str
    missing_bytes: int
    missing_nodes: int
    bytes_left: int
    dropped_texts: int
    kept_references: int
    reordered: int
    comments: int
    instructions: int
    rounded: int

    @property
    def complete(self) -> bool:
        """Whether the document had all that it announced, and nothing behind it."""
        return not (self.missing_bytes or self.missing_nodes or self.bytes_left)


class Difference(NamedTuple):
    """One difference of two trees, as `diff` gives it. A side where there is nothing is None."""

    what: str  # "only in A", "only in B", "name", "type", "value", "attribute", "moved"
    path: str
    attribute: Optional[str]
    a: Optional["Node"]  # noqa: F821
    b: Optional["Node"]  # noqa: F821
    path_b: Optional[str]


class Conflict(NamedTuple):
    """What two sides of a merge made of one node, as `merge` gives it."""

    path: str
    attribute: Optional[str]
    did_a: str  # "changed", "changed below", "removed", "moved", "inserted"
    did_b: str
