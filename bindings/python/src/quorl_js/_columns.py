"""The lines of quorl-js --format columns as outlines."""
from __future__ import annotations

import base64
import json
import os
import sys
from itertools import repeat
from typing import Any, Dict, List, Optional

from ._model import Item, Omission, Outline

SCHEMA = 1


def outline_of(line: bytes) -> Outline:
    """Make an outline of the line of a file."""
    file: Dict[str, Any] = json.loads(line)
    path = os.fsdecode(_text_of(file, "path").encode("utf-8", "surrogateescape"))
    columns = file["items"]
    items = list(map(
        Item, repeat(path), columns["line"], columns["endLine"], map(sys.intern, columns["kind"]),
        _texts_of(columns, "name"), map(_intern, _texts_of(columns, "branchTypeAsString")),
        _texts_of(columns, "contents"), columns["nodeID"], columns["item"], columns["container"]))
    message = None if file["message"] is None else _text_of(file, "message")
    return Outline(path, file["status"], message, file["sourceBytes"],
                   [_omission_of(each) for each in file["omitted"] or ()], items)


def _text_of(members: Dict[str, Any], key: str) -> str:
    """Return the text, with bytes that are not UTF-8 as surrogate escapes."""
    exact = members.get(key + "Bytes")
    text: str = members[key] if exact is None else _decoded(exact)
    return text


def _texts_of(columns: Dict[str, Any], key: str) -> List[Any]:
    texts: List[Any] = columns[key]
    for position, exact in columns.get(key + "Bytes", {}).items():
        texts[int(position)] = _decoded(exact)
    return texts


def _decoded(exact: str) -> str:
    return base64.b64decode(exact).decode("utf-8", "surrogateescape")


def _intern(label: Optional[str]) -> Optional[str]:
    return None if label is None else sys.intern(label)


def _omission_of(omitted: Dict[str, Any]) -> Omission:
    return Omission(omitted["reason"], omitted["line"], omitted["lines"], omitted["lineCount"],
                    omitted["bytes"], omitted["byteCount"])
