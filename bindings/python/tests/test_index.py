"""Indexes that the program has written."""
import json
import os
import pathlib
import sqlite3
import subprocess
import unittest

import quorl_js
from quorl_js import OutlineError
from test_outline import InAFolder, item

FILES = {
    b"src/a.js": b"class A {\n  #b() {\n    c();\n  }\n}\nlet d = 1;\n",
    b"src/deep/b.js": b"function d() {\n  try {\n    go();\n  } catch (error) {\n  }\n}\n",
    b"src/deep\xff/c.js": b"function d\xff() {\n}\nlet e = '\0';\n",
    b"src0.js": b"let d = 2;\n",
    b"src-1.js": b"let d = 3;\n",
}


def quorl(*arguments):
    done = subprocess.run(["quorl-js", *arguments], check=False, stdout=subprocess.PIPE)
    assert done.returncode < 2, done
    return done.stdout.decode()


class Index(InAFolder):
    def setUp(self):
        super().setUp()
        for name, text in FILES.items():
            path = pathlib.Path(os.fsdecode(name))
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(text)
        quorl("index", "code.index", "--binary", "-r", "src", "src0.js", "src-1.js")
        self.index = quorl_js.open_index("code.index")
        self.addCleanup(self.index.close)

    def found(self, **conditions):
        return [(each.path, each.line, each.name) for each in self.index.find(**conditions)]

    def test_has_the_items_of_outlines(self):
        for name in FILES:
            with self.subTest(name):
                self.assertEqual(list(self.index.find(path=name)), quorl_js.outline(name).items)
        self.assertEqual(len(list(self.index.find())), 4 + 4 + 2 + 1 + 1)

    def test_finds_names(self):
        self.assertEqual(self.found(name="d"), [("src/a.js", 6, "d"), ("src/deep/b.js", 1, "d"),
                                                ("src0.js", 1, "d"), ("src-1.js", 1, "d")])
        self.assertEqual(self.found(name="#b"), [("src/a.js", 2, "#b")])
        self.assertEqual(self.found(name=""), [])
        self.assertEqual(self.found(name="D"), [])
        self.assertEqual(self.found(name="d\udcff"), [("src/deep\udcff/c.js", 1, "d\udcff")])

    def test_finds_kinds(self):
        self.assertEqual(self.found(kind="class"), [("src/a.js", 1, "A")])
        self.assertEqual(self.found(kind=["class", "method"]),
                         [("src/a.js", 1, "A"), ("src/a.js", 2, "#b")])
        self.assertEqual(self.found(kind=()), [])
        with self.assertRaisesRegex(ValueError, "unknown kind 'metod'; use one of function, method, "):
            self.index.find(kind="metod")

    def test_finds_files_and_folders(self):
        for path in ("src/deep", "src/deep/", pathlib.Path("src/deep"), b"src/deep/b.js"):
            self.assertEqual(self.found(path=path, name="d"), [("src/deep/b.js", 1, "d")])
        self.assertEqual(self.found(path="src", kind="function"),
                         [("src/deep/b.js", 1, "d"), ("src/deep\udcff/c.js", 1, "d\udcff")])
        self.assertEqual(self.found(path=b"src/deep\xff", kind="function"),
                         [("src/deep\udcff/c.js", 1, "d\udcff")])
        self.assertEqual(self.found(path="sr"), [])
        self.assertEqual(self.found(path="a.js"), [])

    def test_finds_what_contains_a_line(self):
        for name in ("src/a.js", "src/deep/b.js"):
            outline = quorl_js.outline(name)
            for line in range(0, 9):
                with self.subTest(name=name, line=line):
                    chain = list(self.index.find(path=name, at=line))
                    self.assertEqual(chain, outline.at(line))
                    printed = quorl("query", "code.index", "--at", "%s:%d" % (name, line),
                                    "--format", "ndjson") if line > 0 else ""
                    self.assertEqual([(each.line, each.end_line, each.kind) for each in chain],
                                     [(each["line"], each["endLine"], each["kind"])
                                      for each in map(json.loads, printed.splitlines())])
        self.assertEqual([each.line for each in self.index.find(path="src/deep/b.js", at=4)], [1, 4])
        self.assertEqual(self.found(path="src/deep/b.js", at=4, kind="function"),
                         [("src/deep/b.js", 1, "d")])
        self.assertEqual(self.found(path="src", at=1), [])
        with self.assertRaisesRegex(ValueError, "at needs a path"):
            self.index.find(at=1)

    def test_writes_nothing(self):
        before = pathlib.Path("code.index").read_bytes()
        os.chmod("code.index", 0o444)
        with quorl_js.open_index(pathlib.Path("code.index").absolute()) as index:
            self.assertEqual(len(list(index.find(name="d"))), 4)
            with self.assertRaises(sqlite3.OperationalError):
                index._database.execute("DELETE FROM item")
        self.assertEqual(pathlib.Path("code.index").read_bytes(), before)
        self.assertEqual({each for each in os.listdir() if each.startswith("code")}
                         - {"code.index.lock"}, {"code.index"})

    def test_may_have_any_name(self):
        name = b"a b?mode=rw#c%20\xff.index"
        os.rename("code.index", name)
        with quorl_js.open_index(name) as index:
            self.assertEqual(len(list(index.find(name="d"))), 4)

    def test_stays_what_it_was_when_it_is_replaced(self):
        pathlib.Path("src0.js").write_text("let other = 2;\n")
        quorl("index", "code.index")
        self.assertEqual(len(self.found(name="d")), 4)
        with quorl_js.open_index("code.index") as index:
            self.assertEqual(len(list(index.find(name="d"))), 3)

    def test_finds_nothing_more_when_it_is_closed(self):
        self.index.close()
        with self.assertRaises(sqlite3.ProgrammingError):
            list(self.index.find(name="d"))

    def assert_bad(self, message, make):
        path = pathlib.Path("bad.index")
        path.write_bytes(pathlib.Path("code.index").read_bytes())
        make(path)
        with self.assertRaises(OutlineError) as caught:
            with quorl_js.open_index(path) as index:
                list(index.find())
                list(index.find(path="src/a.js", at=3))
        self.assertEqual((caught.exception.status, caught.exception.message), ("bad-index", message))

    def change(self, *statements):
        def make(path):
            with sqlite3.connect(path) as database:
                for statement in statements:
                    database.execute(statement)
            database.close()
        return make

    def test_is_no_other_file(self):
        no_index = "bad.index: not an index of quorl-js"
        self.assert_bad(no_index, lambda path: path.write_text("let a = 1;\n" * 1000))
        self.assert_bad(no_index, lambda path: path.write_bytes(b""))
        self.assert_bad(no_index, self.change("PRAGMA application_id = 1"))
        self.assert_bad("bad.index: has format 2, not 1", self.change("PRAGMA user_version = 2"))
        self.assert_bad("bad.index: damaged", self.change("DROP TABLE label"))
        with self.assertRaises(FileNotFoundError):
            quorl_js.open_index("gone.index")

    def test_may_be_damaged(self):
        damaged = "bad.index: damaged"
        self.assert_bad(damaged, lambda path: path.write_bytes(path.read_bytes()[:-8192]))
        self.assert_bad(damaged, self.change("UPDATE item SET kind = 99"))
        self.assert_bad(damaged, self.change("UPDATE item SET label = 999 WHERE label > 0"))
        self.assert_bad(damaged, self.change(
            "UPDATE item SET parent = 2 WHERE line = 2 AND more = 2 AND name = '#b'"))


if __name__ == "__main__":
    unittest.main()
