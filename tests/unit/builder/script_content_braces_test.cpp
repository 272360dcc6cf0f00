// Which braces of a line count, and what a line with more closing than opening ones does.
#include <string>

#include <gtest/gtest.h>

#include "builder/script_content.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace {

ObjectBranch* parsed(const std::string& text) {
  ObjectBranch* top = support::addNode(nullptr, kBranchClass, "class", "Top");
  ParseScriptContent(text, top, "a.js", 1);
  return top;
}

std::string linesOf(const std::string& text) { return support::dumpChildren(parsed(text)); }

struct ClosingCase {
  const char* line;
  const char* nodes;  // added to the innermost scope
  int pops;           // how many of two open scopes close
  const char* why;
};

constexpr ClosingCase kClosings[] = {
    {"}", "", 1, "no node"},
    {"  }\t", "", 1, "trimmed first"},
    {"};", "line\"};\"@3", 1, ""},
    {"});", "line\"});\"@3", 1, "begins with its only }: stays whole"},
    {"})();", "line\"})();\"@3", 1, ""},
    {"}, 100);", "line\"}, 100);\"@3", 1, ""},
    {"} while (x);", "line\"} while (x);\"@3", 1, ""},
    {"} = x;", "classvar\"} = x;\"@3", 1, "required: = with both sides"},
    {"foo(); }", "line\"foo();\"@3", 1, "the text before the last }"},
    {"foo();}", "line\"foo();\"@3", 1, ""},
    {"foo(); } bar();", "line\"foo();\"@3", 1, "what follows the last } is lost"},
    {"foo(); } x = 1;", "line\"foo();\"@3", 1, "the cut text is classified, not the line"},
    {"var }", "line\"var\"@3", 1, "one part is no variable once the } is cut off"},
    {"return x; }", "line\"return x;\"@3", 1, ""},
    {"var a = 1; }", "classvar\"var a = 1;\"@3", 1, ""},
    {"a = 1 }", "classvar\"a = 1\"@3", 1, ""},
    {"a = { } }", "classvar\"a = { }\"@3", 2, ""},
    {"return a = 1 }", "line\"return a = 1\"@3", 1, "a return before a variable"},
    {"}}", "line\"}\"@3", 2, "required: a node with one brace, two pops"},
    {"} }", "line\"}\"@3", 2, "the blank is trimmed away"},
    {"}; }", "line\"};\"@3", 2, ""},
    {"}}}", "line\"}}\"@3", 2, "the parent is never popped"},
    {"{}}", "line\"{}\"@3", 2, "required: as many pops as }, not the difference"},
    {"function h() { } }", "line\"function h() { }\"@3", 2, "a function is not looked for"},
    {"if (x) { y = 1; } }", "line\"if (x) { y = 1; }\"@3", 2, ""},
    {"class A { } }", "line\"class A { }\"@3", 2, "nor is a class"},
    {"f = a => { } }", "classvar\"f = a => { }\"@3", 2, "nor an arrow"},
    {"a('}'); }", "line\"a('}');\"@3", 1, "a } in a string does not pop"},
    {"a(); } b('}');", "line\"a(); } b('\"@3", 1, "required: but it is the last } of the text"},
    {"\\} }", "line\"\\}\"@3", 1, "an escaped } does not pop"},
    {"} {", "line\"} {\"@3", 0, "as many { as }: an ordinary line"},
    {"} } {", "line\"}\"@3", 2, ""},
};

TEST(ScriptContentBraces, ALineWithMoreClosingBracesLeavesANodeAndPops) {
  for (const ClosingCase& row : kClosings) {
    SCOPED_TRACE(std::string(row.line) + "  // " + row.why);
    const ObjectBranch* top =
        parsed(std::string("function f() {\nfunction g() {\n") + row.line + "\nafter\n");
    ASSERT_FALSE(top->children.empty());
    const ObjectBranch* f = top->children[0];
    ASSERT_FALSE(f->children.empty());
    const ObjectBranch* g = f->children[0];
    const std::string after = "line\"after\"@4";
    const std::string nodes = row.nodes;
    EXPECT_EQ(support::dumpChildren(g), row.pops == 0 ? nodes + " " + after : nodes);
    EXPECT_EQ(f->children.size(), row.pops == 1 ? 2u : 1u);
    EXPECT_EQ(top->children.size(), row.pops == 2 ? 2u : 1u);
  }
}

struct BraceCase {
  const char* head;  // a function head: opens a scope if one { counts
  bool opens;
  const char* why;
};

constexpr BraceCase kBraces[] = {
    {"function f() {", true, ""},
    {"function f() { '", true, "the quote comes later"},
    {"function f() ' {", false, "an open quote hides what follows"},
    {"function f() \" {", false, ""},
    {"function f() ` {", false, ""},
    {"function f(r = /'/) {", false, "required: a quote in a regular expression opens a string"},
    {"function f(a = '{')", false, ""},
    {"function f(a = \"{\")", false, ""},
    {"function f(a = `{`)", false, ""},
    {"function f(a = '}') {", true, "the string is closed again"},
    {"function f(a = \"'\") {", true, "another quote inside a string is plain"},
    {"function f(a = '`') {", true, ""},
    {"function f(a = `\"`) {", true, ""},
    {"function f(a = '\\'{')", false, "an escaped quote does not close"},
    {"function f(a = '\\\\') {", true, "an escaped backslash escapes nothing"},
    {"function f() \\{", false, "required: a backslash outside strings escapes too"},
    {"function f() \\\\{", true, ""},
    {"function f() \\' {", true, "an escaped quote outside strings opens nothing"},
};

TEST(ScriptContentBraces, CountsBracesOutsideStringsOnly) {
  for (const BraceCase& row : kBraces) {
    SCOPED_TRACE(std::string(row.head) + "  // " + row.why);
    const ObjectBranch* top = parsed(std::string(row.head) + "\nnext\n");
    ASSERT_FALSE(top->children.empty());
    EXPECT_EQ(top->children[0]->contents, row.head);
    EXPECT_EQ(support::dumpChildren(top->children[0]), row.opens ? "line\"next\"@2" : "");
  }
}

TEST(ScriptContentBraces, BracesInStringsNeitherCloseNorOpen) {
  EXPECT_EQ(linesOf("var s = \"{\";\nb\n"), "classvar\"var s = \"{\";\"@1 line\"b\"@2");
  EXPECT_EQ(linesOf("var s = '}';\nb\n"), "classvar\"var s = '}';\"@1 line\"b\"@2");
  EXPECT_EQ(linesOf("var r = /'/; {\nb\n"), "classvar\"var r = /'/; {\"@1 line\"b\"@2");
  EXPECT_EQ(linesOf("var r = x => /'/; {\nb\n"), "classvar\"var r = x => /'/; {\"@1 line\"b\"@2");
  EXPECT_EQ(linesOf("var r = x => /\"/; }\nb\n"), "classvar\"var r = x => /\"/; }\"@1 line\"b\"@2");
}

}  // namespace
