"""Runs one suite of the tests with ctest and prints a summary.

usage: run_suite.py [--strict] SUITE BUILD_FOLDER EXPECTED_SKIPS [CTEST_ARGUMENT ...]
       run_suite.py --check

Prints the output of the tests that failed, the tests that were skipped with their reasons, and as the
last line how many passed, failed and were skipped. Everything that ctest prints goes to
BUILD_FOLDER/test.log. The exit status is 1 if a test failed.

EXPECTED_SKIPS lists the tests that are skipped. With --strict, a skip that is not listed fails the
suite, and so does a listed test that was not skipped, unless it is marked as optional.
"""
import collections
import os
import pathlib
import re
import subprocess
import sys
import time
import xml.etree.ElementTree

Result = collections.namedtuple("Result", "name outcome seconds output reason")

# A skipped test says why in the line after this one (GoogleTest), or behind it (the scripts).
GTEST_SKIP = re.compile(r"^\S+:\d+: Skipped\n(.*)$", re.M)
SCRIPT_SKIP = re.compile(r"^skipped: (.*)$", re.M)
SKIPPED = ("SKIP_REGULAR_EXPRESSION_MATCHED", "SKIP_RETURN_CODE")


def skip_reason(output):
    found = GTEST_SKIP.search(output) or SCRIPT_SKIP.search(output)
    return found.group(1).strip() if found else "no reason given"


def result_of(case):
    """The Result of one testcase of ctest's JUnit report."""
    output = case.findtext("system-out") or ""
    seconds = float(case.get("time") or 0)
    status = case.get("status")
    if status == "run":
        return Result(case.get("name"), "passed", seconds, output, "")
    marks = [mark.get("message") or "" for mark in case.iter() if mark.tag in ("failure", "skipped")]
    if status == "notrun" and any(mark.startswith(SKIPPED) for mark in marks):
        return Result(case.get("name"), "skipped", seconds, output, skip_reason(output))
    # Besides failures, tests that could not be run: a missing program, a fixture that failed.
    return Result(case.get("name"), "failed", seconds, output, " ".join(marks) or status)


def results_of(report):
    return [result_of(case) for case in xml.etree.ElementTree.fromstring(report).iter("testcase")]


def expected_skips(text, suite, is_root):
    """The names of the tests that this suite, run by this user, skips, and of those that it may."""
    names, optional = set(), set()
    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        suites, user, name, reason = line.split(None, 3)
        assert user in ("root", "user", "anyone") and reason, line
        if suite in suites.split(",") and (user == "anyone" or (user == "root") == is_root):
            (optional if name.startswith("?") else names).add(name.lstrip("?"))
    return names, optional


def skip_faults(results, expected, optional):
    skipped = {result.name for result in results if result.outcome == "skipped"}
    ran = {result.name for result in results} - skipped
    return ["unexpected skip: " + name for name in sorted(skipped - expected - optional)] + \
           ["listed as skipped, but it ran: " + name for name in sorted(expected & ran)] + \
           ["listed as skipped, but there is no such test: " + name
            for name in sorted(expected - ran - skipped)]


def summary(suite, results):
    count = collections.Counter(result.outcome for result in results)
    line = "%s: %d passed, %d failed" % (suite, count["passed"], count["failed"])
    return line + (", %d skipped" % count["skipped"] if count["skipped"] else "")


def run_ctest(build, arguments):
    """ctest's exit status and report. Two tests more run than there are processors, since some of
    them wait most of the time. A terminal shows the test at hand, the log everything."""
    report = build / "test.xml"
    report.unlink(missing_ok=True)
    command = ["ctest", "--test-dir", str(build), "--no-tests=error", "--output-on-failure",
               "-j", str(len(os.sched_getaffinity(0)) + 2), "--output-junit", str(report)]
    command += ["--output-log", str(build / "test.log")] + arguments
    on_terminal = os.isatty(2)
    status = subprocess.run(command + ["--progress"] * on_terminal, check=False,
                            stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                            stdout=sys.stderr if on_terminal else subprocess.DEVNULL).returncode
    return status, report.read_bytes() if report.exists() else None


def run(suite, build, skips, arguments, strict):
    start = time.monotonic()
    status, report = run_ctest(build, arguments)
    seconds = time.monotonic() - start
    if report is None:
        print((build / "test.log").read_text() if (build / "test.log").exists() else "", end="")
        print("%s: ctest ran no test, exit status %d" % (suite, status))
        return 1
    results = results_of(report)
    failed = [result for result in results if result.outcome == "failed"]
    for result in failed:
        print("--- %s: %s" % (result.name, result.reason))
        if result.output.strip() != result.reason:
            print(result.output.rstrip("\n"))
    for result in failed:
        print("failed: " + result.name)
    for result in results:
        if result.outcome == "skipped":
            print("skipped: %s (%s)" % (result.name, result.reason))
    faults = []
    if strict:
        faults = skip_faults(results, *expected_skips(skips.read_text(), suite, os.geteuid() == 0))
        print("".join(fault + "\n" for fault in faults), end="")
    log = os.path.relpath(build / "test.log")
    print("%d tests in %d s; the whole output is in %s" % (len(results), round(seconds), log))
    print(summary(suite, results), flush=True)
    return 1 if status != 0 or failed or faults else 0


def check_the_checks():
    """Each kind of outcome is told from the others, and each fault makes the suite fail."""
    report = """<testsuite>
<testcase name="good" time="0.5" status="run"><system-out>fine</system-out></testcase>
<testcase name="bad" time="1" status="fail"><failure message="Failed"/><system-out>why</system-out>
</testcase>
<testcase name="late" time="9" status="fail"><failure message="Timeout"/></testcase>
<testcase name="gone" time="0" status="notrun"><skipped message="Unable to find executable: x"/>
</testcase>
<testcase name="off" time="0" status="disabled"><skipped message="Disabled"/></testcase>
<testcase name="root" time="0" status="notrun">
<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/>
<system-out>[ RUN      ] A.B\n/x/a.cpp:9: Skipped\nroot may\n[  SKIPPED ] A.B\n</system-out></testcase>
<testcase name="tool" time="0" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/>
<system-out>skipped: there is no tool\n</system-out></testcase></testsuite>"""
    results = results_of(report)
    assert [(result.name, result.outcome, result.reason) for result in results] == [
        ("good", "passed", ""), ("bad", "failed", "Failed"), ("late", "failed", "Timeout"),
        ("gone", "failed", "Unable to find executable: x"), ("off", "failed", "Disabled"),
        ("root", "skipped", "root may"), ("tool", "skipped", "there is no tool")], results
    assert summary("some", results) == "some: 1 passed, 4 failed, 2 skipped"
    assert summary("some", results[:1]) == "some: 1 passed, 0 failed"
    listed = ("# SUITES USER TEST REASON\n\nsome,other root root root may\nsome user good it may\n"
              "some anyone ?tool not everywhere\n")
    assert expected_skips(listed, "some", True) == ({"root"}, {"tool"})
    assert expected_skips(listed, "some", False) == ({"good"}, {"tool"})
    assert expected_skips(listed, "third", True) == (set(), set())
    assert skip_faults(results, {"root", "tool"}, set()) == []
    assert skip_faults(results, {"root"}, {"tool", "good"}) == []
    assert skip_faults(results, {"root", "good", "none"}, set()) == [
        "unexpected skip: tool", "listed as skipped, but it ran: good",
        "listed as skipped, but there is no such test: none"]


def main():
    words = sys.argv[1:]
    if words == ["--check"]:
        check_the_checks()
        return 0
    strict = words[0] == "--strict"
    suite, build, skips, *arguments = words[strict:]
    return run(suite, pathlib.Path(build).resolve(), pathlib.Path(skips), arguments, strict)


if __name__ == "__main__":
    sys.exit(main())
