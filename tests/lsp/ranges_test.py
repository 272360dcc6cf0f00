"""Every range of every answer is one that an editor takes, over real files.

usage: ranges_test.py SERVER FOLDER...
       ranges_test.py SERVER --packages CACHE

The files below the folders, or some thousand files of the packages that the check of outlines reads
too, which come from npm's registry. Each is opened in both encodings and asked for its symbols, its
folds and selections. Positions lie in the text, between characters; a range begins before its end; a
selection lies inside its range, a child inside its parent, a selection range inside its parent.
"""
import bisect
import os
import pathlib
import re
import sys

from lsp_client import Client

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "support"))
from npm_packages import fetch  # pylint: disable=wrong-import-position

LINE_END = re.compile("\r\n|\n|\r")
MAX_BYTES = 3_000_000
MIN_PACKAGE_FILES = 2_000
FILES_PER_PACKAGE = 150
WANTED = {".js", ".jsx", ".mjs", ".cjs", ".ts", ".tsx", ".html", ".htm", ".css", ".md", ".json",
          ".c", ".h", ".php"}
CAPABILITIES = {"textDocument": {
    "documentSymbol": {"hierarchicalDocumentSymbolSupport": True,
                       "symbolKind": {"valueSet": list(range(1, 27))}},
    "foldingRange": {"lineFoldingOnly": True}}}


class Text:
    """A text as an editor in that encoding has it."""

    def __init__(self, text, encoding):
        self.lines = LINE_END.split(text)
        self.codec = {"utf-8": "utf-8", "utf-16": "utf-16-le"}[encoding]
        self.unit = {"utf-8": 1, "utf-16": 2}[encoding]
        self.edges = {}

    def edges_of(self, line):
        """The places between characters, of a line that is not ASCII."""
        if line not in self.edges:
            edges, at = [0], 0
            for character in self.lines[line]:
                at += len(character.encode(self.codec)) // self.unit
                edges.append(at)
            self.edges[line] = edges
        return self.edges[line]

    def holds(self, position):
        line, character = position["line"], position["character"]
        if not 0 <= line < len(self.lines):
            return False
        if self.lines[line].isascii():
            return 0 <= character <= len(self.lines[line])
        edges = self.edges_of(line)
        at = bisect.bisect_left(edges, character)
        return at < len(edges) and edges[at] == character


def key(position):
    return position["line"], position["character"]


def is_inside(inner, outer):
    return key(outer["start"]) <= key(inner["start"]) and key(inner["end"]) <= key(outer["end"])


def range_faults(each, text):
    if not (text.holds(each["start"]) and text.holds(each["end"])):
        return ["outside of the text: %s" % each]
    return ["upside down: %s" % each] if key(each["start"]) > key(each["end"]) else []


def symbol_faults(symbols, text):
    faults, waiting = [], [(symbol, None) for symbol in symbols]
    while waiting:
        symbol, parent = waiting.pop()
        faults += range_faults(symbol["range"], text) + range_faults(symbol["selectionRange"], text)
        if not is_inside(symbol["selectionRange"], symbol["range"]):
            faults.append("selection outside of its range: %s" % symbol["name"])
        if parent and not is_inside(symbol["range"], parent["range"]):
            faults.append("%s outside of %s" % (symbol["name"], parent["name"]))
        if not symbol["name"].strip() or not 1 <= symbol["kind"] <= 26:
            faults.append("no name or kind: %s" % symbol)
        waiting += [(child, symbol) for child in symbol.get("children", [])]
    return faults


def fold_faults(folds, text):
    faults, last = [], -1
    for fold in folds:
        if not last < fold["startLine"] < fold["endLine"] < len(text.lines):
            faults.append("fold: %s behind line %d of %d" % (fold, last, len(text.lines)))
        last = fold["startLine"]
    return faults


def selection_faults(selections, positions, text):
    faults = []
    for selection, position in zip(selections, positions, strict=True):
        inner = {"start": position, "end": position}
        while selection:
            faults += range_faults(selection["range"], text)
            if not is_inside(inner, selection["range"]):
                faults.append("selection %s does not contain %s" % (selection["range"], inner))
            inner, selection = selection["range"], selection.get("parent")
    return faults


def positions_in(text):
    """A few places, at line ends and beginnings."""
    chosen = {0, len(text.lines) // 2, len(text.lines) - 1}
    found = []
    for line in sorted(chosen):
        size = len(text.lines[line].encode(text.codec)) // text.unit
        found += [{"line": line, "character": 0}, {"line": line, "character": size}]
    return found


def check_the_checks():
    """Each check must be able to fail."""
    text = Text("\U0001f600\nab", "utf-16")

    def span(*numbers):
        return {"start": {"line": numbers[0], "character": numbers[1]},
                "end": {"line": numbers[2], "character": numbers[3]}}

    def symbol(outer, inner, children=(), name="x"):
        return [{"name": name, "kind": 5, "range": outer, "selectionRange": inner,
                 "children": list(children)}]

    whole = span(0, 0, 1, 2)
    assert not symbol_faults(symbol(whole, span(0, 2, 0, 2)), text)
    for bad in [symbol(span(0, 1, 1, 0), span(1, 0, 1, 0)), symbol(whole, span(1, 2, 1, 3)),
                symbol(span(0, 0, 2, 0), whole), symbol(span(1, 1, 1, 2), whole),
                symbol(span(1, 2, 1, 0), span(1, 1, 1, 1)), symbol(whole, whole, name=" "),
                symbol(span(1, 0, 1, 1), span(1, 0, 1, 0), symbol(whole, whole))]:
        assert symbol_faults(bad, text), bad
    assert not fold_faults([{"startLine": 0, "endLine": 1}], text)
    for bad in [{"startLine": 0, "endLine": 0}, {"startLine": 1, "endLine": 2}]:
        assert fold_faults([bad], text), bad
    assert fold_faults([{"startLine": 0, "endLine": 1}] * 2, text)
    place = {"line": 1, "character": 1}
    assert not selection_faults([{"range": span(1, 0, 1, 2), "parent": {"range": whole}}], [place],
                                text)
    assert selection_faults([{"range": span(1, 0, 1, 0)}], [place], text)
    assert selection_faults([{"range": whole, "parent": {"range": span(1, 0, 1, 2)}}], [place], text)


def files_of(arguments):
    if arguments[0] != "--packages":
        return sorted(path for folder in arguments for path in pathlib.Path(folder).rglob("*")
                      if path.is_file())
    cache = pathlib.Path(arguments[1])
    cache.mkdir(parents=True, exist_ok=True)
    paths = []
    for _, package in fetch(HERE.parent / "outline_check" / "packages.txt", cache):
        wanted = sorted(path for path in package.rglob("*")
                        if path.suffix in WANTED and path.is_file())
        step = max(1, len(wanted) // FILES_PER_PACKAGE)
        paths += wanted[::step][:FILES_PER_PACKAGE]
    assert len(paths) >= MIN_PACKAGE_FILES, len(paths)
    return paths


def check_file(path, encoding, client, count):
    text = path.read_bytes()[:MAX_BYTES].decode("utf-8", errors="replace")
    uri = "file://" + str(path.resolve())
    client.open(uri, text, path.suffix)
    seen = Text(text, encoding)
    positions = positions_in(seen)
    symbols = client.about("documentSymbol", uri)
    folds = client.about("foldingRange", uri)
    count["symbols"] += len(symbols)
    count["folds"] += len(folds)
    faults = (symbol_faults(symbols, seen) + fold_faults(folds, seen) +
              selection_faults(client.about("selectionRange", uri, positions=positions), positions,
                               seen))
    client.notify("textDocument/didClose", {"textDocument": {"uri": uri}})
    return ["%s in %s: %s" % (path, encoding, fault) for fault in faults[:3]]


def main():
    check_the_checks()
    server, *arguments = sys.argv[1:]
    paths, faults = files_of(arguments), []
    count = {"symbols": 0, "folds": 0}
    for encoding in ("utf-8", "utf-16"):
        with Client([server, "lsp"]) as client:
            result = client.initialize({**CAPABILITIES, "general": {"positionEncodings": [encoding]}})
            assert result["capabilities"]["positionEncoding"] == encoding
            for path in paths:
                faults += check_file(path, encoding, client, count)
            faults += [note["params"]["message"] for note in client.notes]
            assert client.end() == 0
    assert min(count.values()) > len(paths) / 10, count
    print(*faults[:50], sep="\n", end="\n" if faults else "")
    print("%d files, in each encoding; %d uppermost symbols, %d folds; %d faults"
          % (len(paths), count["symbols"], count["folds"], len(faults)))
    return 1 if faults else 0


if __name__ == "__main__":
    os.environ.setdefault("LC_ALL", "C.UTF-8")
    sys.exit(main())
