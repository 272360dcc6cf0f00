"""Reads from the built files that they are hardened.

usage: hardening_test.py READELF FILE ...

Each file has to have all of its relocations done and read-only before it runs, no executable stack,
and functions that check the stack and the sizes of what they write; on x86 it has to be marked as
fit for a shadow stack, and the functions that may be called indirectly have to begin with a landing
pad.
"""
import re
import subprocess
import sys

# endbr64 and endbr32.
LANDING_PAD = re.compile(rb"\xf3\x0f\x1e[\xfa\xfb]")
# The start-up code, which the compiler brings, has three.
LEAST_LANDING_PADS = 50


def read(readelf, option, path):
    return subprocess.run([readelf, "-W", option, path], check=True, capture_output=True,
                          text=True).stdout


def code_of(readelf, path):
    """The bytes of the section .text."""
    section = re.search(r"\] \.text +PROGBITS +\w+ (\w+) (\w+) ", read(readelf, "--sections", path))
    offset, size = (int(number, 16) for number in section.groups())
    with open(path, "rb") as file:
        file.seek(offset)
        return file.read(size)


def faults(header, dynamic, segments, symbols, notes, code):
    """What is missing, from the outputs of readelf for one file and from its code."""
    found = []
    if not re.search(r"\(FLAGS\).*\bBIND_NOW\b|\(FLAGS_1\).*\bNOW\b|\(BIND_NOW\)", dynamic):
        found.append("is bound lazily")
    if "GNU_RELRO" not in segments:
        found.append("has no read-only relocations")
    stack = re.search(r"GNU_STACK.*", segments)
    if stack is None or re.search(r"\bRWE\b", stack.group(0)):
        found.append("has an executable stack")
    if "__stack_chk_fail" not in symbols:
        found.append("does not check its stack")
    if not re.search(r"\b__(?!stack)\w+_chk\b", symbols):
        found.append("does not check the sizes of what it writes")
    if re.search(r"Machine:.*(X86-64|80386)", header):
        if not re.search(r"x86 feature:.*SHSTK", notes):
            found.append("is not marked for a shadow stack")
        if len(LANDING_PAD.findall(code)) < LEAST_LANDING_PADS:
            found.append("has no landing pads")
    return found


def check_faults():
    """The check itself has to go red, whatever is missing."""
    good = {
        "header": "  Machine:   Advanced Micro Devices X86-64",
        "dynamic": " 0x1e (FLAGS)   SYMBOLIC BIND_NOW",
        "segments": "  GNU_RELRO 0x1 R\n  GNU_STACK 0x0 RW  0x10",
        "symbols": "UND __stack_chk_fail@GLIBC_2.4\nUND __memcpy_chk@GLIBC_2.3.4",
        "notes": "      Properties: x86 feature: SHSTK",
        "code": b"\xf3\x0f\x1e\xfa\xc3" * LEAST_LANDING_PADS,
    }
    assert faults(**good) == []
    assert faults(**{**good, "dynamic": " 0x6ffffffb (FLAGS_1)  Flags: NOW PIE"}) == []
    for part, text, fault in (
            ("dynamic", " 0x1e (FLAGS)   SYMBOLIC", "is bound lazily"),
            ("segments", "  GNU_STACK 0x0 RW  0x10", "has no read-only relocations"),
            ("segments", "  GNU_RELRO 0x1 R\n  GNU_STACK 0x0 RWE 0x10", "has an executable stack"),
            ("symbols", "UND __memcpy_chk@GLIBC_2.3.4", "does not check its stack"),
            ("symbols", "UND __stack_chk_fail@GLIBC_2.4\nUND memcpy",
             "does not check the sizes of what it writes"),
            ("notes", "      Properties: x86 feature: IBT", "is not marked for a shadow stack"),
            ("code", b"\xf3\x0f\x1e\xfa\xc3" * 3, "has no landing pads")):
        assert faults(**{**good, part: text}) == [fault], fault
    arm = {**good, "header": "  Machine: AArch64", "notes": "", "code": b""}
    assert faults(**arm) == []


def main():
    readelf, *paths = sys.argv[1:]
    check_faults()
    assert paths, "no files"
    status = 0
    for path in paths:
        parts = (read(readelf, option, path) for option in
                 ("--file-header", "--dynamic", "--segments", "--dyn-syms", "--notes"))
        found = faults(*parts, code_of(readelf, path))
        print("%s: %s" % (path, "; ".join(found) or "hardened"))
        status = 1 if found else status
    return status


if __name__ == "__main__":
    sys.exit(main())
