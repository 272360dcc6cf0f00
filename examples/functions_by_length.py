"""Draws how long the functions of a code base are, and lists the longest.

usage: functions_by_length.py FOLDER PICTURE
"""
import pathlib
import sys

import matplotlib
import matplotlib.pyplot as plt
import quorl_js

SUFFIXES = {".js", ".jsx", ".ts", ".tsx", ".mjs", ".cjs"}
KINDS = {"function", "method", "constructor", "getter", "setter"}

matplotlib.use("Agg")  # needs no display
if len(sys.argv) != 3:
    sys.exit(__doc__)
folder, picture = pathlib.Path(sys.argv[1]), sys.argv[2]
scripts = sorted(path for path in folder.rglob("*") if path.suffix in SUFFIXES and path.is_file())
with quorl_js.outline_many(scripts) as outlines:
    functions = [item for outline in outlines for item in outline.items if item.kind in KINDS]
if not functions:
    sys.exit("%s: no functions" % folder)
functions.sort(key=lambda item: (-item.line_count, item.path, item.line))
for item in functions[:10]:
    print("%5d lines  %s:%d  %s" % (item.line_count, item.path, item.line, item.name))

# A bar is twice as wide as the one before it: 1 line, 2 to 3, 4 to 7 and so on.
counts = [0] * functions[0].line_count.bit_length()
for item in functions:
    counts[item.line_count.bit_length() - 1] += 1
names = ["1"] + ["%d-%d" % (1 << bits, (2 << bits) - 1) for bits in range(1, len(counts))]
figure, axes = plt.subplots(figsize=(8, 4.5))
bars = axes.bar(names, counts, color="#3b6ea5")
axes.bar_label(bars)
axes.set_xlabel("Lines")
axes.set_ylabel("Functions")
axes.set_title("%d functions in %d files of %s" % (len(functions), len(scripts), folder.name))
axes.spines[["top", "right"]].set_visible(False)
figure.tight_layout()
figure.savefig(picture, dpi=120)
