"""What a broken module, a killed worker, client or server leave: answers, and nothing else.

usage: robustness_test.py SERVER PLUGIN FOLDER
"""
import itertools
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time

import lsp_client
from lsp_client import Client, frame, uri_of

SERVER, PLUGIN, FOLDER = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
TEMPORARY = FOLDER / "tmp"
LOG = FOLDER / "calls"
URI = "file:///somewhere/a.js"
FILLER = "// a comment of a line\n" * 1000  # a text so long is read on a second thread
ENVIRONMENT = {"TMPDIR": str(TEMPORARY), "FRAGILE_PLUGIN_LOG": str(LOG)}


def client(*options):
    return Client([SERVER, "lsp", "--plugin", PLUGIN, *options], env=ENVIRONMENT)


def about_symbols(one, text, uri=URI):
    one.open(uri, text)
    return [each["name"] for each in one.about("documentSymbol", uri)]


def messages(one):
    return [note["params"]["message"] for note in one.notes
            if note.get("method") == "window/logMessage"]


def left_over():
    return sorted(path.name for path in TEMPORARY.iterdir())


def children(process):
    path = pathlib.Path("/proc/%d/task/%d/children" % (process, process))
    return [int(word) for word in path.read_text().split()]


def is_alive(process):
    try:
        state = pathlib.Path("/proc/%d/stat" % process).read_text().rpartition(")")[2].split()[0]
    except FileNotFoundError:
        return False
    return state != "Z"


def wait_until(holds, what):
    """The promise is a second; a machine that is busy gets more."""
    for _ in range(1000):
        if holds():
            return
        time.sleep(0.01)
    raise AssertionError("still not: " + what)


def calls():
    return LOG.read_text().splitlines() if LOG.exists() else []


def test_misdeeds():
    """A file that kills its worker is parsed twice and answered with nothing."""
    crashed = URI + ": the plug-in crashed or ran out of memory"
    for word, filler in itertools.product(("crash", "throw", "spoil"), ("", FILLER)):
        LOG.unlink(missing_ok=True)
        with client() as one:
            one.initialize()
            assert about_symbols(one, "let a; // MISDEED %s\n" % word + filler) == []
            assert messages(one) == [crashed], one.notes
            assert len(calls()) == 2, calls()
            assert one.about("foldingRange", URI) == []
            assert len(calls()) == 2, calls()
            assert about_symbols(one, "let b;\n") == ["b"]
            assert one.end() == 0
            assert one.errors() == ""


def test_hang():
    """A file that takes too long is not tried again."""
    LOG.unlink(missing_ok=True)
    with client("--timeout", "0.2") as one:
        one.initialize()
        assert about_symbols(one, "let a; // MISDEED hang\n" + FILLER) == []
        assert messages(one) == [URI + ": it took longer than 0.2 s (--timeout)"], one.notes
        assert len(calls()) == 1, calls()
        assert about_symbols(one, "let b;\n") == ["b"]


def test_output_of_the_module():
    with client() as one:
        one.initialize()
        assert about_symbols(one, "let a; // MISDEED print\n") == ["a"]
        assert one.end() == 0
        assert one.process.stdout.read() == b"" and one.errors() == ""


def test_growth():
    """A worker that has grown is replaced; without growth it stays."""
    LOG.unlink(missing_ok=True)
    with client() as one:
        one.initialize()
        for text in ["let a;", "let b;", "let c; // MISDEED grow", "let d;"]:
            assert about_symbols(one, text) == [text[4]]
        workers = [line.split()[0] for line in calls()]
        assert workers[0] == workers[1] == workers[2] != workers[3], workers
        assert len(children(one.process.pid)) <= 2


def test_unusable_module():
    with Client([SERVER, "lsp", "--plugin", str(FOLDER / "gone.so")], env=ENVIRONMENT) as one:
        one.initialize()
        assert about_symbols(one, "let a;") == []
        shown = [note["params"] for note in one.notes if note["method"] == "window/showMessage"]
        assert len(shown) == 1 and shown[0]["type"] == 1, one.notes
        assert shown[0]["message"].startswith("cannot load the plug-in: "), shown
        assert about_symbols(one, "let b;") == []
        one.notify("workspace/didChangeWorkspaceFolders", {"event": {
            "added": [{"uri": uri_of(FOLDER), "name": "x"}], "removed": []}})
        assert one.request("workspace/symbol", {"query": ""}) == []
        assert len([note for note in one.notes if note["method"] == "window/showMessage"]) == 1
        assert one.end() == 0


def test_one_core():
    """A second thread changes no outline."""
    text = "".join("function f%d() {\n  return %d;\n}\n" % (i, i) for i in range(1000))
    cores = os.sched_getaffinity(0)
    expected = ["f%d" % i for i in range(1000)]
    for usable in ({min(cores)}, cores):
        os.sched_setaffinity(0, usable)
        try:
            one = client()
        finally:
            os.sched_setaffinity(0, cores)
        with one:
            one.initialize()
            for _ in range(5):
                assert about_symbols(one, text) == expected
            ends = [each["location"]["range"]["end"] for each in one.about("documentSymbol", URI)]
            assert ends == [{"line": 3 * i + 2, "character": 1} for i in range(1000)]


def busy_worker(one, filler=""):
    """Has a worker hang over a file, and returns the worker and the request."""
    LOG.unlink(missing_ok=True)
    one.open(URI, "let a; // MISDEED hang\n" + filler)
    number = one.begin("textDocument/documentSymbol", {"textDocument": {"uri": URI}})
    wait_until(lambda: len(calls()) == 1, "a call")
    return int(calls()[0].split()[0]), number


def test_killed_worker():
    """The file is tried again, since it may not have been its fault."""
    with client("--timeout", "0") as one:
        one.initialize()
        worker, number = busy_worker(one, FILLER)
        os.kill(worker, signal.SIGKILL)
        wait_until(lambda: len(calls()) == 2, "a second call")
        second = int(calls()[1].split()[0])
        assert second != worker
        os.kill(second, signal.SIGKILL)
        assert one.answer_to(number)["result"] == []
        assert about_symbols(one, "let b;\n") == ["b"]
        assert one.end() == 0
    assert left_over() == []


def test_stopped_worker():
    """Its own timer stands still, but not the server's."""
    with client("--timeout", "0.2") as one:
        one.initialize()
        worker, number = busy_worker(one)
        os.kill(worker, signal.SIGSTOP)
        assert one.answer_to(number)["result"] == []
        wait_until(lambda: not is_alive(worker), "the end of the worker")


def test_private_text():
    with client("--timeout", "0") as one:
        one.initialize()
        busy_worker(one)
        (directory,) = TEMPORARY.iterdir()
        assert directory.stat().st_mode & 0o777 == 0o700
        (file,) = directory.iterdir()
        assert file.name == "text.js" and file.stat().st_mode & 0o777 == 0o600
        assert file.read_text() == "let a; // MISDEED hang\n"
        one.notify("exit")
        assert one.process.wait(60) == 1
    assert left_over() == []


def test_killed_client():
    """The server of a client that is killed ends with its workers and files."""
    script = ("import os, sys, time\nsys.path.insert(0, %r)\nfrom lsp_client import Client\n"
              "one = Client(%r)\none.initialize()\none.open(%r, 'let a; // MISDEED hang')\n"
              "one.begin('textDocument/documentSymbol', {'textDocument': {'uri': %r}})\n"
              "print(one.process.pid, flush=True)\ntime.sleep(600)\n"
              % (str(pathlib.Path(__file__).parent),
                 [SERVER, "lsp", "--plugin", PLUGIN, "--timeout", "0"], URI, URI))
    LOG.unlink(missing_ok=True)
    with subprocess.Popen([sys.executable, "-c", script], stdout=subprocess.PIPE,
                          env=dict(os.environ, **ENVIRONMENT)) as owner:
        server = int(owner.stdout.readline())
        wait_until(lambda: len(calls()) == 1, "a call")
        worker = int(calls()[0].split()[0])
        owner.kill()
    wait_until(lambda: not is_alive(server) and not is_alive(worker), "the end of the server")
    assert left_over() == []


def test_ended_client_with_an_open_pipe():
    """The process that initialize names ends, though somebody else holds the server's input."""
    with subprocess.Popen(["sleep", "600"]) as other, client() as one:
        one.request("initialize", {"processId": other.pid, "capabilities": {}})
        other.kill()
        other.wait()
        assert one.process.wait(60) == 1
    assert left_over() == []


def test_signals():
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        with client("--timeout", "0") as one:
            one.initialize()
            worker, _ = busy_worker(one)
            one.process.send_signal(number)
            assert one.process.wait(60) == -number
            wait_until(lambda: not is_alive(worker), "the end of the worker")
        assert left_over() == []


def test_killed_server():
    """Its worker ends at once; its directory goes with the next start."""
    with client("--timeout", "0") as one:
        one.initialize()
        worker, _ = busy_worker(one)
        one.process.kill()
        one.process.wait()
        wait_until(lambda: not is_alive(worker), "the end of the worker")
    assert len(left_over()) == 1
    with client() as one:
        one.initialize()
        assert len(left_over()) == 1
        assert len(list(TEMPORARY.glob("*/*"))) == 0
        assert one.end() == 0
    assert left_over() == []


def test_full_pipes():
    """A client that writes much before it reads anything does not block the server for good."""
    text = "".join("function f%d() {\n}\n" % i for i in range(2000))
    with client() as one:
        one.initialize()
        one.open(URI, text)
        requests = [frame({"jsonrpc": "2.0", "id": "r%d" % i, "method": "textDocument/documentSymbol",
                           "params": {"textDocument": {"uri": URI}}}) for i in range(100)]
        one.send_bytes(b"".join(requests))
        one.send_bytes(frame({"jsonrpc": "2.0", "method": "$/filler", "params": ["x" * 1_000_000]}))
        for i in range(100):
            answer = one.read()
            assert answer["id"] == "r%d" % i and len(answer["result"]) == 2000
        assert one.end() == 0


def test_temporary_directory_that_is_not_there():
    with Client([SERVER, "lsp"], env={"TMPDIR": str(FOLDER / "none")}) as one:
        assert one.process.wait(60) == 2
        assert one.errors() == "quorl-js: temporary directory in %s/none: No such file or " \
                               "directory\n" % FOLDER


def test_deep_messages_and_texts():
    with client() as one:
        one.initialize()
        one.send_bytes(frame(b"[" * 1_000_000))
        assert one.read()["error"]["code"] == -32700
        one.send_bytes(frame(b"[" * 1_000_000 + b"]" * 1_000_000))
        assert one.read()["error"]["code"] == -32600
        names = about_symbols(one, "".join("function f%d() {\n" % i for i in range(20_000)))
        assert len(names) == 20_000 and one.end() == 0


def test_many_workspaces_of_one_user():
    """Servers that run side by side leave each other's directories alone."""
    with client() as one, client() as two:
        one.initialize()
        two.initialize(folders=[FOLDER])
        assert len(left_over()) == 2
        assert about_symbols(one, "let a;", uri_of(FOLDER / "x.js")) == ["a"]
        assert two.end() == 0
        assert len(left_over()) == 1
        assert one.end() == 0
    assert left_over() == []


def main():
    shutil.rmtree(FOLDER, ignore_errors=True)
    TEMPORARY.mkdir(parents=True)
    lsp_client.run_tests(globals())


if __name__ == "__main__":
    main()
