"""Checks that the work of parsing a hostile text grows no faster than its size.

usage: growth_test.py GROWTH_DRIVER [--outline] [NAME ...]

Work is counted in instructions of the program, never in seconds: by perf, or by valgrind's
callgrind where perf may not count. Every text (or the named ones) is parsed at three sizes, each
ten times the one before. Subtracted is what it costs to parse an empty line. With --outline the work
is that of making the text's outline, without the parse.

The rule: the work per byte at the largest size is at most 1.5 times the least work per byte at the
two smaller sizes. Linear work gives a ratio of about 1, quadratic work 10 or 100. Less than 1 is
fine: text past a limit is ignored. Less than one instruction per byte means that the counting is
wrong, since each byte is read at least once.
"""
import concurrent.futures
import itertools
import os
import re
import subprocess
import sys
import tempfile

FACTOR = 1.5
PROCESSES = 2
GROUP = 8  # texts for one start of the counter


def run(command):
    """Runs the command, which has to succeed, and gives its standard output and error."""
    # Names bound at the start are the same for all runs.
    environment = dict(os.environ, LC_ALL="C", LD_BIND_NOW="1")
    done = subprocess.run(command, env=environment, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE)
    if done.returncode != 0:
        raise NotCounted("%s: status %d\n%s" % (" ".join(command), done.returncode, done.stderr))
    return done.stdout, done.stderr


class NotCounted(Exception):
    """A run without a count of its instructions."""


class Perf:
    """Hardware counters: fast, so the texts are large. They count whole programs."""
    name, sizes = "perf", (10_000, 100_000, 1_000_000)

    @staticmethod
    def read(report):
        """Sum the counters: one line per kind of core, possibly words instead of a number."""
        counts = [line.split(",")[0] for line in report.splitlines() if "instructions" in line]
        return sum(int(count) for count in counts if count.isdigit())

    def count(self, command):
        _, report = run(["perf", "stat", "-e", "instructions:u", "-x,", "--"] + command)
        if self.read(report) == 0:
            raise NotCounted(report)
        return self.read(report)

    def works(self, driver, names, outline):
        whole, rest = (["--outline"], ["--answers"]) if outline else ([], ["--baseline"])
        # The driver does the first size twice, and here there is one.
        return [[(self.count([driver, *whole, name, str(size)]) -
                  self.count([driver, *rest, name, str(size)])) // 2 for size in self.sizes]
                for name in names]


class Callgrind:
    """A simulated processor: some fifty times slower, but it counts single calls. Starting it takes
    half a second, so one program parses several texts, at all sizes."""
    name, sizes = "valgrind", (1_000, 10_000, 100_000)

    @staticmethod
    def read(profile):
        count = re.search(r"^totals: (\d+)$", profile, re.M)
        if not count:
            raise NotCounted(profile)
        return int(count.group(1))

    def works(self, driver, names, outline):
        function, mode = ("outlineText", ["--outline"]) if outline else ("ParseJS", [])
        with tempfile.TemporaryDirectory() as folder:
            profile = os.path.join(folder, "profile")
            printed, _ = run(["valgrind", "--tool=callgrind",
                              "--callgrind-out-file=" + profile + ".%p",
                              "--toggle-collect=" + function, "--dump-after=" + function, driver,
                              *mode, ",".join(names), *map(str, self.sizes)])
            processes = dict(line.split() for line in printed.splitlines())
            return [self.works_of("%s.%s" % (profile, processes[name])) for name in names]

    def works_of(self, profile):
        """The works of one text: its process wrote a profile for each call. The first one also has
        what is done once in a process, the second one is over the empty line."""
        counts = []
        for number in range(len(self.sizes) + 1):
            with open("%s.%d" % (profile, number + 2), encoding="utf-8") as file:
                counts.append(self.read(file.read()))
        return [count - counts[0] for count in counts[1:]]


def choose_counter(driver, name, outline):
    why_not = []
    for counter in (Perf(), Callgrind()):
        try:
            counter.works(driver, [name], outline)
            return counter
        except (NotCounted, OSError) as fault:
            why_not.append(str(fault))
    sys.exit("growth_test: nothing counts instructions here:\n" + "\n".join(why_not))


def judge(sizes, works):
    """Return the work per byte at each size, its growth, and what is wrong, if anything."""
    per_byte = [work / size for work, size in zip(works, sizes)]
    # A count that does not see the work finds none, or as much whatever the size.
    if max(works) < 2 * min(works) or min(works) <= 0:
        return per_byte, 0, "not counted"
    growth = per_byte[-1] / max(min(per_byte[:-1]), 1)  # less than an instruction is a mere search
    return per_byte, growth, "GROWS" if growth > FACTOR else ""


def check_the_checks():
    """Each rule must fail for counts that break it."""
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
    assert Callgrind.read("events: Ir\nsummary: 99\n\ntotals: 1234\n") == 1234


def main():
    check_the_checks()
    driver = sys.argv[1]
    outline = "--outline" in sys.argv[2:]
    names = [word for word in sys.argv[2:] if word != "--outline"] or subprocess.run(
        [driver, "--list"], check=True, text=True, stdout=subprocess.PIPE).stdout.split()
    assert names
    counter = choose_counter(driver, names[0], outline)
    print("instructions per byte, counted by " + counter.name)
    row = "{:<42}" + "{:>12}" * len(counter.sizes) + "{:>10}  {}"
    print(row.format("", *counter.sizes, "growth", ""))
    faults = 0
    with concurrent.futures.ThreadPoolExecutor(PROCESSES) as pool:
        groups = [names[at:at + GROUP] for at in range(0, len(names), GROUP)]
        works = pool.map(lambda group: counter.works(driver, group, outline), groups)
        for name, work in zip(names, itertools.chain.from_iterable(works)):
            per_byte, growth, fault = judge(counter.sizes, work)
            cells = ["{:.1f}".format(value) for value in per_byte] + ["{:.2f}".format(growth)]
            print(row.format(name, *cells, fault).rstrip(), flush=True)
            faults += bool(fault)
    print("{} of {} texts cost more than in proportion".format(faults, len(names)))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
