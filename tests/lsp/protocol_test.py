"""The protocol: life, texts, answers.

usage: protocol_test.py SERVER PLUGIN FOLDER

PLUGIN is the fragile plug-in, which logs each call; FOLDER is for files of the test.
"""
import pathlib
import re
import sys

import lsp_client
from lsp_client import Client, frame, replacement, uri_of

SERVER, PLUGIN, FOLDER = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
URI = "file:///somewhere/a.js"
TREE = {"textDocument": {"documentSymbol": {"hierarchicalDocumentSymbolSupport": True}}}
UTF8 = {**TREE, "general": {"positionEncodings": ["utf-16", "utf-8"]}}


def client(*options, **more):
    return Client([SERVER, "lsp", *options], **more)


def place(line, character):
    return {"line": line, "character": character}


def span(first, last):
    return {"start": place(*first), "end": place(*last)}


def names(symbols):
    """A tree of symbols as nested lists: [name, child, ...]."""
    return [[each["name"], *names(each.get("children", []))] for each in symbols]


def test_life():
    with client() as one:
        assert one.error_of("textDocument/documentSymbol", {})["code"] == -32002
        one.notify("textDocument/didOpen", {})
        result = one.initialize()
        version = result["serverInfo"].pop("version")
        assert re.fullmatch(r"\d+\.\d+\.\d+", version), version
        assert result == {
            "capabilities": {
                "positionEncoding": "utf-16",
                "textDocumentSync": {"openClose": True, "change": 2, "save": True},
                "documentSymbolProvider": True, "foldingRangeProvider": True,
                "selectionRangeProvider": True, "workspaceSymbolProvider": True,
                "workspace": {"workspaceFolders": {"supported": True,
                                                   "changeNotifications": True}}},
            "serverInfo": {"name": "quorl-js"}}, result
        assert one.error_of("initialize", {})["code"] == -32600
        assert one.error_of("textDocument/hover", {}) == {
            "code": -32601, "message": "unknown method textDocument/hover"}
        assert one.error_of("$/unknown")["code"] == -32601
        one.notify("$/unknown")
        one.notify("workspace/didChangeConfiguration", {"settings": {}})
        one.notify("textDocument/didSave", {"textDocument": {"uri": URI}})
        assert one.request("shutdown") is None
        assert one.error_of("textDocument/documentSymbol", {})["code"] == -32600
        one.notify("exit")
        assert one.process.wait(60) == 0
        assert one.errors() == "" and not one.notes, one.notes


def test_exit_status():
    with client() as one:
        one.notify("exit")
        assert one.process.wait(60) == 1
    with client() as one:
        one.initialize()
        one.notify("exit")
        assert one.process.wait(60) == 1
    with client() as one:
        one.initialize()
        one.process.stdin.close()
        assert one.process.wait(60) == 1


def test_broken_messages():
    with client() as one:
        one.initialize()
        for data, code, number in [
                (b"Content-Length: x\r\n\r\n", -32700, None),
                (b"hello\r\n\r\n", -32700, None),
                (frame(b"{"), -32700, None), (frame(b""), -32700, None),
                (frame(b"[]"), -32600, None), (frame(b"1"), -32600, None),
                (frame(b"{}"), -32600, None), (frame({"id": 7}), -32600, 7),
                (frame({"id": 8, "method": 1}), -32600, 8),
                (frame({"id": [], "method": "shutdown"}), -32600, None),
                (frame({"id": "s", "method": "no"}), -32601, "s"),
                (frame({"id": 9, "method": "textDocument/documentSymbol"}), -32602, 9),
                (frame({"id": 9, "method": "textDocument/documentSymbol",
                        "params": {"textDocument": {"uri": "untitled:no"}}}), -32602, 9),
                (frame({"id": 9, "method": "textDocument/selectionRange",
                        "params": {"textDocument": {"uri": URI}}}), -32602, 9),
                (frame({"id": 9, "method": "workspace/symbol"}), -32602, 9)]:
            one.send_bytes(data)
            answer = one.read()
            assert (answer["error"]["code"], answer["id"]) == (code, number), (data, answer)
        for params in [None, [], {}, {"textDocument": 1}, {"textDocument": {"uri": 1, "text": 2}}]:
            for method in ("didOpen", "didChange", "didClose", "didSave"):
                one.notify("textDocument/" + method, params)
        one.open(URI, "let a;")
        one.change(URI, 1, {}, {"text": 1}, {"range": {}, "text": "x"}, {"range": None, "text": "y"})
        assert names(one.about("documentSymbol", URI)) == [["a"]]
        assert one.end() == 0


def test_pieces():
    """A message may come byte by byte, and many may come at once."""
    with client() as one:
        one.initialize(TREE)
        for byte in Client.notification("textDocument/didOpen", {"textDocument": {
                "uri": URI, "languageId": "javascript", "version": 1, "text": "let a;\n"}}):
            one.send_bytes(bytes([byte]))
        assert names(one.about("documentSymbol", URI)) == [["a"]]


SCRIPT = """import {
  x,
} from 'x';

/**
 * About A.
 */
class A {
  constructor() {
    this.b = 1;
  }
  get c() { return this.b; }
}
const f = () => {
  if (x) {
    x();
  } else {
    f();
  }
};
"""


def test_symbols():
    with client() as one:
        one.initialize(TREE)
        one.open(URI, SCRIPT)
        symbols = one.about("documentSymbol", URI)
        assert symbols == [
            {"name": "A", "kind": 5, "range": span((7, 0), (12, 1)),
             "selectionRange": span((7, 6), (7, 7)), "children": [
                 {"name": "constructor", "kind": 9, "range": span((8, 2), (10, 3)),
                  "selectionRange": span((8, 2), (8, 13))},
                 {"name": "c", "kind": 6, "range": span((11, 2), (11, 28)),
                  "selectionRange": span((11, 6), (11, 7))}]},
            {"name": "f", "kind": 12, "range": span((13, 0), (19, 2)),
             "selectionRange": span((13, 6), (13, 7))}], symbols
    with client() as one:
        one.initialize()
        one.open(URI, SCRIPT)
        assert [(each["name"], each["kind"], each.get("containerName"), each["location"])
                for each in one.about("documentSymbol", URI)] == [
                    ("A", 5, None, {"uri": URI, "range": span((7, 0), (12, 1))}),
                    ("constructor", 9, "A", {"uri": URI, "range": span((8, 2), (10, 3))}),
                    ("c", 6, "A", {"uri": URI, "range": span((11, 2), (11, 28))}),
                    ("f", 12, None, {"uri": URI, "range": span((13, 0), (19, 2))})]
    with client() as one:
        one.initialize(TREE, initializationOptions={"imports": True})
        one.open(URI, SCRIPT)
        assert [each["kind"] for each in one.about("documentSymbol", URI)] == [2, 5, 12]


def test_folds():
    with client() as one:
        one.initialize({"textDocument": {"foldingRange": {"lineFoldingOnly": True}}})
        one.open(URI, SCRIPT)
        assert one.about("foldingRange", URI) == [
            {"startLine": 0, "endLine": 2, "kind": "imports"},
            {"startLine": 4, "endLine": 6, "kind": "comment"},
            {"startLine": 7, "endLine": 11}, {"startLine": 8, "endLine": 9},
            {"startLine": 13, "endLine": 18}, {"startLine": 14, "endLine": 15},
            {"startLine": 16, "endLine": 17}]
    with client() as one:
        one.initialize({"textDocument": {"foldingRange": {"rangeLimit": 4}}})
        one.open(URI, SCRIPT)
        assert one.about("foldingRange", URI) == [
            {"startLine": 0, "startCharacter": 8, "endLine": 2, "kind": "imports"},
            {"startLine": 4, "startCharacter": 3, "endLine": 6, "kind": "comment"},
            {"startLine": 7, "startCharacter": 9, "endLine": 11},
            {"startLine": 13, "startCharacter": 17, "endLine": 18}]


def test_selections():
    with client() as one:
        one.initialize()
        one.open(URI, SCRIPT)
        found = one.about("selectionRange", URI, positions=[place(9, 6), place(3, 0)])
        ranges = []
        while found[0]:
            ranges.append(found[0]["range"])
            found[0] = found[0].get("parent")
        assert ranges == [span((9, 4), (9, 8)), span((9, 4), (9, 15)), span((8, 2), (10, 3)),
                          span((7, 0), (12, 1)), span((0, 0), (20, 0))], ranges
        assert found[1] == {"range": span((0, 0), (20, 0))}


def test_pages_and_other_texts():
    with client() as one:
        one.initialize(TREE)
        one.open("file:///a.html", "<html>\n<body>\n<script>\nfunction f() {\n}\n</script>\n"
                                   "<!-- a\n b -->\n<a href='x.css'>y</a>\n</body>\n</html>\n", "html")
        symbols = one.about("documentSymbol", "file:///a.html")
        assert names(symbols) == [["html", ["body", ["script", ["f"]], ["a", ["x.css"]]]]], symbols
        assert one.about("foldingRange", "file:///a.html")[-1] == {
            "startLine": 6, "startCharacter": 6, "endLine": 7, "kind": "comment"}
        one.open("file:///a.css", "/* a\n */\np {\n  color: red;\n}\n", "css")
        assert names(one.about("documentSymbol", "file:///a.css")) == [["p"]]
        assert one.about("foldingRange", "file:///a.css")[0] == {
            "startLine": 0, "startCharacter": 4, "endLine": 1, "kind": "comment"}


def test_broken_text():
    """A text that does not compile has an outline all the same."""
    with client() as one:
        one.initialize(TREE)
        one.open(URI, "function f() {\n  let = ;\n}}}\nclass {\nfunction g( {\n")
        assert ["f"] in names(one.about("documentSymbol", URI))
        one.open(URI, "")
        assert one.about("documentSymbol", URI) == []
        assert one.about("foldingRange", URI) == []
        assert one.about("selectionRange", URI, positions=[place(0, 0)]) == [
            {"range": span((0, 0), (0, 0))}]


def test_encodings():
    """A character outside the Basic Multilingual Plane counts two in UTF-16 and four in UTF-8."""
    text = "/*\U0001f600\u00e4*/ let a\u00e4b = 1; // \U0001f600\n"
    for capabilities, name, full in [(TREE, (12, 15), 26), (UTF8, (15, 19), 32)]:
        with client() as one:
            result = one.initialize(capabilities)
            encoding = "utf-8" if capabilities is UTF8 else "utf-16"
            assert result["capabilities"]["positionEncoding"] == encoding
            one.open(URI, text)
            found = one.about("documentSymbol", URI)[0]
            assert found["selectionRange"] == span((0, name[0]), (0, name[1])), found
            assert found["range"] == span((0, 0), (0, full)), found
            one.change(URI, replacement((0, name[0]), (0, name[1]), "\U0001f600"))
            one.change(URI, replacement((0, name[0] - 1), (0, name[0] - 1), " c,"))
            assert names(one.about("documentSymbol", URI)) == [["c"]]


def test_changes():
    with client() as one:
        one.initialize(TREE)
        one.open(URI, "let a;\n")
        steps = [([replacement((0, 4), (0, 5), "b")], [["b"]]),
                 ([{"text": "let c;"}], [["c"]]),
                 ([replacement((0, 6), (9, 0), "\nlet d;"), replacement((0, 4), (0, 5), "e")],
                  [["e"], ["d"]]),
                 ([{"text": "x"}, replacement((0, 0), (0, 1), "let f;")], [["f"]]),
                 ([replacement((0, 0), (0, 0), "")], [["f"]]),
                 ([{"text": "let a\ud83d = 1;\r\nlet g;"}, replacement((1, 4), (1, 5), "h")],
                  [["a\ufffd"], ["h"]])]
        for changes, expected in steps:
            one.change(URI, *changes)
            assert names(one.about("documentSymbol", URI)) == expected, (changes, expected)
        one.change("file:///not/open.js", {"text": "x"})
        one.notify("textDocument/didClose", {"textDocument": {"uri": URI}})
        assert one.error_of("textDocument/documentSymbol",
                            {"textDocument": {"uri": URI}})["code"] == -32602


def test_files_that_are_not_open():
    path = FOLDER / "not open.ts"
    path.write_text("class A<T> {\n}\n")
    with client("--max-size", "20") as one:
        one.initialize(TREE)
        assert names(one.about("documentSymbol", uri_of(path))) == [["A"]]
        path.write_text("class B {}\n")
        assert names(one.about("documentSymbol", uri_of(path))) == [["B"]]
        path.write_text("class C {} // and more\n")
        assert one.error_of("textDocument/documentSymbol",
                            {"textDocument": {"uri": uri_of(path)}})["code"] == -32602
        one.open(URI, "class C {} // and more\n")
        assert one.about("documentSymbol", URI) == []
        assert one.notes[-1]["params"] == {"type": 1, "message": URI + ": larger than 20 bytes "
                                                                       "(--max-size)"}


def test_languages():
    """The extension decides; for one that is no script or page, the language."""
    with client() as one:
        one.initialize(TREE)
        for uri, language, expected in [
                ("untitled:Untitled-1", "javascript", [["A", ["m"]]]),
                ("untitled:Untitled-2", "js", [["A", ["m"]]]),
                ("untitled:Untitled-3", "typescript", [["A", ["m"]]]),
                ("file:///Jakefile", "javascript", [["A", ["m"]]]),
                ("file:///a.mjs", "plaintext", [["A", ["m"]]])]:
            one.open(uri, "class A {\n  m() {\n  }\n}\n", language)
            assert names(one.about("documentSymbol", uri)) == expected, uri


def calls(log):
    return log.read_text().splitlines() if log.exists() else []


def test_parses():
    """One outline for all requests about a text, and for a batch of edits."""
    log = FOLDER / "calls"
    log.unlink(missing_ok=True)
    with client("--plugin", PLUGIN, env={"FRAGILE_PLUGIN_LOG": str(log)}) as one:
        one.initialize(TREE)
        one.open(URI, "let a;\n")
        assert calls(log) == []
        for method in ("documentSymbol", "foldingRange", "documentSymbol"):
            one.about(method, URI)
        one.about("selectionRange", URI, positions=[])
        assert len(calls(log)) == 1, calls(log)
        assert re.fullmatch(r"\d+ \S*/quorl-js-lsp-\w{6}/text\.js", calls(log)[0]), calls(log)
        edits = b"".join(Client.notification("textDocument/didChange", {
            "textDocument": {"uri": URI, "version": version},
            "contentChanges": [replacement((0, 4), (0, 4), "b")]}) for version in range(2, 102))
        one.send_bytes(edits)
        assert names(one.about("documentSymbol", URI)) == [["b" * 100 + "a"]]
        assert len(calls(log)) == 2, calls(log)
        assert one.end() == 0


def test_cancelled_requests():
    with client("--plugin", PLUGIN, "--timeout", "2") as one:
        one.initialize(TREE)
        one.open(URI, "// MISDEED hang\n")
        first = one.begin("textDocument/documentSymbol", {"textDocument": {"uri": URI}})
        second = one.begin("textDocument/foldingRange", {"textDocument": {"uri": URI}})
        one.notify("$/cancelRequest", {"id": second})
        assert one.read() == {"jsonrpc": "2.0", "id": second,
                              "error": {"code": -32800, "message": "cancelled"}}
        one.notify("$/cancelRequest", {"id": second})
        one.notify("$/cancelRequest", {"id": "unknown"})
        one.notify("$/cancelRequest", {})
        assert one.answer_to(first)["result"] == []
        assert one.end() == 0


def test_trace():
    trace = FOLDER / "trace"
    with client("--trace", str(trace), "--stdio") as one:
        one.initialize()
        assert one.end() == 0
    text = trace.read_text()
    heads = re.findall(r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z (from|to) client, (\d+) bytes\n(.*)\n$",
                       text, re.M)
    assert [head[0] for head in heads] == ["from", "to", "from", "from", "to", "from"], text
    assert all(len(body) == int(size) for _, size, body in heads), text
    assert trace.stat().st_mode & 0o777 == 0o600
    with client("--trace", str(FOLDER / "no" / "trace")) as one:
        assert one.process.wait(60) == 2
        assert one.errors() == "quorl-js: %s/no/trace: No such file or directory\n" % FOLDER


def test_usage():
    for arguments, error in [
            (["x"], "unexpected argument x; see quorl-js lsp --help"),
            (["--bogus"], "unknown option --bogus; see quorl-js lsp --help"),
            (["--timeout", "x"], "--timeout: invalid value 'x'; use seconds such as 30 or 2.5, or 0 "
                                 "for no limit"),
            (["--max-size", "x"], "--max-size: invalid value 'x'; use a size such as 64M or 2GiB, "
                                  "or 0 for no limit")]:
        with client(*arguments) as one:
            assert one.process.wait(60) == 2
            assert one.errors() == "quorl-js: %s\n" % error
    with client("--help") as one:
        assert one.process.wait(60) == 0
        assert one.process.stdout.read().startswith(b"Usage: quorl-js lsp [OPTION]...\n")


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    lsp_client.run_tests(globals())


if __name__ == "__main__":
    main()
