"""Compares the names that the built module exports with the project's list, in both directions.

usage: surface_test.py NM MODULE LIST
"""
import subprocess
import sys


def differences(exported, listed):
    """Return one line for each name that is on one side only."""
    return ["exported but not listed: " + name for name in sorted(exported - listed)] + \
           ["listed but not exported: " + name for name in sorted(listed - exported)]


def exported_names(nm, module):
    table = subprocess.run([nm, "-D", "--defined-only", module], check=True, capture_output=True,
                           text=True).stdout
    return {line.split()[-1] for line in table.splitlines() if line}


def main():
    nm, module, list_path = sys.argv[1:]
    exported = exported_names(nm, module)
    with open(list_path, encoding="ascii") as lines:
        listed = set(lines.read().split())
    # The check itself must fail if a name is missing on either side.
    assert differences({"a"}, {"a", "b"}) == ["listed but not exported: b"]
    assert differences({"a", "b"}, {"a"}) == ["exported but not listed: b"]
    assert exported, "no names in " + module
    found = differences(exported, listed)
    print("\n".join(found) or "%d names exported, %d listed" % (len(exported), len(listed)))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
