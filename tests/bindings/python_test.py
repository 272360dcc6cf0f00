"""The Python package: its own tests, and what it is made of.

usage: python_test.py code ROOT QUORL_JS
       python_test.py package ROOT QUORL_JS SCRATCH
       python_test.py example ROOT QUORL_JS SCRATCH

code runs the package's tests. package checks its types, builds wheel and sdist, and installs the wheel
into a virtual environment. example runs the one with a picture. Exit status 77 if a program or package
that the check needs is missing.
"""
import ast
import importlib.util
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import zipfile

SKIPPED = 77
MODULES = ["__init__.py", "_columns.py", "_errors.py", "_index.py", "_model.py", "_program.py",
           "_run.py", "py.typed"]
TESTS = ["test_index.py", "test_many.py", "test_outline.py"]
# What a newcomer writes first.
FIRST_PROGRAM = """import quorl_js

for item in quorl_js.outline("tour.js").items:
    if item.kind == "class":
        print(item.line, item.name)
"""
TYPED_PROGRAM = """from pathlib import Path
from typing import List

import quorl_js

names: List[str] = [item.name for item in quorl_js.outline(Path("a.js")).items]
with quorl_js.outline_many([b"a.js", Path("b.js"), "c.js"], jobs=2) as run:
    for outline in run:
        size: int = outline.source_bytes
with quorl_js.open_index("code.index") as index:
    lines: List[int] = [item.line for item in index.find(kind=["class"], path=Path("src"))]
"""


def environment(root, quorl_js, **more):
    path = "%s:%s" % (quorl_js.parent, os.environ["PATH"])
    return dict(os.environ, PATH=path, PYTHONDONTWRITEBYTECODE="1", **more)


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], check=False, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, encoding="utf-8", **options)
    assert done.returncode == 0, "%s\n%s" % (command, done.stdout)
    return done.stdout


def missing_of(*modules):
    missing = [name for name in modules if importlib.util.find_spec(name) is None]
    if missing:
        print("skipped: Python has no " + ", ".join(missing))
    return missing


def version_of(package):
    return re.search(r'(?m)^__version__ = "(.+)"$', (package / "__init__.py").read_text()).group(1)


def check_code(root, quorl_js):
    source = root / "bindings/python/src"
    files = sorted(path.name for path in (source / "quorl_js").iterdir() if path.is_file())
    assert files == MODULES, files
    for path in (source / "quorl_js").glob("*.py"):
        ast.parse(path.read_text(), feature_version=(3, 9))
    # The check itself must be able to fail.
    try:
        ast.parse("match a:\n  case 1: pass\n", feature_version=(3, 9))
        sys.exit("Python 3.10 passes for 3.9")
    except SyntaxError:
        pass
    printed = run(quorl_js, "--version")
    assert printed.startswith("quorl-js %s\n" % version_of(source / "quorl_js")), printed
    licences = [path.read_bytes() for path in (root / "LICENSE", root / "bindings/python/LICENSE")]
    assert licences[0] == licences[1], "the packages have different licences"
    tests = root / "bindings/python/tests"
    assert sorted(path.name for path in tests.glob("*.py")) == TESTS
    env = environment(root, quorl_js, PYTHONPATH="%s:%s" % (source, tests))
    print(run(sys.executable, "-W", "error::ResourceWarning", "-m", "unittest",
              *(name[:-3] for name in TESTS), cwd=tests, env=env))


def check_package(root, quorl_js, scratch):
    if missing_of("mypy", "build", "setuptools", "wheel", "venv", "ensurepip"):
        return SKIPPED
    shutil.rmtree(scratch, ignore_errors=True)
    project = scratch / "project"
    shutil.copytree(root / "bindings/python", project,
                    ignore=shutil.ignore_patterns("__pycache__", "*.egg-info", "build", "dist"))
    env = environment(root, quorl_js)
    run(sys.executable, "-m", "mypy", "--cache-dir", scratch / "mypy", "src", cwd=project, env=env)
    # From the sdist that it builds first, so the sdist is whole.
    run(sys.executable, "-m", "build", "--no-isolation", "--outdir", scratch / "dist", project,
        env=env)
    version = version_of(project / "src/quorl_js")
    name = "quorl_js-" + version
    wheel = scratch / "dist" / (name + "-py3-none-any.whl")
    with zipfile.ZipFile(wheel) as archive:
        found = sorted(archive.namelist())
    assert found == sorted(
        ["quorl_js/" + module for module in MODULES] +
        ["%s.dist-info/%s" % (name, each) for each in ("LICENSE", "METADATA", "RECORD", "WHEEL",
                                                       "top_level.txt")]), found
    with tarfile.open(next((scratch / "dist").glob("*.tar.gz"))) as archive:
        found = sorted(each.name.split("/", 1)[1] for each in archive if each.isfile())
    assert found == sorted(
        ["LICENSE", "MANIFEST.in", "PKG-INFO", "README.md", "pyproject.toml", "setup.cfg"] +
        ["src/quorl_js.egg-info/" + each for each in ("PKG-INFO", "SOURCES.txt",
                                                      "dependency_links.txt", "top_level.txt")] +
        ["src/quorl_js/" + module for module in MODULES] + ["tests/" + test for test in TESTS]), found
    # A newcomer's way, without the network.
    place = scratch / "venv"
    run(sys.executable, "-m", "venv", place)
    run(place / "bin/pip", "install", "--no-index", wheel)
    shutil.copy(root / "examples/tour.js", scratch)
    (scratch / "first.py").write_text(FIRST_PROGRAM)
    assert run(place / "bin/python", "first.py", cwd=scratch, env=env) == "6 Catalogue\n"
    (scratch / "typed.py").write_text(TYPED_PROGRAM)
    mypy = [sys.executable, "-m", "mypy", "--cache-dir", scratch / "mypy", "--strict",
            "--python-executable", place / "bin/python", "typed.py"]
    run(*mypy, cwd=scratch)
    (scratch / "typed.py").write_text(TYPED_PROGRAM.replace("List[int]", "List[bytes]"))
    refused = subprocess.run(list(map(str, mypy)), cwd=scratch, check=False, stdout=subprocess.PIPE)
    assert refused.returncode == 1, "a wrong type passes"
    print("built, installed and used")
    return 0


def check_example(root, quorl_js, scratch):
    if missing_of("matplotlib"):
        return SKIPPED
    shutil.rmtree(scratch, ignore_errors=True)
    (scratch / "code/node").mkdir(parents=True)
    (scratch / "code/a.js").write_text("function one() {\n}\nclass A {\n  two() {\n  }\n"
                                       "  #three() {\n    f();\n    g();\n  }\n}\n")
    (scratch / "code/node/b.ts").write_text("function four() { return 4; }\n")
    (scratch / "code/notes.md").write_text("function five() {\n}\n")
    env = environment(root, quorl_js, PYTHONPATH=str(root / "bindings/python/src"),
                      MPLCONFIGDIR=str(scratch))
    printed = run(sys.executable, root / "examples/functions_by_length.py", "code", "picture.png",
                  cwd=scratch, env=env)
    assert printed == ("    4 lines  code/a.js:6  #three\n    2 lines  code/a.js:1  one\n"
                       "    2 lines  code/a.js:4  two\n    1 lines  code/node/b.ts:1  four\n"), printed
    picture = (scratch / "picture.png").read_bytes()
    assert picture.startswith(b"\x89PNG"), picture[:8]
    width, height = (int.from_bytes(picture[at:at + 4], "big") for at in (16, 20))
    assert (width, height) == (960, 540), (width, height)
    print("drawn")
    return 0


if __name__ == "__main__":
    places = [pathlib.Path(argument).resolve() for argument in sys.argv[2:]]
    sys.exit({"code": check_code, "package": check_package,
              "example": check_example}[sys.argv[1]](*places))
