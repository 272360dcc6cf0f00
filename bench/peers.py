"""Measures whole processes of quorl-js and of other source readers on the same files.

universal-ctags comes from Debian, the others from the npm registry into the cache folder. Each
program's output goes to a file. A program that exceeds the time limit for a file, or rejects it,
gets no figures.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import threading
import time

NPM_PACKAGES = ("@ast-grep/cli@0.51.1", "acorn@8.15.0", "esbuild@0.28.2")
LIMIT_SECONDS = 20
HEADS = ["file/program", "wall ms", "cpu ms", "peak MB", "output MB", "wall/quorl-js",
         "cpu/quorl-js", "peak/quorl-js"]


def install(folder):
    """Return the npm programs as (ast-grep, acorn, esbuild)."""
    if not (folder / "node_modules").exists():
        folder.mkdir(parents=True, exist_ok=True)
        subprocess.run(["npm", "install", "--prefix", folder, "--no-audit", "--no-fund",
                        "--ignore-scripts", *NPM_PACKAGES], check=True, stdout=sys.stderr)
    # Use the native programs directly; their packages' install scripts would only move them.
    modules = folder / "node_modules"
    ast_grep, = modules.glob("@ast-grep/cli-*/ast-grep")
    esbuild, = modules.glob("@esbuild/*/bin/esbuild")
    return ast_grep, modules / "acorn" / "bin" / "acorn", esbuild


def programs(cache, quorl_js):
    """Return (name, command, routes that it can read) for each program."""
    ast_grep, acorn, esbuild = install(cache / "peers")
    every = ("script", "page", "c", "markdown")
    return [
        ("quorl-js", [quorl_js], every),
        # Unsorted, so that ctags only reads and writes.
        ("ctags", ["ctags", "--options=NONE", "--output-format=json", "--sort=no", "-f", "-"],
         every),
        ("ast-grep outline", [ast_grep, "outline", "--items=all", "--json=stream"], ("script",)),
        ("acorn", ["node", acorn, "--ecma2024", "--compact"], ("script",)),
        ("esbuild", [esbuild, "--log-level=error"], ("script",)),
    ]


def run_once(command, out):
    """Return (wall, processor seconds, peak bytes) of a process, None if it fails or times out.

    The peak is at least this interpreter's, since the process starts as a fork of it.
    """
    out.seek(0)
    out.truncate()
    before = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), stdout=out, stderr=subprocess.DEVNULL)
    timer = threading.Timer(LIMIT_SECONDS, process.kill)
    timer.start()
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - before
    timer.cancel()
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        return None
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def compare_route(route, file, chosen, rounds, out):
    size, samples, rows = {}, {}, []
    for name, command in chosen:  # warm up: read files into memory
        if run_once([*command, file], out) is None:
            rows.append(["%s/%s" % (route, name), "failed or over %d s" % LIMIT_SECONDS] +
                        [""] * (len(HEADS) - 2))
        else:
            size[name], samples[name] = os.fstat(out.fileno()).st_size, []
    for _ in range(rounds):
        for name, command in chosen:
            if name in samples:
                sample = run_once([*command, file], out)
                if sample is None:
                    sys.exit("%s ran on %s and then failed" % (name, file))
                samples[name].append(sample)
    medians = {name: [statistics.median(values) for values in zip(*runs)]
               for name, runs in samples.items()}
    own = medians["quorl-js"]
    for name, (wall, cpu, peak) in medians.items():
        ratios = ["%.2f" % (value / base) for value, base in zip(medians[name], own)]
        rows.append(["%s/%s" % (route, name), wall * 1e3, cpu * 1e3, peak * 1e-6,
                     size[name] * 1e-6, *ratios])
    return rows


def compare(cache, runs, quorl_js, rounds):
    rows = []
    every = programs(cache, quorl_js)
    with tempfile.TemporaryFile() as out:
        for route in ("script", "page", "c", "markdown"):
            file, = sorted(pathlib.Path(runs / route / "whole").iterdir())
            chosen = [(name, command) for name, command, routes in every if route in routes]
            rows += compare_route(route, file, chosen, rounds, out)
    return rows
