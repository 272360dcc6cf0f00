"""Indexes that quorl-js index has written."""
from __future__ import annotations

import os
import sqlite3
from types import TracebackType
from typing import Any, Dict, Iterable, Iterator, List, Optional, Tuple, Type, Union
from urllib.parse import quote

from ._errors import OutlineError
from ._model import Item
from ._program import StrOrBytesPath

_APPLICATION_ID = 0x514A5349  # "QJSI"
_FORMAT_VERSION = 1
_KIND_COUNT = 21
_NUMBER_BITS = 32  # below the file's id in the id of an item

_COUNT_TABLES = ("SELECT count(*) FROM sqlite_master "
                 "WHERE type = 'table' AND name IN ('file', 'item', 'label')")
_COLUMNS = ("SELECT item.id, file.path, item.line, item.more, item.kind, item.name, item.label, "
            "item.text, item.record, item.parent")
# SQLite takes the tables of a CROSS JOIN in this order.
_ITEMS_FIRST = " FROM item CROSS JOIN file ON file.id = item.id >> 32"
_FILES_FIRST = (" FROM file CROSS JOIN item ON item.id BETWEEN file.id << 32 "
                "AND (file.id << 32) + 4294967295")


def open_index(path: StrOrBytesPath) -> Index:
    """Open an index for reading.

    It takes no lock and writes nothing, so a writer may replace the file meanwhile; this one keeps
    what it has opened. Raises OutlineError for what is no index, and OSError for what is no file.
    """
    return Index(path)


class Index:
    """The items of a code base; see open_index(), which makes it. A context manager."""

    def __init__(self, path: StrOrBytesPath) -> None:
        self._path = os.fsdecode(path)
        with open(path, "rb"):  # for the error of the system, which SQLite's hides
            pass
        uri = "file:%s?mode=ro&immutable=1" % quote(os.fsencode(os.path.abspath(self._path)))
        self._database = sqlite3.connect(uri, uri=True, isolation_level=None)
        try:
            self._check()
            self._words: Dict[int, str] = dict(self._read("SELECT id, name FROM label"))
        except BaseException:
            self.close()
            raise
        self._kinds = {self._words[number]: number for number in range(1, _KIND_COUNT + 1)
                       if number in self._words}

    def __enter__(self) -> Index:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    def close(self) -> None:
        """Close the file. Nothing can be found any more."""
        self._database.close()

    def find(self, *, name: Optional[str] = None, kind: Union[str, Iterable[str], None] = None,
             path: Optional[StrOrBytesPath] = None, at: Optional[int] = None) -> Iterator[Item]:
        """Iterate over the items for which all conditions hold, by file and line.

        name  exactly this name
        kind  this kind, or one of several
        path  in this file or below this folder, as it was given to quorl-js index
        at    contains this line of the file path, from the outermost to the innermost item

        Raises ValueError for an unknown kind, and for at without path.
        """
        conditions: List[str] = []
        values: List[object] = []
        if name is not None:
            conditions.append("item.name = ?")
            values.append(_stored(name.encode("utf-8", "surrogateescape")))
        if kind is not None:
            kinds = [self._kind_number(word) for word in ([kind] if isinstance(kind, str) else kind)]
            conditions.append("item.kind IN (%s)" % ", ".join("?" * len(kinds)))
            values += kinds
        if at is not None:
            if path is None:
                raise ValueError("at needs a path")
            chain = self._chain(os.fsencode(path), at)
            conditions.append("item.id IN (%s)" % ", ".join("?" * len(chain)))
            values += chain
        elif path is not None:
            condition, limits = _in_path(os.fsencode(path))
            conditions.append(condition)
            values += limits
        tables = _FILES_FIRST if path is not None and name is None else _ITEMS_FIRST
        where = " WHERE " + " AND ".join(conditions) if conditions else ""
        rows = self._read("%s%s%s ORDER BY item.id" % (_COLUMNS, tables, where), values)
        return map(self._item, rows)

    def _check(self) -> None:
        for (number,) in self._read("PRAGMA application_id"):
            if number != _APPLICATION_ID:
                raise OutlineError("bad-index", "%s: not an index of quorl-js" % self._path)
        for (version,) in self._read("PRAGMA user_version"):
            if version != _FORMAT_VERSION:
                raise OutlineError("bad-index", "%s: has format %d, not %d"
                                   % (self._path, version, _FORMAT_VERSION))
        if [count for (count,) in self._read(_COUNT_TABLES)] != [3]:
            raise self._damage()

    def _read(self, statement: str, values: Iterable[object] = ()) -> Iterator[Any]:
        try:
            # Not "yield from", which closes the cursor when it is dropped, even of a closed index.
            for row in self._database.execute(statement, tuple(values)):
                yield row
        except sqlite3.ProgrammingError:  # the index was closed
            raise
        except sqlite3.DatabaseError as error:
            if "not a database" in str(error):
                raise OutlineError("bad-index",
                                   "%s: not an index of quorl-js" % self._path) from error
            raise self._damage() from error

    def _damage(self) -> OutlineError:
        return OutlineError("bad-index", "%s: damaged" % self._path)

    def _kind_number(self, word: str) -> int:
        if word not in self._kinds:
            raise ValueError("unknown kind %r; use one of %s" % (word, ", ".join(self._kinds)))
        return self._kinds[word]

    def _chain(self, path: bytes, line: int) -> List[int]:
        """Return the ids of the items that contain the line.

        Of the last item that begins no later than the line, itself or an item around it is the
        innermost.
        """
        chain: List[int] = []
        for (file,) in self._read("SELECT id FROM file WHERE path = ?", [_stored(path)]):
            first = file << _NUMBER_BITS
            last = first + (1 << _NUMBER_BITS)
            below = last  # parents come before their children, or this would not end
            rows = self._read("SELECT id, line + more, parent FROM item WHERE id BETWEEN ? AND ? "
                              "AND line <= ? ORDER BY id DESC LIMIT 1", [first, last - 1, line])
            while True:
                row = next(rows, None)
                if row is None:
                    break
                item, last_line, parent = row
                if item >= below:
                    raise self._damage()
                below = item
                if last_line >= line:
                    chain.append(item)
                rows = self._read("SELECT id, line + more, parent FROM item WHERE id = ?",
                                  [None if parent is None else first + parent])
        return chain

    def _word(self, number: int) -> str:
        if number not in self._words:
            raise self._damage()
        return self._words[number]

    def _item(self, row: Any) -> Item:
        number, path, line, more, kind, name, label, text, record, parent = row
        return Item(os.fsdecode(_bytes_of(path)), line, line + more, self._word(kind),
                    "" if name is None else _text_of(name),
                    None if label is None else self._word(label),
                    None if text is None else _text_of(text), record,
                    number & ((1 << _NUMBER_BITS) - 1), parent)


def _stored(text: bytes) -> Union[str, bytes]:
    """Return the text as an index stores it."""
    if b"\0" in text:
        return text
    try:
        return text.decode("utf-8")
    except UnicodeDecodeError:
        return text


def _text_of(value: Union[str, bytes]) -> str:
    return value if isinstance(value, str) else value.decode("utf-8", "surrogateescape")


def _bytes_of(value: Union[str, bytes]) -> bytes:
    return value if isinstance(value, bytes) else value.encode("utf-8")


def _in_path(path: bytes) -> Tuple[str, List[object]]:
    """Return the condition that a file is path or below it, and its values."""
    start = path.rstrip(b"/") + b"/"
    after = start[:-1] + b"0"  # the byte after the slash
    conditions = ["file.path = ?", "(file.path >= ? AND file.path < ?)"]
    # A path that is not UTF-8 is stored as BLOB, even below a folder that is.
    values: List[object] = [_stored(path), start, after]
    if isinstance(_stored(start), str):
        conditions.append(conditions[1])
        values += [_stored(start), _stored(after)]
    return "(%s)" % " OR ".join(conditions), values
