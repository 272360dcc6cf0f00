"""Checks the project's rules that no compiler checks.

usage: house_rules_test.py PROJECT_ROOT

- A folder of src/ includes only the folders below it.
- A room of host/ includes only the rooms below it, and only the C header of src/.
- examples/ includes only the C header and files beside it.
- Only one class writes to standard output and standard error.
- Sources are ASCII, without tabs and trailing blanks.
"""
import pathlib
import re
import sys

# What each folder of src/ may include besides itself.
BELOW = {
    "base": set(),
    "text": {"base"},
    "tree": {"base"},
    "cleaner": {"base", "text"},
    "detect": {"base", "text"},
    "refine": {"base", "text", "tree", "detect"},
    "records": {"base", "text", "tree", "detect", "html/attributes.h"},
    "html": {"base", "text", "tree", "builder/script_content.h", "detect/answer_table.h"},
    "builder": {"base", "text", "tree", "detect", "refine", "records", "html/html_structure.h"},
    "plugin": {"base", "text", "tree", "cleaner", "builder", "records"},
}
# What each room of host/ may include besides itself; main.cpp picks the command and may include all.
ROOMS = {
    "system": set(),
    "records": {"system"},
    "outline": {"system", "records"},
    "sources": {"system"},
    "formats": {"system", "records", "outline"},
    "workers": {"system", "records", "outline", "sources", "formats", "plugin/plugin_api.h"},
    "cli": {"system", "sources", "formats", "outline/item.h", "records/labels.h",
            "workers/file_limits.h"},
    "index": {"system", "records", "outline", "sources", "formats"},
    "lsp": {"system", "records", "outline", "sources", "workers", "cli", "index",
            "run/command_help.h"},
    "run": {"system", "sources", "formats", "workers", "cli"},
    "merge": {"system", "records", "sources", "formats", "cli", "run/command_help.h",
              "run/exit_status.h", "run/output.h"},
    "indexing": {"system", "records", "outline", "sources", "formats", "workers", "cli", "index",
                 "run", "merge"},
    "view": {"system", "outline", "sources", "formats", "workers", "cli", "index", "run"},
}
C_HEADER = "plugin/plugin_api.h"
WRITER = ("src/base/stream_writer.h", "src/base/stream_writer.cpp")
OUTPUT = re.compile(r"std::c(out|err|log)\b|\b(f|v|vf)?printf\(|\bf?puts\(|\bf?putc(har)?\(|"
                    r"\bfwrite\(|\bperror\(")
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.M)


def include_faults(name, text):
    top, _, rest = name.partition("/")
    includes = INCLUDE.findall(text)
    if top == "examples":
        return ["includes " + path for path in includes
                if path != C_HEADER and "/" in path]
    if top not in ("src", "host"):
        return []
    folder = rest.split("/")[0]
    if top == "src":
        allowed = BELOW[folder] | {folder}
    elif rest == "main.cpp":
        allowed = set(ROOMS)
    else:
        allowed = ROOMS[folder] | {folder}
    return ["includes " + path for path in includes
            if path not in allowed and path.split("/")[0] not in allowed]


def output_faults(name, text):
    if not name.startswith("src/") or name in WRITER:
        return []
    return ["writes by itself: " + hit.group(0) for hit in OUTPUT.finditer(text)]


def layout_faults(_, text):
    faults = []
    for number, line in enumerate(text.split("\n"), 1):
        if not line.isascii():
            faults.append("line %d is not ASCII" % number)
        if "\t" in line or line != line.rstrip():
            faults.append("line %d has a tab or a trailing blank" % number)
    return faults


def faults_of(name, text):
    return [name + ": " + fault for check in (include_faults, output_faults, layout_faults)
            for fault in check(name, text)]


def check_the_checks():
    """Each rule must fail for a text that breaks it."""
    red = [("src/text/a.cpp", '#include "tree/object_branch.h"\n'),
           ("src/records/a.cpp", '#include "html/html_structure.h"\n'),
           ("host/main.cpp", '#include "tree/object_branch.h"\n'),
           ("host/system/a.cpp", '#include "run/output.h"\n'),
           ("host/merge/a.cpp", '#include "run/batch.h"\n'),
           ("host/run/a.cpp", '#include "plugin/plugin_api.h"\n'),
           ("src/tree/a.cpp", 'std::cout << "x";\n'),
           ("src/tree/a.cpp", 'std::printf("x");\n'),
           ("src/tree/a.cpp", "int a;\t\n"),
           ("src/tree/a.cpp", "// \u00e9\n")]
    for name, text in red:
        assert faults_of(name, text), (name, text)
    green = [("src/text/a.cpp", '#include "text/b.h"\n#include "base/export.h"\n'),
             ("src/plugin/a.cpp", "std::snprintf(text, 1, format);\n"),
             ("host/main.cpp", '#include "merge/merge.h"\n'),
             ("host/workers/a.cpp", '#include "plugin/plugin_api.h"\n')]
    for name, text in green:
        assert not faults_of(name, text), faults_of(name, text)


def main():
    check_the_checks()
    root = pathlib.Path(sys.argv[1])
    found, count = [], 0
    for top in ("src", "host", "tests", "fuzz", "bench", "examples", "bindings"):
        for path in sorted((root / top).rglob("*")):
            name = path.relative_to(root).as_posix()
            if path.suffix not in (".h", ".c", ".cpp") or name.startswith("tests/cases/"):
                continue
            count += 1
            found += faults_of(name, path.read_bytes().decode("utf-8"))
    assert count > 40, count
    print("\n".join(found) or "%d files keep to the rules" % count)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
