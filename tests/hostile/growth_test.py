"""Each hostile text costs work in proportion to its size.

usage: growth_test.py GROWTH_DRIVER [--outline] [NAME ...]

Work is counted in instructions of the program, never in seconds: by perf, or by valgrind's
callgrind where perf may not count. Every text (or the named ones) is parsed at three sizes, each
ten times the one before. Subtracted is what the same program counts when it makes the same text
but parses an empty line in its place. With --outline the work is that of making the text's outline,
and what is subtracted is the parsing.

The rule: the work per byte at the largest size is at most 1.5 times the least work per byte at the
two smaller sizes. Work in proportion to the size gives about 1; work with the square of the size
gives 10 or 100. Less than 1 is fine: there are limits behind which a text is not looked at. Work
below one instruction per byte is a fault of the counting, since each byte is read at least once.
"""
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys

FACTOR = 1.5
PROCESSES = 2


class Perf:
    """Hardware counters: fast, so the texts are large."""
    name, sizes = "perf", (10_000, 100_000, 1_000_000)
    prefix = ["perf", "stat", "-e", "instructions:u", "-x,", "--"]

    @staticmethod
    def read(report):
        """One line for each kind of core that has a counter, which may hold words in its place."""
        counts = [line.split(",")[0] for line in report.splitlines() if "instructions" in line]
        return sum(int(count) for count in counts if count.isdigit())


class Callgrind:
    """A simulated processor: some fifty times slower."""
    name, sizes = "valgrind", (2_000, 20_000, 200_000)
    prefix = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]

    @staticmethod
    def read(report):
        count = re.search(r"Collected : (\d+)", report)
        return int(count.group(1)) if count else 0


def count(counter, command):
    """The instructions of a command, 0 if there is no count, and its standard error."""
    # Names bound at the start are the same for all runs.
    environment = dict(os.environ, LC_ALL="C", LD_BIND_NOW="1")
    run = subprocess.run(counter.prefix + command, env=environment, text=True,
                         stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    return counter.read(run.stderr) if run.returncode == 0 else 0, run.stderr


def choose_counter(driver):
    for counter in (Perf, Callgrind):
        if shutil.which(counter.prefix[0]) and count(counter, [driver, "--list"])[0] > 0:
            return counter
    sys.exit("growth_test: nothing counts instructions here: perf is missing or not permitted to, "
             "and valgrind is missing or does not run " + driver)


def work_of(counter, driver, name, makes_outline):
    modes = (["--outline"], []) if makes_outline else ([], ["--baseline"])
    works = []
    for size in counter.sizes:
        counts = []
        for command in [[driver, name, str(size)] + mode for mode in modes]:
            instructions, report = count(counter, command)
            if instructions == 0:
                sys.exit("growth_test: no count for {}\n{}".format(" ".join(command), report))
            counts.append(instructions)
        works.append(counts[0] - counts[1])
    return works


def judge(sizes, works):
    """The work per byte at each size, its growth, and what is wrong with it, if anything."""
    per_byte = [work / size for work, size in zip(works, sizes)]
    if min(per_byte) < 1:
        return per_byte, 0, "not counted"
    growth = per_byte[-1] / min(per_byte[:-1])
    return per_byte, growth, "GROWS" if growth > FACTOR else ""


def check_the_checks():
    """Each rule has to go red for counts that break it."""
    for sizes in (Perf.sizes, Callgrind.sizes):
        red = [("the square", lambda n: n * n),
               ("a hidden square", lambda n: 50 * n + n * n // 2_000),
               ("ten times the rest for each byte", lambda n: 20 * n + n * min(n, sizes[1])),
               ("nothing", lambda n: 0),
               ("a start-up", lambda n: 100_000)]
        green = [("in proportion", lambda n: 20 * n),
                 ("with a fixed part", lambda n: 20 * n + 100_000),
                 ("up to a limit", lambda n: 20 * min(n, sizes[1]) + 2 * n)]
        for name, work in red:
            assert judge(sizes, [work(n) for n in sizes])[2], name
        for name, work in green:
            assert not judge(sizes, [work(n) for n in sizes])[2], name
    assert Perf.read("1234,,instructions:u,99,100.00,,\n") == 1234
    assert Perf.read("1200,,cpu_core/instructions:u/,9,9.0,,\n34,,cpu_atom/instructions:u/,,,,\n"
                     ) == 1234
    assert Perf.read("<not counted>,,cpu_core/instructions:u/,0,0.0,,\n"
                     "34,,cpu_atom/instructions:u/,9,9.0,,\n") == 34
    assert Perf.read("<not supported>,,instructions:u,0,100.00,,\n") == 0
    assert Callgrind.read("==7== Events    : Ir\n==7== Collected : 1234\n==7==\n") == 1234
    assert Callgrind.read("valgrind: cannot run\n") == 0


def main():
    check_the_checks()
    driver = sys.argv[1]
    makes_outline = "--outline" in sys.argv[2:]
    names = [name for name in sys.argv[2:] if name != "--outline"] or subprocess.run([driver, "--list"], check=True, text=True,
                                           stdout=subprocess.PIPE).stdout.split()
    assert names
    counter = choose_counter(driver)
    print("instructions per byte, counted by " + counter.name)
    row = "{:<42}" + "{:>12}" * len(counter.sizes) + "{:>10}  {}"
    print(row.format("", *counter.sizes, "growth", ""))
    faults = 0
    with concurrent.futures.ThreadPoolExecutor(PROCESSES) as pool:
        works = pool.map(lambda name: work_of(counter, driver, name, makes_outline), names)
        for name, work in zip(names, works):
            per_byte, growth, fault = judge(counter.sizes, work)
            cells = ["{:.1f}".format(value) for value in per_byte] + ["{:.2f}".format(growth)]
            print(row.format(name, *cells, fault).rstrip(), flush=True)
            faults += bool(fault)
    print("{} of {} texts cost more than in proportion".format(faults, len(names)))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
