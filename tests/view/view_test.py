"""The page of quorl-js view in Chromium, without a screen.

usage: view_test.py bundle | controls | hostile | access | large | program | times | pictures
                    PROJECT_ROOT QUORL_JS FOLDER [PAGE ...]

bundle builds view/dist/page.html anew and compares. times checks nothing: it prints how long
the pages take that are named, or large generated ones. pictures draws those of docs/pictures,
with pngquant. The others run the script of that name. Skipped, with exit status 77, without
Chromium or npm's registry.
"""
import os
import pathlib
import shutil
import subprocess
import sys

CHECK, ROOT, QUORL_JS, FOLDER = sys.argv[1], *map(pathlib.Path, sys.argv[2:5])
PAGES = [pathlib.Path(page).resolve() for page in sys.argv[5:]]
sys.path.insert(0, str(ROOT / "tests" / "support"))
from npm_packages import fetch  # pylint: disable=wrong-import-position

HERE = pathlib.Path(__file__).resolve().parent


def skip(reason):
    print("skipped: " + reason)
    sys.exit(77)


def check_bundle():
    """The committed page is what its sources give."""
    copy = FOLDER / "view"
    shutil.copytree(ROOT / "view", copy, ignore=shutil.ignore_patterns("node_modules", "dist"))
    npm = ["npm", "--no-audit", "--no-fund", "--no-update-notifier"]
    if subprocess.run([*npm, "ping"], cwd=copy, check=False, capture_output=True).returncode != 0:
        skip("npm's registry is out of reach")
    subprocess.run([*npm, "ci"], cwd=copy, check=True)
    subprocess.run([*npm, "run", "build"], cwd=copy, check=True)
    made, kept = [(folder / "dist" / "page.html").read_bytes() for folder in (copy, ROOT / "view")]
    assert made == kept, "view/dist/page.html differs; run npm ci && npm run build in view/"
    assert len(kept) <= 190_000, len(kept)
    assert kept.count(b"@DATA@") == 1


def main():
    if shutil.which("npm") is None or shutil.which("node") is None:
        skip("no npm")
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    if CHECK == "bundle":
        check_bundle()
        return
    chromium = shutil.which("chromium")
    if chromium is None:
        skip("no chromium")
    try:
        fetch(HERE / "packages.txt", FOLDER)
    except subprocess.CalledProcessError:
        skip("npm's registry is out of reach")
    environment = dict(os.environ, NODE_PATH=str(FOLDER / "node_modules"), CHROMIUM=chromium,
                       PAGE=str(ROOT / "view/dist/page.html"), QUORL_JS=str(QUORL_JS.resolve()),
                       ROOT=str(ROOT))
    sys.exit(subprocess.run(["node", str(HERE / (CHECK + ".js")), *PAGES], cwd=FOLDER, env=environment,
                            check=False).returncode)


main()
