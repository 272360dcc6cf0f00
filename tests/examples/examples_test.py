"""Compiles the example host in C as strictly as the guide shows it, and runs both example hosts.

usage: examples_test.py PROJECT_ROOT CC MODULE
"""
import itertools
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT, MODULE = pathlib.Path(), ""
HOSTS = {}  # the words that start each host

STRICT = ["-std=c11", "-Wall", "-Werror", "-pedantic"]
CASES = ["script/commonjs-module", "page/worked-page", "text/class-and-blocks"]


def compile_c_host(compiler, flags, program):
    subprocess.run([compiler, *flags, "-I", ROOT / "src", "-o", program,
                    ROOT / "examples/smallest_host.c", "-ldl"], check=True)


def run(host, *arguments, cwd=None):
    done = subprocess.run([*HOSTS[host], *arguments], cwd=cwd, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    return done.returncode, done.stdout, done.stderr


class ExamplesTest(unittest.TestCase):
    def expect(self, host, outcome, *arguments, cwd=None):
        with self.subTest(host=host, arguments=arguments):
            self.assertEqual(run(host, *arguments, cwd=cwd), outcome)

    def test_records(self):
        for host, case in itertools.product(HOSTS, CASES):
            folder = ROOT / "tests/cases" / case
            (source,) = folder.glob("input.*")
            records = (folder / "expected.records").read_bytes()
            self.expect(host, (0, records, b""), MODULE, source.name, cwd=folder)

    def test_error_answers(self):
        with tempfile.TemporaryDirectory() as scratch:
            (pathlib.Path(scratch) / "empty.js").touch()
            for host, (path, error) in itertools.product(HOSTS, [
                    (b"none.js", b"Could not open file: none.js"),
                    (b"\xff'.js", b"Could not open file: \xff\\'.js"),
                    (b"empty.js", b"File is empty: empty.js")]):
                answer = b'[{"error": "' + error + b'"}]\n'
                self.expect(host, (1, b"", answer), MODULE, path, cwd=scratch)

    def test_usage(self):
        for host, name in zip(HOSTS, [b"smallest_host", b"host.py"]):
            usage = b"usage: " + name + b" MODULE FILE\n"
            for arguments in [], [MODULE], [MODULE, "a.js", "b.js"]:
                self.expect(host, (2, b"", usage), *arguments)

    def test_no_module(self):
        for host in HOSTS:
            with self.subTest(host):
                status, out, err = run(host, "/no/such/module.so", "a.js")
                self.assertEqual((status, out), (2, b""))
                self.assertIn(b"/no/such/module.so", err)


def main():
    global ROOT, MODULE
    root, compiler, module = sys.argv[1:]
    ROOT, MODULE = pathlib.Path(root).resolve(), os.path.abspath(module)
    with tempfile.TemporaryDirectory() as scratch:
        program = pathlib.Path(scratch) / "smallest_host"
        compile_c_host(compiler, STRICT + ["-O2"], program)
        compile_c_host(compiler, STRICT, program)
        HOSTS.update({"C": [program], "Python": [sys.executable, ROOT / "examples/host.py"]})
        unittest.main(argv=sys.argv[:1], verbosity=2)


if __name__ == "__main__":
    main()
