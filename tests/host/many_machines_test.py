"""The recipes for several machines, with two hosts that are this one.

usage: many_machines_test.py (parallel|slurm) QUORL_JS SCRIPT SCRATCH

What counts is that the result is that of a single run, byte for byte, that jobs which fail are seen
and run again, and that no others are. The ssh of the test runs its command here; a file called
down-HOST in the scratch folder keeps it from doing so.
"""
import os
import pathlib
import shutil
import subprocess
import sys

SKIPPED = 77
FILE_COUNT = 23
FILES_PER_JOB = 4
JOBS = 6
SSH = """#!/bin/sh
while [ $# -gt 0 ]; do
  case $1 in
    --) shift; break ;;
    -*) shift ;;
    *) break ;;
  esac
done
host=$1
shift
[ "$1" = -- ] && shift
if [ -e "$SCRATCH/down-$host" ]; then exit 255; fi
exec sh -c "$*"
"""


def make_files(folder):
    """Files with names that hurt, one of which is not there; gives their list."""
    names = [b"src/%d.js" % number for number in range(FILE_COUNT - 5)]
    names += [b"src/a b.js", b"src/it's \"odd\".js", b"src/\xff.js", b"src/\x1b[1m$(x).js",
              b"src/gone.js"]
    (folder / "src").mkdir()
    for number, name in enumerate(names[:-1]):
        with open(os.path.join(os.fsencode(folder), name), "wb") as file:
            file.write(b"function f%d(a) {\n  return 'a';\n}\n" % number * (number + 1))
    (folder / "list").write_bytes(b"".join(name + b"\n" for name in names))


class Machines:
    def __init__(self, quorl_js, script, scratch):
        self.script, self.scratch = script, scratch
        tools = scratch / "tools"
        tools.mkdir()
        (tools / "ssh").write_text(SSH)
        (tools / "ssh").chmod(0o755)
        (tools / "quorl-js").symlink_to(quorl_js)
        # Not every job scheduler sets SHELL, by which parallel chooses how to quote.
        os.environ.pop("SHELL", None)
        self.env = dict(os.environ, PATH="%s:%s" % (tools, os.environ["PATH"]), HOME=str(scratch),
                        SCRATCH=str(scratch), FILES_PER_JOB=str(FILES_PER_JOB))

    def run(self, *command, **env):
        return subprocess.run(command, cwd=self.scratch, env=dict(self.env, **env), check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def single_run(self):
        done = self.run("quorl-js", "--format", "ndjson", "--files-from", "list")
        assert done.returncode == 1, done  # one file is not there
        assert done.stdout.count(b'{"type":"file"') == FILE_COUNT, done.stdout
        return done.stdout

    def merge(self):
        shards = sorted(str(path) for path in (self.scratch / "shards").glob("*.ndjson"))
        return self.run("quorl-js", "merge", "--files-from", "list", *shards)


def check_lost(done, first):
    """Status 2, nothing on standard output, and a message that names the first file."""
    assert (done.returncode, done.stdout) == (2, b""), done
    assert first in done.stderr, done.stderr


def test_parallel(machines, scratch):
    if shutil.which("parallel") is None:
        return "there is no GNU parallel on this machine"
    expected = machines.single_run()
    (scratch / "hosts").write_text("host-a\nhost-b\n")

    def run():
        return machines.run(machines.script, "hosts", "list", "shards")

    def log():
        lines = (scratch / "shards" / "log").read_text().splitlines()[1:]
        return [line.split("\t") for line in lines]

    (scratch / "down-host-a").touch()
    (scratch / "down-host-b").touch()
    check_lost(run(), b"23 files of list list are in no SHARD; the first is src/0.js")
    assert len(log()) == JOBS and all(row[6] != "0" for row in log()), log()

    (scratch / "down-host-a").unlink()
    (scratch / "down-host-b").unlink()
    done = run()
    assert (done.returncode, done.stdout) == (1, expected), done
    jobs = log()[JOBS:]
    assert sorted(row[0] for row in jobs) == [str(number) for number in range(1, JOBS + 1)], jobs
    assert {row[1] for row in jobs} == {"host-a", "host-b"}, jobs
    assert [row[0] for row in jobs if row[6] != "0"] == [str(JOBS)], jobs  # src/gone.js

    (scratch / "src" / "gone.js").write_text("found();\n")
    whole = machines.run("quorl-js", "--format", "ndjson", "--files-from", "list").stdout
    done = run()
    assert (done.returncode, done.stdout) == (0, whole), done
    assert [row[0] for row in log()[2 * JOBS:]] == [str(JOBS)], log()  # and no other job

    shard = scratch / "shards" / "2.ndjson"
    shard.write_bytes(shard.read_bytes()[:-1])
    check_lost(machines.merge(), b"shards/2.ndjson: line ")
    return None


def test_slurm(machines, scratch):
    expected = machines.single_run()
    tasks = 5

    def run(task, count=tasks):
        return machines.run(machines.script, str(count), "list", "shards",
                            SLURM_ARRAY_TASK_ID=str(task), SLURM_CPUS_PER_TASK="2")

    for task in (0, 1, 2, 4):
        done = run(task)
        assert (done.returncode, done.stdout) == (0, b""), done
    check_lost(machines.merge(), b"are in no SHARD; the first is src/2.js")
    assert run(3).returncode == 0
    done = machines.merge()
    assert (done.returncode, done.stdout) == (1, expected), done

    # A run that cannot go on leaves no shard.
    (scratch / "shards" / "3.ndjson").unlink()
    (scratch / "tools" / "quorl-js").rename(scratch / "tools" / "moved")
    failing = scratch / "tools" / "quorl-js"
    failing.write_text("#!/bin/sh\necho '{\"type\":\"header\",'\nexit 2\n")
    failing.chmod(0o755)
    assert run(3).returncode != 0
    assert not (scratch / "shards" / "3.ndjson").exists()
    (scratch / "tools" / "moved").rename(failing)

    # More tasks than files: each file once, and some shards without any.
    shutil.rmtree(scratch / "shards")
    for task in range(FILE_COUNT + 2):
        assert run(task, FILE_COUNT + 2).returncode == 0
    done = machines.merge()
    assert (done.returncode, done.stdout) == (1, expected), done
    return None


def main():
    recipe, quorl_js, script, scratch = sys.argv[1:]
    scratch = pathlib.Path(scratch).resolve() / recipe
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir(parents=True)
    make_files(scratch)
    machines = Machines(os.path.abspath(quorl_js), os.path.abspath(script), scratch)
    why_not = {"parallel": test_parallel, "slurm": test_slurm}[recipe](machines, scratch)
    if why_not:
        print("skipped: " + why_not)
        return SKIPPED
    print("%s: the same bytes as a single run" % recipe)
    return 0


if __name__ == "__main__":
    sys.exit(main())
