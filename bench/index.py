"""Measures quorl-js index, query and status over the ten thousand files of many.py, beside ndjson
output and universal-ctags in the same run, and how building grows with the number of files.
"""
import os
import shutil
import statistics
import subprocess
import time

import many

TIME_HEADS = ["command", "median ms", "least ms", "cpu ms", "MB", "bar"]
RATIO_HEADS = ["full build", "measured", "bar"]
GROWTH_HEADS = ["files", "MB", "wall s", "cpu s", "us a file", "cpu us a file"]
ASKED = 9
NAME = "render"  # which many files define
GROWTH = (1_000, 10_000, 100_000)


def run(command, folder, statuses=(0,)):
    """Return (wall s, processor s, largest process in bytes) of a process and its workers."""
    before = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), cwd=folder, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - before
    process.returncode = os.waitstatus_to_exitcode(status)
    assert process.returncode in statuses, (command, process.returncode)
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def middle(samples, place):
    return statistics.median(sample[place] for sample in samples)


def row(label, samples, bar=""):
    return [label, middle(samples, 0) * 1e3, min(sample[0] for sample in samples) * 1e3,
            middle(samples, 1) * 1e3, max(sample[2] for sample in samples) * 1e-6, bar]


class Index:
    def __init__(self, cache, quorl_js, rounds):
        self.quorl_js, self.rounds = quorl_js, rounds
        tree = many.prepare(cache)
        self.scratch = cache / "index"
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir()
        # A copy, since files of it are changed.
        self.tree = self.scratch / "tree"
        source = next(cache.glob("many-*/"))
        assert str(source) in tree.read_text().partition("\n")[0]
        shutil.copytree(source, self.tree)
        self.names = sorted(str(path.relative_to(self.tree)) for path in self.tree.rglob("*")
                            if path.is_file())
        self.bytes = sum((self.tree / name).stat().st_size for name in self.names)
        self.index = self.scratch / "code.index"
        self.listing = self.scratch / "list"
        self.listing.write_text("".join("%s\n" % name for name in self.names))
        for name in self.names:  # as files are that were there before
            os.utime(self.tree / name, (1_600_000_000, 1_600_000_000))
        time.sleep(3)  # for the times of their entries

    def build(self):
        self.index.unlink(missing_ok=True)
        return run([self.quorl_js, "index", self.index, "-q", "-j", "2", "-r", "--node-modules",
                    "--no-ignore", "--hidden", "."], self.tree)

    def compare(self):
        """Full builds, alternately with the other two."""
        ndjson = [self.quorl_js, "-q", "-j", "2", "--format", "ndjson", "-r", "--node-modules",
                  "--no-ignore", "--hidden", "."]
        tags = ["ctags", "--fields=+ne", "-L", self.listing, "-f", self.scratch / "tags"]
        run(ndjson, self.tree)  # warm up: read files into memory
        rounds = [(run(ndjson, self.tree), run(tags, self.tree), self.build())
                  for _ in range(self.rounds)]
        columns = list(zip(*rounds))
        size = self.index.stat().st_size
        over = [statistics.median(each[2][0] / each[place][0] for each in rounds)
                for place in (0, 1)]
        least = [min(sample[0] for sample in columns[2]) / min(sample[0] for sample in columns[place])
                 for place in (0, 1)]
        rows = [row("ndjson -j 2 to /dev/null", columns[0]), row("universal-ctags", columns[1]),
                row("index -j 2", columns[2], "300 MB")]
        ratios = [["times ndjson, median of pairs (least)", "%.2f (%.2f)" % (over[0], least[0]),
                   "2.0"],
                  ["times universal-ctags", "%.2f (%.2f)" % (over[1], least[1]), "1.5"],
                  ["MB a MB of source", "%.2f" % (size / self.bytes), "1.3"]]
        return rows, ratios

    def ask(self):
        """Runs on the index that is there."""
        update = [self.quorl_js, "index", self.index]
        query = [self.quorl_js, "query", self.index, "--format", "vimgrep"]
        changed = self.tree / self.names[len(self.names) // 2]
        rows = [row("index, nothing changed", self.repeat(update), "250")]

        def change(number):
            text = changed.read_bytes()
            changed.write_bytes(text + b"let changed%d;\n" % number)

        rows.append(row("index, a file changed", self.repeat(update, change), "400"))

        def remove(number):
            (self.tree / self.names[number * 7]).unlink()

        rows.append(row("index, a file deleted", self.repeat(update, remove), "400"))
        rows.append(row("status", self.repeat([self.quorl_js, "status", self.index])))
        line = str(changed.relative_to(self.tree)) + ":5"
        for label, options, bar in (("--name", ["--name", NAME], "15"),
                                    ("--at", ["--at", line], "20"),
                                    ("--contains", ["--contains", "ender"], "60"),
                                    ("--regex", ["--regex", "^get[A-Z].*s$"], ""),
                                    ("--text", ["--text", "return new "], "350"),
                                    ("--kind --path", ["--kind", "class", "--path", "*.js"], "")):
            rows.append(row("query " + label, self.repeat(query + options), bar))
        return rows

    def repeat(self, command, before=lambda number: None):
        samples = []
        for number in range(ASKED):
            before(number)
            samples.append(run(command, self.tree, (0, 1)))
        return samples

    def grow(self):
        """The same files once more and once more, by links."""
        rows = []
        names = [name for name in self.names if (self.tree / name).exists()]
        for count in GROWTH:
            folder = self.scratch / ("grow-%d" % count)
            size = 0
            for number in range(count):
                # Every tenth for a thousand, so that the files are of the same kind.
                name = names[number * len(names) // count if count < len(names)
                             else number % len(names)]
                target = folder / str(number // len(names)) / name
                target.parent.mkdir(parents=True, exist_ok=True)
                os.link(self.tree / name, target)
                size += target.stat().st_size
            index = self.scratch / "grow.index"
            samples = []
            for _ in range(3 if count > GROWTH[1] else self.rounds):
                index.unlink(missing_ok=True)
                samples.append(run([self.quorl_js, "index", index, "-q", "-j", "2", "-r",
                                    "--node-modules", "--no-ignore", "--hidden", "."], folder))
            wall, cpu = min(sample[0] for sample in samples), min(sample[1] for sample in samples)
            rows.append(["%d" % count, size * 1e-6, "%.2f" % wall, "%.2f" % cpu,
                         wall / count * 1e6, cpu / count * 1e6])
            shutil.rmtree(folder)
        return rows
