"""Holds outlines against the TypeScript compiler's parse and parse5's.

usage: outline_check.py BUILD

BUILD is a build of the project with quorl-js, the module and outline_driver. The packages of
packages.txt come from the npm registry, into BUILD/outline_check. Exit status 1 if a bar is missed.

Scripts: of the named functions (declared, or the value of a variable, property or assignment),
methods, constructors, accessors and classes that are the first on their line, how many are in the
outline with that line and name, and how many of these end on the right line; how many functions,
methods and classes of the outline are none. Lines that the module leaves out are not counted: those
above 10,000 bytes and those behind the 100,000th.
Pages: how many of the elements that have records are on the right line. What is a tag to the module
and none to parse5 (in an attribute, a text area or a template) is not counted.
Both: how many records stand on a source line that holds their text.
"""
import collections
import json
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "support"))
from npm_packages import fetch  # pylint: disable=wrong-import-position

FILES_PER_PACKAGE = 60
MIN_FILES = 300
MAX_LINE_BYTES = 10_000
MAX_LINES = 100_000
KINDS = {"function", "method", "constructor", "getter", "setter", "class"}
SCRIPT_NAME = re.compile(r"\.(js|jsx|mjs|cjs|ts|tsx)$")
LEFT_OUT = re.compile(r"\.d\.[mc]?ts$|\.min\.|/locale/")
# What has to be reached: (figure, least share).
BARS = {"found": 0.97, "ends": 0.995, "of the kind": 0.98, "elements": 0.999, "texts": 0.999}


def choose(folder, wanted):
    """Some files of a package, spread over all that are wanted."""
    paths = sorted(path for path in folder.rglob("*")
                   if wanted(path.as_posix()) and path.is_file() and path.stat().st_size)
    step = max(1, len(paths) // FILES_PER_PACKAGE)
    return paths[::step][:FILES_PER_PACKAGE]


def json_lines(command, paths=()):
    done = subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, input="\n".join(map(str, paths)), text=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


def lines_of(path):
    return re.split(rb"\r\n|\n|\r", pathlib.Path(path).read_bytes())


def is_read(lines, number):
    return number <= MAX_LINES and len(lines[number - 1]) <= MAX_LINE_BYTES


def compare_script(truth, items, count):
    lines = lines_of(truth["path"])
    known = {}
    for item in items:
        if item["kind"] in KINDS and item["name"]:
            known.setdefault((item["line"], item["name"]), item)
            count["ours"] += 1
            count["of the kind"] += "%d:%s" % (item["line"], item["name"]) in truth["accepted"]
    for expected in truth["expected"]:
        if not is_read(lines, expected["line"]):
            continue
        item = known.get((expected["line"], expected["name"]))
        count["expected"] += 1
        count["found"] += item is not None
        count["ends"] += item is not None and item["endLine"] == expected["endLine"]


def compare_page(truth, items, count):
    """Each element of ours takes the next of its name; it is wrong if that has another line."""
    waiting = collections.defaultdict(collections.deque)
    for element in truth["elements"]:
        waiting[element["name"]].append(element["line"])
    for item in items:
        if item["kind"] != "element":
            continue
        lines = waiting[re.match(r"[\w:.-]*", item["name"]).group(0).split(".")[0].lower()]
        if item["line"] not in lines:
            count["no elements"] += 1
            count["wrong lines"] += bool(lines) and not stands_in_text(truth["path"], item)
            continue
        while lines.popleft() != item["line"]:
            pass
        count["elements"] += 1


def stands_in_text(path, item):
    """Whether the line has a tag of that name all the same, one that is none to parse5."""
    name = re.match(r"[\w:!-]*", item["name"]).group(0)
    return ("<" + name).encode() in lines_of(path)[item["line"] - 1]


def letters(text):
    return re.sub(r"\W", "", text)


def compare_texts(path, records, items, count):
    """The first letters of a record's text stand on the line that its item has."""
    lines = lines_of(path)
    for item in items:
        if item["record"] < 0 or item["kind"] in ("element", "link", "script"):
            continue
        text = letters(records[item["record"]]["contents"])[:12]
        if text:
            count["with text"] += 1
            line = lines[item["line"] - 1].decode("latin-1")
            count["texts"] += text in letters(re.sub(r"[^\x20-\x7e]", " ", line))


def records_of(build, path):
    return {row["nodeID"]: row for row in
            json_lines([build / "bin/quorl-js", "--format", "ndjson", path])
            if row["type"] == "record"}


def shares(count):
    return {"found": count["found"] / count["expected"],
            "ends": count["ends"] / count["found"],
            "of the kind": count["of the kind"] / count["ours"],
            "elements": count["elements"] / (count["elements"] + count["wrong lines"]),
            "texts": count["texts"] / count["with text"]}


def measure(scripts, pages, outlines, texts, shift=0):
    """Counts over all files; the shift, in lines, is there to see the check fail."""
    count = collections.Counter()
    for truths, compare in ((scripts, compare_script), (pages, compare_page)):
        for truth in truths:
            items = [dict(item, line=max(1, item["line"] - shift)) for item in outlines[truth["path"]]]
            compare(truth, items, count)
            if truth["path"] in texts:
                compare_texts(truth["path"], texts[truth["path"]], items, count)
    return count


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    folder = build / "outline_check"
    folder.mkdir(exist_ok=True)
    script_paths, page_paths = [], []
    for use, package in fetch(HERE / "packages.txt", folder):
        if use == "scripts":
            script_paths += choose(package, lambda name: SCRIPT_NAME.search(name)
                                   and not LEFT_OUT.search(name))
        if use == "pages":
            page_paths += choose(package, lambda name: name.endswith((".html", ".htm")))
    # The same pages with the line ends of another system.
    for path in page_paths[::10] + script_paths[::20]:
        copy = folder / "crlf" / path.relative_to(folder)
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_bytes(re.sub(rb"\r\n|\n", b"\r\n", path.read_bytes()))
        (page_paths if path in page_paths else script_paths).append(copy)
    modules = folder / "node_modules"
    scripts = json_lines(["node", HERE / "script_truth.js", modules / "typescript"], script_paths)
    pages = json_lines(["node", HERE / "page_truth.mjs", modules / "parse5"], page_paths)
    driver = [build / "tests/host/outline_driver", build / "bin/quorljs.so"]
    outlines = {row["path"]: row["items"] for row in
                json_lines(driver + script_paths + page_paths)}
    texts = {str(path): records_of(build, path)
             for path in page_paths[::3] + script_paths[::10] + page_paths[-20:]}
    count = measure(scripts, pages, outlines, texts)
    largest = max(len(lines_of(path)) for path in script_paths)
    assert len(scripts) >= MIN_FILES and largest >= 10_000, (len(scripts), largest)
    print("%d scripts (the longest of %d lines), %d pages" % (len(scripts), largest, len(pages)))
    print("expected %(expected)d, found %(found)d, with the right end %(ends)d; in the outlines "
          "%(ours)d, of the kind %(of the kind)d" % count)
    print("elements %(elements)d, on wrong lines %(wrong lines)d, none to parse5 %(no elements)d; "
          "records %(with text)d, with their text %(texts)d" % count)
    reached = shares(count)
    for name, bar in BARS.items():
        print("%-12s %8.3f %%  (at least %.1f %%)" % (name, 100 * reached[name], 100 * bar))
    broken = shares(measure(scripts, pages, outlines, texts, shift=1))
    assert all(broken[name] < BARS[name] for name in BARS if name != "ends"), broken
    return 0 if all(reached[name] >= bar for name, bar in BARS.items()) else 1


if __name__ == "__main__":
    sys.exit(main())
