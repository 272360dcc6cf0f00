"""Breaks one small thing in the sources at a time and tells which breaks no test sees.

usage: mutate.py PROJECT_ROOT BUILD_FOLDER [COUNT] [SEED] [PLACE]

Takes COUNT mutants (300) of the rule-bearing folders of src/, picked by SEED (1); with PLACE only
those whose name, such as "src/detect/flow.cpp:21:7", begins with it. Each is a copy of one file,
compiled and linked by itself beside the objects of BUILD_FOLDER, in which unit_tests and
whole_file_tests have to be built; the sources are not touched. A mutant is killed when a test
fails, crashes, or uses far more time, memory or disk than it does with the true source. What
survives that is compiled once more under sanitizers, as the suite is run with them too, and is held
against the true source compiled in the same way: linked with other objects that know nothing of
sanitizers, that may be slower or complain by itself.

Standard output gets each mutant that is not killed, and a table. Mutants that no test can kill are
explained in explained.txt; they count as survivors in the share of those killed. For one that is
explained and killed all the same, the table is followed by what the tests printed last. The status
is 0 if every survivor is explained, each explanation stands for one place, and none of a mutant
that was killed.
"""
import collections
import concurrent.futures
import json
import os
import pathlib
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

import explanations
import mutants

FOLDERS = ("detect", "text", "cleaner", "refine", "records")
KILLED, SURVIVED, EXPLAINED, SAME_CODE, BROKEN = OUTCOMES = (
    "killed", "survived", "explained", "same code", "not compiled")
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)
GIGABYTE = 1 << 30
COMPILE_SECONDS = 1800  # by the clock, on a machine that does much else
LONGEST_SECONDS = 3600  # of the tests with the true sources
LONGEST_WAIT = 600  # in which a program that is not stuck uses a second of the processor
POLL_SECONDS = 0.2
LAST_BYTES = 2000  # of a program's output, to tell what killed an explained mutant
PLAIN, SANITIZED = [], ["-fsanitize=address,undefined", "-fno-sanitize-recover=all"]
# Of the objects only the mutant's know of sanitizers: the others do not tell how full a vector is.
SANITIZER_OPTIONS = "detect_leaks=0:allocator_may_return_null=1:detect_container_overflow=0"

Object = collections.namedtuple("Object", "path source command")
Program = collections.namedtuple("Program", "name arguments sanitized_arguments objects")
# Seconds of the processor: of all tests, and from one line that they print to the next. A machine
# that does other things beside makes them up to twice as many, and a mutant that hangs shows by
# the second long before it shows by the first.
Limits = collections.namedtuple("Limits", "whole step")


def sources_of(root):
    return {path.relative_to(root).as_posix(): path.read_text()
            for top in ("src", "tests") for path in (root / top).rglob("*")
            if path.suffix in (".h", ".cpp") and "cases" not in path.parts}


class Project:
    """The objects of a build, and how they make programs."""

    def __init__(self, root, build):
        self.root, self.build = root, build
        self.sources = sources_of(root)
        self.objects = []
        for entry in json.loads((build / "compile_commands.json").read_text()):
            command = shlex.split(entry["command"])
            path = command[command.index("-o") + 1]
            self.objects.append(Object(path, os.path.relpath(entry["file"], root), command))
        for folder in FOLDERS:  # else the tests of a header would keep the true one
            assert any(each.source.startswith("tests/unit/%s/" % folder) for each in self.objects)
        in_process = ["--gtest_filter=*InProcess*"]
        # Comparisons with plain readings take minutes under sanitizers, and tell nothing more.
        no_comparisons = ["--gtest_filter=-*PlainReading*"]
        self.programs = [Program("whole_file_tests", in_process, in_process,
                                 self.objects_under("whole_file_tests", "case_files",
                                                    "program_runner", "plugin_objects")),
                         Program("unit_tests", [], no_comparisons,
                                 self.objects_under("unit_tests", "references", "plugin_objects"))]

    def objects_under(self, *targets):
        folders = tuple("/%s.dir/" % target for target in targets)
        found = [each for each in self.objects if any(name in each.path for name in folders)]
        assert len(found) > len(targets), targets
        return found

    def users_of(self, header):
        """The files that a header reaches by way of any number of includes."""
        users, new = set(), {header}
        while new:
            users |= new
            names = {name.partition("/")[2] for name in new}
            new = {name for name, text in self.sources.items()
                   if names.intersection(INCLUDE.findall(text))} - users
        return users

    def objects_of(self, program, path):
        """What of a program has to be compiled again for a file: for a header also the tests of
        its folder."""
        tests = "tests/unit/%s/" % path.split("/")[1]
        sources = {name for name in self.users_of(path) if name.startswith(("src/", tests))}
        return [each for each in program.objects if each.source in sources]


def in_order(objects, path):
    """Tests run in the order of their objects: those of the mutant's folder come first, and of
    these the ones that hold fast code against a plain reading last, since they take long."""
    folder = path.split("/")[1]

    def place(each):
        if each.source == path:
            return 0
        if each.source.startswith("tests/unit/%s/" % folder):
            return 1 if "plain_reading" not in each.source else 2
        return 3
    return sorted(objects, key=place)


def processor_seconds(pid):
    """What a process that was not waited for has used so far."""
    fields = pathlib.Path("/proc/%d/stat" % pid).read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def last_words(program, flags, folder):
    """The end of what a program printed, but for the tests that it left out after the failure."""
    texts = [(folder / name).read_text(errors="replace") for name in ("log", "errors")]
    ends = [re.sub(r"^\[  SKIPPED \].*\n", "", text, flags=re.M)[-LAST_BYTES:] for text in texts]
    return " ".join([program.name] + flags) + "\n" + "\n".join(ends)


class Step:
    """What happened since a program printed something."""

    def __init__(self):
        self.size, self.start, self.since = 0, 0, time.monotonic()
        self.took = self.waited = self.longest = 0

    def look(self, size, seconds):
        self.took, self.waited = seconds - self.start, time.monotonic() - self.since
        self.longest = max(self.longest, self.took)
        if size != self.size:
            self.size, self.start, self.since = size, seconds, time.monotonic()
            self.took = self.waited = 0


class Runner:
    def __init__(self, project, folder):
        self.project, self.folder = project, folder
        self.limits = {}  # of a program, with the objects of a file under sanitizers
        self.locks = collections.defaultdict(threading.Lock)

    def compile(self, each, flags, overlay, output):
        command = list(each.command)
        command[command.index("-o") + 1] = str(output)
        command[-1] = str(next(path for path in (overlay / each.source,
                                                 self.project.root / each.source)
                               if path.exists()))
        command[1:1] = ["-I" + str(overlay / "src"), "-w"] + flags
        return subprocess.run(command, cwd=self.project.build, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=COMPILE_SECONDS).returncode == 0

    def link(self, program, flags, replaced, path, folder):
        objects = [str(replaced.get(each.path, self.project.build / each.path))
                   for each in in_order(program.objects, path)]
        compiler = program.objects[0].command[0]
        subprocess.run([compiler, "-o", str(folder / program.name)] + flags + objects +
                       ["-lgtest_main", "-lgtest", "-ldl"], check=True)

    def run(self, program, flags, folder, limits):
        """Whether the tests pass, and the time of the processor that they took."""
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (limits.whole, limits.whole))
            if not flags:  # the sanitizer's own memory is far more than that
                resource.setrlimit(resource.RLIMIT_AS, (GIGABYTE, GIGABYTE))
            resource.setrlimit(resource.RLIMIT_FSIZE, (GIGABYTE // 8, GIGABYTE // 8))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        arguments = program.sanitized_arguments if flags else program.arguments
        scratch = folder / "scratch"
        scratch.mkdir(exist_ok=True)
        log = folder / "log"
        with log.open("wb") as output, (folder / "errors").open("wb") as errors:
            process = subprocess.Popen(
                [str(folder / program.name), "--gtest_fail_fast"] + arguments, cwd=scratch,
                env=dict(os.environ, TMPDIR=str(scratch), TEST_TMPDIR=str(scratch) + "/",
                         ASAN_OPTIONS=SANITIZER_OPTIONS),
                stdin=subprocess.DEVNULL, stdout=output, stderr=errors, preexec_fn=limit)
        step = Step()
        while os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT) is None:
            time.sleep(POLL_SECONDS)
            step.look(log.stat().st_size, processor_seconds(process.pid))
            if step.took > limits.step or step.waited > LONGEST_WAIT and step.took < 1:
                os.kill(process.pid, signal.SIGKILL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        return process.returncode == 0, Limits(usage.ru_utime + usage.ru_stime, step.longest)

    def measure(self, program, flags, path, folder):
        """Runs the tests on the true source, and sets the limits by what they take."""
        passed, took = self.run(program, flags, folder, Limits(LONGEST_SECONDS, LONGEST_SECONDS))
        if not passed:
            sys.exit("mutate: %s fails without a mutant of %s %s" % (program.name, path, flags))
        self.limits[program.name, path] = Limits(*(10 + int(5 * each) for each in took))

    def measure_plain(self):
        for program in self.project.programs:
            self.link(program, PLAIN, {}, "src/none/none", self.folder)
            self.measure(program, PLAIN, None, self.folder)

    def measure_sanitized(self, path):
        with self.locks[path]:
            if (self.project.programs[-1].name, path) in self.limits:
                return
            folder = self.folder / ("true-" + path.replace("/", "-"))
            folder.mkdir()
            replaced = {}
            for program in self.project.programs:
                if not self.replace(program, path, SANITIZED, folder, replaced):
                    sys.exit("mutate: %s does not compile without a mutant" % path)
                self.link(program, SANITIZED, replaced, path, folder)
                self.measure(program, SANITIZED, path, folder)
            shutil.rmtree(folder)

    def replace(self, program, path, flags, folder, replaced):
        """Compiles what of a program has the file in it, from the sources in folder where there are
        any. Whether all of it compiles."""
        for each in self.project.objects_of(program, path):
            if each.path not in replaced:
                output = folder / ("%d.o" % len(replaced))
                if not self.compile(each, flags, folder, output):
                    return False
                replaced[each.path] = output
        return True

    def differs(self, replaced):
        """Whether the code is another one. A test's object holds its own path, which a compiler
        cache may have changed."""
        ours = [each for each in self.project.objects
                if each.path in replaced and each.source.startswith("src/")]
        return any(replaced[each.path].read_bytes() != (self.project.build / each.path).read_bytes()
                   for each in ours)

    def outcome(self, mutant, folder):
        """What became of a mutant, and what the tests that killed it printed last."""
        folder.mkdir()
        source = self.project.sources[mutant.path]
        overlay = folder / mutant.path
        overlay.parent.mkdir(parents=True)
        overlay.write_text(mutants.apply(source, mutant))
        for flags, path in (PLAIN, None), (SANITIZED, mutant.path):
            if flags:
                self.measure_sanitized(mutant.path)
            replaced = {}
            for program in self.project.programs:
                if not self.replace(program, mutant.path, flags, folder, replaced):
                    return BROKEN, ""
                if not flags and not self.differs(replaced):
                    continue
                self.link(program, flags, replaced, mutant.path, folder)
                if not self.run(program, flags, folder, self.limits[program.name, path])[0]:
                    return KILLED, last_words(program, flags, folder)
            if not flags and not self.differs(replaced):
                return SAME_CODE, ""
        return SURVIVED, ""


def name_of(mutant):
    return "%s:%d:%d" % (mutant.path, mutant.line, mutant.column)


def mutants_of(sources):
    """All mutants of the rule-bearing folders."""
    return [mutant for path in sorted(sources)
            if path.startswith(tuple("src/%s/" % folder for folder in FOLDERS))
            for mutant in mutants.mutants_of(path, sources[path])]


def pick(every, count, seed, place):
    chosen = [mutant for mutant in every if name_of(mutant).startswith(place)]
    return sorted(random.Random(seed).sample(chosen, min(count, len(chosen))))


def print_table(results):
    print("\n%-34s" % "" + "".join("%14s" % outcome for outcome in OUTCOMES))
    counts = collections.Counter((mutant.path, outcome) for mutant, outcome in results)
    totals = collections.Counter(outcome for _, outcome in results)
    for path in sorted({mutant.path for mutant, _ in results}):
        print("%-34s" % path + "".join("%14d" % counts[path, outcome] for outcome in OUTCOMES))
    print("%-34s" % "all" + "".join("%14d" % totals[outcome] for outcome in OUTCOMES))
    return totals


def main():
    root, build = (pathlib.Path(name).resolve() for name in sys.argv[1:3])
    rest = sys.argv[3:]
    count, seed = [int(text) for text in (rest + ["300", "1"][len(rest):])[:2]]
    place = rest[2] if len(rest) > 2 else ""
    project = Project(root, build)
    every = mutants_of(project.sources)
    places = explanations.Places(project.sources, every)
    explained, faults = explanations.read(
        pathlib.Path(__file__).with_name("explained.txt").read_text(), places)
    if faults:
        sys.exit("\n".join("explained.txt: " + fault for fault in faults))
    chosen = pick(every, count, seed, place)
    stale = []
    started = time.monotonic()
    results = []
    with tempfile.TemporaryDirectory(prefix="quorl-mutants-") as scratch:
        runner = Runner(project, pathlib.Path(scratch))
        runner.measure_plain()

        def run(number):
            folder = runner.folder / str(number)
            try:
                return runner.outcome(chosen[number], folder)
            finally:
                shutil.rmtree(folder, ignore_errors=True)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for mutant, (outcome, last) in zip(chosen, pool.map(run, range(len(chosen)))):
                where, after = places.key_of(mutant)
                reason = explained.get((where, after))
                if outcome == SURVIVED and reason:
                    outcome = EXPLAINED
                results.append((mutant, outcome))
                if outcome in (SURVIVED, EXPLAINED):
                    print("%s %s, in %s\n    %s\n    %s" %
                          (name_of(mutant), outcome, mutant.function, where.line, after))
                    print("    " + reason + "\n" if reason else "", flush=True)
                if outcome == KILLED and reason:
                    stale.append((name_of(mutant), where.line, after, last))
    totals = print_table(results)
    for key in stale:
        print("explained.txt: this mutant was killed: %s\n    %s\n    %s\nby %s" % key)
    could_be_killed = totals[KILLED] + totals[SURVIVED] + totals[EXPLAINED]
    share = totals[KILLED] / max(could_be_killed, 1)
    print("\n%d of %d mutants in %d s: %.1f %% of %d killed" %
          (len(results), len(every), time.monotonic() - started, 100 * share, could_be_killed))
    return 1 if totals[SURVIVED] or stale else 0


if __name__ == "__main__":
    sys.exit(main())
