#include "refine/inline_functions.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace {

using std::string_view_literals::operator""sv;
using support::addNode;
using support::dumpChildren;
using support::dumpTree;

struct SplitCase {
  std::string_view contents;
  const char* children;
  const char* why;
};

constexpr SplitCase kSplits[] = {
    {"", "", ""},
    {" \t", "", ""},
    {"a", "", ""},
    {"a = 1; b = 2;", R"(classvar"a = 1"@7 classvar"b = 2"@7)", ""},
    {"x = 1;", R"(classvar"x = 1"@7)", "says the same thing again"},
    {"f(); g", R"_(line"f ( )"@7)_", "joined with blanks"},
    {"function f(a) { return a; }", R"_(function"function f ( a )"@7(line"return a ;"@7))_",
     "in braces a ; stays"},
    {"if (x) { y(); } else { z(); }",
     R"_(logic"if ( x )"@7(line"y ( ) ;"@7) logic"else"@7(line"z ( ) ;"@7))_", ""},
    {"while (x) { y(); }", R"_(loop"while ( x )"@7(line"y ( ) ;"@7))_", ""},
    {"var f = function (a) { return a; };",
     R"_(container"var f = function ( a )"@7(line"return a ;"@7))_",
     "required: without its brace this is not a function; the last ; is not a statement"},
    {"class A { m() { return 1; } }",
     R"_(class"class A"@7(container"m ( )"@7(line"return 1 ;"@7)))_", ""},
    {"var f = (a) => { g(); }", R"(function"var f = ( a ) =>"@7(line"g ( ) ;"@7))", ""},
    // Semicolons.
    {";", "", "nothing to end: a part like any other"},
    {";;", R"(line";"@7)", "required: which the next one ends"},
    {";;;", R"(line";"@7)", ""},
    {"a;;b;", R"(line"a"@7 line"; b"@7)", "required"},
    {";a;", R"(line"; a"@7)", ""},
    {"x { a; b = 1; c }", R"(container"x"@7(classvar"a ; b = 1 ; c"@7))", "no cut in braces"},
    {"x { a; y { b } }", R"(container"x"@7(container"a ; y"@7(line"b"@7)))", "but at a brace"},
    {"x { a } b; c;", R"(container"x"@7(line"a"@7) line"b"@7 line"c"@7)", ""},
    {"for (i = 0; i < 3; i++) { x(); }",
     R"_(classvar"for ( i = 0"@7 line"i < 3"@7 container"i ++ )"@7(line"x ( ) ;"@7))_",
     "required: parentheses are not counted"},
    // Closing braces.
    {"} a; b;", "", "below zero nothing is cut any more"},
    {"} x { a; b", R"(container"x"@7(line"a"@7))", "and at zero again in a block"},
    {"} { a; } b;", R"(line"a"@7)", ""},
    {"a } b;", "", "text before it at the top is lost"},
    {"x { a } } } y { b } c", R"(container"x"@7(line"a"@7) container"y"@7(line"b"@7))",
     "the climb stops at the leaf"},
    {"x { y { a } b } c;", R"(container"x"@7(container"y"@7(line"a"@7) line"b"@7) line"c"@7)", ""},
    {"x { } y { }", R"(container"x"@7 container"y"@7)", ""},
    {"x { a; ", R"(container"x"@7)", "what is left over in a block is lost"},
    {"x { y {", R"(container"x"@7(container"y"@7))", ""},
    // Blocks without a head.
    {"{ a; }", "", "lost"},
    {"{ a; } b;", R"(line"b"@7)", ""},
    {"x { { a } b } c;", R"(container"x"@7(line"a"@7) line"c"@7)",
     "required: its brace climbs one level too many"},
    {"x { { { a } b } c } d;", R"(container"x"@7(line"a"@7) line"d"@7)", ""},
    {"a; { b; } c;", R"(line"a"@7 line"c"@7)", ""},
    // Strings.
    {"f('{;}'); g", R"_(line"f ( ''{;}' )"@7)_", "required: the quote opens twice"},
    {"s = `;`; t = \";\";", R"(classvar"s = ``;`"@7 classvar"t = ";""@7)", "but for a double one"},
    {"s = 'a  b';", R"(classvar"s = ''a b'"@7)", "reduced in strings too"},
    {"'\\`'{ a }; b';", R"(line"''\`'{ a }; b'"@7)", "a backtick keeps the quote escaped"},
    {"'\\`''a { b }'", R"(container"''\`'' a"@7(line"b"@7))",
     "so the quotes pair differently here than in the scan"},
    // Bytes.
    {"a;\0b;"sv, R"(line"a"@7)", "a NUL ends the text"},
    {"\xE9;\x80;", "line\"\xE9\"@7 line\"\x80\"@7", ""},
    {"a\tb\n;c\f;", R"(line"a b"@7 line"c"@7)", ""},
};

constexpr SplitCase kHeads[] = {
    {"function f() { }", R"_(function"function f ( )"@7)_", ""},
    {"async function f() { }", R"_(function"async function f ( )"@7)_", ""},
    {"function if() { }", R"_(function"function if ( )"@7)_", "a function comes first"},
    {"class = (a) => { }", R"(function"class = ( a ) =>"@7)", ""},
    {"if = (a) => { }", R"(function"if = ( a ) =>"@7)", ""},
    {"while = async (a) { }", R"_(function"while = async ( a )"@7)_", ""},
    {"f(a, function() { }", R"_(function"f ( a , function ( )"@7)_", ""},
    {"f() { }", R"_(container"f ( )"@7)_", "required: its brace is cut off"},
    {"(a) => { }", R"(container"( a ) =>"@7)", ""},
    {"class { }", R"(class"class"@7)", ""},
    {"class if { }", R"(class"class if"@7)", "then a class"},
    {"class$x { }", R"(class"class$x"@7)", ""},
    {"classy { }", R"(container"classy"@7)", ""},
    {"export class A { }", R"(container"export class A"@7)", ""},
    {"if while { }", R"(logic"if while"@7)", "then logic"},
    {"try { }", R"(logic"try"@7)", ""},
    {"switch (a) { }", R"_(logic"switch ( a )"@7)_", ""},
    {"case { }", R"(logic"case"@7)", ""},
    {"while if { }", R"(loop"while if"@7)", "then a loop"},
    {"for { }", R"(loop"for"@7)", ""},
    {"do { }", R"(loop"do"@7)", ""},
    {"return { }", R"(container"return"@7)", "anything else"},
    {"var a = { }", R"(container"var a ="@7)", ""},
    {"x = 1 { }", R"(container"x = 1"@7)", ""},
    {"If { }", R"(container"If"@7)", ""},
};

constexpr SplitCase kBlockEnds[] = {
    {"x { return }", R"(container"x"@7(line"return"@7))", ""},
    {"x { return a = 1 }", R"(container"x"@7(line"return a = 1"@7))", "return comes first"},
    {"x { var a }", R"(container"x"@7(classvar"var a"@7))", ""},
    {"x { a = 1 }", R"(container"x"@7(classvar"a = 1"@7))", ""},
    {"x { var f = (a) => b }", R"(container"x"@7(classvar"var f = ( a ) => b"@7))",
     "then a variable"},
    {"x { function f() }", R"_(container"x"@7(function"function f ( )"@7))_", "then a function"},
    {"x { f = (a) => b }", R"(container"x"@7(function"f = ( a ) => b"@7))", ""},
    {"x { class A }", R"(container"x"@7(line"class A"@7))", "required: nothing else"},
    {"x { if (a) }", R"_(container"x"@7(line"if ( a )"@7))_", ""},
    {"x { while (a) }", R"_(container"x"@7(line"while ( a )"@7))_", ""},
};

constexpr SplitCase kStatements[] = {
    {"return;", R"(line"return"@7)", ""},
    {"return a = 1;", R"(line"return a = 1"@7)", ""},
    {"var a;", R"(classvar"var a"@7)", ""},
    {"var;", R"(line"var"@7)", ""},
    {"a += 1;", R"(classvar"a += 1"@7)", ""},
    {"a == 1;", R"(line"a == 1"@7)", ""},
    {"function f();", R"_(line"function f ( )"@7)_", "required: no function is looked for"},
    {"f = (a) => b;", R"(line"f = ( a ) => b"@7)", ""},
    {"class A;", R"(line"class A"@7)", ""},
    {"if (a);", R"_(line"if ( a )"@7)_", ""},
};

ObjectBranch* newLeaf(std::string_view contents, const std::string& label = "define",
                      std::uint32_t code = kBranchDefine) {
  currentIndex = 10;
  ObjectBranch* leaf = addNode(nullptr, code, label, std::string(contents), "dir/a.txt");
  leaf->lineNumber = 7;
  return leaf;
}

// Each label that the pass sets has a code of its own.
std::uint32_t codeOf(const std::string& label) {
  if (label == "container") return kBranchContainer;
  if (label == "line") return kBranchLine;
  if (label == "logic") return kBranchLogic;
  if (label == "function") return kBranchFunction;
  if (label == "class") return kBranchClass;
  if (label == "loop") return kBranchLoop;
  return label == "classvar" ? kBranchClassVar : kBranchNone;
}

void expectNewNodes(const ObjectBranch* parent, std::int32_t& nextId) {
  for (const ObjectBranch* node : parent->children) {
    EXPECT_EQ(node->nodeID, nextId++) << node->contents;
    EXPECT_EQ(node->parent, parent) << node->contents;
    EXPECT_EQ(node->branchType, codeOf(node->branchTypeAsString)) << node->contents;
    EXPECT_EQ(node->lineNumber, 7) << node->contents;
    EXPECT_EQ(node->filePath, "dir/a.txt") << node->contents;
    EXPECT_EQ(node->functionID, -1) << node->contents;
    EXPECT_EQ(node->tags, "") << node->contents;
    if (node->branchTypeAsString != "function") {
      EXPECT_EQ(node->simpleFunctionName, "") << node->contents;
    }
    expectNewNodes(node, nextId);
  }
}

template <std::size_t kCount>
void expectSplits(const SplitCase (&rows)[kCount]) {
  for (const SplitCase& row : rows) {
    SCOPED_TRACE(testing::PrintToString(std::string(row.contents)) + "  // " + row.why);
    ObjectBranch* leaf = newLeaf(row.contents);
    GenerateInlineFunctions(leaf, true);
    EXPECT_EQ(dumpChildren(leaf), row.children);
    EXPECT_EQ(leaf->contents, row.contents) << "kept whole";
    std::int32_t nextId = 11;
    expectNewNodes(leaf, nextId);
    EXPECT_EQ(currentIndex, nextId);
  }
}

TEST(GenerateInlineFunctions, SplitsALeaf) { expectSplits(kSplits); }
TEST(GenerateInlineFunctions, LabelsTheHeadOfABlock) { expectSplits(kHeads); }
TEST(GenerateInlineFunctions, LabelsTheEndOfABlock) { expectSplits(kBlockEnds); }
TEST(GenerateInlineFunctions, LabelsStatements) { expectSplits(kStatements); }

struct NameCase {
  const char* contents;
  const char* name;
};

constexpr NameCase kNames[] = {
    {"function f(a) { }", "f"},      {"function (a) { }", "("},        {"function* g() { }", "*"},
    {"async function h() { }", "h"}, {"var f = (a) => { }", "f"},      {"x = (a) => { }", "="},
    {"f(a, function() { }", "f"},    {"export function e() { }", "e"}, {"a.b = (c) => { }", "="},
    {"x { function f() }", "f"},     {"x { g = async (a) }", "async"},
};

TEST(GenerateInlineFunctions, NamesFunctions) {
  for (const NameCase& row : kNames) {
    ObjectBranch* node = newLeaf(row.contents);
    GenerateInlineFunctions(node, true);
    while (!node->children.empty()) node = node->children[0];
    EXPECT_EQ(node->branchTypeAsString, "function") << row.contents;
    EXPECT_EQ(node->simpleFunctionName, row.name) << row.contents;
  }
}

struct LeafCase {
  std::string_view contents;
  const char* label;  // before
  const char* labelAfter;
  std::uint32_t codeAfter;
  const char* why;
};

// Before the split all have code 4.
constexpr LeafCase kLeaves[] = {
    {"", "define", "define", 4, ""},
    {"a", "define", "define", 4, ""},
    {"x = 1", "define", "classvar", 12, ""},
    {"let x", "define", "classvar", 12, ""},
    {"return x", "define", "line", 3, ""},
    {"return x = 1", "define", "line", 3, "return comes first"},
    {"x = 1", "namespace", "namespace", 4, "a namespace stays one"},
    {"return x", "namespace", "line", 3, "required: but not here"},
    {"x = 1", "class", "classvar", 12, ""},
    {"x = 1", "error: NULL parent branch", "classvar", 12, ""},
    {"x = 1;", "define", "define", 4, "nothing is left over"},
    {"a; x = 1", "define", "classvar", 12, "the text after the last cut decides"},
    {"x = 1; a", "define", "define", 4, ""},
    {"f(); g", "define", "define", 4, ""},
    {"a; return", "define", "line", 3, ""},
    {"} x = 1;", "define", "classvar", 12, "by the text x = 1 ;"},
    {"x = 1 }", "define", "define", 4, ""},
    {"a { b } x = 1", "define", "classvar", 12, "back at the leaf"},
    {"a { x = 1", "define", "define", 4, "not in a block"},
    {"{ x = 1", "define", "classvar", 12, "required: but in one without a head"},
    {"{ a; }", "define", "define", 4, ""},
    {"function f", "define", "define", 4, "no function is looked for"},
    {"f = (a) => b", "define", "define", 4, ""},
    {"class A", "define", "define", 4, ""},
    {"if (a)", "define", "define", 4, ""},
    {";", "define", "define", 4, ""},
    {"x = 1 \0{"sv, "define", "classvar", 12, "a NUL ends the text"},
};

TEST(GenerateInlineFunctions, LabelsTheLeafByTheRemainder) {
  for (const LeafCase& row : kLeaves) {
    SCOPED_TRACE(testing::PrintToString(std::string(row.contents)) + ", " + row.label + "  // " +
                 row.why);
    ObjectBranch* leaf = newLeaf(row.contents, row.label);
    GenerateInlineFunctions(leaf, true);
    EXPECT_EQ(leaf->branchTypeAsString, row.labelAfter);
    EXPECT_EQ(leaf->branchType, row.codeAfter);
    EXPECT_EQ(leaf->contents, row.contents);
    EXPECT_EQ(leaf->simpleFunctionName, "");
    EXPECT_EQ(leaf->tags, "");
  }
}

TEST(GenerateInlineFunctions, IgnoresANullNode) {
  currentIndex = 5;
  GenerateInlineFunctions(nullptr, true);
  EXPECT_EQ(currentIndex, 5);
}

TEST(GenerateInlineFunctions, SplitsLeavesOnly) {
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "a; b;");
  ObjectBranch* inner = addNode(root, kBranchContainer, "container", "c; d;");
  addNode(inner, kBranchLine, "line", "e; f;");
  addNode(root, kBranchLine, "line", "g;");
  inner->children.push_back(nullptr);
  GenerateInlineFunctions(root, true);
  inner->children.pop_back();
  EXPECT_EQ(dumpTree(root),
            R"(filepath"a; b;"@0(container"c; d;"@0(line"e; f;"@0(line"e"@0 line"f"@0)) )"
            R"(line"g;"@0(line"g"@0)))");
}

TEST(GenerateInlineFunctions, StartsOverForEachLeaf) {
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "a.txt");
  for (const char* contents : {"a { left", "b; left", "} left", "c;"})
    addNode(root, kBranchLine, "line", contents);
  GenerateInlineFunctions(root, true);
  EXPECT_EQ(dumpChildren(root),
            R"(line"a { left"@0(container"a"@0) line"b; left"@0(line"b"@0) line"} left"@0 )"
            R"(line"c;"@0(line"c"@0))");
}

TEST(GenerateInlineFunctions, DoesNotSplitNewNodes) {
  ObjectBranch* leaf = newLeaf("x { a; b; c; }");
  GenerateInlineFunctions(leaf, true);
  EXPECT_EQ(dumpChildren(leaf), R"(container"x"@7(line"a ; b ; c ;"@7))");
}

TEST(GenerateInlineFunctions, TreatsAChildlessRootAsALeaf) {
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "x = 1");
  GenerateInlineFunctions(root, true);
  EXPECT_EQ(root->branchTypeAsString, "classvar");
  EXPECT_EQ(root->branchType, kBranchClassVar);
}

TEST(GenerateInlineFunctions, IgnoresTheBool) {
  ObjectBranch* first = newLeaf("a; x { b } y = 1");
  GenerateInlineFunctions(first, true);
  ObjectBranch* second = newLeaf("a; x { b } y = 1");
  GenerateInlineFunctions(second, false);
  EXPECT_EQ(dumpTree(first), dumpTree(second));
}

TEST(GenerateInlineFunctions, CountsEachNodeOnce) {
  ObjectBranch* leaf = newLeaf("a; x { b }");
  objectCount = 100;
  GenerateInlineFunctions(leaf, true);
  EXPECT_EQ(objectCount, 103);
}

}  // namespace
