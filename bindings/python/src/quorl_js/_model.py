"""Outlines and their items.

Slots are written by hand, since dataclasses of Python 3.9 have none. Fields have no defaults, which
slots would not allow.
"""
from __future__ import annotations

from dataclasses import dataclass
from typing import List, Optional

from ._errors import OutlineError


@dataclass
class Item:
    """A definition, statement, branch or element of a source file.

    Text that is not UTF-8 holds its bytes as surrogate escapes: text.encode("utf-8",
    "surrogateescape") returns them.
    """

    __slots__ = ("path", "line", "end_line", "kind", "name", "label", "text", "record", "number",
                 "parent")

    path: str  # the file, as given
    line: int  # first line, from 1
    end_line: int  # last line
    kind: str  # "function", "class", "method", "statement" and so on
    name: str  # empty if it has none
    label: Optional[str]  # label of its record; None if it has no record, as a private method
    text: Optional[str]  # statement or tag without comments; None if it has no record
    record: Optional[int]  # nodeID of its record
    number: int  # its number in the outline, from 0
    parent: Optional[int]  # number of the innermost item that contains it

    @property
    def line_count(self) -> int:
        return self.end_line - self.line + 1


@dataclass
class Omission:
    """Text that an outline leaves out."""

    __slots__ = ("reason", "line", "lines", "line_count", "bytes", "byte_count")

    reason: str  # "long-lines", "open-comment" and so on
    line: int  # first line that is left out; for "stopped-early" the last one with a record
    lines: int  # how many lines are left out
    line_count: int  # lines of the file
    bytes: int  # how many bytes are left out
    byte_count: int  # bytes of the file


@dataclass
class Outline:
    """The items of one file, in the order of their first lines, the outer before the inner."""

    __slots__ = ("path", "status", "message", "source_bytes", "omissions", "items")

    path: str
    status: str  # "answered", "empty" for a file without a byte, or why the file was not read
    message: Optional[str]  # what went wrong
    source_bytes: int
    omissions: List[Omission]
    items: List[Item]

    def check(self) -> None:
        """Raise OutlineError unless the file was read."""
        if self.status not in ("answered", "empty"):
            raise OutlineError(self.status, self.message or "%s: %s" % (self.path, self.status))

    def children(self, item: Optional[Item] = None) -> List[Item]:
        """Return the items directly inside of item or, without one, the outermost items."""
        parent = None if item is None else item.number
        return [child for child in self.items if child.parent == parent]

    def at(self, line: int) -> List[Item]:
        """Return the items that contain the line, from the outermost to the innermost."""
        before = [item for item in self.items if item.line <= line]
        chain: List[Item] = []
        number = before[-1].number if before else None
        while number is not None:
            if self.items[number].end_line >= line:
                chain.append(self.items[number])
            number = self.items[number].parent
        return chain[::-1]
