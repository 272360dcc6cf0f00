"""A client of the language server for tests: it speaks the protocol by itself, byte for byte."""
import json
import os
import pathlib
import select
import subprocess
import time
import urllib.parse

TIMEOUT = 60


def uri_of(path):
    return "file://" + urllib.parse.quote(str(path))


def frame(message):
    body = message if isinstance(message, bytes) else json.dumps(message).encode()
    return b"Content-Length: %d\r\n\r\n" % len(body) + body


class Client:
    """A server process. Keeps every message that is not an awaited answer in notes."""

    def __init__(self, command, env=None):
        self.process = subprocess.Popen([str(word) for word in command], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                        env=dict(os.environ, **(env or {})))
        self.received = b""
        self.notes = []
        self.count = 0
        self.arrived = 0.0  # when the last message was there, before its JSON was parsed

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for pipe in (self.process.stdin, self.process.stdout, self.process.stderr):
            pipe.close()

    def send_bytes(self, data):
        self.process.stdin.write(data)
        self.process.stdin.flush()

    def notify(self, method, params=None):
        self.send_bytes(self.notification(method, params))

    @staticmethod
    def notification(method, params=None):
        message = {"jsonrpc": "2.0", "method": method}
        if params is not None:
            message["params"] = params
        return frame(message)

    def begin(self, method, params=None):
        """Sends a request and returns its id."""
        self.count += 1
        message = {"jsonrpc": "2.0", "id": self.count, "method": method}
        if params is not None:
            message["params"] = params
        self.send_bytes(frame(message))
        return self.count

    def read(self, timeout=TIMEOUT):
        """The next message; None at the end of the server's output."""
        end = time.monotonic() + timeout
        while True:
            head, mark, rest = self.received.partition(b"\r\n\r\n")
            if mark:
                size = int(head.removeprefix(b"Content-Length: "))
                if len(rest) >= size:
                    self.received = rest[size:]
                    self.arrived = time.perf_counter()
                    return json.loads(rest[:size])
            ready, _, _ = select.select([self.process.stdout], [], [], max(0, end - time.monotonic()))
            if not ready:
                raise TimeoutError("no message from the server")
            data = os.read(self.process.stdout.fileno(), 1 << 20)
            if not data:
                return None
            self.received += data

    def answer_to(self, number, timeout=TIMEOUT):
        """The whole answer to a request. Requests of the server are answered with null."""
        while True:
            message = self.read(timeout)
            assert message is not None, "the server has ended: " + self.errors()
            if "method" not in message and message.get("id") == number:
                return message
            self.note(message)

    def note(self, message):
        self.notes.append(message)
        if "method" in message and "id" in message:
            self.send_bytes(frame({"jsonrpc": "2.0", "id": message["id"], "result": None}))

    def wait_for(self, wanted, timeout=TIMEOUT):
        """The first message that is wanted, now or later."""
        for message in self.notes:
            if wanted(message):
                return message
        while True:
            message = self.read(timeout)
            assert message is not None, "the server has ended: " + self.errors()
            self.note(message)
            if wanted(message):
                return message

    def request(self, method, params=None):
        answer = self.answer_to(self.begin(method, params))
        assert "error" not in answer, answer
        return answer["result"]

    def error_of(self, method, params=None):
        return self.answer_to(self.begin(method, params))["error"]

    def initialize(self, capabilities=None, folders=(), **more):
        params = {"processId": os.getpid(), "rootUri": None, "capabilities": capabilities or {},
                  "workspaceFolders": [{"uri": uri_of(folder), "name": pathlib.Path(folder).name}
                                       for folder in folders], **more}
        result = self.request("initialize", params)
        self.notify("initialized", {})
        return result

    def open(self, uri, text, language="javascript"):
        self.notify("textDocument/didOpen", {"textDocument": {
            "uri": uri, "languageId": language, "version": 1, "text": text}})

    def change(self, uri, *changes, version=2):
        self.notify("textDocument/didChange", {
            "textDocument": {"uri": uri, "version": version}, "contentChanges": list(changes)})

    def about(self, method, uri, **more):
        return self.request("textDocument/" + method, {"textDocument": {"uri": uri}, **more})

    def end(self):
        """Ends the session as the protocol wants it. Returns the exit status."""
        assert self.request("shutdown") is None
        self.notify("exit")
        return self.process.wait(TIMEOUT)

    def errors(self):
        self.process.wait(TIMEOUT)
        return self.process.stderr.read().decode(errors="replace")


def replacement(start, end, text):
    """A change of the text between two (line, character) pairs."""
    return {"range": {"start": {"line": start[0], "character": start[1]},
                      "end": {"line": end[0], "character": end[1]}}, "text": text}


def run_tests(module):
    """Runs the test functions of a script."""
    tests = [(name, test) for name, test in module.items() if name.startswith("test_")]
    assert tests
    for name, test in tests:
        print(name, flush=True)
        test()
    print("%d tests passed" % len(tests))
