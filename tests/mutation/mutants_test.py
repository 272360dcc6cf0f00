"""What the mutation run breaks in a source, and what it leaves alone."""
import unittest

import mutants

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


class MutantsTest(unittest.TestCase):
    def test_rows(self):
        for source, expected in ROWS:
            with self.subTest(source):
                found = mutants.mutants_of("a.cpp", source)
                self.assertEqual([mutants.apply(source, each) for each in found], expected)

    def test_place(self):
        (found,) = mutants.mutants_of("a.cpp", "int a;\nb = c == d;\n")
        self.assertEqual((found.path, found.line, found.column), ("a.cpp", 2, 7))

    def test_statement_without_an_end(self):
        with self.assertRaises(ValueError):
            mutants.mutants_of("a.cpp", "return a")


if __name__ == "__main__":
    unittest.main()
