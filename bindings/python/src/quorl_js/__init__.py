"""Outlines of source files: what is defined on which lines, and inside of what.

The package runs the program quorl-js, which parses each file in a process of its own, so no file can
crash or block your program.

    import quorl_js

    for item in quorl_js.outline("app.js").items:
        print(item.line, item.kind, item.name)
"""
from ._errors import OutlineError
from ._index import Index, open_index
from ._model import Item, Omission, Outline
from ._program import StrOrBytesPath
from ._run import OutlineRun, outline, outline_many, outline_text

__version__ = "1.0.0"

__all__ = [
    "Index",
    "Item",
    "Omission",
    "Outline",
    "OutlineError",
    "OutlineRun",
    "StrOrBytesPath",
    "open_index",
    "outline",
    "outline_many",
    "outline_text",
]
