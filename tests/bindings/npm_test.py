"""The npm package: built, run, packed, installed, and the page in Chromium.

usage: npm_test.py build | code | package | page  ROOT QUORL_JS BUILD SCRATCH

build makes BUILD with emscripten, for the others. code runs the package in Node. package packs it,
and installs it into projects in JavaScript and TypeScript. page opens the playground. Exit status
77 if a program that the check needs, or npm's registry, is out of reach.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys

CHECK, ROOT, QUORL_JS, BUILD, SCRATCH = sys.argv[1], *map(pathlib.Path, sys.argv[2:6])
sys.path.insert(0, str(ROOT / "tests" / "support"))
from npm_packages import fetch  # pylint: disable=wrong-import-position

HERE = pathlib.Path(__file__).resolve().parent
PACKED = ["LICENSE", "README.md", "browser.mjs", "core.cjs", "core.mjs", "index.d.mts", "index.d.ts",
          "node.cjs", "node.mjs", "package.json", "quorl-js.wasm"]
OLD_PROGRAM = """const { load } = require("quorl-js");
load().then((quorl) => console.log(quorl.records("a.js", "f();").length));
"""
TYPED_PROGRAM = """import { load, OutlineError, type Item, type Kind, type Parser } from "quorl-js";

const lines: string[] = [];
const quorl: Parser = await load({ diagnostics: (line, stream) => lines.push(stream + line) });
declare const wasm: ArrayBuffer;
void load({ wasm });
const kinds: Kind[] = quorl.outline("a.js", new Uint8Array(1)).items.map((item: Item) => item.kind);
try {
  const text: string = quorl.records("a.js", "", { defines: ["A"] });
} catch (error) {
  if (error instanceof OutlineError) lines.push(error.status, error.answer ?? "");
}
"""
# In each of them a type is wrong.
WRONG_LINES = ["const a: number = quorl.records('a.js', 'f();');", "quorl.outline('a.js', 1);",
               "const b: Kind = 'metod';", "quorl.memoryBytes = 1;"]
EXPECT_ERROR = "// @ts-expect-error\n"  # an error by itself if the next line has none


def skip(reason):
    print("skipped: " + reason)
    sys.exit(77)


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], check=False, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, encoding="utf-8", **options)
    if done.returncode != 0:
        sys.exit("%s: status %d\n%s" % (command, done.returncode, done.stdout))
    return done.stdout


def fetched(*names):
    """Unpack these packages of packages.txt in SCRATCH."""
    rows = [row for row in (HERE / "packages.txt").read_text().splitlines()
            if row.split()[1] in names]
    (SCRATCH / "packages.txt").write_text("\n".join(rows))
    try:
        fetch(SCRATCH / "packages.txt", SCRATCH)
    except subprocess.CalledProcessError:
        skip("npm's registry is out of reach")


def check_build():
    if shutil.which("emcmake") is None or shutil.which("ninja") is None:
        skip("no emscripten or no ninja")
    # The system's cache of libraries has all that is needed, and may be read-only. A compiler cache
    # of the outer build knows nothing of this compiler.
    env = {name: value for name, value in os.environ.items() if "LAUNCHER" not in name}
    env["EM_FROZEN_CACHE"] = "1"
    run("emcmake", "cmake", "-S", ROOT / "bindings/npm", "-B", BUILD, "-G", "Ninja", env=env)
    run("ninja", "-C", BUILD, env=env)
    package = json.loads((BUILD / "package/package.json").read_text())
    printed = run(QUORL_JS, "--version")
    assert printed.startswith("quorl-js %s\n" % package["version"]), printed
    assert (BUILD / "package/LICENSE").read_bytes() == (ROOT / "LICENSE").read_bytes()


def check_code():
    print(run("node", "--expose-gc", HERE / "npm_code.js", BUILD / "package", ROOT / "tests/cases",
              QUORL_JS))


def check_package():
    fetched("typescript")
    npm = ["npm", "--no-audit", "--no-fund", "--no-update-notifier", "--offline"]
    listed = json.loads(run(*npm, "pack", "--json", "--silent", "--pack-destination", SCRATCH, BUILD / "package"))
    assert [each["path"] for each in listed[0]["files"]] == PACKED, listed
    archive = SCRATCH / listed[0]["filename"]
    consumer = SCRATCH / "consumer"
    consumer.mkdir()
    (consumer / "package.json").write_text('{"name": "consumer", "private": true}\n')
    # A package with an install script would not work with this option.
    run(*npm, "install", "--ignore-scripts", archive, cwd=consumer)
    # A newcomer's way.
    shutil.copy(ROOT / "examples/outline.mjs", consumer)
    printed = run("node", "outline.mjs", ROOT / "examples/tour.js", cwd=consumer)
    assert printed == ("4 variable cache\n6 class Catalogue\n7 constructor constructor\n"
                       "11 method load\n13 variable text\n21 function Entry\n"), printed
    (consumer / "old.cjs").write_text(OLD_PROGRAM)
    assert int(run("node", "old.cjs", cwd=consumer)) > 1000
    compiler = ["node", SCRATCH / "node_modules/typescript/bin/tsc", "--strict", "--target", "es2022",
                "--module", "nodenext", "--noEmit"]
    typed = TYPED_PROGRAM + "".join(EXPECT_ERROR + line + "\n" for line in WRONG_LINES)
    (consumer / "typed.mts").write_text(typed)
    # Here there is no await at the top.
    (consumer / "typed.cts").write_text(typed.replace("const quorl: Parser = await load(",
                                                      "declare const quorl: Parser;\nvoid load("))
    run(*compiler, "typed.mts", "typed.cts", cwd=consumer)
    # Without the types of browsers too.
    run(*compiler, "--lib", "es2022", "typed.mts", "typed.cts", cwd=consumer)


def check_page():
    chromium = shutil.which("chromium")
    if chromium is None:
        skip("no chromium")
    fetched("playwright-core")
    env = dict(os.environ, NODE_PATH=str(SCRATCH / "node_modules"), CHROMIUM=chromium)
    print(run("node", HERE / "npm_page.js", BUILD / "playground.html", ROOT / "examples/tour.js",
              BUILD / "package", cwd=SCRATCH, env=env))


def main():
    if shutil.which("npm") is None or shutil.which("node") is None:
        skip("no npm")
    shutil.rmtree(SCRATCH, ignore_errors=True)
    SCRATCH.mkdir(parents=True)
    {"build": check_build, "code": check_code, "package": check_package, "page": check_page}[CHECK]()


main()
