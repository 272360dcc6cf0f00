"""Compares what quorl-js reads of random work trees with what git lists.

Usage: ignore_rules_test.py QUORL_JS PLUGIN SCRATCH_DIRECTORY
"""

import os
import random
import shutil
import subprocess
import sys

SKIPPED = 77
REPOSITORIES = 60
NAMES = ["a", "b", "ab", "a.js", "keep.log", "x.log", "A.js", "k1", "#o", "!n", "a b", "c ", "[x]"]
DIRECTORIES = ["sub", "a", "b", "deep", "Lib", "a b", "k1"]
PIECES = ["a", "b", "*", "**", "?", "[ab]", "[!a]", "[a-c]", "[[:alpha:]]", "[]x]", "[", "\\a",
          "\\*", "\\", ".js", ".log", "k[0-9]", " ", "\\ ", "#", "!", "A", "/", "/", "/", "/"]
RULES = ["*", "**", "/*", "*.log", "!keep.log", "!/keep.log", "**/a", "k[0-9]", "!k1", "sub/",
         "/sub", "!sub/", "sub/**", "!*/", "# c", "", "!a", "**/a/**", "a/**/b", "!*.js", "Sub",
         "\\#o", "a b", "c\\ ", "a.js   ", "**/deep", "a**/b", "!a/**", "**\\/a", "\ufeff*.js"]


def rule(choice):
    if choice.random() < 0.6:
        text = choice.choice(RULES)
    else:
        text = "".join(choice.choice(PIECES) for _ in range(choice.randint(1, 5)))
    return ("!" if choice.random() < 0.2 else "") + text


def rules(choice):
    end = choice.choice(["\n", "\n", "\n", "\r\n"])
    text = end.join(rule(choice) for _ in range(choice.randint(1, 5)))
    return text + (end if choice.random() < 0.8 else "")


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8", newline="") as file:
        file.write(text)


def fill(tree, home, choice):
    directories = [tree]
    for _ in range(choice.randint(1, 6)):
        directory = os.path.join(choice.choice(directories), choice.choice(DIRECTORIES))
        if not os.path.exists(directory):
            os.mkdir(directory)
            directories.append(directory)
    for directory in directories:
        for name in choice.sample(NAMES, choice.randint(2, 8)):
            if not os.path.exists(os.path.join(directory, name)):
                write(os.path.join(directory, name), "x")
        if choice.random() < 0.5:
            write(os.path.join(directory, ".gitignore"), rules(choice))
    for path in (tree + "/.git/info/exclude", home + "/.config/git/ignore"):
        write(path, rules(choice) if choice.random() < 0.3 else "")
    if choice.random() < 0.25:
        with open(tree + "/.git/config", "a", encoding="utf-8") as config:
            config.write("[core]\n\tignoreCase = true\n")


def main(program, plugin, scratch):
    if shutil.which("git") is None:
        print("no git")
        return SKIPPED
    shutil.rmtree(scratch, ignore_errors=True)
    home, empty, tree = (os.path.join(scratch, name) for name in ("home", "empty", "tree"))
    os.makedirs(home)
    environment = {**os.environ, "HOME": home, "GIT_CEILING_DIRECTORIES": scratch,
                   "GIT_CONFIG_NOSYSTEM": "1"}
    environment.pop("XDG_CONFIG_HOME", None)
    subprocess.run(["git", "init", "--quiet", empty], env=environment, check=True)
    differences = 0
    for seed in range(REPOSITORIES):
        shutil.rmtree(tree, ignore_errors=True)
        shutil.copytree(empty, tree)
        fill(tree, home, random.Random(seed))
        listed = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard"], cwd=tree,
                                env=environment, stdout=subprocess.PIPE, check=True).stdout
        expected = {name for name in listed.split(b"\0") if name}
        run = subprocess.run([program, "--plugin", plugin, "-r", "--hidden", "."], cwd=tree,
                             env=environment, stdout=subprocess.PIPE, check=True)
        read = {line[2:-1] for line in run.stdout.split(b"\n") if line.endswith(b"|")}
        if read != expected:
            differences += 1
            print(f"seed {seed}: read though ignored: {sorted(read - expected)}; "
                  f"not read: {sorted(expected - read)}")
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(*map(os.path.abspath, sys.argv[1:])))
