"""The recipes for several machines, on real engines whose machines are all this one.

usage: many_machines_test.py (parallel|slurm) QUORL_JS EXAMPLES

GNU parallel works over two ssh daemons on two addresses, Slurm with a controller and two nodes.
What counts is that the result is that of a single run, byte for byte, that a machine which goes
away in the middle costs its running job only, and that what failed is seen and run again. The exit
status is 77 where an engine is missing.
"""
import os
import pathlib
import subprocess
import sys
import tempfile

import nodes

SKIPPED = 77
FILE_COUNT = 23
FILES_PER_JOB = 4
JOBS = 6
TASKS = 5
QUESTIONS = [["--prefix", "f", "--format", "ndjson"], ["--contains", "1", "--kind", "function"],
             ["--text", "return", "--format", "json"], ["--path", "*.js"], ["--at", "src/3.js:5"],
             ["--inside", "f21", "--format", "vimgrep"]]


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


class Work:
    """A folder with the files, and what is run in it."""

    def __init__(self, folder, quorl_js, examples):
        self.folder, self.quorl_js, self.examples = folder, quorl_js, examples
        folder.mkdir()
        make_files(folder)
        tools = folder / "tools"
        tools.mkdir()
        (tools / "quorl-js").symlink_to(quorl_js)
        # Not every job scheduler sets SHELL, by which parallel chooses how to quote.
        self.env = {name: value for name, value in os.environ.items() if name != "SHELL"}
        self.env.update(FILES_PER_JOB=str(FILES_PER_JOB),
                        PATH="%s:%s" % (tools, os.environ["PATH"]))

    def run(self, *command):
        return subprocess.run(command, cwd=self.folder, env=self.env, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def example(self, name, *arguments):
        return self.run(self.examples / name, *arguments)

    def single_run(self):
        done = self.run(self.quorl_js, "--format", "ndjson", "--ranges", "--files-from", "list")
        assert done.returncode == 1, done  # one file is not there
        assert done.stdout.count(b'{"type":"file"') == FILE_COUNT, done.stdout
        return done.stdout

    def merge(self):
        shards = sorted(str(path) for path in (self.folder / "shards").glob("*.ndjson"))
        return self.run(self.quorl_js, "merge", "--files-from", "list", *shards)


    def check_index(self, index):
        """An index of the joined shards answers as one that was built of the files themselves."""
        done = self.run(self.quorl_js, "index", "direct.index", "--files-from", "list")
        assert done.returncode == 1, done  # one file is not there
        for question in QUESTIONS:
            answers = [self.run(self.quorl_js, "query", each, *question)
                       for each in (index, "direct.index")]
            assert answers[0].returncode == answers[1].returncode == 0, answers
            assert answers[0].stdout == answers[1].stdout != b"", answers
        done = self.run(self.quorl_js, "query", index, "--name", "f3", "--format", "vimgrep")
        assert done.stdout == b"".join(b"src/3.js:%d:1:function f3(a) {\n" % line
                                       for line in (1, 4, 7, 10)), done


def check_lost(done, first):
    """Status 2, nothing on standard output, and a message that names the first file."""
    assert (done.returncode, done.stdout) == (2, b""), done
    assert first in done.stderr, done.stderr


def test_parallel(work, machines):
    first, second = machines.names
    expected = work.single_run()
    (work.folder / "hosts").write_text("%s\n%s\n" % (first, second))
    work.env["PARALLEL_SSH"] = "ssh -F %s/ssh_config" % machines.folder

    def log():
        lines = (work.folder / "shards" / "log").read_text().splitlines()[1:]
        return [line.split("\t") for line in lines]

    # Nobody answers.
    check_lost(work.example("parallel-run.sh", "hosts", "list", "shards"),
               b"23 files of list list are in no SHARD; the first is src/0.js")
    assert len(log()) == JOBS and all(row[6] == "255" for row in log()), log()

    # The second machine goes away in the middle of its first job.
    machines.start(first)
    machines.start(second)
    machines.hold(second)
    with subprocess.Popen([work.examples / "parallel-run.sh", "hosts", "list", "shards"],
                          cwd=work.folder, env=work.env, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as running:
        machines.kill_in_a_run(second)
        out, err = running.communicate(timeout=nodes.SECONDS)
    assert (running.returncode, out) == (1, expected), (running.returncode, out, err)
    jobs = log()[JOBS:]
    assert sorted(row[0] for row in jobs) == [str(number) for number in range(1, JOBS + 1)], jobs
    assert {(row[1], row[6]) for row in jobs} == {(first, "0")}, jobs
    assert (machines.runs(first), machines.runs(second)) == (JOBS, 1)

    # What is done is not done again.
    machines.forget_runs()
    done = work.example("parallel-run.sh", "hosts", "list", "shards")
    assert (done.returncode, done.stdout) == (1, expected), done
    assert (machines.runs(first), machines.runs(second)) == (0, 0)

    shard = work.folder / "shards" / "2.ndjson"
    shard.write_bytes(shard.read_bytes()[:-1])
    check_lost(work.merge(), b"shards/2.ndjson: line ")

    # Two machines share the work.
    machines.start(second)
    done = work.example("parallel-run.sh", "hosts", "list", "fresh")
    assert (done.returncode, done.stdout) == (1, expected), done
    (work.folder / "records.ndjson").write_bytes(done.stdout)
    done = work.run(work.quorl_js, "index", "code.index", "--from-ndjson", "records.ndjson")
    assert done.returncode == 1, done  # one file was not there
    work.check_index("code.index")
    assert machines.runs(first) + machines.runs(second) == JOBS
    assert machines.runs(first) > 0 and machines.runs(second) > 0


def test_slurm(work, machines):
    expected = work.single_run()
    work.env.update(machines.env)
    for name in machines.names:
        machines.start(name)

    def submit(*arguments):
        done = work.example("slurm-submit.sh", str(TASKS), "list", *arguments)
        assert done.returncode == 0, done

    def wait_for_jobs():
        nodes.wait_until(lambda: work.run("squeue", "--noheader").stdout == b"", "jobs do not end")

    # The second node goes away in the middle of its first task.
    machines.hold("n2")
    submit("shards", "records.ndjson", "code.index")
    machines.kill_in_a_run("n2")
    wait_for_jobs()
    told = (work.folder / "shards" / "merge.log").read_bytes()
    assert (work.folder / "records.ndjson").read_bytes() == expected, told
    # All tasks and the two commands of the last job; and on the other node the task that was lost.
    assert (machines.runs("n1"), machines.runs("n2")) == (TASKS + 2, 1)
    work.check_index("code.index")

    # A task that cannot go on leaves no shard, and the joined output is not touched.
    machines.start("n2")
    (work.folder / "shards" / "3.ndjson").unlink()
    (work.folder / "shards" / "3.ndjson.part").mkdir()
    (work.folder / "records.ndjson").unlink()
    submit("shards", "records.ndjson", "code.index")
    wait_for_jobs()
    assert not (work.folder / "shards" / "3.ndjson").exists()
    assert not (work.folder / "records.ndjson").exists()
    check_lost(work.merge(), b"are in no SHARD; the first is src/2.js")


def main():
    recipe, quorl_js, examples = sys.argv[1:]
    test, kind, programs = {
        "parallel": (test_parallel, nodes.SshNodes, ("parallel", "sshd", "ssh", "ssh-keygen")),
        "slurm": (test_slurm, nodes.SlurmNodes, ("slurmctld", "slurmd", "sbatch", "munged")),
    }[recipe]
    why_not = nodes.missing(*programs)
    if why_not:
        print("skipped: there is no %s on this machine" % why_not)
        return SKIPPED
    # Short, since the names of sockets are.
    with tempfile.TemporaryDirectory(prefix="quorl-") as scratch:
        folder = pathlib.Path(scratch).resolve()
        quorl_js = os.path.abspath(quorl_js)
        work = Work(folder / "work", quorl_js, pathlib.Path(examples).resolve())
        (folder / "nodes").mkdir(mode=0o700)
        machines = kind(folder / "nodes", quorl_js)
        try:
            test(work, machines)
        finally:
            machines.close()
    print("%s: the same bytes as a single run" % recipe)
    return 0


if __name__ == "__main__":
    sys.exit(main())
