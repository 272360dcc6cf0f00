"""Runs every command in the documentation and compares its output.

usage: docs_test.py PROJECT_ROOT BUILD_FOLDER MODULE

A block fenced as "console" holds commands after "$ ", each followed by its output, standard error
included. One shell runs a block, in the project's root, with quorl-js on the path, PLUGIN set to
the module, BUILD to the build folder, SCRATCH and HOME to an empty folder. A block fenced as a
language of EXAMPLES must equal a file of examples/ or editors/, and each line of a "cmake" block must occur in
the project that the tests build from an installed tree. The blocks of a page that are fenced as
"pycon" are one doctest, with the package of bindings/python. Links to files must exist. Of "./dev run"
only the final program is run, the one of this build. Commands in blocks fenced as "sh", which install
and test, are not run but have to be SHELL_COMMANDS.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
LINK = re.compile(r"\]\(([^)#:]+)(#[^)]*)?\)")
SHELL_COMMANDS = {"./dev run examples/tour.js", "./dev test", "./dev package",
                  "sudo apt install ./build/packages/quorl-js_*.deb "
                  "./build/packages/quorl-js-plugin_*.deb",
                  "sudo apt install ./build/packages/quorl-js_*.deb "
                  "./build/packages/quorl-js-plugin_*.deb "
                  "./build/packages/python3-quorl-js_*.deb",
                  "python3 -m pip install ./bindings/python",
                  "EM_FROZEN_CACHE=1 emcmake cmake -S bindings/npm -B build/npm -G Ninja",
                  "ninja -C build/npm", "npm pack ./build/npm/package", "cd editors/vscode", "npm ci",
                  "npm run package", "code --install-extension quorl-js-1.0.0.vsix"}
EXAMPLES = {"c", "python", "bash", "lua", "elisp", "js", "toml", "json"}
CONSUMER = "tests/install/consumer/CMakeLists.txt"
MARK = "<end of output>"


def commands_of(block):
    """Return the (command, output) pairs of one console block."""
    pairs = []
    for line in block.splitlines(keepends=True):
        if line.startswith("$ "):
            pairs.append((line[2:].rstrip("\n"), ""))
        else:
            assert pairs, "output without a command: " + line
            pairs[-1] = (pairs[-1][0], pairs[-1][1] + line)
    return pairs


def check_console(block, run):
    pairs = commands_of(block)
    outputs = run([command for command, _ in pairs])
    assert pairs and len(outputs) == len(pairs), (block, outputs)
    return ["$ %s\n--- shown\n%s--- printed\n%s" % (command, shown, printed)
            for (command, shown), printed in zip(pairs, outputs) if printed != shown]


def check_doctest(blocks, root, env):
    if not blocks:
        return []
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
        file.write("\n".join(blocks))
        file.flush()
        done = subprocess.run([sys.executable, "-B", "-m", "doctest", file.name], cwd=root, env=env,
                              check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return [done.stdout.decode()] if done.returncode != 0 else []


def check_block(language, block, root, run):
    if language == "console":
        return check_console(block, run)
    if language == "sh":
        return ["not checked: " + line for line in block.splitlines()
                if line not in SHELL_COMMANDS]
    if language == "cmake":
        known = (root / CONSUMER).read_text().splitlines()
        return ["not in %s: %s" % (CONSUMER, line) for line in block.splitlines()
                if line and not line.startswith("#") and line not in known]
    if language in EXAMPLES:
        files = [path.read_text() for folder in ("examples", "editors", "editors/vscode")
                 for path in (root / folder).iterdir() if path.is_file()]
        return [] if block in files else ["no example holds this block whole:\n" + block]
    return ["no rule for blocks fenced as " + language]


def faults_of(path, text, root, run, env):
    faults = [fault for language, block in FENCE.findall(text) if language != "pycon"
              for fault in check_block(language, block, root, run)]
    faults += check_doctest([block for language, block in FENCE.findall(text)
                             if language == "pycon"], root, env)
    faults += ["no such file: " + target for target, _ in LINK.findall(text)
               if not (path.parent / target).exists()]
    return ["%s: %s" % (path.name, fault) for fault in faults]


def main():
    root, build, module = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    pages = [root / "README.md", root / "CHANGELOG.md", root / "CONTRIBUTING.md",
             *sorted((root / "docs").glob("*.md"))]
    count = 0
    with tempfile.TemporaryDirectory() as scratch:
        env = dict(os.environ, SCRATCH=scratch, HOME=scratch, PLUGIN=str(module), BUILD=str(build),
                   LC_ALL="C.UTF-8", PATH="%s:%s" % (build / "bin", os.environ["PATH"]),
                   PYTHONPATH=str(root / "bindings/python/src"))

        def run(commands):
            nonlocal count
            count += len(commands)
            script = "exec 2>&1\n" + "".join("%s\nprintf %%s '%s'\n" % (command, MARK)
                                             for command in commands)
            script = script.replace("./dev run ", "quorl-js ")
            done = subprocess.run(["sh", "-c", script], cwd=root, env=env, check=False,
                                  stdout=subprocess.PIPE)
            return done.stdout.decode().split(MARK)[:-1]

        # The check itself must be able to fail.
        bad = ("```console\n$ echo a\nb\n```\n```c\nint a;\n```\n```cmake\nno(such line)\n```\n"
               "[x](no/such/file.md)\n```pycon\n>>> 1\n2\n```\n")
        assert len(faults_of(root / "README.md", bad, root, run, env)) == 5
        count = 0
        found = [fault for page in pages
                 for fault in faults_of(page, page.read_text(), root, run, env)]
    assert count >= 15, count
    print("\n".join(found) or "%d commands print what is shown" % count)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
