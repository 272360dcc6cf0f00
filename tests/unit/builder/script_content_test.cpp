// Lines of script text and their nodes: how a statement is classified, and how the lines of a text
// nest.
#include "builder/script_content.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace {

// A scope for the lines.
ObjectBranch* newTop() { return support::addNode(nullptr, kBranchClass, "class", "Top"); }

ObjectBranch* parsed(const std::string& text, int startLine = 1) {
  ObjectBranch* top = newTop();
  ParseScriptContent(text, top, "a.js", startLine);
  return top;
}

std::string linesOf(const std::string& text, int startLine = 1) {
  return support::dumpChildren(parsed(text, startLine));
}

// Lists CONTENTS=NAME for each node below node that has a simpleFunctionName, in pre-order.
std::string namesOf(const ObjectBranch* node) {
  std::string names;
  for (const ObjectBranch* child : node->children) {
    if (!child->simpleFunctionName.empty())
      names += "[" + child->contents + "=" + child->simpleFunctionName + "]";
    names += namesOf(child);
  }
  return names;
}

struct StatementCase {
  const char* line;
  std::uint32_t code;
  const char* label;
  const char* name;
  bool opens;  // the next line becomes its child
  const char* why;
};

constexpr StatementCase kStatements[] = {
    {"function foo(x) {", kBranchFunction, "function", "foo", true, ""},
    {"function foo()", kBranchFunction, "function", "foo", false, "no brace on the line"},
    {"function one() { return 1; }", kBranchFunction, "function", "one", true,
     "required: a balanced line opens a scope too"},
    {"async function foo() {", kBranchFunction, "function", "foo", true, ""},
    {"export function foo() {", kBranchFunction, "function", "foo", true, ""},
    {"function (a) {", kBranchFunction, "function", "(", true, "required: the part after it"},
    {"function* gen() {", kBranchFunction, "function", "*", true, "required: the part after it"},
    {"function", kBranchFunction, "function", "", false, "no name leaves the name empty"},
    {"return function() {", kBranchFunction, "function", "function", true, "a function first"},
    {"foo(function() {", kBranchFunction, "function", "foo", true, "named after the call"},
    {"$('.a').on('click', function() {", kBranchFunction, "function", "$", true, ""},
    {"a.b = function() {", kBranchFunction, "function", "function", true, "required: that name"},
    {"get size() {", kBranchFunction, "function", "size", true, "a method"},
    {"const f = () => {", kBranchFunction, "function", "f", true, ""},
    {"const f = (a) => a + 1;", kBranchFunction, "function", "f", false, ""},
    {"if (x) {", kBranchFunction, "function", "if", true, "required: ) before { is a function"},
    {"while (x) {", kBranchFunction, "function", "while", true, "required: a function"},
    {"for (i = 0; i < n; i++) {", kBranchFunction, "function", "for", true, "required"},
    {"switch (x) {", kBranchFunction, "function", "switch", true, "required: a function"},
    {"label: for (;;) {", kBranchFunction, "function", "for", true, "required: a function"},
    {"if (x) y = { a: 1 };", kBranchFunction, "function", "if", true, "required: any { after )"},
    {"} else if (x) {", kBranchFunction, "function", "if", true, "required: pushed, not popped"},
    {"} catch (e) {", kBranchFunction, "function", "catch", true, "required: pushed, not popped"},
    {"class A {", kBranchClass, "class", "", true, ""},
    {"class A extends B {", kBranchClass, "class", "", true, ""},
    {"class A", kBranchClass, "class", "", false, "no brace on the line"},
    {"class A { }", kBranchClass, "class", "", true, "balanced, opens"},
    {"class: 1", kBranchClass, "class", "", false, "required: the first word decides"},
    {"classy {", kBranchLine, "line", "", false, "a longer word"},
    {"export class A {", kBranchLine, "line", "", false, "required: not the first word"},
    {"else {", kBranchLogic, "logic", "", true, ""},
    {"try {", kBranchLogic, "logic", "", true, ""},
    {"try { a(); } finally { b(); }", kBranchLogic, "logic", "", true, "balanced, opens"},
    {"finally {", kBranchLogic, "logic", "", true, ""},
    {"case 1:", kBranchLogic, "logic", "", false, ""},
    {"default:", kBranchLogic, "logic", "", false, ""},
    {"case 1: {", kBranchLogic, "logic", "", true, ""},
    {"if (x)", kBranchLogic, "logic", "", false, "no { behind the )"},
    {"if (a == b) return;", kBranchLogic, "logic", "", false, ""},
    {"do {", kBranchLoop, "loop", "", true, ""},
    {"do", kBranchLoop, "loop", "", false, ""},
    {"while (x)", kBranchLoop, "loop", "", false, "no { behind the )"},
    {"for (;;)", kBranchLoop, "loop", "", false, "no { behind the )"},
    {"var a = 1;", kBranchClassVar, "classvar", "", false, ""},
    {"let a = 1, b = 2;", kBranchClassVar, "classvar", "", false, "one statement, one node"},
    {"x += 1;", kBranchClassVar, "classvar", "", false, ""},
    {"const o = {", kBranchClassVar, "classvar", "", false, "required: a literal opens nothing"},
    {"let { a } = b;", kBranchClassVar, "classvar", "", false, ""},
    {"const f = a => a;", kBranchClassVar, "classvar", "", false, "an arrow without a brace"},
    {"const f = a => {", kBranchFunction, "function", "", true, "required: no name"},
    {"x = y => {", kBranchFunction, "function", "", true, "required: no name"},
    {"const g = items.map(i => {", kBranchFunction, "function", "", true, "required: no name"},
    {"let o = { f: () => 1 };", kBranchFunction, "function", "", true, "any => with any {"},
    {"const a = '=>' + {", kBranchFunction, "function", "", true, "required: => in a string"},
    {"const a = '=> {';", kBranchClassVar, "classvar", "", false, "the { is in the string"},
    {"const a = 1 >= {", kBranchClassVar, "classvar", "", false, ">= is no arrow"},
    {"return x;", kBranchLine, "line", "", false, ""},
    {"return {", kBranchLine, "line", "", false, "a literal opens nothing"},
    {"foo();", kBranchLine, "line", "", false, ""},
    {"p: 1", kBranchLine, "line", "", false, ""},
    {"x =", kBranchLine, "line", "", false, "nothing after the operator"},
    {"x == 1;", kBranchLine, "line", "", false, ""},
    {"import a from 'a';", kBranchLine, "line", "", false, "imports are labelled later"},
    {"items.forEach((i) => {", kBranchLine, "line", "", false, "required: a dotted call"},
    {".then(function(x) {", kBranchLine, "line", "", false, "required: a dotted call"},
    {"(function() {", kBranchLine, "line", "", false, "required: begins with ("},
    {"} else {", kBranchLine, "line", "", false, "required: the open block goes on"},
    {"} finally {", kBranchLine, "line", "", false, "required: the open block goes on"},
    {"{ }", kBranchLine, "line", "", false, "braces with a blank are a statement"},
    {"{}", kBranchLine, "line", "", false, ""},
    {"{{", kBranchLine, "line", "", false, ""},
    {";", kBranchLine, "line", "", false, ""},
    {"caf\xC3\xA9();", kBranchLine, "line", "", false, "bytes above 0x7F are kept"},
};

TEST(ScriptContentStatement, IsClassifiedByTheFirstMatchingTest) {
  for (const StatementCase& row : kStatements) {
    SCOPED_TRACE(std::string(row.line) + "  // " + row.why);
    const ObjectBranch* top = parsed(std::string(row.line) + "\nnext\n");
    ASSERT_FALSE(top->children.empty());
    const ObjectBranch* node = top->children[0];
    EXPECT_EQ(node->contents, row.line);
    EXPECT_EQ(node->branchType, row.code);
    EXPECT_EQ(node->branchTypeAsString, row.label);
    EXPECT_EQ(node->simpleFunctionName, row.name);
    EXPECT_EQ(support::dumpChildren(node), row.opens ? "line\"next\"@2" : "");
    EXPECT_EQ(top->children.size(), row.opens ? 1u : 2u);
  }
}

TEST(ScriptContentStatement, CarriesNumberPathParentAndNoTags) {
  currentIndex = 10;
  ObjectBranch* top = newTop();  // takes 10
  ParseScriptContent("if (x) {\n}\n\n};\nb\n", top, "dir/a.js", 5);
  ASSERT_EQ(top->children.size(), 3u);
  const struct {
    std::int32_t id, line;
    const char* contents;
  } rows[] = {{11, 5, "if (x) {"}, {12, 8, "};"}, {13, 9, "b"}};
  for (std::size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(rows[i].contents);
    const ObjectBranch* node = top->children[i];
    EXPECT_EQ(node->contents, rows[i].contents);
    EXPECT_EQ(node->nodeID, rows[i].id);
    EXPECT_EQ(node->lineNumber, rows[i].line);
    EXPECT_EQ(node->functionID, -1);
    EXPECT_EQ(node->parent, top);
    EXPECT_EQ(node->filePath, "dir/a.js");
    EXPECT_EQ(node->tags, "");
  }
  EXPECT_EQ(currentIndex, 14);
}

TEST(ScriptContentStatement, IsTrimmedAndReduced) {
  EXPECT_EQ(linesOf("\t var \t x  =\t1; \f\n"), "classvar\"var x = 1;\"@1");
  EXPECT_EQ(linesOf("a\fb\n"), "line\"a\fb\"@1");
  EXPECT_EQ(linesOf("a \r b\r\n"), "line\"a b\"@1");
  const std::string nul(1, '\0');
  EXPECT_EQ(linesOf("a" + nul + "b\nc\n"), "line\"a" + nul + "b\"@1 line\"c\"@2")
      << "a NUL is an ordinary byte";
}

struct TextCase {
  const char* text;
  const char* dump;
  const char* why;
};

constexpr TextCase kTexts[] = {
    {"", "", "nothing at all"},
    {"\n", "", "an empty line"},
    {" \t\r\n\f\n", "", "lines of white space"},
    {"a", "line\"a\"@1", "a last line without line feed"},
    {"a\n", "line\"a\"@1", "no empty line after the last line feed"},
    {"a\n\n\nb\n", "line\"a\"@1 line\"b\"@4", "empty lines count"},
    {"a\r\nb\r\n", "line\"a\"@1 line\"b\"@2", "carriage returns are white space"},
    {"a\rb\n", "line\"a b\"@1", "a carriage return alone ends no line"},
    {"a; b; c\n", "line\"a; b; c\"@1", "a line is never split"},
    {"a,\nb\n", "line\"a,\"@1 line\"b\"@2", "lines are never joined"},
    {"}\nb\n", "line\"b\"@2", "a } with nothing open"},
    {"}}\nb\n", "line\"}\"@1 line\"b\"@2", "two } with nothing open"},
    {"{\nb\n", "line\"b\"@2", "a { on a line of its own opens nothing"},
    {"  {  \n  }  \nb\n", "line\"b\"@3", "braces are recognised after trimming"},
    {"function f() {\n{\na\n}\nb\n}\nc\n",
     "function\"function f() {\"@1(line\"a\"@3) line\"b\"@5 line\"c\"@7",
     "required: { alone pushes nothing and its } pops the scope around it"},
    {"function one() { return 1; }\na\n}\nb\n",
     "function\"function one() { return 1; }\"@1(line\"a\"@2) line\"b\"@4",
     "required: a one-line function takes in what follows, up to the next }"},
    {"if (x) { y(); }\nz();\n", "function\"if (x) { y(); }\"@1(line\"z();\"@2)",
     "required: so does a one-line block"},
    {"function outer() {\nfunction foo()\n{\nbody();\n}\nafter();\n",
     "function\"function outer() {\"@1(function\"function foo()\"@2 line\"body();\"@4) "
     "line\"after();\"@6",
     "required: a head without its brace is childless and its } pops the scope around it"},
    {"if (x) {\na();\n} else {\nb();\n}\nc();\n",
     "function\"if (x) {\"@1(line\"a();\"@2 line\"} else {\"@3 line\"b();\"@4) line\"c();\"@6",
     "required: the else part stays in the block"},
    {"if (x) {\na();\n} else if (y) {\nb();\n}\nc();\n}\nd();\n",
     "function\"if (x) {\"@1(line\"a();\"@2 function\"} else if (y) {\"@3(line\"b();\"@4) "
     "line\"c();\"@6) line\"d();\"@8",
     "required: an else-if goes one level deeper, and one } too few remains"},
    {"try {\na();\n} catch (e) {\nb();\n} finally {\nc();\n}\nd();\n",
     "logic\"try {\"@1(line\"a();\"@2 function\"} catch (e) {\"@3(line\"b();\"@4 "
     "line\"} finally {\"@5 line\"c();\"@6) line\"d();\"@8)",
     "required: a catch goes one level deeper"},
    {"function f() {\nconst o = {\na: 1\n};\nafter();\n",
     "function\"function f() {\"@1(classvar\"const o = {\"@2 line\"a: 1\"@3 line\"};\"@4) "
     "line\"after();\"@5",
     "required: a literal in a scope closes that scope"},
    {"const o = {\na: 1\n};\nb\n",
     "classvar\"const o = {\"@1 line\"a: 1\"@2 line\"};\"@3 line\"b\"@4",
     "at the top nothing is popped"},
    {"do {\na();\n} while (x);\nb\n",
     "loop\"do {\"@1(line\"a();\"@2 line\"} while (x);\"@3) line\"b\"@4",
     "the closing line is a node of the scope that it closes"},
    {"x = `a\n}`;\n", "classvar\"x = `a\"@1 line\"}`;\"@2",
     "required: a template is forgotten at the line end"},
    {"function f() {\nx = `a\n}`;\nb\n",
     "function\"function f() {\"@1(classvar\"x = `a\"@2 line\"}`;\"@3) line\"b\"@4",
     "required: a } in a template that runs over lines pops"},
    {"function f(a = `\n{`) {\nb\n", "function\"function f(a = `\"@1 line\"{`) {\"@2 line\"b\"@3",
     "required: neither line is a head with a brace"},
};

TEST(ScriptContent, FollowsNestingByTheBracesOfEachLine) {
  for (const TextCase& row : kTexts) {
    SCOPED_TRACE(std::string(row.text) + "  // " + row.why);
    EXPECT_EQ(linesOf(row.text), row.dump);
  }
}

TEST(ScriptContent, NumbersLinesFromTheStartLine) {
  EXPECT_EQ(linesOf("a\nb\n", 7), "line\"a\"@7 line\"b\"@8");
  EXPECT_EQ(linesOf("a\n}\nx }\n", 0), "line\"a\"@0 line\"x\"@2");
  EXPECT_EQ(linesOf("\na\n", -3), "line\"a\"@-2");
}

TEST(ScriptContent, WithoutTextOrParentDoesNothing) {
  currentIndex = 3;
  ParseScriptContent("a\n", nullptr, "a.js", 1);
  EXPECT_EQ(currentIndex, 3);
  ObjectBranch* top = newTop();
  ParseScriptContent("", top, "a.js", 1);
  EXPECT_EQ(currentIndex, 4);
  EXPECT_TRUE(top->children.empty());
}

TEST(ScriptContent, AppendsToTheParentsChildren) {
  ObjectBranch* top = parsed("a\n");
  ParseScriptContent("b {\n}\n", top, "a.js", 1);
  EXPECT_EQ(support::dumpChildren(top), "line\"a\"@1 line\"b {\"@1");
}

constexpr char kWorkedText[] =
    "var a = 1;\n"
    "function foo(x) {\n"
    "  if (x) {\n"
    "    bar();\n"
    "  } else {\n"
    "    baz();\n"
    "  }\n"
    "  return x;\n"
    "}\n"
    "const o = {\n"
    "  p: 1\n"
    "};\n"
    "try {\n"
    "  risky();\n"
    "} catch (e) {\n"
    "  log(e);\n"
    "}\n"
    "after();\n"
    "function one() { return 1; }\n"
    "nested();\n";

TEST(ScriptContent, ReadsAWholeFile) {
  const ObjectBranch* top = parsed(kWorkedText);
  EXPECT_EQ(support::dumpChildren(top),
            "classvar\"var a = 1;\"@1 "
            "function\"function foo(x) {\"@2("
            "function\"if (x) {\"@3(line\"bar();\"@4 line\"} else {\"@5 line\"baz();\"@6) "
            "line\"return x;\"@8) "
            "classvar\"const o = {\"@10 "
            "line\"p: 1\"@11 "
            "line\"};\"@12 "
            "logic\"try {\"@13("
            "line\"risky();\"@14 "
            "function\"} catch (e) {\"@15(line\"log(e);\"@16) "
            "line\"after();\"@18 "
            "function\"function one() { return 1; }\"@19(line\"nested();\"@20))");
  EXPECT_EQ(namesOf(top),
            "[function foo(x) {=foo][if (x) {=if][} catch (e) {=catch]"
            "[function one() { return 1; }=one]");
}

}  // namespace
