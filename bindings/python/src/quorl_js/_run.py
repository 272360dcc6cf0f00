"""Runs of quorl-js over files and texts."""
from __future__ import annotations

import json
import os
import tempfile
import weakref
from types import TracebackType
from typing import IO, Any, Dict, Iterable, Iterator, List, Optional, Type, Union

from . import _columns, _program
from ._errors import OutlineError
from ._model import Outline
from ._program import StrOrBytesPath


def outline(path: StrOrBytesPath, *, defines: Iterable[str] = (), timeout: Optional[float] = None,
            program: Optional[StrOrBytesPath] = None) -> Outline:
    """Return the outline of a file.

    path     the file; its extension selects how the text is read
    defines  names for the record of defines
    timeout  seconds until the program gives up on the file (default: 60; 0 = never)
    program  path of quorl-js (default: the one in this package, else the one on PATH)

    Raises OutlineError if the file was not read.
    """
    with outline_many([path], jobs=1, defines=defines, timeout=timeout, program=program) as run:
        result = next(run)
    result.check()
    return result


def outline_text(name: StrOrBytesPath, text: Union[str, bytes], *, defines: Iterable[str] = (),
                 timeout: Optional[float] = None,
                 program: Optional[StrOrBytesPath] = None) -> Outline:
    """Return the outline of a text, such as the buffer of an editor.

    name  selects how the text is read, and stands in the outline. No such file has to exist.
    text  str is passed as UTF-8, surrogate escapes as the bytes they stand for

    The other arguments are those of outline(). Raises OutlineError if the text was not read.
    """
    source = text.encode("utf-8", "surrogateescape") if isinstance(text, str) else text
    arguments = [*_shared_arguments(defines, timeout), b"--stdin=" + _name_bytes(name)]
    with OutlineRun(program, arguments, [source]) as run:
        result = next(run)
    result.check()
    return result


def outline_many(paths: Iterable[StrOrBytesPath], *, jobs: Optional[int] = None,
                 defines: Iterable[str] = (), timeout: Optional[float] = None,
                 program: Optional[StrOrBytesPath] = None) -> OutlineRun:
    """Iterate over the outlines of many files, in the order of paths.

    jobs  number of files that are parsed in parallel (default: number of CPU cores)

    The other arguments are those of outline(). All of paths is read before the first outline comes.
    A file that was not read has its status in its outline, which Outline.check() raises. The result
    holds one outline at a time, and is a context manager: leaving it, closing it or dropping it ends
    the program.

    Raises OutlineError if the run fails.
    """
    arguments = [*_shared_arguments(defines, timeout), b"--files-from=-", b"--null"]
    if jobs is not None:
        arguments.append(b"--jobs=%d" % jobs)
    return OutlineRun(program, arguments, (_name_bytes(path) + b"\0" for path in paths))


class OutlineRun(Iterator[Outline]):
    """The outlines of a running program; see outline_many(), which makes it."""

    def __init__(self, program: Optional[StrOrBytesPath], arguments: List[bytes],
                 standard_input: Iterable[bytes]) -> None:
        # A file and not a pipe, so that the program never waits until its messages are read.
        self._errors: IO[bytes] = tempfile.TemporaryFile()
        try:
            self._process = _program.start(_program.find_program(program), arguments, self._errors)
        except BaseException:
            self._errors.close()
            raise
        assert self._process.stdout is not None
        self._lines = iter(self._process.stdout)
        self._end = weakref.finalize(self, _program.end, self._process, self._errors)
        try:
            self._write(standard_input)
            self._read_header()
        except BaseException:
            self.close()
            raise

    def __next__(self) -> Outline:
        if not self._end.alive:
            raise StopIteration
        try:
            return self._read_file()
        except BaseException:
            self.close()
            raise

    def __enter__(self) -> OutlineRun:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    def close(self) -> None:
        """End the program, and wait until it is gone. Further iteration stops."""
        self._end()

    def _write(self, standard_input: Iterable[bytes]) -> None:
        assert self._process.stdin is not None
        # The program reads all of its input before it writes anything, so this cannot block for ever.
        try:
            for part in standard_input:
                self._process.stdin.write(part)
            self._process.stdin.close()
        except BrokenPipeError:
            pass  # it has stopped early; what it says is more than that it has

    def _read_header(self) -> None:
        header = next(self._lines, None)
        if header is None:
            self._fail()
        else:
            members: Dict[str, Any] = json.loads(header)
            if members["schema"] != _columns.SCHEMA:
                raise OutlineError("run-failed", "quorl-js: writes format %s, not %s"
                                   % (members["schema"], _columns.SCHEMA))
            self._files_left: int = members["fileCount"]

    def _read_file(self) -> Outline:
        if self._files_left == 0:
            raise StopIteration
        line = next(self._lines, b"")
        if not line.endswith(b"\n"):
            self._fail()
        self._files_left -= 1
        return _columns.outline_of(line)

    def _fail(self) -> None:
        """Raise what the program says of its early end."""
        status = self._process.wait()
        self._errors.seek(0)
        said = self._errors.read().decode("utf-8", "surrogateescape").splitlines()
        if said:
            raise OutlineError("run-failed", said[-1])
        raise OutlineError("run-failed", "quorl-js: ended early, with exit status %d" % status)


def _shared_arguments(defines: Iterable[str], timeout: Optional[float]) -> List[bytes]:
    arguments = [b"--format=columns", b"--quiet", b"--no-progress"]
    arguments += [b"--defines=" + os.fsencode(define) for define in defines]
    if timeout is not None:
        arguments.append(b"--timeout=" + ("%.6f" % timeout).encode())
    return arguments


def _name_bytes(path: StrOrBytesPath) -> bytes:
    name = os.fsencode(path)
    if not name or b"\0" in name:
        raise ValueError("not a path: %r" % (path,))
    return name
