"""Measures the language server beside the native TypeScript server, in one run.

Both open the same real script; then, alternately, a character is typed or taken away and the outline
asked for. Edits are timed up to the last byte of the answer and, as "p50 parsed", up to its parsed
JSON, which takes this script half as long again. The peer comes from the npm registry, for Linux on
x86-64 only; elsewhere there is none.
"""
import os
import pathlib
import platform
import statistics
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path += [str(ROOT / "tests" / "lsp"), str(ROOT / "tests" / "support")]
from lsp_client import Client, replacement  # pylint: disable=wrong-import-position
from npm_packages import fetch  # pylint: disable=wrong-import-position

PACKAGES = ROOT / "bench" / "lsp_packages.txt"
STARTS = 20
CAPABILITIES = {"textDocument": {"documentSymbol": {"hierarchicalDocumentSymbolSupport": True}}}
HEADS = ["server", "start ms", "first answer ms", "p50 ms", "p95 ms", "p50 parsed", "cpu ms",
         "peak MB"]


def server_commands(cache, quorl_js):
    """Return (name, command) of each server, and the script's path."""
    folders = {folder.name: folder for _, folder in fetch(PACKAGES, cache)}
    commands = [("quorl-js lsp", [quorl_js, "lsp"])]
    if (platform.system(), platform.machine()) == ("Linux", "x86_64"):
        native = folders["native-preview-linux-x64"] / "lib" / "tsgo"
        native.chmod(0o755)
        commands.append(("TypeScript 7", [native, "--lsp", "--stdio"]))
    return commands, folders["codemirror"] / "lib" / "codemirror.js"


def processes_below(process):
    """The process and those that it has started."""
    found = [process]
    for each in found:
        try:
            for task in pathlib.Path("/proc/%d/task" % each).iterdir():
                found += map(int, (task / "children").read_text().split())
        except OSError:
            pass
    return found


def memory_of(process):
    """Megabytes that the process and its children have in memory, shared pages counted in each."""
    total = 0
    for each in processes_below(process):
        try:
            status = pathlib.Path("/proc/%d/status" % each).read_text()
        except OSError:
            continue
        total += sum(int(line.split()[1]) for line in status.splitlines()
                     if line.startswith("VmRSS:"))
    return total / 1024


def cpu_of(process):
    """Seconds of processor time of the process and its children, ended ones included."""
    ticks = 0
    for each in processes_below(process):
        try:
            fields = pathlib.Path("/proc/%d/stat" % each).read_text().rpartition(")")[2].split()
        except OSError:
            continue
        ticks += sum(map(int, fields[11:15 if each == process else 13]))
    return ticks / os.sysconf("SC_CLK_TCK")


class Session:
    """A server with the script open."""

    def __init__(self, command, folder, text):
        self.uri = "file://%s/script.js" % folder
        self.lines = text.count("\n")
        self.seconds, self.seconds_parsed, self.peak, self.edits = [], [], 0.0, 0
        begin = time.perf_counter()
        self.client = Client(command)
        self.client.initialize(CAPABILITIES)
        self.client.open(self.uri, text)
        self.ask()
        self.first = time.perf_counter() - begin
        self.cpu = cpu_of(self.client.process.pid)

    def ask(self):
        assert self.client.about("documentSymbol", self.uri), "no symbols"

    def edit(self):
        """Types a blank, or takes the last one away, and asks for the outline."""
        line = self.edits // 2 * 37 % self.lines
        change = replacement((line, 0), (line, self.edits % 2), "" if self.edits % 2 else " ")
        self.edits += 1
        begin = time.perf_counter()
        self.client.change(self.uri, change, version=self.edits + 1)
        self.ask()
        self.seconds_parsed.append(time.perf_counter() - begin)
        self.seconds.append(self.client.arrived - begin)
        if self.edits % 10 == 0:
            self.peak = max(self.peak, memory_of(self.client.process.pid))

    def end(self):
        self.cpu = cpu_of(self.client.process.pid) - self.cpu
        with self.client:
            pass


def start_time(command):
    """Milliseconds from the start of the process to its answer to initialize: the median."""
    seconds = []
    for _ in range(STARTS):
        begin = time.perf_counter()
        with Client(command) as client:
            client.request("initialize", {"processId": None, "rootUri": None, "capabilities": {}})
            seconds.append(time.perf_counter() - begin)
    return statistics.median(seconds) * 1e3


def compare(cache, quorl_js, edits, with_peer):
    """Return the script's number of lines and a row for each server."""
    cache = cache / "lsp"
    cache.mkdir(parents=True, exist_ok=True)
    commands, script = server_commands(cache, quorl_js)
    text = script.read_text()
    commands = commands if with_peer else commands[:1]
    sessions = [Session(command, script.parent, text) for _, command in commands]
    for _ in range(edits):
        for session in sessions:
            session.edit()
    rows = []
    for (name, command), session in zip(commands, sessions):
        session.end()
        ordered = sorted(session.seconds)
        rows.append([name, start_time(command), session.first * 1e3,
                     statistics.median(ordered) * 1e3,
                     ordered[min(len(ordered) * 95 // 100, len(ordered) - 1)] * 1e3,
                     statistics.median(session.seconds_parsed) * 1e3,
                     session.cpu / edits * 1e3, session.peak])
    return text.count("\n"), rows
