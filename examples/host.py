"""A host in Python: opens the plug-in, parses one file and prints the answer.

usage: host.py MODULE FILE
"""
import ctypes
import os
import sys

if len(sys.argv) != 3:
    print("usage: host.py MODULE FILE", file=sys.stderr)
    sys.exit(2)
try:
    plugin = ctypes.CDLL(sys.argv[1])
except OSError as error:
    print(error, file=sys.stderr)
    sys.exit(2)
plugin.ParseJS.restype = ctypes.c_char_p  # ctypes copies the answer: it outlives the next call
plugin.ParseJS.argtypes = [ctypes.c_char_p, ctypes.c_char_p]

# The plug-in prints diagnostic lines: keep standard output for the answer alone.
out = os.fdopen(os.dup(1), "wb")
os.dup2(os.open(os.devnull, os.O_WRONLY), 1)

text = plugin.ParseJS(os.fsencode(sys.argv[2]), None)
if text is None:
    sys.exit("out of memory")
plugin.CleanupJS()
if not text.startswith(b"[\n"):  # only an array of records begins like that
    sys.stderr.buffer.write(text + b"\n")
    sys.exit(1)
with out:
    out.write(text)
