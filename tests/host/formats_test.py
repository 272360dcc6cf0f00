"""The json and ndjson formats of every case, as independent readers see them.

usage: formats_test.py READER DRIVER CASES SCRATCH [SIMDJSON_CHECK]

READER is python, jq, node or simdjson. Python compares every value with those of the raw answer;
the others have to read the same strings as Python does, counted with their bytes. A reader that is
not there ends the test with status 77, as skipped.
"""
import base64
import json
import pathlib
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
import raw_answer  # noqa: E402, which leaves nothing beside the sources

SKIPPED = 77
ANSWERED, FAILED, TOO_LARGE = "0", "2", "6"
KEYS = ["lineNumber", "lineage", "argumentList", "childNodeIDs", "nodeID", "parentID", "fileID",
        "functionID", "isCalled", "branchTypeAsString", "filePath", "tags", "contents",
        "simpleFunctionName", "calloutIDs"]
HOSTILE_NAMES = [b"\x1b[2J\x1b]0;title\x07.js", b"two\nlines.js", b"quote\"and'tick.js",
                 b"back\\slash.js", b"\xff\xfe\xc3.js", b"caf\xc3\xa9.js", b"\xed\xa0\x80.js",
                 b"{\"type\":\"file\"}.js", b"\x7f\x01.js", b"%s%n.js", b" ", b"-"]

JQ_COUNT = ('[.. | (strings, (objects | keys[])) | utf8bytelength]'
            ' | "\\(length) \\(add // 0)"')
NODE_COUNT = """
const text = require('fs').readFileSync(0, 'utf8');
let strings = 0, bytes = 0;
const add = text => { strings += 1; bytes += Buffer.byteLength(text); };
const visit = value => {
  if (typeof value === 'string') add(value);
  else if (Array.isArray(value)) value.forEach(visit);
  else if (value) Object.entries(value).forEach(([key, child]) => { add(key); visit(child); });
};
if (process.argv[1] === 'lines') text.trimEnd().split('\\n').forEach(l => visit(JSON.parse(l)));
else visit(JSON.parse(text));
console.log(strings, bytes);
"""


def reports(cases, scratch):
    """(path, status, message, answer) of every case and of what is hostile."""
    rows = [(b"input", ANSWERED, b"", path.read_bytes())
            for path in sorted(cases.rglob("expected.records"))]
    assert len(rows) > 40, len(rows)
    rows += [(name, ANSWERED, b"", raw_answer.ODD_ANSWER) for name in HOSTILE_NAMES]
    rows += [(name, FAILED, b"Could not open file: " + name, b"") for name in HOSTILE_NAMES]
    rows += [(b"empty.js", ANSWERED, b"", b"[\n]\n"), (b"big.js", TOO_LARGE, b"too large", b""),
             (b"cut.js", ANSWERED, b"", raw_answer.ODD_ANSWER[:-20])]
    return rows


def run_driver(driver, form, rows, scratch):
    arguments = [driver, form]
    for number, (path, status, message, answer) in enumerate(rows):
        file = scratch / str(number)
        file.write_bytes(answer)
        arguments += [path, status, message, str(file) if answer else ""]
    return subprocess.run(arguments, check=True, stdout=subprocess.PIPE).stdout


def expected_text(members, key, exact):
    """Checks a text, which has its exact bytes beside it if and only if it is not UTF-8."""
    assert members[key] == exact.decode("utf-8", "replace"), (key, members[key], exact)
    try:
        exact.decode("utf-8")
        assert key + "Bytes" not in members, key
    except UnicodeDecodeError:
        assert base64.b64decode(members[key + "Bytes"], validate=True) == exact, key


def check_record(record, raw):
    assert [key for key in record if not key.endswith("Bytes")] == KEYS, list(record)
    assert list(raw) == KEYS, list(raw)
    for key, value in raw.items():
        if isinstance(value, bytes):
            expected_text(record, key, value)
        elif key == "tags":
            assert record[key] == [tag.decode() for tag in value], record[key]
        else:
            assert record[key] == value and type(record[key]) is type(value), (key, record[key])


def check_file(file, records, row):
    path, status, message, answer = row
    expected_text(file, "path", path)
    assert file["microseconds"] is None and file["sourceBytes"] == len(answer), file
    if path == b"cut.js":
        assert (file["status"], records) == ("unreadable", []), file
        assert "record 0" in file["message"], file
    elif status == ANSWERED:
        assert (file["status"], file["message"]) == ("answered", None), file
        raw = raw_answer.read_answer(answer)
        assert len(raw) == len(records), (len(raw), len(records))
        for record, raw_record in zip(records, raw):
            check_record(record, raw_record)
    else:
        assert file["status"] == {FAILED: "failed", TOO_LARGE: "too-large"}[status], file
        expected_text(file, "message", message)
        assert records == [], records


def check_header(header):
    assert header["schema"] == 1 and header["tool"] == "quorl-js", header
    assert header["version"].count(".") == 2, header


def check_json(text, rows):
    document = json.loads(text.decode("utf-8"))
    assert list(document) == ["schema", "tool", "version", "files"], list(document)
    check_header(document)
    assert len(document["files"]) == len(rows)
    for file, row in zip(document["files"], rows):
        check_file(file, file["records"], row)


def check_ndjson(text, rows):
    assert text.endswith(b"\n")
    lines = [json.loads(line) for line in text.decode("utf-8").split("\n")[:-1]]
    header = lines.pop(0)
    assert header.pop("type") == "header" and header["fileCount"] == len(rows), header
    check_header(header)
    for number, row in enumerate(rows):
        records = []
        while lines[0]["type"] == "record":
            record = lines.pop(0)
            assert record.pop("type") == "record" and record.pop("file") == number, record
            records.append(record)
        file = lines.pop(0)
        assert (file["type"], file["file"]) == ("file", number), file
        assert file["recordCount"] == len(records), file
        check_file(file, records, row)
    assert lines == [], lines


def count_strings(value):
    """How many strings there are, keys included, and their bytes."""
    if isinstance(value, str):
        return 1, len(value.encode())
    if isinstance(value, dict):
        counts = [count_strings(part) for item in value.items() for part in item]
    elif isinstance(value, list):
        counts = [count_strings(part) for part in value]
    else:
        counts = []
    return sum(count for count, _ in counts), sum(count for _, count in counts)


def count_with(command, text):
    """The sums of what the reader prints, which is two numbers for each document it reads."""
    done = subprocess.run(command, input=text, check=True, stdout=subprocess.PIPE)
    numbers = [line.strip(b'"').split() for line in done.stdout.splitlines()]
    return sum(int(a) for a, _ in numbers), sum(int(b) for _, b in numbers)


def check_reader(commands, json_text, ndjson_text):
    documents = [json.loads(line) for line in ndjson_text.decode().split("\n")[:-1]]
    for command, text, value in ((commands[0], json_text, json.loads(json_text)),
                                 (commands[1], ndjson_text, documents)):
        counted = count_with(command, text)
        assert counted == count_strings(value), (command, counted, count_strings(value))
    # It has to refuse what is not JSON, or nothing has been shown.
    refused = subprocess.run(commands[0], input=raw_answer.ODD_ANSWER, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL, check=False)
    assert refused.returncode != 0, commands[0]


def main():
    reader, driver, cases, scratch, *simdjson_check = sys.argv[1:]
    raw_answer.check_the_check()
    scratch = pathlib.Path(scratch) / reader
    scratch.mkdir(parents=True, exist_ok=True)
    commands = {"jq": [["jq", JQ_COUNT]] * 2,
                "node": [["node", "-e", NODE_COUNT, "one"], ["node", "-e", NODE_COUNT, "lines"]],
                "simdjson": [simdjson_check, simdjson_check + ["--lines"]]}.get(reader)
    if commands and not (commands[0] and shutil.which(commands[0][0])):
        print("skipped: there is no %s on this machine" % reader)
        return SKIPPED
    rows = reports(pathlib.Path(cases), scratch)
    texts = [run_driver(driver, form, rows, scratch) for form in ("json", "ndjson")]
    if commands:
        check_reader(commands, *texts)
    else:
        check_json(texts[0], rows)
        check_ndjson(texts[1], rows)
    print("%d files read by %s" % (len(rows), reader))
    return 0


if __name__ == "__main__":
    sys.exit(main())
