#include "outline/script_scanner.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using host::outline::Definition;
using host::outline::kindWord;
using host::outline::scanScript;
using host::outline::ScriptDialect;

// "kind name first-last", main definitions only, in the order of the source's lines.
std::string definitionsOf(std::string_view text, ScriptDialect dialect = {}) {
  std::string found;
  for (const Definition& each : scanScript(text, 1, 100'000, dialect).definitions) {
    if (!each.isMain) continue;
    if (!found.empty()) found += ", ";
    found.append(kindWord(each.kind)).append(" ");
    found.append(text.substr(each.nameBegin, each.nameEnd - each.nameBegin)).append(" ");
    found.append(std::to_string(each.firstLine)).append("-");
    found.append(std::to_string(each.lastLine));
  }
  return found;
}

struct ScanCase {
  std::string_view text;
  std::string_view definitions;
};

void expectAll(const std::vector<ScanCase>& cases, ScriptDialect dialect = {}) {
  for (const ScanCase& row : cases) {
    EXPECT_EQ(definitionsOf(row.text, dialect), row.definitions) << row.text;
  }
}

TEST(ScriptScanner, FindsDeclaredFunctions) {
  expectAll(
      {{"function f() {\n}", "function f 1-2"},
       {"function f()\n{\n}\n", "function f 1-3"},
       {"function f(\n  a,\n  b\n) {\n  a();\n}\n", "function f 1-6"},
       {"async function f() {\n}", "function f 1-2"},
       {"function* f() {\n}", "function f 1-2"},
       {"export default async function f() {\n}", "function f 1-2"},
       {"function f({ a = {} }, b = function () {}) {\n}\n", "function f 1-2, function b 1-1"},
       {"function f() { return 1; }\nfunction g() {}\n", "function f 1-1, function g 2-2"},
       {"function f() {\n  function g() {\n  }\n}\n", "function f 1-4, function g 2-3"}});
}

TEST(ScriptScanner, FindsFunctionsThatAreValues) {
  expectAll({{"var f = function () {\n};", "function f 1-2"},
             {"const f = async function g() {\n};", "function f 1-2"},
             {"const f = (a, b) => {\n};", "function f 1-2"},
             {"const f = async a =>\n  a;\n", "function f 1-2"},
             {"const f = a => b => {\n  b;\n};\n", "function f 1-3"},
             {"let a = 1, f = function () {\n};", "function f 1-2"},
             {"var a = 1,\n  f = () => {\n  };\n", "function f 2-3"},
             {"a.b.c = function () {\n};", "function c 1-2"},
             {"exports.f = async () => {\n};", "function f 1-2"},
             {"module.exports = function g() {\n};", "function g 1-2"},
             {"exports = module.exports = function () {\n}", "function exports 1-2"},
             {"a[\"f\"] = function () {\n};", "function f 1-2"},
             {"a[ 'f' ] = function () {\n};", "function f 1-2"},
             {"a[f] = function () {\n};", ""},
             {"a[b || \"f\"] = function () {\n};", ""},
             {"const f =\n  (a) =>\n  a;\n", "function f 1-3"},
             {"const f = (a) =>\n  a\n    .b(c)\n    .d\nnext()\n", "function f 1-4"}});
}

TEST(ScriptScanner, TellsValuesFromWhatUsesThem) {
  expectAll({{"var a = function () {\n}();", ""},
             {"var a = function () {\n}.bind(b);", ""},
             {"var a = (function () {\n})();", ""},
             {"var a = b || function () {\n};", ""},
             {"var a = b(function () {\n});", ""},
             {"a({ f: function () {\n}.property() });", ""},
             {"x = y ? (a) : b => c;", ""},
             {"if (a == function () {}) {\n}", ""}});
}

TEST(ScriptScanner, FindsMembers) {
  expectAll(
      {{"class A {\n  f() {\n  }\n}\n", "class A 1-4, method f 2-3"},
       {"class A {\n  constructor() {\n  }\n}", "class A 1-4, constructor constructor 2-3"},
       {"class A {\n  get a() {\n  }\n  set a(b) {\n  }\n}",
        "class A 1-6, getter a 2-3, setter a 4-5"},
       {"class A {\n  static async *f() {}\n}", "class A 1-3, method f 2-2"},
       {"class A {\n  #f() {}\n}", "class A 1-3, method #f 2-2"},
       {"class A {\n  [Symbol.iterator]() {}\n}", "class A 1-3, method [Symbol.iterator] 2-2"},
       {"class A {\n  get() {}\n  static() {}\n  async() {}\n}",
        "class A 1-5, method get 2-2, method static 3-3, method async 4-4"},
       {"class A {\n  f = () => {\n  }\n  g = 1\n  h() {}\n}",
        "class A 1-6, method f 2-3, method h 5-5"},
       {"class A {\n  static {\n    f();\n  }\n  g() {}\n}", "class A 1-6, method g 5-5"},
       {"var a = {\n  f() {\n  },\n  g: function () {\n  },\n  h: (x) => x,\n  i: f()\n};",
        "method f 2-3, method g 4-5, method h 6-6"},
       {"a({\n  'b c': async () => {\n  },\n  get d() {\n  },\n});",
        "method b c 2-3, getter d 4-5"},
       {"x = {\n  f() { return {}; },\n  g() {}\n};", "method f 2-2, method g 3-3"},
       {"class A {\n  a = { f() {} };\n}", "class A 1-3, method f 2-2"}});
}

TEST(ScriptScanner, FindsClasses) {
  expectAll({{"class A extends B {\n}", "class A 1-2"},
             {"export default class A {\n}", "class A 1-2"},
             {"export default class {\n}", ""},
             {"const A = class extends f({ a: 1 }) {\n}", "class A 1-2"},
             {"const A = class B {\n}", "class A 1-2"},
             {"class A\n  extends B\n{\n}", "class A 1-4"},
             {"@a.b({ c: 1 })\nclass A {\n}", "class A 2-3"}});
}

TEST(ScriptScanner, ControlIsNoFunction) {
  expectAll({{"if (a) {\n} else if (b) {\n} else {\n}", ""},
             {"try {\n} catch (e) {\n} finally {\n}", ""},
             {"try {\n} catch {\n  if (a) {\n  }\n}", ""},
             {"for (const a of b) {\n}\nwhile (a) {\n}\ndo {\n} while (a)\n", ""},
             {"switch (a) {\n  case b:\n    f();\n    break;\n  default: {\n  }\n}", ""},
             {"with (a) {\n}\nlabel: for (;;) {\n}", ""},
             {"case_(a)\n{\n}", ""},
             {"f(a)\n{\n  g(b)\n  {\n  }\n}", ""}});
}

TEST(ScriptScanner, NothingInTextFoolsIt) {
  expectAll({{"var a = \"function f() {\";\nfunction g() {}", "function g 2-2"},
             {"// function f() {\n/* { \n */function g() {}", "function g 3-3"},
             {"var a = `{ ${b(`}`)} function f() {\n`;\nfunction g() {}", "function g 3-3"},
             {"var a = /[/}]{/.test(b);\nfunction g() {}", "function g 2-2"},
             {"a = b / c; d = e / f; function g() {\n}", "function g 1-2"},
             {"if (a) /}/.test(b);\nfunction g() {}", "function g 2-2"},
             {"a = b++ / c; function g() {\n} // /", "function g 1-2"},
             {"function f() {\n  return /{/;\n}", "function f 1-3"},
             {"a = 'it\\'s {';\nfunction g() {}", "function g 2-2"},
             {"a = 'open\nfunction g() {}", "function g 2-2"},
             {"a = {}\n/b/g.c\nfunction g() {}", "function g 3-3"}});
}

TEST(ScriptScanner, ReadsJsx) {
  expectAll({{"const A = () => <p a=\"{\" b={() => {}}>it's {c} }</p>;\nfunction f() {}",
              "function A 1-1, function f 2-2"},
             {"function A() {\n  return (\n    <><b c /> text</>\n  );\n}\nfunction f() {}",
              "function A 1-5, function f 6-6"},
             {"const f = <T,>(a: T) => {\n};\nfunction g() {}", "function f 1-2, function g 3-3"},
             {"if (a < b) {\n}\nfunction g() {}", "function g 3-3"}});
}

TEST(ScriptScanner, ReadsTypes) {
  expectAll(
      {{"function f<T extends { a: string }>(b: T): { c: T } {\n}", "function f 1-2"},
       {"function f(a: string): void;\nfunction f(a: any) {\n}", "function f 1-1, function f 2-3"},
       {"const f: (a: X) => void = (a) => {\n};", "function f 1-2"},
       {"const f = (a: { b: () => void }): Promise<X> => {\n};", "function f 1-2"},
       {"const f = <T>(a: T) => {\n};", "function f 1-2"},
       {"interface A {\n  f(): void;\n  g: () => void;\n}\nclass B {}", "class B 5-5"},
       {"type A = {\n  f: () => void\n}\nclass B {}", "class B 4-4"},
       {"type A =\n  | B\n  | ((c: D) => void)\nclass B {}", "class B 4-4"},
       {"abstract class A<T = {}> extends B<{ a: () => void }> implements C {\n  abstract f(): T;\n"
        "  private readonly g?: Map<A, B> = new Map<A, B>();\n  h<T>(a: T): a is B {\n  }\n}",
        "class A 1-6, method f 2-2, method h 4-5"},
       {"class A {\n  a: () => void\n  b!: string\n  @c() d = 1\n  e(): void {}\n}",
        "class A 1-6, method e 5-5"},
       {"enum A {\n  B = 'c',\n}\nnamespace D.E {\n  export function f() {\n  }\n}",
        "function f 5-6"},
       {"class A {\n  f<\n    T = B,\n    U = T extends C ? D : E,\n  >(a: T): U {\n  }\n}",
        "class A 1-7, method f 2-6"},
       {"const f =\n  (a: X) =>\n  (b: Y): b is X =>\n    a\nclass B {}",
        "function f 1-4, class B 5-5"},
       {"let a = b as { f(): void };\nfunction g() {}", "function g 2-2"}},
      {.mayHoldJsx = false});
}

TEST(ScriptScanner, FindsWhatIsNotMain) {
  const std::string_view text =
      "const a = {\n};\ninterface B {\n}\ntype C = D;\nf(function g() {\n});";
  const auto structure = scanScript(text, 1, 100'000, {});
  ASSERT_EQ(structure.definitions.size(), 4U);
  const std::vector<std::pair<std::string_view, std::pair<int, int>>> expected = {
      {"variable", {1, 2}}, {"interface", {3, 4}}, {"type", {5, 5}}, {"function", {6, 7}}};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const Definition& found = structure.definitions[i];
    EXPECT_EQ(kindWord(found.kind), expected[i].first);
    EXPECT_FALSE(found.isMain);
    EXPECT_EQ(found.firstLine, expected[i].second.first);
    EXPECT_EQ(found.lastLine, expected[i].second.second);
  }
}

TEST(ScriptScanner, KnowsWhereLinesLeaveBracketsOpen) {
  const auto structure =
      scanScript("if (a\n  && b) {\n  f({\n  });\n} else {\n}\n[1,\n2].map(function () {\n});", 1,
                 100'000, {});
  struct Line {
    int last;
    std::string_view kind;
  };
  const Line expected[] = {{5, "logic"}, {5, "statement"}, {4, "statement"}, {0, "statement"},
                           {6, "logic"}, {0, "statement"}, {8, "statement"}, {9, "callback"}};
  ASSERT_GE(structure.lines.size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(structure.lines[i].lastLine, expected[i].last) << "line " << i + 1;
    EXPECT_EQ(kindWord(structure.lines[i].kind), expected[i].kind) << "line " << i + 1;
  }
}

TEST(ScriptScanner, CountsLinesFromTheGivenOne) {
  const auto structure = scanScript("\r\nfunction f() {\r}\n", 40, 100'000, {});
  ASSERT_EQ(structure.definitions.size(), 1U);
  EXPECT_EQ(structure.definitions[0].firstLine, 41);
  EXPECT_EQ(structure.definitions[0].lastLine, 42);
}

TEST(ScriptScanner, DefinesNothingBehindTheLimit) {
  const auto structure = scanScript("function f() {\n\nfunction g() {}\n}\n", 1, 2, {});
  ASSERT_EQ(structure.definitions.size(), 1U);
  EXPECT_EQ(structure.definitions[0].lastLine, 4) << "ends are still found";
}

TEST(ScriptScanner, LeavesEndsOpenThatItCannotFind) {
  const auto structure = scanScript("function f() {\n  (\n", 1, 100'000, {});
  ASSERT_EQ(structure.definitions.size(), 1U);
  EXPECT_EQ(structure.definitions[0].lastLine, 0);
  EXPECT_EQ(definitionsOf("function f() {\n  a(;\n}\nfunction g() {}\n"),
            "function f 1-3, function g 4-4")
      << "a brace closes what is open inside it";
  EXPECT_EQ(definitionsOf("function f() {\n  a);\n}\n"), "function f 1-3") << "a stray closer";
}

}  // namespace
