"""The format columns of every case holds what the ranges of ndjson say.

usage: columns_test.py QUORL_JS CASES
"""
import json
import pathlib
import subprocess
import sys

KEYS = ("item", "container", "line", "endLine", "kind", "name")
RECORD_KEYS = ("nodeID", "branchTypeAsString", "contents")


def lines_of(quorl_js, path, *options):
    done = subprocess.run([quorl_js, path, "--quiet", *options], check=True, stdout=subprocess.PIPE)
    return [json.loads(line) for line in done.stdout.split(b"\n")[1:-1]]


def items_by_ranges(lines):
    """The items in the order of their numbers, and the keys of the file."""
    *records, file = lines
    items = [[record["source"][key] for key in KEYS] + [record[key] for key in RECORD_KEYS]
             for record in records if record["source"] is not None]
    items += [[item[key] for key in KEYS] + [None] * len(RECORD_KEYS)
              for item in file.pop("unrecorded")]
    del file["recordCount"]
    return sorted(items, key=lambda item: item[0]), file


def items_by_columns(lines):
    (file,) = lines
    columns = file.pop("items")
    lists = [columns.pop(key) for key in KEYS + RECORD_KEYS]
    # Beside them there are only the exact bytes of names that are not UTF-8.
    assert set(columns) <= {"nameBytes"}, set(columns)
    assert len({len(each) for each in lists}) == 1, "lists of different lengths"
    return [list(item) for item in zip(*lists)], file


def main():
    quorl_js, cases = sys.argv[1], pathlib.Path(sys.argv[2])
    inputs = sorted(path for path in cases.glob("*/*/*") if path.stem == "input")
    assert len(inputs) > 40, inputs
    count = 0
    for path in inputs:
        expected, file = items_by_ranges(lines_of(quorl_js, path, "--format", "ndjson", "--ranges"))
        found = items_by_columns(lines_of(quorl_js, path, "--format", "columns"))
        assert found == (expected, file), path
        assert [item[0] for item in expected] == list(range(len(expected))), path
        count += len(expected)
    assert count > 500, count
    print("%d items of %d files" % (count, len(inputs)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
