"""Outlines of single files and texts."""
import os
import pathlib
import pickle
import shutil
import subprocess
import sys
import tempfile
import unittest

import quorl_js
from quorl_js import Item, Omission, OutlineError

SOURCE = "class A {\n  #b() {\n    c();\n  }\n}\nlet d = 1;\n"


def item(path, line, end_line, kind, name, label, text, record, number, parent):
    return Item(path=path, line=line, end_line=end_line, kind=kind, name=name, label=label,
                text=text, record=record, number=number, parent=parent)


class InAFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def assert_fails(self, status, message, call, *arguments, **options):
        with self.assertRaises(OutlineError) as caught:
            call(*arguments, **options)
        self.assertEqual((caught.exception.status, caught.exception.message), (status, message))
        self.assertEqual(str(caught.exception), message)


class OutlineOfAFile(InAFolder):
    def test_has_every_item(self):
        pathlib.Path("a.js").write_text(SOURCE)
        outline = quorl_js.outline("a.js")
        self.assertEqual((outline.path, outline.status, outline.message, outline.source_bytes,
                          outline.omissions), ("a.js", "answered", None, len(SOURCE), []))
        self.assertEqual(outline.items, [
            item("a.js", 1, 5, "class", "A", "class", "class A {", 3, 0, None),
            item("a.js", 2, 4, "method", "#b", None, None, None, 1, 0),
            item("a.js", 3, 3, "statement", "", "line", "c();", 4, 2, 1),
            item("a.js", 6, 6, "variable", "d", "classvar", "let d = 1;", 5, 3, None)])
        self.assertEqual([each.line_count for each in outline.items], [5, 3, 1, 1])

    def test_takes_every_kind_of_path(self):
        name = b"caf\xc3\xa9\xff\n.js"  # neither UTF-8 nor one line
        with open(name, "w") as file:
            file.write("f();\n")
        for path in (name, os.fsdecode(name), pathlib.Path(os.fsdecode(name))):
            outline = quorl_js.outline(path)
            self.assertEqual(os.fsencode(outline.path), name)
            self.assertEqual([each.path for each in outline.items], [outline.path])

    def test_takes_names_that_look_like_options(self):
        for name in ("-", "--", "--help", "@a", "merge"):
            pathlib.Path(name).write_text("a\n")
            self.assertEqual(quorl_js.outline(name).path, name)

    def test_refuses_what_is_no_path(self):
        for path in ("", b"", "a\0b"):
            with self.assertRaisesRegex(ValueError, "not a path: "):
                quorl_js.outline(path)

    def test_has_no_items_for_an_empty_file(self):
        pathlib.Path("a.js").touch()
        outline = quorl_js.outline("a.js")
        self.assertEqual((outline.status, outline.items), ("empty", []))

    def test_lists_what_is_left_out(self):
        pathlib.Path("a.js").write_text("f();\n" + "g();" * 5000 + "\n")
        self.assertEqual(quorl_js.outline("a.js").omissions, [
            Omission(reason="long-lines", line=2, lines=1, line_count=2, bytes=20000,
                     byte_count=20006)])

    def test_passes_defines(self):
        pathlib.Path("a.js").write_text("f();\n")
        for defines in ((), ["DEBUG", "LEVEL 2"]):
            outline = quorl_js.outline("a.js", defines=defines)
            self.assertEqual([each.text for each in outline.items], ["f();"])

    def test_fails_for_a_file_that_cannot_be_read(self):
        self.assert_fails("failed", "gone.js: No such file or directory", quorl_js.outline,
                          "gone.js")

    def test_fails_for_a_run_that_cannot_begin(self):
        self.assert_fails("run-failed", "quorl-js: --timeout: invalid value '-1.000000'; use seconds "
                          "such as 30 or 2.5, or 0 for no limit", quorl_js.outline, "a.js",
                          timeout=-1)

    def test_errors_can_be_pickled(self):
        error = pickle.loads(pickle.dumps(OutlineError("failed", "a.js: gone")))
        self.assertEqual((error.status, error.message, str(error)),
                         ("failed", "a.js: gone", "a.js: gone"))

    def test_items_can_be_pickled_and_have_no_dictionary(self):
        pathlib.Path("a.js").write_text(SOURCE)
        outline = quorl_js.outline("a.js")
        self.assertEqual(pickle.loads(pickle.dumps(outline)), outline)
        for each in (outline, outline.items[0]):
            self.assertFalse(hasattr(each, "__dict__"))


class OutlineOfAText(InAFolder):
    def test_needs_no_file(self):
        outline = quorl_js.outline_text("src/a.js", "function f() {\n}\n")
        self.assertEqual(outline.items, [
            item("src/a.js", 1, 2, "function", "f", "function", "function f() {", 3, 0, None)])

    def test_keeps_bytes_that_are_not_utf_8(self):
        for text in (b"f();\nclass A\xff {\n}\n", "f();\nclass A\udcff {\n}\n"):
            outline = quorl_js.outline_text("a.js", text)
            self.assertEqual([each.name for each in outline.items], ["", "A\udcff"])

    def test_is_as_the_name_says(self):
        kinds = [quorl_js.outline_text(name, "<h1>Tea</h1>\n").items[0].kind
                 for name in ("a.html", "a.js")]
        self.assertEqual(kinds, ["element", "statement"])

    def test_fails_for_a_name_that_is_none(self):
        self.assert_fails("run-failed", "quorl-js: --stdin: 'a/' is not a name for a file",
                          quorl_js.outline_text, "a/", "x" * 1000000)


class Structure(unittest.TestCase):
    def setUp(self):
        self.outline = quorl_js.outline_text("a.js", SOURCE)

    def names(self, items):
        return [each.name or each.text for each in items]

    def test_children(self):
        self.assertEqual(self.names(self.outline.children()), ["A", "d"])
        first = self.outline.items[0]
        self.assertEqual(self.names(self.outline.children(first)), ["#b"])
        self.assertEqual(self.outline.children(self.outline.items[3]), [])

    def test_at(self):
        self.assertEqual(self.names(self.outline.at(3)), ["A", "#b", "c();"])
        self.assertEqual(self.names(self.outline.at(4)), ["A", "#b"])
        self.assertEqual(self.names(self.outline.at(6)), ["d"])
        self.assertEqual([self.outline.at(line) for line in (-1, 0, 7)], [[], [], []])


class Program(InAFolder):
    def fake(self, text):
        path = pathlib.Path("fake").absolute()
        path.write_text("#!/bin/sh\n" + text)
        path.chmod(0o755)
        return path

    def test_is_the_argument(self):
        self.assert_fails("run-failed", "quorl-js: no luck", quorl_js.outline, "a.js",
                          program=self.fake("echo quorl-js: no luck >&2; exit 2\n"))
        self.assert_fails("no-program", "./gone: No such file or directory", quorl_js.outline,
                          "a.js", program="./gone")

    def test_is_looked_for_on_the_path(self):
        path = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", path)
        os.environ["PATH"] = os.getcwd()
        self.assert_fails("no-program", "quorl-js: not found on PATH; install it or pass program=",
                          quorl_js.outline, "a.js")
        self.fake("echo quorl-js: this one >&2; exit 2\n").rename("quorl-js")
        self.assert_fails("run-failed", "quorl-js: this one", quorl_js.outline, "a.js")

    def test_is_one_in_the_package_first(self):
        # In a copy, since other tests use the package at the same time.
        shutil.copytree(pathlib.Path(quorl_js.__file__).parent, "copy/quorl_js")
        pathlib.Path("copy/quorl_js/bin").mkdir()
        self.fake("echo quorl-js: beside >&2; exit 2\n").rename("copy/quorl_js/bin/quorl-js")
        done = subprocess.run([sys.executable, "-c", "import quorl_js; quorl_js.outline('a.js')"],
                              env=dict(os.environ, PYTHONPATH="copy"), check=False,
                              stderr=subprocess.PIPE)
        self.assertEqual(done.stderr.splitlines()[-1], b"quorl_js.OutlineError: quorl-js: beside")

    def test_that_stops_early_is_an_error(self):
        header = '{"type":"header","schema":1,"tool":"quorl-js","version":"1","fileCount":1}'
        rows = {
            "exit 3": "quorl-js: ended early, with exit status 3",
            "kill -9 $$": "quorl-js: ended early, with exit status -9",
            "cat >/dev/null; echo '%s'; exit 2" % header:
                "quorl-js: ended early, with exit status 2",
            "cat >/dev/null; echo '%s'; printf '{\"type\":\"fi'" % header:
                "quorl-js: ended early, with exit status 0",
            "cat >/dev/null; echo '%s'; sleep 1000" % header.replace("1", "2", 1):
                "quorl-js: writes format 2, not 1",
        }
        for text, message in rows.items():
            with self.subTest(text):
                self.assert_fails("run-failed", message, quorl_js.outline, "a.js",
                                  program=self.fake(text + "\n"))


if __name__ == "__main__":
    unittest.main()
