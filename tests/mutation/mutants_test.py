"""What the mutation run breaks in a source, what it leaves alone, and what counts as explained."""
import pathlib
import tempfile
import textwrap
import unittest

import explanations
import mutants
import mutate

ROOT = pathlib.Path(__file__).resolve().parents[2]

ROWS = [
    ("a == b", ["a != b"]),
    ("a <= b", ["a < b", "a > b"]),
    ("a < b", ["a <= b", "a >= b"]),
    ("std::vector<int> a;", []),  # no comparison
    ("a && !b", ["a || !b", "a && b"]),
    ("auto&& a", []),  # no operator
    ("a + 1", ["a - 1", "a + 2", "a + 0"]),
    ("a = -1", ["a = -2", "a = -0"]),
    ("10'000", ["10001", "9999"]),
    ("0x20", ["33", "31"]),
    ("++i", ["--i"]),
    ("a << b->c >> d", []),
    ("f('a', '\\n')", ["f('\\1', '\\n')", "f('a', '\\1')"]),
    ('"ab\\n"', ['"b\\n"', '"ab"']),
    ('"a"', ['""']),
    ('""', ['"\\1"']),
    ("return true;", ["return false;"]),
    ("return;", []),
    ("return {};", []),
    ("return f([] { return; }, b);", ["return {};"]),
    ("std::min(a, b)", ["std::max(a, b)"]),
    ("minimal", []),
    ("// a == b", []),
    ("/* a\n == b */", []),
    ('#include "text/needle.h"', []),
    ("static_assert(kA < 4,\n  \"b\");", []),
    ("QUORL_API bool F(int a = 3);", []),
    ("a /* != */ == b", ["a /* != */ != b"]),
]

# A source, and the functions in it by the word that each begins with.
FUNCTIONS = [
    ("int f() { return 1; } int g(int a) { if (a) { return 2; } return 3; }",
     {"f": "int f", "g": "int g"}),
    ("int f();\nint a = 1;\nconstexpr int kA[] = {1, 2};\nclass A { int a_ = 1; };", {}),
    ("namespace a {\nnamespace {\nbool f() { return {}; }\n}\n}", {"f": "bool f"}),
    ("class A {\n public:\n  int f() const { return 1; }\n};", {"A::f": "public"}),
    ("template <typename T> struct A : B { int f() { return 1; } };", {"A::f": "int f"}),
    ("int A::f(int a) const { return a; }", {"A::f": "int A"}),
    ("A::A(int a) : B(a), a_{a}, b_{{1}} { f(); }", {"A::A": "A::A"}),
    ("struct A { A() : a_(1) {} ~A() {} int a_ = 0; };", {"A::A": "A()", "A::~A": "~A"}),
    ("bool A::operator()(int a) const { return a; }", {"A::operator()": "bool A"}),
    ("B& B::operator<<(int a) { return *this; }", {"B::operator<<": "B&"}),
    ("void f(A a = {}, B b = {1}) { g(); }", {"f": "void f"}),
    ("const auto kA = [](int a) { return a; };", {}),
    ("enum class A : char { kA, kB };\nint f() { return 1; }", {"f": "int f"}),
    ("void f() { auto g = [](int a) { return a; }; if (g(1)) { g(2); } }", {"f": "void f"}),
    ("extern \"C\" {\nint f() { return 1; }\n}", {"f": "int f"}),
    ("extern \"C\" API int f() { return '{'; } // }\n", {"f": "extern"}),
    ("template <class T>\nT f(T a) { return \"}\"; }", {"f": "template"}),
]

# Two functions with lines of the same text, one of them twice in the second.
SAME_LINES = """
constexpr int kA = 1;
bool f(int a) {
  a += 1;
  return a < 2;
}
bool g(int a) {
  a += 1;
  if (a > 3) {
    a += 1;
  }
  return f(a);
}
"""


class MutantsTest(unittest.TestCase):
    def test_rows(self):
        for source, expected in ROWS:
            with self.subTest(source):
                found = mutants.mutants_of("a.cpp", source)
                self.assertEqual([mutants.apply(source, each) for each in found], expected)

    def test_place(self):
        (found,) = mutants.mutants_of("a.cpp", "int a;\nb = c == d;\n")
        self.assertEqual((found.path, found.line, found.column), ("a.cpp", 2, 7))

    def test_functions(self):
        for source, expected in FUNCTIONS:
            with self.subTest(source):
                found = mutants.functions_in(source)
                self.assertEqual([name for _, _, name in found], list(expected))
                for begin, end, name in found:
                    self.assertTrue(source[begin:].startswith(expected[name]), source[begin:])
                    self.assertEqual(source[end - 1], "}")

    def test_function_of_a_mutant(self):
        found = mutants.mutants_of("a.cpp", SAME_LINES)
        self.assertEqual([(each.line, each.function) for each in found if each.replacement == "-="],
                         [(4, "f"), (8, "g"), (10, "g")])
        self.assertEqual({each.function for each in found if each.line == 2}, {"-"})

    def test_statement_without_an_end(self):
        with self.assertRaises(ValueError):
            mutants.mutants_of("a.cpp", "return a")


class ExplanationsTest(unittest.TestCase):
    def setUp(self):
        self.every = mutants.mutants_of("a.cpp", SAME_LINES)
        self.places = explanations.Places({"a.cpp": SAME_LINES}, self.every)

    def read(self, text):
        return explanations.read(textwrap.dedent(text), self.places)

    def test_an_entry_stands_for_one_place(self):
        explained, faults = self.read("""\
            # A comment.

            a.cpp f
              a += 1;
            => a -= 1;
            => a += 0;
              One reason,
              in two lines.

            a.cpp g occurrence 2 of 2
            a  +=  1;
            => a += 2;
              Another.

            a.cpp -
            constexpr int kA = 1;
            => constexpr int kA = 2;
              A third.
            """)
        self.assertEqual(faults, [])
        lines = [each.line for each in self.every
                 if explained.get(self.places.key_of(each))]
        self.assertEqual(lines, [2, 4, 4, 10])
        self.assertEqual(explained[explanations.Place("a.cpp", "f", "a += 1;", 1), "a += 0;"],
                         "One reason, in two lines.")

    def test_entries_that_are_none(self):
        whole = "%s\n%s\n=> a += 2;\n  Why.\n"
        for head, line, fault in [
                ("a.cpp h", "a += 1;", "no such place"),
                ("b.cpp f", "a += 1;", "no such place"),
                ("a.cpp f", "a += 3;", "no such place"),
                ("a.cpp -", "a += 1;", "no such place"),
                ("a.cpp g", "a += 1;", "one of 2 places, not told which"),
                ("a.cpp g occurrence 3 of 3", "a += 1;", "2 such places"),
                ("a.cpp g occurrence 1 of 3", "a += 1;", "2 such places"),
                ("a.cpp g occurrence 3 of 2", "a += 1;", "2 such places"),
                ("a.cpp g occurrence 0 of 2", "a += 1;", "2 such places"),
                ("a.cpp f occurrence 1 of 1", "a += 1;", "1 such places"),
                ("a.cpp g", "return f(a);", "no such mutant"),
                ("a.cpp", "a += 1;", "not a whole entry"),
                ("a.cpp g occurrence 1", "a += 1;", "not a whole entry")]:
            with self.subTest(head=head, line=line):
                (found,) = self.read(whole % (head, line))[1]
                self.assertTrue(found.startswith(fault), found)

    def test_entries_without_a_part(self):
        for rest in ["a += 1;\n  Why.\n", "a += 1;\n=> a += 2;\n", ""]:
            entry = "a.cpp f\n" + rest
            with self.subTest(entry):
                self.assertEqual(self.read(entry), ({}, ["not a whole entry: a.cpp f"]))

    def test_explained_twice(self):
        entry = "a.cpp f\na += 1;\n=> a += 2;\n  Why.\n"
        self.assertEqual(self.read(entry + "\n" + entry)[1],
                         ["explained twice: a.cpp f: => a += 2;"])

    def test_the_list_fits_the_sources(self):
        sources = mutate.sources_of(ROOT)
        places = explanations.Places(sources, mutate.mutants_of(sources))
        text = (ROOT / "tests/mutation/explained.txt").read_text()
        explained, faults = explanations.read(text, places)
        self.assertEqual(faults, [])
        self.assertEqual(len(explained), text.count("\n=> "))


class RunnerTest(unittest.TestCase):
    def passes(self, script):
        program = mutate.Program("program", [], [], [])
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / program.name
            path.write_text("#!/bin/sh\n" + script)
            path.chmod(0o755)
            return mutate.Runner(None, None).run(program, mutate.PLAIN, path.parent,
                                                 mutate.Limits(whole=2, step=0.5))[0]

    def test_runs(self):
        for passes, script in [(True, "echo a"),
                               (False, "exit 1"),
                               (False, "kill -SEGV $$"),
                               (False, "echo a; while :; do :; done"),  # nothing more is printed
                               (False, "while :; do echo a; done")]:  # far more work
            with self.subTest(script):
                self.assertEqual(self.passes(script), passes)

    def test_steps(self):
        step = mutate.Step()
        for size, seconds, took, longest in [
                (0, 1, 1, 1), (5, 4, 0, 4), (5, 5, 1, 4), (9, 6, 0, 4)]:
            step.look(size, seconds)
            self.assertEqual((step.took, step.longest), (took, longest))


if __name__ == "__main__":
    unittest.main()
