"""quorl-js view from outside: what its pages hold, and how it fails.

usage: view_test.py QUORL_JS SCRATCH
"""
import os
import pathlib
import pty
import shutil
import subprocess
import sys

from view_data import Page

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import run_functions

QUORL_JS, SCRATCH = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2]).resolve()

# A method with a statement, which holds a callback, and a branch that ends where the next begins.
A = """class View {
  render(target) {
    target.draw(function () {
      done();
    });
    if (target) {
      stop();
    } else {
      go();
    }
  }
}
"""
MANY = 200_000  # items, above which plain statements stay out
SOME = 20_000   # items, above which texts are cut shorter
SMALL = 4 << 20  # bytes of sources, from which on they stay out


def fresh(name, files):
    folder = SCRATCH / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for path, text in files.items():
        (folder / path).parent.mkdir(parents=True, exist_ok=True)
        (folder / path).write_bytes(text if isinstance(text, bytes) else text.encode())
    return folder


def run(folder, *arguments):
    done = subprocess.run([QUORL_JS, "view", *arguments], cwd=folder, check=False,
                          stdin=subprocess.DEVNULL, capture_output=True)
    return done.returncode, done.stdout, done.stderr.decode(errors="backslashreplace")


def page_of(folder, *arguments, status=0, messages=""):
    done = run(folder, *arguments)
    assert (done[0], done[2]) == (status, messages), (done[0], done[2])
    return Page(done[1])


def fails(folder, arguments, message):
    done = run(folder, *arguments)
    assert done == (2, b"", message), done


def test_items():
    page = page_of(fresh("items", {"a.js": A}), "a.js")
    seen = [(item["line"], item["last"], item["kind"], item["label"], item["name"].decode(),
             item["parent"], item["bytes"], item["text"].decode()) for item in page.items]
    expected = [
        (1, 12, "class", "class", "View", None, len(A), "class View {"),
        (2, 11, "method", "function", "render", 0, len(A) - 15, "render(target) {"),
        (3, 5, "callback", "line", "", 1, 30 + 14 + 8, "target.draw(function () {"),
        (4, 4, "statement", "line", "", 2, 14, "done();"),
        (6, 8, "logic", "logic", "", 1, 18 + 14 + 13, "if (target) {"),
        (7, 7, "statement", "line", "", 4, 14, "stop();"),
        (8, 10, "logic", "line", "", 1, 13 + 12 + 6, "} else {"),
        (9, 9, "statement", "line", "", 6, 12, "go();"),
    ]
    assert seen == expected, seen
    assert not any(item["cut"] for item in page.items)
    assert page.header["textLimit"] == 2000 and page.header["hidden"] == 0
    assert page.header["sources"] is True


def test_files():
    folder = fresh("files", {"b/é.js": "a();\r\nb();", "b.txt": "", "a.js": "x" * 10001 + "\ny();\n"})
    os.mkfifo(folder / "fifo")
    page = page_of(folder, "b/é.js", "none.js", "b.txt", "a.js", "fifo", status=1,
                   messages="quorl-js: none.js: No such file or directory\n"
                            "quorl-js: a.js: 1 of 2 lines left out (10,001 of 10,007 bytes): "
                            "longer than 10,000 bytes\n"
                            "quorl-js: fifo: not a regular file, skipped\n")
    keys = ("path", "size", "lines", "items", "hidden", "omittedLines", "omittedBytes", "hasSource")
    seen = [tuple(file[key] for key in keys) for file in page.files]
    assert seen == [
        ("b/é.js".encode(), 10.0, 2, 2, 0, 0, 0.0, 1),
        (b"none.js", 0.0, 0, 0, 0, 0, 0.0, 0),
        (b"b.txt", 0.0, 0, 0, 0, 0, 0.0, 1),
        (b"a.js", 10007.0, 2, 1, 0, 1, 10001.0, 1),
        (b"fifo", 0.0, 0, 0, 0, 0, 0.0, 0),
    ], seen
    statuses = [page.header["statuses"][file["status"]] for file in page.files]
    assert statuses == ["answered", "failed", "empty", "answered", "failed"], statuses
    assert page.files[1]["message"] == b"none.js: No such file or directory"
    assert page.files[3]["omitted"] == (b"1 of 2 lines left out (10,001 of 10,007 bytes): "
                                        b"longer than 10,000 bytes")
    assert [file["omitted"] for file in page.files if file["path"] != b"a.js"] == [b""] * 4
    assert page.files[0]["source"] == b"a();\r\nb();"
    assert [(item["line"], item["bytes"]) for item in page.items] == [(1, 6), (2, 4), (2, 5)]


def test_sources():
    small = {"a.js": b"a();\n/*" + b"x" * (SMALL - 10) + b"*/"}
    folder = fresh("sources", small)
    assert page_of(folder, "a.js").header["sources"] is True
    assert page_of(folder, "--no-sources", "a.js").header["sources"] is False
    (folder / "b.js").write_bytes(b"\n")
    page = page_of(folder, "a.js", "b.js")
    assert page.header["sources"] is False
    assert [(file["hasSource"], file["source"], file["lines"]) for file in page.files] == [
        (0, b"", 2), (0, b"", 1)], [file["lines"] for file in page.files]
    assert page.items[0]["bytes"] == 5  # known all the same
    page = page_of(folder, "--sources", "a.js", "b.js")
    assert [file["source"] for file in page.files] == [small["a.js"], b"\n"]
    fails(folder, ["--sources", "--no-sources", "a.js"],
          "quorl-js: --no-sources: not with --sources; see quorl-js view --help\n")


def test_long_texts():
    """Texts are cut at 2,000 bytes, names too, and never within a character."""
    long = "n" * 1988  # the text is 13 bytes longer
    names = [long, long[1:], "é" * 1001, "n" + "é" * 1000]
    page = page_of(fresh("long", {"a.js": "".join("function %s() {\n}\n" % name
                                                  for name in names)}), "a.js")
    assert [item["name"].decode() for item in page.items] == [
        long, long[1:], "é" * 1000, "n" + "é" * 999]
    assert [item["cut"] for item in page.items] == [1, 0, 0, 0]
    assert page.items[0]["text"] == ("function %s() " % long).encode()
    assert page.items[1]["text"] == ("function %s() {" % long[1:]).encode()


def test_some_items():
    """With more than 20,000 items, texts are cut at 200 bytes, those before the limit too."""
    line = "f(%s);\n" % ("a" * 300)
    folder = fresh("some", {"a.js": line, "b.js": "g();\n" * (SOME - 1), "c.js": line})
    page = page_of(folder, "a.js", "b.js")
    assert page.header["textLimit"] == 2000 and len(page.items) == SOME
    assert page.items[0]["text"] == line[:-1].encode()
    page = page_of(folder, "a.js", "b.js", "c.js")
    assert page.header["textLimit"] == 200 and len(page.items) == SOME + 1
    assert [page.items[place]["text"] for place in (0, 1, SOME)] == [
        line[:200].encode(), b"g();", line[:200].encode()]
    assert [page.items[place]["cut"] for place in (0, 1, SOME)] == [1, 0, 1]


def test_many_items():
    """With more than 200,000 items, plain statements stay out; what they hold moves up."""
    lines = "g();\n" * 99_995
    folder = fresh("many", {"a.js": A, "b.js": lines, "c.js": lines, "d.js": A})
    page = page_of(folder, "a.js", "b.js", "c.js", "d.js")
    kept = [(1, "class", None), (2, "method", 0), (3, "callback", 1), (6, "logic", 1),
            (8, "logic", 1)]
    assert [(item["line"], item["kind"], item["parent"]) for item in page.items] == (
        kept + [(line, kind, None if parent is None else parent + len(kept))
                for line, kind, parent in kept])
    assert [(file["items"], file["hidden"]) for file in page.files] == [
        (5, 3), (0, 99_995), (0, 99_995), (5, 3)]
    assert page.header["hidden"] == 2 * 99_995 + 6
    assert [item["text"] for item in page.items[5:7]] == [b"class View {", b"render(target) {"]
    page = page_of(folder, "--all", "a.js", "b.js", "c.js", "d.js")
    assert len(page.items) == 2 * 99_995 + 16 and page.header["hidden"] == 0
    assert page.items[-1]["text"] == b"go();"
    assert [file["hidden"] for file in page.files] == [0] * 4


def test_indexes():
    """An index gives the page that its files give, but in the order of paths."""
    folder = fresh("index", {"src/b.js": A, "src/a.js": "a();\n", "src/a.css": "p { x: y }\n"})
    index = folder / "x.index"
    subprocess.run([QUORL_JS, "index", index, "-r", "src"], cwd=folder, check=True)
    of_files = run(folder, "-r", "src")
    of_index = run(folder, "--index", "x.index")
    assert of_files == of_index and of_files[0] == 0, (of_files[2], of_index[2])
    other = fresh("elsewhere", {})
    assert run(other, "--index", str(index)) == of_files
    # A source that has changed since is not what the items are of.
    (folder / "src/b.js").write_text("changed();\n")
    page = page_of(other, "--index", str(index))
    assert [(file["path"], file["hasSource"]) for file in page.files] == [
        (b"src/a.css", 1), (b"src/a.js", 1), (b"src/b.js", 0)]
    assert {item["bytes"] for item in page.items if item["file"] == b"src/b.js"} == {0}
    assert page.files[2]["lines"] == 12
    fails(folder, ["--index", "src/a.js"], "quorl-js: src/a.js: not an index of quorl-js\n")
    fails(folder, ["--index", "x.index", "src"],
          "quorl-js: --index: not with FILE; see quorl-js view --help\n")
    fails(folder, ["--index", "x.index", "--jobs", "2"],
          "quorl-js: --jobs: not with --index; see quorl-js view --help\n")


def test_output():
    folder = fresh("output", {"a.js": A, "page.html": "old"})
    to_output = run(folder, "a.js")
    assert run(folder, "a.js", "-o", "page.html") == (0, b"", "")
    assert (folder / "page.html").read_bytes() == to_output[1]
    assert run(folder, "-o", "-", "a.js") == to_output
    assert run(folder, "-r", ".", "-o", "page.html") == (
        0, b"", "quorl-js: ./page.html: is written by this run, skipped\n")
    assert [file["path"] for file in Page((folder / "page.html").read_bytes()).files] == [b"./a.js"]
    fails(folder, ["a.js", "page.html", "-o", "page.html"],
          "quorl-js: output file page.html: is also an input\n")
    fails(folder, ["a.js", "-o", "none/page.html"],
          "quorl-js: none/page.html: No such file or directory\n")
    fails(folder, [], "quorl-js: no FILE given; see quorl-js view --help\n")
    (folder / "page.html").write_text("old")
    assert run(folder, "a.js", "--plugin", "none.so", "-o", "page.html")[0] == 2
    assert (folder / "page.html").read_text() == "old"
    ours, theirs = pty.openpty()
    done = subprocess.run([QUORL_JS, "view", "a.js"], cwd=folder, check=False, stdout=theirs,
                          stderr=subprocess.PIPE)
    os.close(theirs)
    os.close(ours)
    assert (done.returncode, done.stderr) == (
        2, b"quorl-js: standard output is a terminal; give the page a name with -o; see quorl-js "
           b"view --help\n"), done


def test_hostile_bytes():
    """Nothing of a file can end the element that holds the data."""
    text = b'"</script><script>alert(1)</script>";\n\x00\xff\xfe();\n'
    name = b"</script>\n\xff.js"
    folder = fresh("hostile", {os.fsdecode(name): text})
    page = page_of(folder, name)
    assert (page.files[0]["path"], page.files[0]["source"]) == (name, text)
    assert page.items[0]["text"] == b'"</script><script>alert(1)</script>";'


if __name__ == "__main__":
    run_functions.run_all(globals())
