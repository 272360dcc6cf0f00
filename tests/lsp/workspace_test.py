"""The search over the workspace: scan, progress, changes.

usage: workspace_test.py SERVER PLUGIN FOLDER
"""
import pathlib
import shutil
import subprocess
import sys
import time

import lsp_client
from lsp_client import Client, replacement, uri_of

SERVER, PLUGIN, FOLDER = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
PROGRESS = {"window": {"workDoneProgress": True},
            "workspace": {"didChangeWatchedFiles": {"dynamicRegistration": True}}}


def client(*options, **more):
    return Client([SERVER, "lsp", *options], **more)


def fresh(name, files):
    folder = FOLDER / name
    shutil.rmtree(folder, ignore_errors=True)
    for path, text in files.items():
        (folder / path).parent.mkdir(parents=True, exist_ok=True)
        (folder / path).write_text(text)
    return folder


def progress(message):
    return message["params"]["value"] if message.get("method") == "$/progress" else {}


def wait_for_scan(one):
    """Waits for the end of the scan, and returns its progress messages."""
    one.wait_for(lambda message: progress(message).get("kind") == "end")
    found = [progress(note) for note in one.notes if progress(note)]
    one.notes.clear()
    return found


def search(one, query):
    return [(each["name"], each["location"]["uri"].rpartition("/")[2])
            for each in one.request("workspace/symbol", {"query": query})]


def eventually(one, query, expected):
    """A change of a file is found a moment later."""
    for _ in range(3000):
        found = search(one, query)
        if found == expected:
            return
        time.sleep(0.01)
    raise AssertionError((found, expected))


def test_files_of_the_folders():
    folder = fresh("files", {
        "a.js": "function load() {\n}\nclass Loader {\n  reload() {\n  }\n}\n",
        "sub/b c.ts": "export function loadAll() {}\n",
        "page.html": "<div>\n<script>\nfunction loadPage() {\n}\n</script>\n</div>\n",
        "data.json": '{"load": {"x": 1}}\n',
        "lib.min.js": "function load1() {}\n",
        ".hidden/c.js": "function load2() {}\n",
        "node_modules/d/d.js": "function load3() {}\n",
        ".gitignore": "ignored.js\n", "ignored.js": "function load4() {}\n"})
    (folder / "binary.js").write_bytes(b"function load5() {}\0\n")
    subprocess.run(["git", "init", "-q", folder], check=True)
    with client() as one:
        one.initialize(PROGRESS, [folder])
        create = one.wait_for(lambda note: note.get("method") == "window/workDoneProgress/create")
        assert create["params"] == {"token": "quorl-js-scan"}
        register = one.wait_for(lambda note: note.get("method") == "client/registerCapability")
        assert register["params"]["registrations"] == [{
            "id": "workspace/didChangeWatchedFiles", "method": "workspace/didChangeWatchedFiles",
            "registerOptions": {"watchers": [{"globPattern": "**/*"}]}}]
        messages = wait_for_scan(one)
        assert messages[0] == {"kind": "begin", "title": "Reading the workspace",
                               "cancellable": True, "percentage": 0}
        assert messages[-1] == {"kind": "end", "message": "3 files"}, messages
        percentages = [each["percentage"] for each in messages[1:-1]]
        assert percentages == sorted(set(percentages)) and percentages[-1:] in ([], [100])
        assert search(one, "LOAD") == [("load", "a.js"), ("Loader", "a.js"),
                                       ("loadPage", "page.html"), ("loadAll", "b%20c.ts"),
                                       ("reload", "a.js")]
        (found,) = one.request("workspace/symbol", {"query": "reload"})
        assert found == {"name": "reload", "kind": 6, "containerName": "Loader", "location": {
            "uri": uri_of(folder / "a.js"),
            "range": {"start": {"line": 3, "character": 2},
                      "end": {"line": 3, "character": 8}}}}, found
        assert one.end() == 0


def test_older_clients():
    """Without folders there is a root; without progress there are no messages."""
    folder = fresh("older", {"a.js": "function one() {}\n"})
    for root in ({"rootUri": uri_of(folder)}, {"rootPath": str(folder)}):
        with client() as one:
            one.request("initialize", {"processId": None, "capabilities": {}, **root})
            one.notify("initialized", {})
            eventually(one, "one", [("one", "a.js")])
            assert one.notes == [] and one.end() == 0


def test_open_texts_count_before_files():
    folder = fresh("open", {"a.js": "function saved() {}\n", "b.js": "function other() {}\n"})
    uri = uri_of(folder / "a.js")
    with client() as one:
        one.initialize(PROGRESS, [folder])
        wait_for_scan(one)
        one.open(uri, "function unsaved() {}\n")
        one.open("untitled:x", "function untitled() {}\n")
        assert search(one, "saved") == [("unsaved", "a.js")]
        assert search(one, "untitled") == [("untitled", "untitled:x")]
        one.change(uri, replacement((0, 9), (0, 11), "is"))
        assert search(one, "saved") == [("issaved", "a.js")]
        one.notify("textDocument/didClose", {"textDocument": {"uri": uri}})
        assert search(one, "saved") == [("saved", "a.js")]
        assert one.end() == 0


def test_changes_of_files():
    folder = fresh("changes", {"a.js": "function a1() {}\n", "b.js": "function a2() {}\n"})
    with client() as one:
        one.initialize(PROGRESS, [folder])
        wait_for_scan(one)
        assert search(one, "a") == [("a1", "a.js"), ("a2", "b.js")]

        def change(name, kind):
            one.notify("workspace/didChangeWatchedFiles",
                       {"changes": [{"uri": uri_of(folder / name), "type": kind}]})

        (folder / "a.js").write_text("function a3() {}\n")
        change("a.js", 2)
        eventually(one, "a", [("a3", "a.js"), ("a2", "b.js")])
        (folder / "b.js").unlink()
        change("b.js", 3)
        eventually(one, "a", [("a3", "a.js")])
        (folder / "sub").mkdir()
        (folder / "sub" / "c.js").write_text("function a4() {}\n")
        change("sub", 1)
        eventually(one, "a", [("a3", "a.js"), ("a4", "c.js")])
        (folder / "a.js").write_text("function a5() {}\n")
        one.open(uri_of(folder / "a.js"), "function a6() {}\n")
        one.notify("textDocument/didSave", {"textDocument": {"uri": uri_of(folder / "a.js")}})
        one.notify("textDocument/didClose", {"textDocument": {"uri": uri_of(folder / "a.js")}})
        eventually(one, "a", [("a5", "a.js"), ("a4", "c.js")])
        assert one.end() == 0


def test_changes_of_folders():
    first = fresh("first", {"a.js": "function same() {}\n"})
    second = fresh("second", {"b.js": "function same() {}\n"})
    with client() as one:
        one.initialize(PROGRESS, [first])
        wait_for_scan(one)

        def change(added, removed):
            one.notify("workspace/didChangeWorkspaceFolders", {"event": {
                "added": [{"uri": uri_of(folder), "name": "x"} for folder in added],
                "removed": [{"uri": uri_of(folder), "name": "x"} for folder in removed]}})

        change([second], [])
        assert wait_for_scan(one)[-1] == {"kind": "end", "message": "1 file"}
        assert search(one, "same") == [("same", "a.js"), ("same", "b.js")]
        change([], [first])
        assert search(one, "same") == [("same", "b.js")]
        assert one.end() == 0


def test_bad_files_cost_themselves_alone():
    folder = fresh("bad", {"a.js": "function good1() {}\n",
                           "b.js": "function bad() {} // MISDEED crash\n",
                           "c.js": "function good2() {}\n"})
    with client("--plugin", PLUGIN) as one:
        one.initialize(PROGRESS, [folder])
        assert wait_for_scan(one)[-1]["message"] == "3 files"
        assert search(one, "") == [("good1", "a.js"), ("good2", "c.js")]
        assert one.end() == 0


def test_cancelled_scan():
    """It ends at once, with what was found by then; a worker in a file is not waited for."""
    folder = fresh("cancelled", {"a.js": "function first() {}\n",
                                 "b.js": "let b; // MISDEED hang\n", "c.js": "function last() {}\n"})
    with client("--plugin", PLUGIN, "--timeout", "2") as one:
        one.initialize(PROGRESS, [folder])
        one.wait_for(lambda message: progress(message).get("kind") == "report")
        one.notify("window/workDoneProgress/cancel", {"token": "another"})
        one.notify("window/workDoneProgress/cancel", {"token": "quorl-js-scan"})
        wait_for_scan(one)
        assert search(one, "") == [("first", "a.js")]
        assert one.end() == 0


def test_folder_that_is_not_there():
    with client() as one:
        one.initialize(PROGRESS, [FOLDER / "gone"])
        assert wait_for_scan(one)[-1] == {"kind": "end", "message": "0 files"}
        assert search(one, "") == [] and one.end() == 0


def test_requests_are_not_delayed():
    """The scan has a worker of its own."""
    folder = fresh("delay", {"a.js": "let a; // MISDEED hang\n"})
    with client("--plugin", PLUGIN, "--timeout", "0") as one:
        one.initialize(PROGRESS, [folder])
        one.open("file:///b.js", "let b;\n")
        assert [each["name"] for each in one.about("documentSymbol", "file:///b.js")] == ["b"]
        assert one.end() == 0


def build_index(folder):
    subprocess.run([SERVER, "index", "../code.index", "-q", "-r", "."], cwd=folder, check=True)


def test_an_index_instead_of_a_scan():
    folder = fresh("index/tree", {"a.js": "class View {\n  render() {\n  }\n}\n",
                                  "b.js": "let preview = 1;\n// x\nfunction view() {\n}\n"})
    build_index(folder)
    plugin = ("--plugin", PLUGIN)
    with client("--index", folder / "../code.index", *plugin) as one:
        one.initialize(PROGRESS, [folder])
        # Exact ones first, whatever their case; and what is open counts before its file.
        assert search(one, "view") == [("View", "a.js"), ("view", "b.js"), ("preview", "b.js")]
        found = one.request("workspace/symbol", {"query": "render"})
        assert found == [{"name": "render", "kind": 6, "containerName": "View", "location": {
            "uri": uri_of(folder / "a.js"),
            "range": {"start": {"line": 1, "character": 0},
                      "end": {"line": 1, "character": 0}}}}], found
        assert search(one, "100%") == []
        assert len(search(one, "")) == 4
        uri = uri_of(folder / "b.js")
        one.notify("textDocument/didOpen", {"textDocument": {
            "uri": uri, "languageId": "javascript", "version": 1, "text": "let viewed;\n"}})
        assert search(one, "view") == [("View", "a.js"), ("viewed", "b.js")]
        one.notify("textDocument/didClose", {"textDocument": {"uri": uri}})
        assert search(one, "preview") == [("preview", "b.js")]
        # The index is opened again when it has been replaced, and kept when what is there is none.
        (folder / "c.js").write_text("class Fresh {\n}\n")
        assert search(one, "fresh") == []
        build_index(folder)
        assert search(one, "fresh") == [("Fresh", "c.js")]
        index = folder / "../code.index"
        index.unlink()
        assert search(one, "fresh") == [("Fresh", "c.js")]
        index.write_text("no index")
        assert search(one, "fresh") == [("Fresh", "c.js")]
        index.unlink()
        (folder / "c.js").unlink()
        build_index(folder)
        assert search(one, "fresh") == []
        assert not [note for note in one.notes if progress(note)]
    done = subprocess.run([SERVER, "lsp", "--index", "gone.index"], check=False,
                          stdin=subprocess.DEVNULL, capture_output=True)
    assert done.returncode == 2 and done.stderr.endswith(b"gone.index: No such file or directory\n")


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    lsp_client.run_tests(globals())


if __name__ == "__main__":
    main()
