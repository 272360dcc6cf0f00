"""A host in Python: opens the plug-in, parses one file and prints the answer.

usage: host.py MODULE FILE
"""
import ctypes
import os
import sys

plugin = ctypes.CDLL(sys.argv[1])
# Not c_char_p: keep the pointer, so that the copy below is explicit and null is None.
plugin.ParseJS.restype = ctypes.c_void_p
plugin.ParseJS.argtypes = [ctypes.c_char_p, ctypes.c_char_p]

# The plug-in prints diagnostic lines: keep them out of the answer on standard output.
out = os.fdopen(os.dup(1), "wb")
os.dup2(os.open(os.devnull, os.O_WRONLY), 1)

answer = plugin.ParseJS(os.fsencode(sys.argv[2]), None)
if answer is None:
    sys.exit("no memory")
text = ctypes.string_at(answer)  # copied: the next call overwrites it
plugin.CleanupJS()
out.write(text)
