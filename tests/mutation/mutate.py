"""Breaks one small thing in the sources at a time and tells which breaks no test sees.

usage: mutate.py PROJECT_ROOT BUILD_FOLDER [COUNT] [SEED] [PLACE]

Takes COUNT mutants (300) of the rule-bearing folders of src/, picked by SEED (1); with PLACE only
those whose name, such as "src/detect/flow.cpp:21:7", begins with it. Each is a copy of one file,
compiled and linked by itself beside the objects of BUILD_FOLDER, in which unit_tests and
whole_file_tests have to be built; the sources are not touched. A mutant is killed when a test
fails, crashes, or uses far more time, memory or disk than it does with the true source. What
survives that is compiled once more under sanitizers, as the suite is run with them too.

Standard output gets each mutant that is not killed, and a table. Mutants that no test can kill are
explained in explained.txt; they count as survivors in the share of those killed. The status is 0
if every survivor is explained, and every explanation is still about one.
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
import subprocess
import sys
import tempfile
import time

import mutants

FOLDERS = ("detect", "text", "cleaner", "refine", "records")
KILLED, SURVIVED, EXPLAINED, SAME_CODE, BROKEN = OUTCOMES = (
    "killed", "survived", "explained", "same code", "not compiled")
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)
GIGABYTE = 1 << 30
COMPILE_SECONDS = 300
LONGEST_SECONDS = 300  # of the tests with the true sources
PLAIN, SANITIZED = [], ["-fsanitize=address,undefined", "-fno-sanitize-recover=all"]
# Of the objects only the mutant's know of sanitizers: the others do not tell how full a vector is.
SANITIZER_OPTIONS = "detect_leaks=0:allocator_may_return_null=1:detect_container_overflow=0"

Object = collections.namedtuple("Object", "path source command")
Program = collections.namedtuple("Program", "name arguments sanitized_arguments objects")


class Project:
    """The objects of a build, and how they make programs."""

    def __init__(self, root, build):
        self.root, self.build = root, build
        self.sources = {path.relative_to(root).as_posix(): path.read_text()
                        for top in ("src", "tests") for path in (root / top).rglob("*")
                        if path.suffix in (".h", ".cpp") and "cases" not in path.parts}
        self.objects = []
        for entry in json.loads((build / "compile_commands.json").read_text()):
            command = shlex.split(entry["command"])
            path = command[command.index("-o") + 1]
            self.objects.append(Object(path, os.path.relpath(entry["file"], root), command))
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


class Runner:
    def __init__(self, project):
        self.project = project
        self.seconds = {}  # of a program, without and with sanitizers

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

    def passes(self, program, flags, folder):
        seconds = self.seconds.get((program.name, bool(flags)), LONGEST_SECONDS)

        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
            if not flags:  # the sanitizer's own memory is far more than that
                resource.setrlimit(resource.RLIMIT_AS, (GIGABYTE, GIGABYTE))
            resource.setrlimit(resource.RLIMIT_FSIZE, (GIGABYTE // 8, GIGABYTE // 8))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        arguments = program.sanitized_arguments if flags else program.arguments
        scratch = folder / "scratch"
        scratch.mkdir(exist_ok=True)
        # A mutant that waits uses no time of the processor, so the clock has a limit too.
        try:
            return subprocess.run(
                [str(folder / program.name), "--gtest_fail_fast"] + arguments, cwd=scratch,
                env=dict(os.environ, TMPDIR=str(scratch), TEST_TMPDIR=str(scratch) + "/",
                         ASAN_OPTIONS=SANITIZER_OPTIONS),
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                timeout=10 * seconds, preexec_fn=limit).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def measure(self, folder):
        """Runs the tests on the true sources, and sets the limits by what they take."""
        for flags in (SANITIZED, PLAIN):
            for program in self.project.programs:
                self.link(program, flags, {}, "src/none/none", folder)
                before = resource.getrusage(resource.RUSAGE_CHILDREN)
                if not self.passes(program, flags, folder):
                    sys.exit("mutate: %s fails without a mutant %s" % (program.name, flags))
                after = resource.getrusage(resource.RUSAGE_CHILDREN)
                took = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
                self.seconds[program.name, bool(flags)] = 5 + int(2 * took)

    def outcome(self, mutant, folder):
        folder.mkdir()
        source = self.project.sources[mutant.path]
        overlay = folder / mutant.path
        overlay.parent.mkdir(parents=True)
        overlay.write_text(mutants.apply(source, mutant))
        for flags in (PLAIN, SANITIZED):
            replaced, differs = {}, False
            for program in self.project.programs:
                for each in self.project.objects_of(program, mutant.path):
                    if each.path in replaced:
                        continue
                    output = folder / ("%d.o" % len(replaced))
                    if not self.compile(each, flags, folder, output):
                        return BROKEN
                    replaced[each.path] = output
                    # A test's object holds its own path, which a compiler cache may have changed.
                    if each.source.startswith("src/") and not differs:
                        original = self.project.build / each.path
                        differs = output.read_bytes() != original.read_bytes()
                if differs:
                    self.link(program, flags, replaced, mutant.path, folder)
                    if not self.passes(program, flags, folder):
                        return KILLED
            if not differs:
                return SAME_CODE
        return SURVIVED


def read_explanations(path):
    """{(file, line of source, what it becomes): why no test can tell}.

    An entry is the file, the line as it is, a line behind "=> " for each mutant of it, and the
    reason. Entries end in an empty line; "#" begins a comment.
    """
    explanations = {}
    text = re.sub(r"^#[^\n]*\n", "", path.read_text(), flags=re.M)
    for entry in filter(str.strip, re.split(r"\n\s*\n", text)):
        name, before, *rest = [" ".join(line.split()) for line in entry.strip().splitlines()]
        reason = " ".join(line for line in rest if not line.startswith("=> "))
        assert reason and len(rest) > 1, "not a whole entry: " + entry
        for line in rest:
            if line.startswith("=> "):
                explanations[name, before, line[3:]] = reason
    return explanations


def lines_of(source, mutant):
    """The lines that the mutant changes, as they were and as they are."""
    first = source.rfind("\n", 0, mutant.begin) + 1
    last = source.find("\n", mutant.end)
    before, after = source[first:last], source[first:mutant.begin] + mutant.replacement
    after += source[mutant.end:last]
    return tuple(" ".join(line.split()) for line in (before, after))


def name_of(mutant):
    return "%s:%d:%d" % (mutant.path, mutant.line, mutant.column)


def pick(project, count, seed, place):
    every = [mutant for path in sorted(project.sources)
             if path.startswith(tuple("src/%s/" % folder for folder in FOLDERS))
             for mutant in mutants.mutants_of(path, project.sources[path])]
    known = {(each.path,) + lines_of(project.sources[each.path], each) for each in every}
    chosen = [mutant for mutant in every if name_of(mutant).startswith(place)]
    chosen = random.Random(seed).sample(chosen, min(count, len(chosen)))
    return sorted(chosen), known, len(every)


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
    explanations = read_explanations(pathlib.Path(__file__).with_name("explained.txt"))
    project = Project(root, build)
    chosen, known, size = pick(project, count, seed, place)
    stale = [key for key in explanations if key not in known]
    runner = Runner(project)
    started = time.monotonic()
    results = []
    with tempfile.TemporaryDirectory(prefix="quorl-mutants-") as scratch:
        scratch = pathlib.Path(scratch)
        runner.measure(scratch)

        def run(number):
            folder = scratch / str(number)
            try:
                return runner.outcome(chosen[number], folder)
            finally:
                shutil.rmtree(folder, ignore_errors=True)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for mutant, outcome in zip(chosen, pool.map(run, range(len(chosen)))):
                before, after = lines_of(project.sources[mutant.path], mutant)
                reason = explanations.get((mutant.path, before, after))
                if outcome == SURVIVED and reason:
                    outcome = EXPLAINED
                results.append((mutant, outcome))
                if outcome in (SURVIVED, EXPLAINED):
                    print("%s %s\n    %s\n    %s" % (name_of(mutant), outcome, before, after))
                    print("    " + reason + "\n" if reason else "", flush=True)
                if outcome == KILLED and reason:
                    stale.append((mutant.path, before, after))
    totals = print_table(results)
    for key in stale:
        print("explained.txt: no such mutant survives:\n    %s\n    %s\n    %s" % key)
    could_be_killed = totals[KILLED] + totals[SURVIVED] + totals[EXPLAINED]
    share = totals[KILLED] / max(could_be_killed, 1)
    print("\n%d of %d mutants in %d s: %.1f %% of %d killed" %
          (len(results), size, time.monotonic() - started, 100 * share, could_be_killed))
    return 1 if totals[SURVIVED] or stale else 0


if __name__ == "__main__":
    sys.exit(main())
