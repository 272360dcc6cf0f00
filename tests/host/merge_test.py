"""quorl-js merge from outside.

usage: merge_test.py QUORL_JS SCRATCH

Cases of GOOD and BAD write their shards into files called a, b and so on, and their list into one
called list. Those of ARGUMENTS find the files of NAMED_FILES.
"""
import json
import os
import pathlib
import signal
import subprocess
import sys


def header(count, version="1.0.0", schema=1, tool="quorl-js"):
    return ('{"type":"header","schema":%d,"tool":"%s","version":"%s","fileCount":%d}\n'
            % (schema, tool, version, count)).encode()


def record(file, contents='x'):
    return ('{"type":"record","file":%d,"lineNumber":1,"contents":"%s"}\n'
            % (file, contents)).encode()


def file(number, path, records=0, status="answered", more=""):
    return ('{"type":"file","file":%d,"path":"%s"%s,"status":"%s","message":null,'
            '"recordCount":%d}\n' % (number, path, more, status, records)).encode()


A = header(2) + record(0, "a") + record(0, "b") + file(0, "one.js", 2) + file(1, "two.js")
B = header(1) + record(0, "c") + file(0, "three.js", 1)
A_THEN_B = (header(3) + record(0, "a") + record(0, "b") + file(0, "one.js", 2) +
            file(1, "two.js") + record(2, "c") + file(2, "three.js", 1))
B_FIRST = (header(3) + record(0, "c") + file(0, "three.js", 1) + file(1, "two.js") +
           record(2, "a") + record(2, "b") + file(2, "one.js", 2))
C = header(1) + file(0, "c.js")
A_THEN_C = header(3) + A[len(header(2)):] + file(2, "c.js")
C_TWICE = header(2) + file(0, "c.js") + file(1, "c.js")
C_THEN_B = header(2) + file(0, "c.js") + record(1, "c") + file(1, "three.js", 1)
ODD = header(1) + file(0, "\\ufffd\\n.js", more=',"pathBytes":"/wouanM="')
FAILED = header(1) + file(0, "bad.js", status="crashed")
EMPTY = header(1) + file(0, "empty.js", status="empty")
LONG = header(1) + record(0, "z" * 1_000_000) + file(0, "long.js", 1)

# name, shards, list or None, options, status, standard output
GOOD = [
    ("one shard is as it was", [A], None, [], 0, A),
    ("in the order of the shards", [A, B], None, [], 0, A_THEN_B),
    ("outputs in one shard, one after the other", [A + B], None, [], 0, A_THEN_B),
    ("in the order of the list", [A, B], b"three.js\ntwo.js\none.js\n", [], 0, B_FIRST),
    ("its own output", [A_THEN_B], None, [], 0, A_THEN_B),
    ("no files at all", [header(0)], b"", [], 0, header(0)),
    ("an empty run among others", [header(0) + A, header(0)], None, [], 0, A),
    ("the exact bytes of a path count", [ODD], b"\xff\n.js\0", ["-0"], 0, ODD),
    ("an empty file is none that failed", [EMPTY], None, [], 0, EMPTY),
    ("a file that failed", [A, FAILED], None, [], 1,
     header(3) + A[len(header(2)):] + file(2, "bad.js", status="crashed")),
    ("a name as often as it is listed", [B, B], b"three.js\nthree.js\n", [], 0,
     header(2) + B[len(header(1)):] + record(1, "c") + file(1, "three.js", 1)),
    ("a line of a million bytes", [LONG, B], b"three.js\nlong.js\n", [], 0,
     header(2) + B[len(header(1)):] + record(1, "z" * 1_000_000) + file(1, "long.js", 1)),
    ("an empty shard beside a list", [B, b""], b"three.js\n", [], 0, B),
    ("a version of its own", [header(1, "7.8.9") + file(0, "x")], None, [], 0,
     header(1, "7.8.9") + file(0, "x")),
]

# name, shards, list or None, options, what standard error says; behind a ": " at the end come the
# words of the JSON reader
BAD = [
    ("a shard that is not there", [A], None, ["nowhere"], "nowhere: No such file or directory"),
    ("a folder", [A], None, ["."], ".: not a regular file"),
    ("a device", [A], None, ["/dev/zero"], "/dev/zero: not a regular file"),
    ("an empty shard", [A, b""], None, [], "b: empty, not even a header"),
    ("an empty shard and nothing else", [b"", b""], b"three.js\n", [],
     "1 file of list list is in no SHARD; the first is three.js"),
    ("no ndjson", [b"[\n]\n"], None, [], "a: line 1: not an ndjson line"),
    ("no header", [A[len(header(2)):]], None, [],
     "a: line 1: no header before it"),
    ("cut in a line", [A[:-3]], None, [], "a: line 5: cut, it has no line feed"),
    ("cut at the end of a line", [A[:-1]], None, [], "a: line 5: cut, it has no line feed"),
    ("a file is missing at the end", [A[:-len(file(1, "two.js"))]], None, [],
     "a: line 5: the file ends, and files of the run are missing: 1"),
    ("cut behind a record", [header(1) + record(0)], None, [],
     "a: line 3: the file ends, and files of the run are missing: 1"),
    ("cut, and another run behind it", [A[:-len(file(1, "two.js"))] + B], None, [],
     "a: line 5: a header comes, and files of the run are missing: 1"),
    ("cut in a line, and another run behind it", [A[:-3] + B], None, [], "a: line 5: not JSON: "),
    ("a file is missing in the middle", [header(2) + file(1, "two.js")], None, [],
     "a: line 2: file 0 of its run is missing or cut"),
    ("a record is missing", [A.replace(record(0, "a"), b"")], None, [],
     "a: line 3: fewer records than announced: 1 instead of 2"),
    ("a record too many", [A.replace(record(0, "a"), record(0, "a") * 2)], None, [],
     "a: line 5: more records than announced: 3 instead of 2"),
    ("a file without a count", [B.replace(b'"recordCount"', b'"count"')], None, [],
     "a: line 3: a file without recordCount"),
    ("a list with line ends of two bytes", [B], b"three.js\r\n", [],
     "a: not in list list, or not as often as in the SHARDs: three.js; lines of the list end in "
     "CR LF; remove the CRs with tr -d '\\r'"),
    ("a record of another file", [header(2) + record(1)], None, [],
     "a: line 2: file 0 of its run is missing or cut"),
    ("a number that is none", [header(1) + b'{"type":"file","file":x}\n'], None, [],
     "a: line 2: file 0 of its run is missing or cut"),
    ("a number and no more", [header(1) + b'{"type":"file","file":0\n'], None, [],
     "a: line 2: file 0 of its run is missing or cut"),
    ("one file too many", [A + file(2, "x")], None, [],
     "a: line 6: more files than the header tells of"),
    ("a record that is no JSON", [A.replace(b'"a"', b'"\x01"')], None, [], "a: line 2: not JSON: "),
    ("a record that is no UTF-8", [A.replace(b'"a"', b'"\xff"')], None, [],
     "a: line 2: not JSON: "),
    ("bytes behind an object", [A.replace(b'"a"}', b'"a"}\0')], None, [],
     "a: line 2: not JSON: "),
    ("a header of another schema", [header(0, schema=2)], None, [],
     "a: line 1: a header of another schema"),
    ("a header of another tool", [header(0, tool="quorl")], None, [],
     "a: line 1: a header of another tool"),
    ("a header without a tool", [header(0).replace(b'"tool"', b'"made"')], None, [],
     "a: line 1: a header of another tool"),
    ("another tool with a schema of its own", [A, header(0, schema=2, tool="QUORL-JS")], None, [],
     "b: line 1: a header of another tool"),
    ("a header without a count", [header(0).replace(b"fileCount", b"count")], None, [],
     "a: line 1: a header without version or fileCount"),
    ("another version", [A, header(0, "1.0.1")], None, [],
     "b: line 1: written by version 1.0.1, others by 1.0.0"),
    ("line ends of two bytes", [A.replace(b"\n", b"\r\n")], None, [],
     "a: line 1: ends in CR LF instead of a line feed"),
    ("line ends of two bytes from the second run on", [A + B.replace(b"\n", b"\r\n")], None, [],
     "a: line 6: ends in CR LF instead of a line feed"),
    ("a record whose line ends in two bytes", [B.replace(b'"c"}', b'"c"}\r')], None, [],
     "a: line 2: ends in CR LF instead of a line feed"),
    ("a file whose line ends in two bytes", [A, B[:-1] + b"\r\n"], None, [],
     "b: line 3: ends in CR LF instead of a line feed"),
    ("an empty line with two bytes at its end", [B + b"\r\n"], None, [],
     "a: line 4: ends in CR LF instead of a line feed"),
    ("cut between the two bytes", [B[:-1] + b"\r"], None, [],
     "a: line 3: cut, it has no line feed"),
    ("a file without a path", [B.replace(b'"path"', b'"name"')], None, [],
     "a: line 3: a file without path or status"),
    ("a path that is no base64", [ODD.replace(b"/wou", b"!!!!")], None, [],
     "a: line 2: pathBytes is not base64"),
    ("nesting that is meant to hurt",
     [header(1) + b'{"type":"record","file":0,"x":' + b"[" * 1_000_000 + b"\n"], None, [],
     "a: line 2: not JSON: "),
    ("a file that the list lacks", [A], b"one.js\n", [],
     "a: not in list list, or not as often as in the SHARDs: two.js"),
    ("a file twice", [A, A], b"one.js\ntwo.js\n", [],
     "b: not in list list, or not as often as in the SHARDs: one.js"),
    ("files that no shard has", [B], b"zero.js\nthree.js\none.js\n", [],
     "2 files of list list are in no SHARD; the first is zero.js"),
    ("control bytes in a message", [B], b"three.js\na\x1bb.js\n", [],
     "1 file of list list is in no SHARD; the first is a\\x1bb.js"),
]

NAMED_FILES = {"a": A, "b": B, "[a,b]": C, "[]": C, "{a}": C, "SHARD": C, "--null": C, "a=b": C,
               "%%": C, "list": b"three.js\ntwo.js\none.js\n", "[list,a]": b"c.js\n",
               "--no": b"c.js\n", "null list": b"c.js\0three.js"}

# name, arguments, status, standard output, standard error; the files are there
ARGUMENTS = [
    ("brackets", ["[a,b]"], 0, C, ""),
    ("brackets among others", ["a", "[a,b]"], 0, A_THEN_C, ""),
    ("brackets around nothing", ["[]"], 0, C, ""),
    ("brackets behind --", ["--", "[a,b]"], 0, C, ""),
    ("brackets before and behind --", ["[]", "--", "[a,b]"], 0, C_TWICE, ""),
    ("brackets of a shard that is not there", ["[a]"], 2, b"", "[a]: No such file or directory"),
    ("braces", ["{a}"], 0, C, ""),
    ("an equals sign", ["a=b"], 0, C, ""),
    ("the argument reader's own separator", ["%%"], 0, C, ""),
    ("the word of the usage text", ["SHARD"], 0, C, ""),
    ("an option behind --", ["--", "--null"], 0, C, ""),
    ("-- behind --", ["--", "--"], 2, b"", "--: No such file or directory"),
    ("a shard without a name", ["a", ""], 2, b"", "'': No such file or directory"),
    ("a device that could not be read twice", ["a", "/dev/stdin"], 2, b"",
     "/dev/stdin: not a regular file"),
    ("a list", ["--files-from", "list", "a", "b"], 0, B_FIRST, ""),
    ("a joined list", ["a", "b", "--files-from=list"], 0, B_FIRST, ""),
    ("a list behind a shard, and -- behind it", ["a", "--files-from=list", "--", "b"], 0, B_FIRST,
     ""),
    ("a list in brackets", ["--files-from", "[list,a]", "[a,b]"], 0, C, ""),
    ("a joined list in brackets", ["--files-from=[list,a]", "[a,b]"], 0, C, ""),
    ("a list of names with NUL bytes", ["--files-from=null list", "--null", "b", "[]"], 0,
     C_THEN_B, ""),
    ("-0 before the list, and twice", ["-0", "--files-from", "null list", "-0", "b", "[]"], 0,
     C_THEN_B, ""),
    ("an empty joined list", ["--files-from=", "a", "b"], 2, b"",
     "list : No such file or directory"),
    ("an empty list", ["--files-from", "", "a", "b"], 2, b"", "list : No such file or directory"),
    ("the last of several lists", ["--files-from=gone", "--files-from=list", "a", "b"], 0, B_FIRST,
     ""),
    ("an output file", ["-o", "merged", "a"], 0, b"", ""),
    ("standard output by its name", ["-o", "-", "a"], 0, A, ""),
    ("an output file that is a shard", ["a", "--output=a"], 2, b"", "a: is also a SHARD"),
    ("an output file that cannot be", ["a", "--output=gone/b"], 2, b"",
     "gone/b: No such file or directory"),
    ("a list called like an option", ["--files-from", "--no", "[]"], 0, C, ""),
]


def run(quorl_js, folder, shards, names, options, **streams):
    arguments = [quorl_js, "merge"] + options
    for letter, shard in zip("abc", shards):
        (folder / letter).write_bytes(shard)
        arguments.append(letter)
    if names is not None:
        (folder / "list").write_bytes(names)
        arguments += ["--files-from", "list"]
    return subprocess.run(arguments, cwd=folder, check=False, stderr=subprocess.PIPE,
                          **dict({"stdout": subprocess.PIPE}, **streams))


def faults(quorl_js, folder):
    for name, shards, names, options, status, output in GOOD:
        done = run(quorl_js, folder, shards, names, options)
        if (done.returncode, done.stdout, done.stderr) != (status, output, b""):
            yield "%s: %d %r %r" % (name, done.returncode, done.stdout[:400], done.stderr)
    for name, shards, names, options, message in BAD:
        done = run(quorl_js, folder, shards, names, options)
        says = done.stderr.decode("utf-8", "replace")
        expected = "quorl-js: %s\n" % message
        if message.endswith(": ") and says.startswith(expected[:-1]) and says.count("\n") == 1:
            expected = says
        if (done.returncode, done.stdout, says) != (2, b"", expected):
            yield "%s: %d %r %r" % (name, done.returncode, done.stdout[:400], says)
    for name, content in NAMED_FILES.items():
        (folder / name).write_bytes(content)
    for name, arguments, status, output, message in ARGUMENTS:
        done = subprocess.run([quorl_js, "merge"] + arguments, cwd=folder, check=False,
                              stdin=subprocess.PIPE, capture_output=True)
        says = ("quorl-js: %s\n" % message if message else "").encode()
        if (done.returncode, done.stdout, done.stderr) != (status, output, says):
            yield "%s: %d %r %r" % (name, done.returncode, done.stdout[:400], done.stderr)
    done = run(quorl_js, folder, [b""], b"", [])
    if done.returncode != 0 or json.loads(done.stdout)["fileCount"] != 0:
        yield "nothing asked for and nothing there: %r" % done
    with open("/dev/full", "wb") as full:
        done = run(quorl_js, folder, [A], None, [], stdout=full)
    if (done.returncode, done.stderr) != (2, b"quorl-js: standard output: No space left on "
                                             b"device\n"):
        yield "/dev/full: %r" % done
    reading, writing = os.pipe()
    os.close(reading)
    done = run(quorl_js, folder, [A], None, [], stdout=writing)
    os.close(writing)
    if (done.returncode, done.stderr) != (-signal.SIGPIPE, b""):
        yield "a closed pipe: %r" % done
    (folder / "a").write_bytes(A)
    (folder / "b").write_bytes(B)
    if (folder / "merged").read_bytes() != A:
        yield "-o: %r" % (folder / "merged").read_bytes()[:400]
    # A shard that is cut leaves the file as it was, and nothing beside it.
    (folder / "cut").write_bytes(A[:-3])
    before = sorted(os.listdir(folder))
    done = subprocess.run([quorl_js, "merge", "-o", "merged", "cut"], cwd=folder, check=False,
                          stderr=subprocess.PIPE)
    if (done.returncode, (folder / "merged").read_bytes(), sorted(os.listdir(folder))) != (
            2, A, before):
        yield "-o of a shard that is cut: %r" % done
    done = subprocess.run([quorl_js, "merge", "--files-from", "-", "b", "a"], cwd=folder,
                          input=b"three.js\ntwo.js\none.js\n", check=False,
                          stdout=subprocess.PIPE)
    if (done.returncode, done.stdout) != (0, B_FIRST):
        yield "a list from standard input: %r" % done
    done = subprocess.run([quorl_js, "merge", "--help"], check=False, stdout=subprocess.PIPE)
    if done.returncode != 0 or not done.stdout.startswith(b"Usage: quorl-js merge "):
        yield "--help: %r" % done


def main():
    quorl_js, scratch = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2])
    scratch.mkdir(parents=True, exist_ok=True)
    found = list(faults(quorl_js, scratch))
    print("\n".join(found) or "%d cases" % (len(GOOD) + len(BAD) + len(ARGUMENTS)))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
