"""What becomes of an index when its writer is killed, finds no room, or meets another one.

usage: durability_test.py QUORL_JS SCRATCH [KILLS]
"""
import fcntl
import os
import pathlib
import random
import resource
import shutil
import signal
import socket
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import run_functions

QUORL_JS, SCRATCH = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2]).resolve()
KILLS = int(sys.argv[3]) if len(sys.argv) > 3 else 15
FILES = 300


def fresh(name):
    """A folder of files that all define the same name, by which a query knows old from new."""
    folder = SCRATCH / name
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "tree").mkdir(parents=True)
    write_all(folder / "tree", "first")
    return folder / "tree"


def write_all(folder, name):
    for number in range(FILES):
        lines = "".join("  call(%d, %d);\n" % (number, line) for line in range(40))
        (folder / ("f%03d.js" % number)).write_text("function %s() {\n%s}\n" % (name, lines))


def run(folder, *arguments, **more):
    return subprocess.run([QUORL_JS, *map(str, arguments)], cwd=folder, check=False,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, **more)


def count(folder, name):
    done = run(folder, "query", "../index", "--name", name, "--count")
    assert done.returncode in (0, 1) and done.stderr == "", done
    return int(done.stdout)


def beside(folder):
    return sorted(os.listdir(folder / ".."))


def check_is_whole(folder):
    """The old index or the new one: each name stands in all files or in none."""
    done = run(folder, "query", "../index", "--prefix", "", "--format", "vimgrep")
    names = {line.rpartition("function ")[2] for line in done.stdout.splitlines()}
    assert done.returncode == 0 and done.stderr == "", done
    assert len(names) == 1 and len(done.stdout.splitlines()) == FILES, (names, done.stdout[-300:])


def test_killed_at_any_moment():
    folder = fresh("killed")
    assert run(folder, "index", "../index", "-r", ".").returncode == 0
    random.seed(16)
    over, faults, queries = threading.Event(), [], [0]

    def ask():
        while not over.is_set():
            try:
                check_is_whole(folder)
                queries[0] += 1
            except AssertionError as fault:
                faults.append(fault)
                return

    asker = threading.Thread(target=ask)
    asker.start()
    killed = 0
    start = time.perf_counter()
    write_all(folder, "turn")
    assert run(folder, "index", "../index").returncode == 0
    longest = time.perf_counter() - start
    for turn in range(KILLS):
        write_all(folder, "turn%d" % turn)
        writer = subprocess.Popen([QUORL_JS, "index", "../index"], cwd=folder,
                                  stdin=subprocess.DEVNULL, stderr=subprocess.PIPE)
        time.sleep(random.random() * longest)
        writer.kill()
        messages = writer.communicate()[1]
        killed += writer.returncode == -signal.SIGKILL
        assert messages == b"", messages
        check_is_whole(folder)
    over.set()
    asker.join()
    assert not faults, faults[0]
    assert killed > KILLS // 4 and queries[0] > 0, (killed, queries)
    # The next run finds what the killed ones left, and nothing is beside the index then.
    assert run(folder, "index", "../index").returncode == 0
    assert beside(folder) == ["index", "tree"], beside(folder)
    assert count(folder, "turn%d" % (KILLS - 1)) == FILES
    # Also when there is nothing to do.
    (folder / "../index.tmp").write_bytes(b"left")
    (folder / "../index.lock").write_bytes(b"left")
    assert run(folder, "index", "../index").returncode == 0
    assert beside(folder) == ["index", "tree"], beside(folder)


def test_signals_leave_nothing():
    folder = fresh("signals")
    assert run(folder, "index", "../index", "-r", ".").returncode == 0
    write_all(folder, "second")
    writer = subprocess.Popen([QUORL_JS, "index", "../index"], cwd=folder,
                              stdin=subprocess.DEVNULL)
    while not (folder / "../index.tmp").exists() and writer.poll() is None:
        time.sleep(0.001)
    writer.terminate()
    writer.wait()
    assert writer.returncode in (0, -signal.SIGTERM), writer.returncode
    assert not (folder / "../index.tmp").exists()
    check_is_whole(folder)


def test_no_room():
    folder = fresh("room")
    done = run(folder, "index", "../index", "-r", ".")
    before = (folder / "../index").read_bytes()
    write_all(folder, "second")

    def limit(size):
        return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

    for size in (0, 4096, 100_000, len(before) // 2, len(before) - 8192):
        done = run(folder, "index", "../index", preexec_fn=limit(size))
        assert (done.returncode, done.stdout) == (2, ""), (size, done)
        assert done.stderr in ("quorl-js: ../index: File too large\n",
                               "quorl-js: ../index: No space left on device\n"), (size, done)
        assert (folder / "../index").read_bytes() == before
        assert beside(folder) == ["index", "tree"], (size, beside(folder))
    assert run(folder, "index", "../index").returncode == 0
    assert count(folder, "second") == FILES


def test_two_writers():
    folder = fresh("writers")
    assert run(folder, "index", "../index", "-r", ".").returncode == 0
    write_all(folder, "second")
    with open(folder / "../index.lock", "wb") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        lock.write(b"process 4711 on elsewhere\n")
        lock.flush()
        done = run(folder, "index", "../index", "--no-wait")
        assert (done.returncode, done.stderr) == (
            2, "quorl-js: ../index: is being written by process 4711 on elsewhere\n"), done
        # Readers mind no lock.
        assert count(folder, "first") == FILES
        writer = subprocess.Popen([QUORL_JS, "index", "../index"], cwd=folder,
                                  stdin=subprocess.DEVNULL)
        time.sleep(0.3)
        assert writer.poll() is None
        os.remove(folder / "../index.lock")  # as the writer does that held it
    assert writer.wait() == 0
    assert count(folder, "second") == FILES
    assert beside(folder) == ["index", "tree"]
    # Several at once: each in turn.
    write_all(folder, "third")
    writers = [subprocess.Popen([QUORL_JS, "index", "../index"], cwd=folder,
                                stdin=subprocess.DEVNULL) for _ in range(5)]
    assert [writer.wait() for writer in writers] == [0] * 5
    assert count(folder, "third") == FILES
    assert beside(folder) == ["index", "tree"]


def test_who_holds_the_lock():
    folder = fresh("holder")
    os.mkfifo(folder / "../list")
    writer = subprocess.Popen([QUORL_JS, "index", "../index", "--files-from", "../list"],
                              cwd=folder, stdin=subprocess.DEVNULL)
    lock = folder / "../index.lock"
    while not (lock.exists() and lock.read_bytes().endswith(b"\n")):
        time.sleep(0.001)
    done = run(folder, "index", "../index", "--no-wait", "-r", ".")
    assert (done.returncode, done.stderr) == (
        2, "quorl-js: ../index: is being written by process %d on %s\n"
        % (writer.pid, socket.gethostname())), done
    (folder / "../list").write_text("f000.js\n")
    assert writer.wait() == 0
    assert count(folder, "first") == 1


if __name__ == "__main__":
    run_functions.run_all(globals())
