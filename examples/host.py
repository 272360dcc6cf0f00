"""A minimal host: loads the plug-in, parses one file and prints its outline.

usage: host.py MODULE FILE
"""
import ctypes
import json
import os
import re
import sys

plugin = ctypes.CDLL(os.path.abspath(sys.argv[1]))
plugin.ParseJS.restype = ctypes.c_char_p  # ctypes copies the answer: it outlives the next call
plugin.ParseJS.argtypes = [ctypes.c_char_p, ctypes.c_char_p]


def parse(path):
    """Returns the records of a file as a list of dictionaries."""
    answer = plugin.ParseJS(os.fsencode(path), None)
    if answer is None:
        raise MemoryError
    text = os.fsdecode(answer)
    # Repair what json.loads does not accept.
    text = text.replace(r"\'", "'")
    text = text.replace('"childNodeIDs": [   ,', '"childNodeIDs": [')
    text = re.sub(r'"(\n[ \n]*)"', r'",\1"', text)  # no comma between two tags
    records = json.loads(text, strict=False)  # not strict: a path may hold control characters
    if "error" in records[0]:
        raise RuntimeError(records[0]["error"])
    return records


# The plug-in prints diagnostics to standard output: keep the real one for the outline.
out = os.fdopen(os.dup(1), "w", errors="surrogateescape")
os.dup2(os.open(os.devnull, os.O_WRONLY), 1)

try:
    records = parse(sys.argv[2])
except RuntimeError as error:
    sys.exit(str(error))
depth = {-1: -1}
for record in records:
    depth[record["nodeID"]] = level = depth[record["parentID"]] + 1
    print("%5d %-12s %s%s" % (record["lineNumber"], record["branchTypeAsString"], "  " * level,
                              record["contents"]), file=out)
