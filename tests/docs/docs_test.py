"""Runs every command that the documentation shows and compares what it prints.

usage: docs_test.py PROJECT_ROOT BIN_FOLDER MODULE [--sanitized]

A block fenced as "console" holds commands behind "$ ", each followed by its output, standard error
included. They run in order, each by a shell of its own in the project's root, with quorl-js on the
path, PLUGIN set to the module and SCRATCH to an empty folder. A block fenced as "c" or "python"
must be a file of examples/ whole. Links to files must lead somewhere. The one command that is shown
and not run here is the one that runs this.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
LINK = re.compile(r"\]\(([^)#:]+)(#[^)]*)?\)")
SHELL_COMMANDS = {"./dev run examples/tour.js", "./dev test"}


def commands_of(block):
    """The (command, output) pairs of one console block."""
    pairs = []
    for line in block.splitlines(keepends=True):
        if line.startswith("$ "):
            pairs.append((line[2:].rstrip("\n"), ""))
        else:
            assert pairs, "output without a command: " + line
            pairs[-1] = (pairs[-1][0], pairs[-1][1] + line)
    return pairs


def check_block(language, block, root, run):
    if language == "console":
        pairs = commands_of(block)
        assert pairs, "a console block without a command"
        return ["$ %s\n--- shown\n%s--- printed\n%s" % (command, shown, printed)
                for command, shown in pairs for printed in [run(command)] if printed != shown]
    if language == "sh":
        return ["not checked: " + line for line in block.splitlines()
                if line not in SHELL_COMMANDS]
    if language in ("c", "python"):
        files = [path.read_text() for path in (root / "examples").iterdir() if path.is_file()]
        return [] if block in files else ["no file of examples/ holds this block whole:\n" + block]
    return ["no rule for blocks fenced as " + language]


def faults_of(path, text, root, run):
    faults = [fault for language, block in FENCE.findall(text)
              for fault in check_block(language, block, root, run)]
    faults += ["no such file: " + target for target, _ in LINK.findall(text)
               if not (path.parent / target).exists()]
    return ["%s: %s" % (path.name, fault) for fault in faults]


def main():
    root, bin_folder, module = (pathlib.Path(arg).resolve() for arg in sys.argv[1:4])
    sanitized = "--sanitized" in sys.argv
    pages = [root / "README.md", root / "CHANGELOG.md", *sorted((root / "docs").glob("*.md"))]
    with tempfile.TemporaryDirectory() as scratch:
        env = dict(os.environ, SCRATCH=scratch, PLUGIN=str(module), LC_ALL="C.UTF-8",
                   PATH="%s:%s" % (bin_folder, os.environ["PATH"]))
        ran = []

        def run(command):
            # A program that is not sanitized cannot load a module that is.
            if sanitized and "PLUGIN" in command:
                command = command.replace('"$PLUGIN"', "build/release/bin/quorljs.so")
            ran.append(command)
            done = subprocess.run(["sh", "-c", command], cwd=root, env=env, check=False,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            return done.stdout.decode()

        # The check itself has to go red.
        bad = "```console\n$ echo a\nb\n```\n```c\nint a;\n```\n[x](no/such/file.md)\n"
        assert len(faults_of(root / "README.md", bad, root, run)) == 3
        ran.clear()
        found = [fault for page in pages for fault in faults_of(page, page.read_text(), root, run)]
    assert len(ran) >= 10, ran
    print("\n".join(found) or "%d commands print what is shown" % len(ran))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
