"""Runs both benchmark programs once on short texts and checks their counters.

usage: smoke_test.py BENCH_RUNS BENCH_KERNELS BENCH_LEAST MODULE
"""
import json
import pathlib
import subprocess
import sys
import tempfile

TEXTS = {
    "script": ("a.js", b"function Greeter(name) {\n  var label = name;\n}\n"),
    "page": ("a.html", b"<html><body><p>text</p></body></html>\n"),
    "c": ("a.c", b"int main(void) {\n  return 0;\n}\n"),
    "markdown": ("a.md", b"# Title\n\nA line of text;\nand another.\n"),
}


def counters(scratch, command):
    out = scratch / "out.json"
    subprocess.run([*command, "--benchmark_out=%s" % out], check=True, stderr=subprocess.DEVNULL)
    return {run["name"].split("/iterations:")[0]: run
            for run in json.loads(out.read_text())["benchmarks"]}


def main():
    runs_program, kernels_program, least_program, module = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        for route, (name, text) in TEXTS.items():
            whole = scratch / "runs" / route / "whole"
            whole.mkdir(parents=True)
            (whole / name).write_bytes(text)
        runs = counters(scratch, [runs_program, folder, "2", module, module])
        kernels = counters(scratch, [kernels_program, folder, "1"])
        least = counters(scratch, [least_program, folder, "2", module])
    processes = ("whole", "again")
    assert set(runs) == {route + "/" + name for route in TEXTS for name in processes}, runs.keys()
    for name, run in runs.items():
        route = name.split("/")[0]
        text = TEXTS[route][1]
        assert run["iterations"] == 2, run
        assert run["source_bytes"] == len(text), run
        assert run["record_bytes"] == run["against_record_bytes"] > len(text), run
        assert run["nodes"] == run["against_nodes"] > 3, run
        assert min(run["ms"], run["against_ms"], run["peak_bytes"]) > 0, run
        records = kernels["records/" + route]
        assert records["record_bytes"] > len(text) and records["ms"] > 0, records
        for step in ("outline", "omissions", "write-ndjson", "write-ranges", "write-outline",
                     "write-ctags", "write-etags"):
            made = kernels[step + "/" + route]
            assert made["record_bytes"] == run["record_bytes"] and made["ms"] > 0, made
    assert set(least) == {route + "/whole" for route in TEXTS}, least.keys()
    for name, run in least.items():
        for key in ("record_bytes", "nodes"):
            assert run[key] == run["least_" + key] == runs[name][key], (key, run)
        assert min(run["ms"], run["least_ms"]) > 0, run
    # The root, two wrappers, the function and its variable; a line that only closes makes no node.
    assert kernels["script-content/script"]["nodes"] == 5, kernels["script-content/script"]
    print("%d whole runs and %d kernels were measured" % (len(runs), len(kernels)))


if __name__ == "__main__":
    main()
