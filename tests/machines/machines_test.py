"""Every whole-file case gives the same bytes, whatever compiled the plug-in and whatever runs it.

usage: machines_test.py PROJECT_ROOT MACHINE       builds for the machine and runs there
       machines_test.py PROJECT_ROOT -- COMMAND    runs a case_printer that is built

What is printed has to be what the case folders expect, byte for byte; its SHA-256 is shown, which
is one for all machines. The exit status is 77 where a compiler or an emulator is missing.
"""
import collections
import concurrent.futures
import hashlib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
Machine = collections.namedtuple("Machine", "compiler runner pointer_bits char_is_signed")

# Char is unsigned on ARM. The two machines of Debian's cross compilers are emulated, so that
# neither the libraries nor the kernel of this one are asked for anything.
MACHINES = {
    "gcc": Machine("g++", [], None, None),
    "clang": Machine("clang++", [], None, None),
    "arm64": Machine("aarch64-linux-gnu-g++", ["qemu-aarch64"], 64, False),
    "i686": Machine("i686-linux-gnu-g++", ["qemu-i386"], 32, True),
}


def expected_output(cases):
    """Standard output and standard error of a case_printer."""
    out, err, count = b"", b"", 0
    for name in sorted(path.parent.relative_to(cases).as_posix()
                       for path in cases.glob("*/*/expected.records")):
        folder = cases / name
        out += name.encode() + b"\n" + (folder / "expected.stdout").read_bytes()
        out += (folder / "expected.records").read_bytes()
        if (folder / "expected.stderr").exists():
            err += (folder / "expected.stderr").read_bytes()
        count += 1
    assert count > 40, count
    return out, err


def check(command, cases):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, check=False)
    out, err = expected_output(cases)
    shown = [hashlib.sha256(text).hexdigest() for text in (done.stdout, out)]
    print("SHA-256 printed   %s\nSHA-256 expected  %s" % tuple(shown))
    if (done.returncode, done.stdout, done.stderr) == (0, out, err):
        return 0
    sys.stderr.buffer.write(done.stderr)
    sys.stderr.write("%s: exit status %d\n" % (shlex.join(map(str, command)), done.returncode))
    for number, (printed, wanted) in enumerate(zip(done.stdout.split(b"\n"), out.split(b"\n")), 1):
        if printed != wanted:
            sys.exit("line %d:\n  printed  %r\n  expected %r" % (number, printed, wanted))
    sys.exit("standard output or standard error differs in its length")


def build(root, machine, level, folder):
    """Compiles the plug-in and the case_printer into one program that needs no library."""
    launcher = shlex.split(os.environ.get("CMAKE_CXX_COMPILER_LAUNCHER", ""))
    flags = ["-std=c++20", level, "-Wno-psabi", "-DQUORL_CASES=\"%s\"" % (root / "tests/cases"),
             "-I%s" % (root / "src"), "-I%s" % (root / "tests")]
    if machine.pointer_bits:
        flags += ["-DQUORL_POINTER_BITS=%d" % machine.pointer_bits,
                  "-DQUORL_CHAR_IS_SIGNED=%s" % str(machine.char_is_signed).lower()]
    sources = sorted((root / "src").rglob("*.cpp"))
    sources += [root / "tests/machines/case_printer.cpp", root / "tests/whole_file/case_files.cpp"]
    objects = [folder / ("%d.o" % number) for number in range(len(sources))]

    def compile_one(number):
        subprocess.run([*launcher, machine.compiler, *flags, "-c", sources[number], "-o",
                        objects[number]], check=True)
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        list(pool.map(compile_one, range(len(sources))))
    program = folder / "case_printer"
    subprocess.run([machine.compiler, "-static", *objects, "-o", program], check=True)
    return program


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    if sys.argv[2] == "--":
        return check(sys.argv[3:], root / "tests/cases")
    name, level = sys.argv[2].rsplit("-", 1)
    machine = MACHINES[name]
    missing = [tool for tool in [machine.compiler, *machine.runner] if not shutil.which(tool)]
    if missing:
        print("machines_test: not installed: " + ", ".join(missing))
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        program = build(root, machine, "-" + level, pathlib.Path(folder))
        return check([*machine.runner, program], root / "tests/cases")


if __name__ == "__main__":
    sys.exit(main())
