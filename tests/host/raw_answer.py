"""The module's raw answer, read by its rules and by nothing of the program's own reader.

What follows is the record's layout as lines: a text has its control bytes escaped, so that each
value stands on lines of its own, and a line is known by its key.
"""
import re

ESCAPES = {b"n": b"\n", b"r": b"\r", b"t": b"\t", b'"': b'"', b"'": b"'", b"\\": b"\\"}
TEXT_KEYS = ("lineage", "argumentList", "branchTypeAsString", "filePath", "contents",
             "simpleFunctionName")


def unescape(text):
    return re.sub(rb"\\(.)", lambda match: ESCAPES[match.group(1)], text, flags=re.S)


def member(line):
    """The key and the written value of a line such as '    "nodeID": 3,'."""
    key, value = re.fullmatch(rb'    "(\w+)": (.*?),?', line, re.S).groups()
    return key.decode(), value


def read_record(lines):
    record = {}
    while lines[0] not in (b"  }", b"  },"):
        key, value = member(lines.pop(0))
        if key in TEXT_KEYS:
            record[key] = unescape(value[1:-1])
        elif key == "childNodeIDs":
            record[key] = []
            while value != b"[]" and lines[0] != b"    ],":
                record[key].append(int(lines.pop(0).strip(b" ,")))
            if value != b"[]":
                lines.pop(0)
        elif key == "tags":
            record[key] = []
            while value != b"[]" and lines[0] != b"],":
                tag = lines.pop(0).strip()
                if tag:
                    record[key].append(tag[1:-1])
            if value != b"[]":
                lines.pop(0)
        else:
            record[key] = {b"false": False, b"[]": []}.get(value)
            if record[key] is None:
                record[key] = int(value)
    lines.pop(0)
    return record


def read_answer(raw):
    """The records as dictionaries; texts are bytes."""
    lines = raw.split(b"\n")
    assert lines[0] == b"[" and lines[-2:] == [b"]", b""], raw[:80]
    lines = lines[1:-2]
    records = []
    while lines:
        assert lines.pop(0) == b"  {"
        records.append(read_record(lines))
    return records


# One record with what hurts: a hidden first child, tags in their three forms, every escape, bytes
# that are no UTF-8, control bytes. And what it says, derived by hand.
ODD_ANSWER = (b'[\n  {\n    "lineNumber": -7,\n    "lineage": "",\n    "argumentList": "",\n'
              b'    "childNodeIDs": [   ,\n      8,\n      9\n    ],\n    "nodeID": 0,\n'
              b'    "parentID": -1,\n    "fileID": 0,\n    "functionID": -1,\n'
              b'    "isCalled": false,\n    "branchTypeAsString": "error: Zero child objects",\n'
              b'    "filePath": "a\\"\\\'\\n\xff.js",\n    "tags": [\n      "iife"\n\n'
              b'      "constructor"\n      "scope-wrapper"\n    "variable"\n],\n'
              b'    "contents": "it\\\'s \\"q\\" \\\\ \\n\\r\\t \x01\x1b\x7f \xe2\x82 \xc3\xa9",\n'
              b'    "simpleFunctionName": "\\\\n",\n    "calloutIDs": []\n  }\n]\n')
ODD_RECORD = {
    "lineNumber": -7, "lineage": b"", "argumentList": b"", "childNodeIDs": [8, 9], "nodeID": 0,
    "parentID": -1, "fileID": 0, "functionID": -1, "isCalled": False,
    "branchTypeAsString": b"error: Zero child objects", "filePath": b"a\"'\n\xff.js",
    "tags": [b"iife", b"constructor", b"scope-wrapper", b"variable"],
    "contents": b"it's \"q\" \\ \n\r\t \x01\x1b\x7f \xe2\x82 \xc3\xa9",
    "simpleFunctionName": b"\\n", "calloutIDs": []}


def check_the_check():
    assert read_answer(ODD_ANSWER) == [ODD_RECORD], read_answer(ODD_ANSWER)
    assert read_answer(b"[\n]\n") == []
