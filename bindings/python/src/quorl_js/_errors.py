"""The exception of this package."""
from __future__ import annotations

from typing import Tuple, Type


class OutlineError(Exception):
    """There is no outline.

    status  why: the file's status ("failed", "crashed", "timed-out", "out-of-memory", "too-large" or
            "unreadable"), "no-program" if quorl-js cannot be started, "run-failed" if it stopped
            before the end, or "bad-index"
    message  what went wrong, in one line that names the file
    """

    __module__ = "quorl_js"  # the name that tracebacks show

    def __init__(self, status: str, message: str) -> None:
        super().__init__(message)
        self.status = status
        self.message = message

    # Exceptions are pickled by their args, which hold the message alone.
    def __reduce__(self) -> Tuple[Type[OutlineError], Tuple[str, str]]:
        return type(self), (self.status, self.message)
