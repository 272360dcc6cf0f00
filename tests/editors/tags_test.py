"""Reaches random tags with the programs that read tags files.

usage: tags_test.py PROGRAM QUORL_JS SCRATCH

PROGRAM is readtags, vim, emacs or sort. A tree of scripts and pages is made, some with CR LF line ends,
one with CR alone and one with characters that are no ASCII, each definition in it with a name of its
own. So the place of each is known without the tags file: the only line that holds the name. The
program has to reach 100 of them that are chosen at random. A program that is not there ends the test
with status 77, as skipped.
"""
import pathlib
import random
import re
import shutil
import subprocess
import sys

SKIPPED = 77
TAGS = 100


def script(number, indent=""):
    """A script of which each definition has a name of its own."""
    n = number
    return "\n".join(indent + line for line in [
        "import x from 'x';", "", "/* a comment", "   of three", "   lines */",
        "function fn%d(a, b) {" % n, "  if (a) {", "    return fnOther(b);", "  }", "}", "",
        "class Cls%d {" % n, "  constructor() {",
        "    this.a = '\u00e9\u00e9 class Not%d {';" % n, "  }",
        "  method%d(a) {" % n, "    return a;", "  }", "}", "const arrow%d = (a) => {" % n,
        "  return `", "${a}", "`;", "};", "exports.exported%d = function () {" % n, "};",
        "const object%d = {" % n, "  member%d() {" % n, "    return 1;", "  }", "};", ""])


NAMES = re.compile(r"\b(fn|Cls|method|arrow|exported|object|member)(\d+)\b")


def make_tree(folder):
    """Returns {name: (file, line from 1)}."""
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "src" / "deep er").mkdir(parents=True)
    files = {}
    for n in range(30):
        files["src/a%d.js" % n] = script(n)
    for n in range(30, 40):
        files["src/deep er/b%d.ts" % n] = script(n).replace("\n", "\r\n")
    files["c.js"] = script(40).replace("\n", "\r")
    for n in range(41, 50):
        end = "\r\n" if n % 2 else "\n"
        page = ("<!DOCTYPE html>\n<html>\n<body\n  class='a\n b'>\n<p>text</p>\n<script>\n%s</script>\n"
                "</body>\n</html>\n") % script(n, "  ")
        files["page%d.html" % n] = page.replace("\n", end)
    known = {}
    for name, text in files.items():
        (folder / name).write_bytes(text.encode())
        for number, line in enumerate(re.split("\r\n|\n|\r", text), 1):
            for found in NAMES.finditer(line):
                assert found.group(0) not in known, found.group(0)
                known[found.group(0)] = (name, number)
    return known


def run(command, cwd):
    return subprocess.run(command, cwd=cwd, check=False, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout.decode()


def write_tags(quorl_js, form, name, folder, *arguments):
    command = [quorl_js, "-r", "src", "c.js", *sorted(p.name for p in folder.glob("*.html")),
               "--format", form, "-o", name, "--strict", *arguments]
    done = subprocess.run(command, cwd=folder, check=False, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)
    assert (done.returncode, done.stdout) == (0, b""), done
    return (folder / name).read_bytes()


def sample(known):
    return dict(random.Random(5).sample(sorted(known.items()), TAGS))


def check_readtags(folder, known):
    """The place that readtags prints of each."""
    faults = []
    for name, (file, line) in known.items():
        found = run(["readtags", "-e", "-n", "-t", "tags", name], folder).splitlines()
        fields = [row.split("\t") for row in found]
        if len(fields) != 1 or fields[0][1] != file or "line:%d" % line not in fields[0]:
            faults.append((name, file, line, found))
    return faults


def check_vim(folder, known):
    """Where :tag leads."""
    commands = ["set tags=tags nomore fileformats=unix,dos,mac", "redir! > found"]
    for name in known:
        commands.append("silent! exe 'tag %s' | echo '%s' expand('%%') line('.')" % (name, name))
    (folder / "go.vim").write_text("\n".join(commands + ["redir END", "qa!"]) + "\n")
    run(["vim", "-es", "-u", "NONE", "-N", "-i", "NONE", "-S", "go.vim"], folder)
    return compare((folder / "found").read_text(errors="replace"), known)


def check_emacs(folder, known):
    """Where find-tag leads."""
    forms = ["(setq large-file-warning-threshold nil tags-revert-without-query t)",
             "(visit-tags-table (expand-file-name \"TAGS\"))"]
    for name in known:
        forms.append("(condition-case err (progn (find-tag \"%s\") (princ (format \"%s %%s %%d\\n\" "
                     "(file-relative-name buffer-file-name start) (line-number-at-pos))))"
                     "(error (princ (format \"%s %%s\\n\" err))))" % (name, name, name))
    (folder / "go.el").write_text("(require 'etags)\n(setq start default-directory)\n" +
                                  "\n".join(forms) + "\n")
    return compare(run(["emacs", "--batch", "-Q", "-l", "go.el"], folder), known)


def compare(text, known):
    found = {}
    for row in text.splitlines():
        words = row.split(" ")
        if words[0] in known and len(words) > 2:
            found[words[0]] = (" ".join(words[1:-1]), words[-1])
    return [(name, place, found.get(name)) for name, place in known.items()
            if found.get(name) != (place[0], str(place[1]))]


def check_order(quorl_js, folder):
    """The lines are in the order of their bytes, the same for any number of jobs and of folders."""
    tags = (folder / "tags").read_bytes()
    done = subprocess.run(["sort", "-c", "tags"], cwd=folder, check=False, env={"LC_ALL": "C"})
    assert done.returncode == 0
    etags = write_tags(quorl_js, "etags", "TAGS", folder)
    for jobs in ("1", "2", "7"):
        assert write_tags(quorl_js, "ctags", "again", folder, "-j", jobs) == tags, jobs
        assert write_tags(quorl_js, "etags", "again", folder, "-j", jobs) == etags, jobs
    write_tags(quorl_js, "ctags", "src/inner", folder)
    inner = (folder / "src/inner").read_text().splitlines()
    outer = tags.decode().splitlines()
    moved = {row if row.startswith("!") else
             re.sub(r"\t([^\t]*)", lambda path: "\t" + (path[1][4:] if path[1].startswith("src/")
                                                        else "../" + path[1]), row, count=1)
             for row in outer}
    assert set(inner) == moved, set(inner) ^ moved
    return []


def main():
    program, quorl_js, scratch = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    if shutil.which(program) is None:
        print("skipped: no %s" % program)
        return SKIPPED
    folder = scratch / program
    known = make_tree(folder)
    tags = write_tags(quorl_js, "ctags", "tags", folder)
    write_tags(quorl_js, "etags", "TAGS", folder)
    names = {row.split("\t")[0] for row in tags.decode().splitlines()}
    assert set(known) <= names, set(known) - names
    chosen = sample(known)
    faults = {"readtags": lambda: check_readtags(folder, chosen),
              "vim": lambda: check_vim(folder, chosen),
              "emacs": lambda: check_emacs(folder, chosen),
              "sort": lambda: check_order(quorl_js, folder)}[program]()
    # A check that compares with the wrong places has to fail.
    if program in ("readtags", "vim", "emacs"):
        moved = {name: (file, line + 1) for name, (file, line) in list(chosen.items())[:1]}
        check = {"readtags": check_readtags, "vim": check_vim, "emacs": check_emacs}[program]
        assert len(check(folder, moved)) == 1
    print("\n".join(str(fault) for fault in faults[:10]) or "%d tags are where they lead" % TAGS)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
