"""Runs over many files."""
import gc
import os
import pathlib
import time
import tracemalloc

import quorl_js
from quorl_js import OutlineError
from test_outline import InAFolder


def descendants_of(process):
    """Return the ids of the processes below process."""
    parents = {}
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                parents[int(entry.name)] = int((entry / "stat").read_text().rsplit(")", 1)[1].split()[1])
            except OSError:  # it has ended meanwhile
                pass
    found = {process}
    while True:
        more = {child for child, parent in parents.items() if parent in found} - found
        if not more:
            return found - {process}
        found |= more


def is_alive(process):
    try:
        state = pathlib.Path("/proc/%d/stat" % process).read_text().rsplit(")", 1)[1].split()[0]
    except OSError:
        return False
    return state != "Z"


class ManyFiles(InAFolder):
    def write(self, count, lines=1):
        names = ["%d.js" % number for number in range(count)]
        for number, name in enumerate(names):
            pathlib.Path(name).write_text("let a%d = 1;\n" % number * lines)
        return names

    def test_come_in_the_order_of_their_paths(self):
        names = self.write(50)[::-1]
        for jobs in (None, 1, 3):
            found = [(each.path, each.items[0].name)
                     for each in quorl_js.outline_many(iter(names), jobs=jobs)]
            self.assertEqual(found, [(name, "a" + name[:-3]) for name in names])

    def test_may_be_none(self):
        self.assertEqual(list(quorl_js.outline_many([])), [])

    def test_may_come_twice(self):
        names = self.write(1) * 3
        self.assertEqual([each.path for each in quorl_js.outline_many(names)], names)

    def test_that_were_not_read_have_a_status(self):
        self.write(1)
        pathlib.Path("folder").mkdir()
        outlines = list(quorl_js.outline_many(["gone.js", "0.js", "folder"]))
        self.assertEqual([(each.path, each.status, len(each.items)) for each in outlines],
                         [("gone.js", "failed", 0), ("0.js", "answered", 1), ("folder", "failed", 0)])
        outlines[1].check()
        with self.assertRaises(OutlineError) as caught:
            outlines[0].check()
        self.assertEqual((caught.exception.status, caught.exception.message),
                         ("failed", "gone.js: No such file or directory"))

    def test_have_a_time_limit(self):
        os.mkfifo("pipe.js")
        self.assertEqual([each.status for each in quorl_js.outline_many(["pipe.js"], timeout=60)],
                         ["failed"])

    def test_are_refused_with_a_path_that_is_none(self):
        with self.assertRaisesRegex(ValueError, "not a path: ''"):
            quorl_js.outline_many(["a.js", ""])
        self.assertEqual(descendants_of(os.getpid()), set())

    def test_pass_on_what_their_iterator_raises(self):
        def names():
            yield "a.js"
            raise KeyError("mine")

        with self.assertRaisesRegex(KeyError, "mine"):
            quorl_js.outline_many(names())
        self.assertEqual(descendants_of(os.getpid()), set())

    def test_take_as_much_memory_as_one(self):
        names = self.write(100, 1000)

        def peak(count):
            tracemalloc.start()
            for each in quorl_js.outline_many(names[:count], jobs=1):
                del each
            gc.collect()
            _, most = tracemalloc.get_traced_memory()
            tracemalloc.stop()
            return most

        few, many = peak(5), peak(100)
        # The outline of a file takes more than 150 KB; the other 95 may not be there.
        self.assertLess(many, few + 100_000)


class CancelledRun(InAFolder):
    def setUp(self):
        super().setUp()
        self.names = ["%d.js" % number for number in range(300)]
        for name in self.names:
            pathlib.Path(name).write_text("f();\n" * 3000)

    def begin(self):
        run = quorl_js.outline_many(self.names, jobs=2)
        self.assertEqual(next(run).path, "0.js")
        processes = descendants_of(os.getpid())
        self.assertGreaterEqual(len(processes), 2, "the program and a worker")
        return run, processes

    def assert_gone(self, processes):
        self.assertEqual(descendants_of(os.getpid()), set())
        # Workers are no children of this process: it cannot wait for them.
        deadline = time.monotonic() + 60
        while any(map(is_alive, processes)) and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertEqual([each for each in processes if is_alive(each)], [])

    def test_ends_when_it_is_closed(self):
        run, processes = self.begin()
        run.close()
        self.assert_gone(processes)
        self.assertEqual(list(run), [])
        run.close()

    def test_ends_with_its_block(self):
        with self.assertRaises(ZeroDivisionError):
            run, processes = self.begin()
            with run:
                raise ZeroDivisionError
        self.assert_gone(processes)

    def test_ends_when_it_is_dropped(self):
        run, processes = self.begin()
        del run
        gc.collect()
        self.assert_gone(processes)

    def test_ends_when_its_process_is_killed(self):
        child = os.fork()
        if child == 0:
            run, _ = self.begin()
            pathlib.Path("ready").touch()
            time.sleep(1000)
            run.close()
        deadline = time.monotonic() + 60
        while not pathlib.Path("ready").exists() and time.monotonic() < deadline:
            time.sleep(0.01)
        processes = descendants_of(child)
        self.assertGreaterEqual(len(processes), 2)
        os.kill(child, 9)
        os.waitpid(child, 0)
        self.assert_gone(processes)


if __name__ == "__main__":
    import unittest
    unittest.main()
