"""Finds and starts the program quorl-js."""
from __future__ import annotations

import fcntl
import os
import shutil
import subprocess
from pathlib import Path
from typing import IO, List, Optional, Union

from ._errors import OutlineError

StrOrBytesPath = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

NAME = "quorl-js"
_PIPE_BYTES = 1 << 20
_SECONDS_TO_END = 10  # more than the program takes to end its workers


def find_program(program: Optional[StrOrBytesPath] = None) -> str:
    """Return the path of quorl-js: the argument, else bin/quorl-js in this package, else on PATH."""
    if program is not None:
        return os.fsdecode(program)
    beside = Path(__file__).parent / "bin" / NAME
    found = str(beside) if os.access(beside, os.X_OK) else shutil.which(NAME)
    if found is None:
        raise OutlineError("no-program", "quorl-js: not found on PATH; install it or pass program=")
    return found


def start(program: str, arguments: List[bytes], errors: IO[bytes]) -> subprocess.Popen[bytes]:
    """Start the program with pipes for standard input and output."""
    try:
        process = subprocess.Popen([os.fsencode(program), *arguments], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=errors, bufsize=1 << 16)
    except OSError as error:
        raise OutlineError("no-program", "%s: %s" % (program, error.strerror)) from error
    # A larger pipe keeps the program busy while an outline is used: a tenth of the time of a long run.
    set_pipe_size = getattr(fcntl, "F_SETPIPE_SZ", None)  # Linux and Python 3.10
    if set_pipe_size is not None and process.stdout is not None:
        try:
            fcntl.fcntl(process.stdout.fileno(), set_pipe_size, _PIPE_BYTES)
        except OSError:  # beyond the user's limit
            pass
    return process


def end(process: subprocess.Popen[bytes], errors: IO[bytes]) -> None:
    """End the program and its workers, and wait until it is gone."""
    if process.poll() is None:
        process.terminate()
    for pipe in (process.stdin, process.stdout):
        if pipe is not None:
            try:
                pipe.close()
            except OSError:  # what it still held cannot be written any more
                pass
    try:
        process.wait(_SECONDS_TO_END)
    except subprocess.TimeoutExpired:  # SIGTERM may be blocked, which children inherit
        process.kill()
        process.wait()
    errors.close()
