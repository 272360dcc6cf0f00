"""Measures quorl-js over ten thousand files, alternately with one worker and with two, and its
start-up time.

The files are texts of 1 to 100 KB from the packages that texts.py downloads, unchanged.
"""
import hashlib
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tarfile
import time

import texts

FILES = 10_000
FILE_BYTES = range(1_000, 100_001)
JOBS = (1, 2)
STARTS = 100  # a start is short, and the machine may be busy during any one
RATE_HEADS = ["jobs", "wall s", "cpu s", "files/s", "MB/s wall", "MB/s a core of cpu", "times -j 1",
              "least wall s", "times -j 1"]
START_HEADS = ["command", "median ms", "least ms"]


def prepare(cache):
    """Return the list of files, which are made again only if this script has changed."""
    recipe = hashlib.sha256(pathlib.Path(__file__).read_bytes()).hexdigest()[:12]
    folder = cache / ("many-" + recipe)
    if not folder.exists():
        downloads = cache / "packages"
        downloads.mkdir(parents=True, exist_ok=True)
        part = cache / "many.part"
        shutil.rmtree(part, ignore_errors=True)
        write_files(part, downloads)
        for old in cache.glob("many-*/"):
            shutil.rmtree(old)
        part.rename(folder)
    names = sorted(path for path in folder.rglob("*") if path.is_file())
    listing = cache / "many-list"
    listing.write_text("".join("%s\n" % name for name in names))
    return listing


def texts_of(path):
    """Return the archive's text files in the size range, as (name, bytes), sorted by name."""
    with tarfile.open(path) as archive:
        found = [(member.name, archive.extractfile(member).read()) for member in archive
                 if member.isfile() and member.size in FILE_BYTES]
    return sorted((name, text) for name, text in found if b"\0" not in text)


def write_files(folder, downloads):
    found = [(package + "/" + name, text) for package in texts.PACKAGES
             for name, text in texts_of(texts.fetch(package, downloads))]
    assert len(found) >= FILES, len(found)
    for number in range(FILES):
        name, text = found[number * len(found) // FILES]
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)


def run_once(command):
    """Return (wall, processor seconds) of one process and its workers."""
    before = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - before
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit("%s ended with status %d" % (command[0], process.returncode))
    return wall, usage.ru_utime + usage.ru_stime


def compare_jobs(listing, quorl_js, rounds):
    names = listing.read_text().splitlines()
    source_mb = sum(os.path.getsize(name) for name in names) * 1e-6

    def run(jobs):
        return run_once([quorl_js, "--files-from", listing, "--format", "ndjson", "-j", jobs])

    run(JOBS[-1])  # warm up: read files into memory
    pairs = [[run(jobs) for jobs in JOBS] for _ in range(rounds)]
    least = [min(pair[place][0] for pair in pairs) for place in range(len(JOBS))]
    rows = []
    for place, jobs in enumerate(JOBS):
        wall, cpu = map(statistics.median, zip(*(pair[place] for pair in pairs)))
        gain = statistics.median(pair[0][0] / pair[place][0] for pair in pairs)
        rows.append(["-j %d" % jobs, wall, cpu, len(names) / wall, source_mb / wall,
                     source_mb / cpu, "%.2f" % gain, "%.2f" % least[place],
                     "%.2f" % (least[0] / least[place])])
    return source_mb, rows


def measure_starts(listing, quorl_js):
    tiny = listing.with_name("tiny.js")
    tiny.write_bytes(b"let a = 1;\n")
    rows = []
    for label, arguments in (("--version", ["--version"]), ("a file of 11 bytes", [tiny]),
                             ("the same, ndjson", [tiny, "--format", "ndjson"])):
        samples = [run_once([quorl_js, *arguments])[0] * 1e3 for _ in range(STARTS)]
        rows.append([label, statistics.median(samples), min(samples)])
    tiny.unlink()
    return rows
