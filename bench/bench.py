"""Runs the benchmarks and prints tables.

usage: bench.py [--filter REGEX] [--rounds N] [--against REV | --least | --peers | --many |
                --index | --lsp [--edits N]]

Without the last six: whole runs of the module by route and size, small files, and the steps of
a run one by one. --against: whole runs of the module as it is and as it was at REV, alternately.
--least: first runs of a process, beside the least that the contract of the module leaves to do.
--peers: whole processes of quorl-js and of other programs, alternately. --many: runs of quorl-js
over ten thousand files, alternately with one worker and with two. --index: an index of these files,
beside ndjson and universal-ctags. --lsp: edits of a script, with the
language server and another one alternately; more than 1,000 without the other. Every figure is the median of
the rounds. Build the programs first (./dev bench does).
"""
import argparse
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import index
import lsp
import many
import peers
import texts

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "bench"
MODULE = BUILD / "bin" / "quorljs.so"
ROUTES = ("script", "page", "c", "markdown")
SIZES = ("10KB", "100KB", "1MB", "whole")
NODE_BYTES = 400  # upper bound per node, to check memory use
MOST_EDITS_WITH_PEER = 1000
BUSY = 1.15  # warn if wall time exceeds processor time by this factor


def cache_folder():
    home = os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache"
    return pathlib.Path(home) / "quorl-js-bench"


def print_table(title, heads, rows):
    cells = [heads] + [[cell if isinstance(cell, str) else "%.1f" % cell for cell in row]
                       for row in rows]
    widths = [max(map(len, column)) for column in zip(*cells)]
    print("\n" + title + "\n")
    for number, row in enumerate(cells):
        print("  ".join(cell.ljust(width) if i == 0 else cell.rjust(width)
                        for i, (cell, width) in enumerate(zip(row, widths))).rstrip())
        if number == 0:
            print("  ".join("-" * width for width in widths))


def run_program(name, arguments, pattern):
    """Return the benchmark counters of the program, by name."""
    with tempfile.TemporaryDirectory() as scratch:
        out = pathlib.Path(scratch) / "out.json"
        done = subprocess.run(
            [BUILD / "bin" / name, *map(str, arguments), "--benchmark_filter=" + pattern,
             "--benchmark_out=%s" % out], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
            check=False)
        if done.returncode != 0:
            sys.exit(done.stderr.decode())
        text = out.read_text()
    found = json.loads(text)["benchmarks"] if text else []
    return {entry["name"].split("/iterations:")[0]: entry for entry in found}


def cpu_rate(run):
    return run["source_bytes"] / run["cpu_ms"] * 1e-3


def print_growth(runs):
    rows = []
    for route in ROUTES:
        rates = [cpu_rate(run) for run in (runs.get("%s/%s" % (route, size)) for size in SIZES)
                 if run]
        if len(rates) > 1:
            rows.append([route, *rates, "%.2f" % (max(rates) / min(rates))])
    if rows:
        print_table("Growth: MB of source a second of processor time, by the size of the files",
                    ["route", *SIZES, "fastest/slowest"], rows)


def print_runs(runs):
    rows = []
    for name in ("%s/%s" % (route, size) for route in ROUTES for size in (*SIZES, "again")):
        run = runs.get(name)
        if not run:
            continue
        bound = run["source_bytes"] + 2 * run["record_bytes"] + NODE_BYTES * run["nodes"]
        peak = "%.2f" % (run["peak_bytes"] / bound) if name.endswith("whole") else ""
        rows.append([name, run["source_bytes"] * 1e-6, run["record_bytes"] * 1e-6,
                     "%d" % run["nodes"], run["ms"], run["cpu_ms"], run["MBps"], cpu_rate(run),
                     run["record_bytes"] / run["cpu_ms"] * 1e-3, peak])
    if rows:
        print_table("Whole runs through ParseJS", [
            "route/file size", "source MB", "record MB", "nodes", "wall ms", "cpu ms",
            "MB/s wall", "MB/s cpu", "record MB/s cpu", "peak/bound"], rows)
        if any(run["ms"] > run["cpu_ms"] * BUSY for run in runs.values()):
            print("\nThe machine was busy with other work: wall time is more than processor time.")


def print_small(runs):
    rows, sums = [], [0.0, 0.0, 0.0]
    for kind in texts.SMALL:
        found = [runs.get("small/" + kind + part) for part in ("", "-joined", "-heads")]
        if not all(found):
            continue
        times = [run["cpu_ms"] for run in found]
        sums = [whole + part for whole, part in zip(sums, times)]
        rows.append(small_row(kind, texts.SMALL_FILES, found[0]["source_bytes"], times))
    if rows:
        rows.append(small_row("all", texts.SMALL_FILES * len(rows), None, sums))
        print_table("Small files, all of a kind in one process (processor time)", [
            "kind", "files", "KB each", "ms", "ms joined", "us a file", "us above joined",
            "us fixed"], rows)


def small_row(kind, files, source_bytes, times):
    small, joined, heads = times
    size = source_bytes / files * 1e-3 if source_bytes else ""
    return [kind, "%d" % files, size, small, joined, small / files * 1e3,
            (small - joined) / files * 1e3, heads / files * 1e3]


def print_kernels(steps):
    rows = [[name, run["ms"], run["cpu_ms"], run["MBps"], cpu_rate(run),
             run["record_bytes"] / run["cpu_ms"] * 1e-3 if run["record_bytes"] else ""]
            for name, run in steps.items()]
    if rows:
        print_table("Steps of a run, each on the whole text of its route", [
            "step/route", "wall ms", "cpu ms", "MB/s wall", "MB/s cpu", "record MB/s cpu"], rows)


def build_revision(revision):
    """Return (commit, module) of an earlier commit, built once from its own copy of the sources."""
    def git(*arguments):
        return subprocess.run(["git", "-C", ROOT, *arguments], check=True,
                              stdout=subprocess.PIPE).stdout

    commit = git("rev-parse", "--short=12", "--verify", revision + "^{commit}").decode().strip()
    tree = ROOT / "build" / "against" / commit
    module = tree / "build" / "release" / "bin" / "quorljs.so"
    if not module.exists():
        tree.mkdir(parents=True, exist_ok=True)
        subprocess.run(["tar", "-x", "-C", tree], input=git("archive", commit), check=True)
        for command in (["cmake", "--preset", "release"],
                        ["cmake", "--build", "--preset", "release", "--target", "plugin"]):
            subprocess.run(command, cwd=tree, check=True, stdout=sys.stderr)
    return commit, module


def print_against(folder, options):
    commit, module = build_revision(options.against)
    runs = run_program("bench_runs", [folder, options.rounds, MODULE, module], options.filter)
    rows = []
    for name, run in runs.items():
        then_rate = run["source_bytes"] / run["against_cpu_ms"] * 1e-3
        same = "" if run["record_bytes"] == run["against_record_bytes"] else "other size"
        rows.append([name, run["against_ms"], run["ms"], "%.2f" % (run["against_ms"] / run["ms"]),
                     then_rate, cpu_rate(run), "%.2f" % (run["against_cpu_ms"] / run["cpu_ms"]),
                     "%.2f" % (run["against_peak_bytes"] / max(run["peak_bytes"], 1)), same])
    print_table("Whole runs, %s and now" % commit, [
        "route/file size", "wall ms then", "now", "then/now", "MB/s cpu then", "now", "then/now",
        "peak then/now", "records"], rows)


def print_least(folder, options):
    runs = run_program("bench_least", [folder, options.rounds, MODULE], options.filter)
    rows = [[name, run["source_bytes"] * 1e-6, run["record_bytes"] * 1e-6, "%d" % run["nodes"],
             run["cpu_ms"], run["least_cpu_ms"], "%.2f" % (run["cpu_ms"] / run["least_cpu_ms"]),
             "%.2f" % (run["ms"] / run["least_ms"])] for name, run in runs.items()]
    print_table("The first runs of a process, and the least that the contract leaves", [
        "route/file size", "source MB", "record MB", "nodes", "cpu ms", "least cpu ms", "times",
        "times, wall"], rows)


def print_many(cache, rounds):
    listing, quorl_js = many.prepare(cache), BUILD / "bin" / "quorl-js"
    source_mb, rows = many.compare_jobs(listing, quorl_js, rounds)
    print_table("%d files, %.1f MB in all, to ndjson" % (many.FILES, source_mb), many.RATE_HEADS,
                rows)
    print_table("Starts, each a whole process", many.START_HEADS,
                many.measure_starts(listing, quorl_js))


def print_index(cache, rounds):
    work = index.Index(cache, BUILD / "bin" / "quorl-js", rounds)
    title = "%d files, %.1f MB in all" % (len(work.names), work.bytes * 1e-6)
    rows, ratios = work.compare()
    print_table(title + ", whole runs", index.TIME_HEADS, rows)
    print_table("A full build", index.RATIO_HEADS, ratios)
    print_table("The index at hand, each a whole process", index.TIME_HEADS, work.ask())
    print_table("Growth: full builds, the least of the rounds", index.GROWTH_HEADS, work.grow())


def print_lsp(cache, options):
    with_peer = options.edits <= MOST_EDITS_WITH_PEER
    lines, rows = lsp.compare(cache, BUILD / "bin" / "quorl-js", options.edits, with_peer)
    print_table("%d edits of a script of %d lines, each with its outline" % (options.edits, lines),
                lsp.HEADS, rows)


def main():
    parser = argparse.ArgumentParser(prog="./dev bench", description="Runs the benchmarks.")
    parser.add_argument("--filter", default=".*", metavar="REGEX",
                        help="only the benchmarks whose name holds this")
    parser.add_argument("--rounds", type=int, default=9, help="samples of each (default: 9)")
    kind = parser.add_mutually_exclusive_group()
    kind.add_argument("--against", metavar="REV", help="compare with an earlier commit")
    kind.add_argument("--least", action="store_true", help="compare with the least work")
    kind.add_argument("--peers", action="store_true", help="compare with other programs")
    kind.add_argument("--many", action="store_true", help="run over ten thousand files")
    kind.add_argument("--index", action="store_true", help="index ten thousand files, and ask it")
    kind.add_argument("--lsp", action="store_true", help="edit a script with the language server")
    parser.add_argument("--edits", type=int, default=200, help="edits with --lsp (default: 200)")
    options = parser.parse_args()
    cache = cache_folder()
    if options.many:
        print_many(cache, options.rounds)
        return
    if options.index:
        print_index(cache, options.rounds)
        return
    if options.lsp:
        print_lsp(cache, options)
        return
    folder = texts.prepare(cache)
    if options.peers:
        rows = peers.compare(cache, folder / "runs", BUILD / "bin" / "quorl-js", options.rounds)
        print_table("Whole processes, standard output to a file", peers.HEADS, rows)
    elif options.against:
        print_against(folder, options)
    elif options.least:
        print_least(folder, options)
    else:
        runs = run_program("bench_runs", [folder, options.rounds, MODULE], options.filter)
        print_runs(runs)
        print_growth(runs)
        print_small(runs)
        print_kernels(run_program("bench_kernels", [folder, options.rounds], options.filter))


if __name__ == "__main__":
    main()
