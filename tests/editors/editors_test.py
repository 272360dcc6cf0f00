"""Real clients of the language server, without a screen.

usage: editors_test.py neovim | emacs | vscode  PROJECT_ROOT SERVER FOLDER

Each opens a script with the settings of editors/, asks for its outline, edits it and asks
again. Skipped, with exit status 77, without the editor or, for vscode, without npm's registry.
"""
import os
import pathlib
import shutil
import subprocess
import sys

EDITOR, ROOT, SERVER, FOLDER = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
sys.path.insert(0, str(ROOT / "tests" / "support"))
from npm_packages import fetch  # pylint: disable=wrong-import-position

SCRIPT = """class Shape {
  area() {
    return 0;
  }
}
const scale = (shape) => {
  return shape.area() * 2;
};
"""
HERE = pathlib.Path(__file__).resolve().parent


def skip(reason):
    print("skipped: " + reason)
    sys.exit(77)


def run(command):
    """What the command prints, with the server on the path."""
    home = FOLDER / "home"
    home.mkdir(exist_ok=True)
    environment = dict(os.environ, HOME=str(home), XDG_CONFIG_HOME=str(home), LC_ALL="C.UTF-8",
                       XDG_STATE_HOME=str(home), XDG_CACHE_HOME=str(home),
                       PATH="%s:%s" % (SERVER.parent, os.environ["PATH"]))
    done = subprocess.run([str(word) for word in command], cwd=FOLDER, env=environment, timeout=120,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          check=False)
    assert done.returncode == 0, (done.stdout.decode(), done.stderr.decode())
    return done.stdout.decode().replace("\r", "").splitlines()


def neovim():
    if shutil.which("nvim") is None:
        skip("no neovim")
    settings = ROOT / "editors" / "neovim.lua"
    return run(["nvim", "--headless", "-n", "-u", settings, FOLDER / "shape.js", "-c",
                "luafile %s" % (HERE / "neovim_check.lua")]), [
                    "symbol 1 [Class] Shape", "symbol 2 [Method] area", "symbol 6 [Function] scale",
                    "symbol 2 [Variable] added", "symbol 3 [Class] Shape", "symbol 4 [Method] area",
                    "symbol 8 [Function] scale", "fold 3 6", "fold 4 5", "fold 8 9",
                    "found area Shape"]


def emacs():
    if shutil.which("emacs") is None:
        skip("no emacs")
    # Entries of its index are grouped by kind, and what is found is shown by its line.
    load = "(progn (require 'package) (package-initialize))"
    if subprocess.run(["emacs", "--batch", "--eval", load, "-l", "eglot"], check=False,
                      stderr=subprocess.DEVNULL).returncode != 0:
        skip("no eglot")
    return run(["emacs", "--batch", "--eval", load, "-l", ROOT / "editors/emacs.el", "-l",
                HERE / "emacs_check.el", "--eval", '(check-file "shape.js")']), [
                    "symbol 0 Class -", "symbol 1 Shape 1",
                    "symbol 0 Method -", "symbol 1 Shape -", "symbol 2 area 2",
                    "symbol 0 Function -", "symbol 1 scale 6",
                    "symbol 0 Variable -", "symbol 1 added 2",
                    "symbol 0 Class -", "symbol 1 Shape 3",
                    "symbol 0 Method -", "symbol 1 Shape -", "symbol 2 area 4",
                    "symbol 0 Function -", "symbol 1 scale 8",
                    "found   area() {"]


def vscode():
    if shutil.which("node") is None or shutil.which("npm") is None:
        skip("no node or no npm")
    try:
        fetch(HERE / "packages.txt", FOLDER)
    except subprocess.CalledProcessError:
        skip("no npm registry")
    check = FOLDER / "workspace"
    shutil.rmtree(check, ignore_errors=True)
    check.mkdir()
    (check / "shape.js").write_text(SCRIPT)
    return run(["node", HERE / "vscode_check.js", FOLDER / "node_modules", SERVER,
                check / "shape.js"]), [
                    "encoding utf-16", "scanned 1 file",
                    "symbol 0 Shape 5 1 5", "symbol 1 area 6 2 4", "symbol 0 scale 12 6 8",
                    "symbol 0 added 13 2 2",
                    "symbol 0 Shape 5 3 7", "symbol 1 area 6 4 6", "symbol 0 scale 12 8 10",
                    "fold 3 6", "fold 4 5", "fold 8 9",
                    "select 5", "select 14", "select %d" % (len(SCRIPT) + len("// ok\nlet added = 1;\n")),
                    "found area Shape", "error -32601", "exit 0"]


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    (FOLDER / "shape.js").write_text(SCRIPT)
    printed, expected = {"neovim": neovim, "emacs": emacs, "vscode": vscode}[EDITOR]()
    if printed != expected:
        print("--- expected", *expected, "--- printed", *printed, sep="\n")
        return 1
    print("%s: %d lines as expected" % (EDITOR, len(printed)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
