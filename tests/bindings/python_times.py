"""Prints how long outline_many takes beside the program's own ndjson run. Checks nothing.

usage: python_times.py QUORL_JS LIST

LIST has a file name per line. The two runs alternate; the first pair only fills the caches.
"""
import pathlib
import statistics
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bindings/python/src"))
import quorl_js  # pylint: disable=wrong-import-position

PAIRS = 5
program, name_list = sys.argv[1:]
names = pathlib.Path(name_list).read_bytes().splitlines()


def run_program():
    subprocess.run([program, "--format", "ndjson", "--quiet", "--files-from", name_list],
                   stdout=subprocess.DEVNULL, check=False)
    return 0


def run_package():
    with quorl_js.outline_many(names, program=program) as outlines:
        return sum(len(outline.items) for outline in outlines)


def seconds_of(call):
    begin = time.perf_counter()
    count = call()
    return time.perf_counter() - begin, count


pairs = [(seconds_of(run_program)[0], *seconds_of(run_package)) for _ in range(PAIRS + 1)][1:]
for own, package, count in pairs:
    print("ndjson %.2f s, outline_many %.2f s for %d items: %.2f times" %
          (own, package, count, package / own))
print("median %.2f times" % statistics.median(package / own for own, package, _ in pairs))
