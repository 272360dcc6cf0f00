"""quorl-js index, query and status from outside.

usage: sessions_test.py QUORL_JS SCRATCH
"""
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import run_functions

QUORL_JS, SCRATCH = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2]).resolve()

A = """class View {
  render(target) {
    target.draw(this);
  }
}
function render() {
  return 1;
}
let total = 2;
"""
B = """function renderAll() {
  for (const one of all) {
    render(one);
  }
}
"""
# A private method has no record.
C = """class Store {
  #open() {
    return 1;
  }
}
"""
FILES = {"a.js": A, "src/b.js": B, "src/c.js": C, "empty.js": ""}


def fresh(name, files=None):
    folder = SCRATCH / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for path, text in (FILES if files is None else files).items():
        write(folder / path, text)
    return folder


def write(path, text):
    """Writes a file as it would be an hour ago, so that nothing hangs on the clock's tick."""
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(text if isinstance(text, bytes) else text.encode())
    age(path, 3600)


def age(path, seconds):
    status = path.stat()
    time = status.st_mtime_ns - seconds * 10**9
    os.utime(path, ns=(time, time))


def run(folder, *arguments, **more):
    return subprocess.run([QUORL_JS, *map(str, arguments)], cwd=folder, check=False,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          errors="surrogateescape", **more)


def expect(folder, arguments, status, output="", messages=""):
    done = run(folder, *arguments)
    assert (done.returncode, done.stdout, done.stderr) == (status, output, messages), (
        arguments, done)


def last_run(folder, index="../index"):
    """(read, kept, removed) of the run that wrote the index."""
    with sqlite3.connect("file:%s?immutable=1" % (folder / index), uri=True) as database:
        return tuple(int(database.execute("SELECT value FROM meta WHERE key = ?", [key])
                         .fetchone()[0]) for key in ("read", "kept", "removed"))


def answers(folder, index):
    """What queries of every kind print."""
    return [run(folder, "query", index, *arguments).stdout for arguments in (
        ["--format", "ndjson"], ["--contains", "e"], ["--prefix", "render", "--format", "ctags"],
        ["--text", "(", "--format", "vimgrep"], ["--at", "src/b.js:3", "--format", "json"])]


def check_as_fresh(folder, index="../index"):
    done = run(folder, "index", "../fresh.index", "-q", "-r", ".")
    assert done.returncode == 0, done
    assert answers(folder, index) == answers(folder, "../fresh.index")
    os.remove(folder / "../fresh.index")


def index_of(name, files=None, *options):
    shutil.rmtree(SCRATCH / name, ignore_errors=True)
    folder = fresh(name + "/tree", files)
    expect(folder, ["index", "../index", "-r", ".", *options], 0)
    return folder


def test_answers():
    folder = index_of("answers")
    expect(folder, ["query", "../index", "--name", "render"], 0, (
        "./a.js\n"
        "          2-4 method       render(target)\n"
        "          6-8 function     render()\n"))
    expect(folder, ["query", "../index", "--prefix", "render", "--format", "vimgrep"], 0, (
        "./a.js:2:1:render(target) {\n"
        "./a.js:6:1:function render() {\n"
        "./src/b.js:1:1:function renderAll() {\n"))
    expect(folder, ["query", "../index", "--contains", "pen", "--format", "vimgrep"], 0,
           "./src/c.js:2:1:#open\n")
    expect(folder, ["query", "../index", "--regex", "^(View|total)$", "--format", "vimgrep"], 0,
           "./a.js:1:1:class View {\n./a.js:9:1:let total = 2;\n")
    expect(folder, ["query", "../index", "--kind", "class,loop", "--format", "vimgrep"], 0, (
        "./a.js:1:1:class View {\n./src/b.js:2:1:for (const one of all) {\n"
        "./src/c.js:1:1:class Store {\n"))
    expect(folder, ["query", "../index", "--path", "src", "--kind", "function", "--kind", "class",
                    "--format", "vimgrep"], 0,
           "./src/b.js:1:1:function renderAll() {\n./src/c.js:1:1:class Store {\n")
    expect(folder, ["query", "../index", "--text", "render(", "--format", "vimgrep"], 0, (
        "./a.js:2:1:render(target) {\n./a.js:6:1:function render() {\n"
        "./src/b.js:3:1:render(one);\n"))
    expect(folder, ["query", "../index", "--inside", "renderAll", "--format", "vimgrep"], 0,
           "./src/b.js:2:1:for (const one of all) {\n./src/b.js:3:1:render(one);\n")
    for name in ("a.js", "./a.js", folder / "a.js"):
        expect(folder, ["query", "../index", "--at", "%s:3" % name], 0, (
            "./a.js\n"
            "          1-5 class        View\n"
            "          2-4 method         render(target)\n"
            "            3 statement        target.draw(this);\n"))
    expect(folder / "src", ["query", "../../index", "--at", "c.js:3", "--kind", "method"], 0,
           "./src/c.js\n          2-4 method       #open\n")


def test_formats():
    folder = index_of("formats")
    item = ('"path":"./a.js","line":2,"endLine":4,"kind":"method","name":"render","inside":"View",'
            '"nodeID":4,"branchTypeAsString":"function","contents":"render(target) {"')
    query = ["query", "../index", "--name", "render", "--kind", "method", "--format"]
    expect(folder, query + ["ndjson"], 0, "{%s}\n" % item)
    expect(folder, query + ["json"], 0,
           '{"schema":1,"tool":"quorl-js","version":"1.0.0","items":[\n{%s}\n]}\n' % item)
    expect(folder, query + ["ctags"], 0, (
        "!_TAG_FILE_FORMAT\t2\t/extended format/\n"
        "!_TAG_FILE_SORTED\t1\t/0=unsorted, 1=sorted, 2=foldcase/\n"
        "!_TAG_PROGRAM_NAME\tquorl-js\t//\n"
        "!_TAG_PROGRAM_VERSION\t1.0.0\t//\n"
        'render\t./a.js\t2;"\tkind:m\tline:2\tclass:View\tend:4\n'))
    expect(folder, ["query", "../index", "--name", "#open", "--format", "ndjson"], 0, (
        '{"path":"./src/c.js","line":2,"endLine":4,"kind":"method","name":"#open",'
        '"inside":"Store","nodeID":null,"branchTypeAsString":null,"contents":null}\n'))
    expect(folder, ["query", "../index", "--name", "gone", "--format", "json"], 1,
           '{"schema":1,"tool":"quorl-js","version":"1.0.0","items":[\n]}\n')
    done = run(folder, "query", "../index", "--name", "View", "--color", "always")
    assert done.stdout == (
        "\x1b[1m./a.js\x1b[0m\n          \x1b[2m1-5\x1b[0m \x1b[33mclass\x1b[0m        "
        "\x1b[1mView\x1b[0m\n"), done


def test_counts_limits_and_statuses():
    folder = index_of("counts")
    expect(folder, ["query", "../index", "--prefix", "render", "--count"], 0, "3\n")
    expect(folder, ["query", "../index", "--prefix", "render", "--count", "--limit", "2"], 0, "2\n")
    # The exact ones come first, whatever their paths.
    expect(folder, ["query", "../index", "--prefix", "renderAll", "--limit", "1", "--format",
                    "vimgrep"], 0, "./src/b.js:1:1:function renderAll() {\n")
    expect(folder, ["query", "../index", "--name", "gone"], 1)
    expect(folder, ["query", "../index", "--name", "gone", "--count"], 1, "0\n")
    expect(folder, ["query", "../index", "--at", "gone.js:1"], 1)
    expect(folder, ["query", "../index", "--at", "a.js:99"], 1)
    expect(folder, ["query"], 2, "", "quorl-js: no INDEX given; see quorl-js query --help\n")
    expect(folder, ["query", "../index", "--name", "a", "--prefix", "b"], 2, "",
           "quorl-js: --prefix: not with another of --name, --prefix, --contains and --regex; see "
           "quorl-js query --help\n")
    for place in ("a.js", "a.js:", ":3", "a.js:x"):
        expect(folder, ["query", "../index", "--at", place], 2, "",
               "quorl-js: --at: invalid value '%s'; use FILE:LINE such as src/a.js:12\n" % place)
    expect(folder, ["query", "../index", "--kind", "clas"], 2, "", (
        "quorl-js: --kind: invalid value 'clas'; did you mean class? (one of function, method, "
        "constructor, getter, setter, class, interface, enum, namespace, type, variable, field, "
        "module, callback, logic, loop, statement, element, link, script, block)\n"))
    done = run(folder, "query", "../index", "--regex", "(")
    assert done.returncode == 2 and done.stderr.startswith("quorl-js: --regex: '(': "), done


def test_several_indexes():
    folder = index_of("several", {"z.js": "function f() {}\n"})
    other = fresh("several/other", {"a.js": "function f() {}\nfunction ff() {}\n"})
    expect(other, ["index", "../second", "-r", "."], 0)
    expect(folder, ["query", "../index", "../second", "--prefix", "f", "--format", "vimgrep"], 0, (
        "./a.js:1:1:function f() {}\n./z.js:1:1:function f() {}\n./a.js:2:1:function ff() {}\n"))
    expect(folder, ["query", "../index", "../gone"], 2, "",
           "quorl-js: ../gone: No such file or directory\n")


def test_only_changes_are_read():
    folder = index_of("changes")
    assert last_run(folder) == (4, 0, 0)
    index = folder / "../index"
    before = index.stat().st_ino
    expect(folder, ["index", "../index"], 0)
    assert index.stat().st_ino == before  # not even written

    write(folder / "a.js", A.replace("total", "sum"))
    expect(folder, ["index", "../index"], 0)
    assert last_run(folder) == (1, 3, 0)
    expect(folder, ["query", "../index", "--name", "total"], 1)
    expect(folder, ["query", "../index", "--name", "sum", "--count"], 0, "1\n")
    check_as_fresh(folder)

    os.remove(folder / "src/b.js")
    expect(folder, ["index", "../index"], 0)
    assert last_run(folder) == (0, 3, 1)
    expect(folder, ["query", "../index", "--name", "renderAll"], 1)
    check_as_fresh(folder)

    write(folder / "src/d.js", "class D {}\n")
    expect(folder, ["index", "../index"], 0)
    assert last_run(folder) == (1, 3, 0)
    check_as_fresh(folder)

    # Other times and the same bytes: nothing is parsed, and the times are kept.
    age(folder / "a.js", 60)
    expect(folder, ["index", "../index"], 0)
    assert last_run(folder) == (0, 4, 0)
    before = index.stat().st_ino
    expect(folder, ["index", "../index"], 0)
    assert index.stat().st_ino == before

    # The same size and the same time of the last change.
    status = (folder / "a.js").stat()
    (folder / "a.js").write_text(A.replace("total", "sum").replace("return 1", "return 3"))
    os.utime(folder / "a.js", ns=(status.st_mtime_ns, status.st_mtime_ns))
    expect(folder, ["index", "../index"], 0)
    assert last_run(folder) == (1, 3, 0)
    check_as_fresh(folder)

    # A name that became a folder, a file that became binary.
    os.remove(folder / "a.js")
    write(folder / "a.js/x.js", "class X {}\n")
    write(folder / "src/c.js", b"class C {}\0\n")
    expect(folder, ["index", "../index"], 0)
    assert last_run(folder) == (1, 2, 2)
    check_as_fresh(folder)


def test_options_of_the_last_time():
    folder = index_of("options", None, "--exclude", "*.html", "--exclude", "c.js")
    write(folder / "page.html", "<p>\n")
    expect(folder, ["index", "../index"], 0)
    assert last_run(folder) == (3, 0, 0)  # of the first run
    # From anywhere, since paths start from the folder of that run.
    write(folder / "e.js", "class E {}\n")
    expect(SCRATCH, ["index", folder / "../index"], 0)
    assert last_run(folder) == (1, 3, 0)
    expect(folder, ["query", "../index", "--name", "E", "--format", "vimgrep"], 0,
           "./e.js:1:1:class E {}\n")
    expect(folder, ["index", "../index", "--exclude", "e.js"], 2, "",
           "quorl-js: --exclude requires --recursive; see quorl-js index --help\n")
    expect(folder, ["index", "../index", "-r"], 2, "",
           "quorl-js: --recursive: not without FILE; see quorl-js index --help\n")
    # Other files: those that are not asked for any more leave.
    expect(folder, ["index", "../index", "-r", ".", "--exclude", "*.html", "--exclude", "src"], 0)
    assert last_run(folder) == (0, 3, 1)
    expect(folder, ["index", "../none"], 2, "",
           "quorl-js: no FILE given, and no ../none to bring up to date; see quorl-js index "
           "--help\n")
    assert not (folder / "../none").exists()
    # Names from standard input are kept, since they cannot be read again.
    done = run_with_input(folder, "a.js\nsrc/b.js\n", "index", "../listed", "--files-from", "-")
    assert (done.returncode, done.stderr) == (0, b""), done
    write(folder / "a.js", "class Other {}\n")
    expect(folder, ["index", "../listed"], 0)
    assert last_run(folder, "../listed") == (1, 1, 0)
    # A file may have the name that ends the options.
    write(folder / "--", "class Dashes {}\n")
    expect(folder, ["index", "../dashes", "--", "--"], 0)
    write(folder / "--", "class Others {}\n")
    expect(folder, ["index", "../dashes"], 0)
    assert last_run(folder, "../dashes") == (1, 0, 0)


def run_with_input(folder, text, *arguments):
    return subprocess.run([QUORL_JS, *arguments], cwd=folder, check=False, input=text.encode(),
                          capture_output=True)


def test_all_is_read_again():
    folder = index_of("again")
    again = "quorl-js: ../index: %s; every file is read again\n"
    expect(folder, ["index", "../index", "-r", ".", "--defines", "X"], 0, "",
           again % "made with other defines")
    assert last_run(folder) == (4, 0, 0)
    expect(folder, ["index", "../index"], 0)
    with sqlite3.connect(folder / "../index") as database:
        database.execute("UPDATE meta SET value = 'quorl-js 0.9' WHERE key = 'tool'")
    expect(folder, ["index", "../index"], 0, "", again % "made by quorl-js 0.9")
    with sqlite3.connect(folder / "../index") as database:
        database.execute("UPDATE meta SET value = 'x' WHERE key = 'module'")
    expect(folder, ["index", "../index"], 0, "", again % "made with another plug-in")
    with sqlite3.connect(folder / "../index") as database:
        database.execute("PRAGMA user_version = 0")
    expect(folder, ["query", "../index"], 2, "",
           "quorl-js: ../index: of an older index format; run quorl-js index ../index\n")
    expect(folder, ["index", "../index", "-r", "."], 0, "", again % "of an older format")
    expect(folder / "src", ["index", "../../index", "-r", "."], 0, "",
           "quorl-js: ../../index: built in another folder; every file is read again\n")
    expect(folder, ["query", "../index", "--kind", "class", "--format", "vimgrep"], 0,
           "./c.js:1:1:class Store {\n")


def test_failures():
    folder = index_of("failures")
    expect(folder, ["index", "../other", "a.js", "gone.js"], 1, "",
           "quorl-js: gone.js: No such file or directory\n")
    # What failed is read again.
    expect(folder, ["index", "../other"], 1, "", "quorl-js: gone.js: No such file or directory\n")
    write(folder / "gone.js", "class Back {}\n")
    expect(folder, ["index", "../other"], 0)
    assert last_run(folder, "../other") == (1, 1, 0)
    expect(folder, ["index", "../other"], 0)
    expect(folder, ["index", "../other", "-q", "--max-size", "1", "a.js"], 1)
    with sqlite3.connect(folder / "../other") as database:
        assert database.execute("SELECT path, status, size, items FROM file").fetchall() == [
            ("a.js", "too-large", len(A), 0)]


def test_no_index():
    folder = index_of("hostile")
    whole = (folder / "../index").read_bytes()
    bad = folder / "../bad"
    none = "quorl-js: ../bad: not an index of quorl-js\n"
    damaged = "quorl-js: ../bad: damaged index; move it away and build it again\n"

    def refused(message, *commands):
        for command in commands or (["query", "../bad"], ["status", "../bad"],
                                    ["index", "../bad", "-r", "."]):
            before = bad.read_bytes()
            expect(folder, command, 2, "", message)
            assert bad.read_bytes() == before
            assert sorted(os.listdir(folder / "..")) == ["bad", "index", "tree"]

    bad.write_bytes(b"")
    refused(none)
    bad.write_bytes(A.encode() * 100)
    refused(none)
    bad.write_bytes(whole[:15] + b"x" + whole[16:])
    refused(none)
    bad.unlink()
    with sqlite3.connect(bad) as database:
        database.execute("CREATE TABLE item (x)")
    refused(none)
    bad.write_bytes(whole)
    with sqlite3.connect(bad) as database:
        database.execute("PRAGMA user_version = 2")
    refused("quorl-js: ../bad: of index format 2, which this version of quorl-js does not know (it "
            "knows 1)\n")
    # What would run with the next change.
    bad.write_bytes(whole)
    with sqlite3.connect(bad) as database:
        database.execute("CREATE TRIGGER t AFTER DELETE ON item BEGIN DELETE FROM file; END")
    refused("quorl-js: ../bad: its tables are not those of an index\n")
    # A view that never ends in place of a table.
    bad.write_bytes(whole)
    with sqlite3.connect(bad) as database:
        database.executescript(
            "DROP VIEW items; DROP VIEW definitions; ALTER TABLE item RENAME TO old;"
            "CREATE VIEW item AS WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM n) "
            "SELECT id, 1 AS kind, 1 AS label, 1 AS line, 0 AS more, NULL AS parent, 1 AS record, "
            "'x' AS name, 'x' AS text FROM n")
    refused("quorl-js: ../bad: its tables are not those of an index\n")
    # A parent behind its child, as in a chain without an end; a kind that there is not.
    for change in ("parent = 2 WHERE id & 65535 = 1", "kind = 99"):
        bad.write_bytes(whole)
        with sqlite3.connect(bad) as database:
            database.execute("UPDATE item SET " + change)
        refused(damaged, ["query", "../bad", "--name", "render", "--format", "ndjson"])
    # Cut at every page, and every page full of other bytes: an answer or one line, and no more.
    page = 8192
    assert len(whole) % page == 0
    for at in range(0, len(whole), page):
        for broken in (whole[:at + 100], whole[:at + 100] + b"\xa5" * page + whole[at + page + 100:]):
            bad.write_bytes(broken)
            for arguments in (["--name", "render"], ["--text", "e"], ["--at", "a.js:3"]):
                done = run(folder, "query", "../bad", *arguments)
                assert done.returncode in (0, 1) and done.stderr == "" or (
                    done.returncode == 2 and done.stderr.startswith("quorl-js: ../bad: ") and
                    done.stderr.count("\n") == 1), done
    bad.unlink()
    bad.mkdir()
    expect(folder, ["query", "../bad"], 2, "", "quorl-js: ../bad: Is a directory\n")
    expect(folder, ["index", "../bad", "."], 2, "", "quorl-js: ../bad: Is a directory\n")
    bad.rmdir()
    os.mkfifo(bad)
    expect(folder, ["query", "../bad"], 2, "", "quorl-js: ../bad: not a regular file\n")
    expect(folder, ["index", "../bad", "."], 2, "", "quorl-js: ../bad: not a regular file\n")


def test_readers_leave_nothing():
    folder = index_of("reading")
    place = fresh("reading/only", {})
    shutil.copy(folder / "../index", place / "a ?#%.index")
    place.chmod(0o555)
    (place / "a ?#%.index").chmod(0o444)
    expect(folder, ["query", place / "a ?#%.index", "--name", "total", "--count"], 0, "1\n")
    assert run(folder, "status", place / "a ?#%.index").returncode == 0
    assert os.listdir(place) == ["a ?#%.index"]
    place.chmod(0o755)


def test_index_among_its_files():
    folder = fresh("among", {"a.js": A})
    expect(folder, ["index", "code.index", "-r", "--binary", "--hidden", "."], 0)
    expect(folder, ["index", "code.index"], 0)
    assert last_run(folder, "code.index") == (1, 0, 0)
    assert sorted(os.listdir(folder)) == ["a.js", "code.index"]
    expect(folder, ["query", "code.index", "--kind", "class", "--format", "vimgrep"], 0,
           "./a.js:1:1:class View {\n")
    # A link stays, and keeps the rights of what it leads to.
    os.rename(folder / "code.index", folder / "real")
    (folder / "real").chmod(0o640)
    os.symlink("real", folder / "code.index")
    write(folder / "b.js", B)
    expect(folder, ["index", "code.index"], 0)
    assert os.readlink(folder / "code.index") == "real"
    assert (folder / "real").stat().st_mode & 0o7777 == 0o640


def status_of(folder, index="../index"):
    """The exit status, and the lines that do not depend on the time and the place."""
    done = run(folder, "status", index)
    assert done.stderr == "", done
    lines = [line.split(None, 1) for line in done.stdout.splitlines()]
    return done.returncode, [(key, value) for key, value in lines
                             if key not in ("written", "folder", "last")]


def test_status():
    folder = index_of("status")
    contents = [("files", "4 (3 answered, 1 empty)"), ("items", "12"),
                ("bytes", "%d of source" % sum(map(len, FILES.values()))),
                ("tool", "quorl-js 1.0.0"), ("options", "--recursive -- .")]
    assert status_of(folder) == (0, contents), status_of(folder)
    write(folder / "a.js", A + "\n")
    os.remove(folder / "src/b.js")
    write(folder / "new.js", "")
    assert status_of(folder) == (1, contents + [("changed", "./a.js"), ("new", "./new.js"),
                                                ("gone", "./src/b.js")]), status_of(folder)
    expect(folder, ["index", "../index"], 0)
    assert status_of(folder)[0] == 0


def test_shards():
    shutil.rmtree(SCRATCH / "shards", ignore_errors=True)
    folder = fresh("shards/tree", dict(FILES, **{"page.html": "<p>\n<b>x</b>\n</p>\n",
                                                 "odd.js": b"let a\xff = '\xfe';\n",
                                                 "long.js": "let x = 1; " * 2000 + "\n"}))
    expect(folder, ["index", "../index", "-q", "-r", "."], 0)
    for number, names in enumerate((["a.js", "empty.js", "long.js", "odd.js"],
                                    ["page.html", "src", "a.js"])):
        done = run(folder, "-q", "-r", "--format", "ndjson", "--ranges",
                   *("./" + name for name in names), "-o", "../%d.ndjson" % number)
        assert done.returncode == 0, done
    expect(folder, ["index", "../joined", "--from-ndjson", "../0.ndjson", "../1.ndjson"], 0)
    assert answers(folder, "../joined") == answers(folder, "../index")
    assert run(folder, "query", "../joined", "--format", "ndjson").stdout.count("\n") > 12
    rows = []
    for name in ("index", "joined"):
        with sqlite3.connect("file:%s?immutable=1" % (folder / ".." / name), uri=True) as database:
            rows.append(database.execute("SELECT path, status, message, size, records, items, "
                                         "omitted FROM file ORDER BY path").fetchall())
    assert rows[0] == rows[1], rows
    assert ("./long.js", "answered", None, 22001, 3, 0, json.dumps(
        [{"reason": "long-lines", "line": 1, "lines": 1, "lineCount": 1, "bytes": 22000,
          "byteCount": 22001}], separators=(",", ":"))) in rows[0], rows[0]
    done = run(folder, "status", "../joined")
    assert done.returncode == 0 and done.stdout.endswith(
        "changes   unknown: the index was built from ndjson, which has no times of files\n"), done
    expect(folder, ["index", "../joined"], 2, "", "quorl-js: ../joined: was not built from files\n")
    expect(folder, ["index", "../joined", "-q", "-r", "."], 0, "",
           "quorl-js: ../joined: not built from files; every file is read again\n")
    # What is no whole outline.
    run(folder, "--format", "ndjson", "a.js", "-o", "../plain.ndjson")
    expect(folder, ["index", "../x", "--from-ndjson", "../plain.ndjson"], 2, "",
           "quorl-js: ../plain.ndjson: records without source; write them with --ranges\n")
    run(folder, "--format", "ndjson", "--ranges", "--only", "class", "a.js", "-o", "../only.ndjson")
    expect(folder, ["index", "../x", "--from-ndjson", "../only.ndjson"], 0)
    run(folder, "--format", "ndjson", "--ranges", "--only", "line", "a.js", "-o", "../only.ndjson")
    expect(folder, ["index", "../x", "--from-ndjson", "../only.ndjson"], 2, "",
           "quorl-js: ../only.ndjson: a.js: items are missing or wrong; write all records, with "
           "--ranges\n")
    cut = (folder / "../0.ndjson").read_bytes()[:-20]
    (folder / "../cut.ndjson").write_bytes(cut)
    before = (folder / "../x").read_bytes()
    done = run(folder, "index", "../x", "--from-ndjson", "../cut.ndjson")
    assert (done.returncode, done.stdout) == (2, "") and "cut, it has no line feed" in done.stderr
    assert (folder / "../x").read_bytes() == before
    expect(folder, ["index", "../x", "--from-ndjson"], 2, "",
           "quorl-js: no SHARD given; see quorl-js index --help\n")


def test_other_programs_can_read_it():
    folder = index_of("schema", {"odd.js": b"let a\xff = '\xfe\0';\nlet plain = 1;\n"}, "--binary")
    with sqlite3.connect("file:%s?immutable=1" % (folder / "../index"), uri=True) as database:
        assert database.execute("PRAGMA integrity_check").fetchall() == [("ok",)]
        assert database.execute("PRAGMA application_id").fetchone() == (0x514a5349,)
        assert database.execute("PRAGMA user_version").fetchone() == (1,)
        assert database.execute("SELECT name FROM sqlite_schema WHERE name NOT LIKE 'sqlite%' "
                                "ORDER BY name").fetchall() == [
            ("definitions",), ("file",), ("item",), ("item_name",), ("items",), ("label",),
            ("meta",)]
        assert database.execute("SELECT path, line, last_line, kind, name, inside FROM definitions "
                                "ORDER BY line").fetchall()[-1] == (
            "./odd.js", 2, 2, "variable", "plain", None)
        database.execute("SELECT * FROM items").fetchall()


if __name__ == "__main__":
    run_functions.run_all(globals())
