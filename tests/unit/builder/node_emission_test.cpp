// What happens to a finished chunk: which node it makes, where the node is attached and how the
// scan continues. The trees are read from the records, so labels are those of the record pass, and
// a node whose text gets no record is missing; its children are then listed after a bar.
#include "builder/node_emission.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "builder/tree_builder.h"
#include "support/dump_records.h"
#include "support/scanner_run.h"

namespace {

using std::string_view_literals::operator""sv;
using support::dumpRecords;
using support::dumpStatements;
using support::runScanner;
using support::ScannerRequest;
using support::ScannerRun;

struct CleanupCase {
  std::string_view text;
  std::string_view cleaned;
  const char* why;
};

constexpr CleanupCase kCleanups[] = {
    {"", "", ""},
    {" \n\t\r\f\v", "", ""},
    {"a", "a", ""},
    {" a  b\n\tc ", "a b c", "reduced"},
    {"a\fb", "a\fb", "but for form feeds inside"},
    // Parentheses.
    {"foo(1)", "foo(1", "required: a balanced call loses its end"},
    {"foo()", "foo(", ""},
    {"(a)", "(a", ""},
    {"()", "(", ""},
    {"a))", "a", ""},
    {"))a", "a", ""},
    {")a)", "a", ""},
    {"a) b", "a) b", "not inside"},
    {"a) )", "a)", "white space ends the run"},
    {") a )", "a", ""},
    {")", "", ""},
    {"))))", "", ""},
    {") )", "", "one goes at each end"},
    {") ) )", ")", "so the middle one stays"},
    {") )) )", "))", ""},
    {")),", ",", ""},
    {"});", "});", ""},
    {"})", "}", ""},
    {"\"a)\"", "\"a)\"", ""},
    // Commas.
    {", foo", "foo", ""},
    {",foo", "foo", ""},
    {" ,  foo", "foo", ""},
    {",", "", ""},
    {", ", "", ""},
    {",,foo", ",foo", "one comma only"},
    {", , foo", ", foo", ""},
    {",\t,", ",", ""},
    {"foo,", "foo,", "a leading one only"},
    {",)", "", ""},
    {", ))", "", ""},
    {"),a", ",a", "a comma behind a ) is no leading one"},
    {", )a", "a", ""},
    {",\fa", "a", "trimmed again at the end"},
    {", \fa", "a", ""},
    {",\f", "", ""},
    {";", ";", ""},
    {"a\0)"sv, "a\0"sv, "a NUL is an ordinary byte"},
    {")\0)"sv, "\0"sv, ""},
    {"\xA0)", "\xA0", ""},
};

TEST(CleanupChunk, Rows) {
  for (const CleanupCase& row : kCleanups)
    EXPECT_EQ(CleanupChunk(std::string(row.text)), row.cleaned)
        << testing::PrintToString(std::string(row.text)) << "  // " << row.why;
}

struct StatementCase {
  std::string_view text;
  std::string_view statements;  // below the class wrapper; orphans after a bar
  const char* why;
};

template <std::size_t kCount>
void expectStatements(const StatementCase (&rows)[kCount], bool isJavaScript = true) {
  for (const StatementCase& row : rows) {
    ScannerRequest request{std::string(row.text)};
    request.isJavaScript = isJavaScript;
    EXPECT_EQ(dumpStatements(runScanner(request).answer), row.statements)
        << testing::PrintToString(std::string(row.text)) << "  // " << row.why;
  }
}

constexpr StatementCase kStatements[] = {
    {"var a = 1;\nfoo(2)\n", R"(classvar"var a = 1"@1 line"foo(2"@2)", ""},
    {"foo(a,\n  b);\nbar", R"(line"b"@2)", "the first line's text is thrown away, so is the end"},
    {", foo;\n", R"(line"foo"@1)", ""},
    {",foo;\n", R"(line"foo"@1)", ""},
    {", foo\n", R"(line"foo"@1)", ""},
    {"))\n", "", ""},
    {"a b }", "", "nothing ended it"},
    // Imports are dropped at a ";" and kept at a line feed.
    {"import a from 'b';\n", "", "required: no node"},
    {"import a from 'b'\n", R"(define"import a from \'b\'"@1)", ""},
    {"  import a;\n", "", "cleaned first"},
    {"import\ta;\n", "", ""},
    {", import a;\n", "", ""},
    {") import a;\n", "", ""},
    {"import;\n", R"(define"import"@1)", "no blank after it"},
    {"import(a);\n", R"(define"import(a"@1)", ""},
    {"imports a;\n", R"(line"imports a"@1)", ""},
    {"Import a;\n", R"(line"Import a"@1)", ""},
    {"x import a;\n", R"(line"x import a"@1)", "not at the start"},
    {"const a = require('b');\n", "", ""},
    {"const a = require('b')\n", R"(classvar"const a = require(\'b\'"@1)", ""},
    {"const a = 'required';\n", "", "required: anywhere in the text"},
    {"const a = requir;\n", R"(classvar"const a = requir"@1)", ""},
    {"const a = 1;\n", R"(classvar"const a = 1"@1)", ""},
    {"let a = require('b');\n", R"(classvar"let a = require(\'b\'"@1)", "const only"},
    {"constant = require;\n", R"(classvar"constant = require"@1)", ""},
    {"const\nrequire;\n", R"(line"const"@1 define"require"@2)", ""},
    {"export default x\n", R"(define"export default x"@1)", ""},
    {"export default x;\n", R"(define"export default x"@1)", "only imports are left out"},
    {"import a\nb;import c;\nd\n", R"(define"import a"@1 line"b"@2 line"d"@3)", ""},
    // An empty statement leaves its text to the next one.
    {"));\n", "", ""},
    {"));x\n", R"(line"x"@1)", ""},
    {",;y;\n", R"(line"y"@1)", ""},
    {") ;) ;q;\n", R"(line") q"@1)", "required: what two empty statements left is inside now"},
    {"));\nx y;\n", R"(line"x y"@2)", ""},
};

TEST(NodeEmission, OfStatements) { expectStatements(kStatements); }

constexpr StatementCase kBlocks[] = {
    {"if (x) {\n  a();\n} else {\n  b();\n}\n",
     R"_(logic"if (x)"@1(line"a("@2) logic"else"@0(line"b("@4))_", "a bare block has no line"},
    {"else {\na;\n}\n", R"(logic"else"@0(line"a"@2))", ""},
    {"{\n}\n", "", "its text is empty"},
    {"{\na;\n}\n", R"(| line"a"@2)", ""},
    {"a  b\n{\nc;\n}\n", R"(line"a b"@1 | line"c"@3)", ""},
    {"x = { a: 1 };\n", R"(define"x ="@0)", "text before a } is dropped"},
    {"x => {\na;\n}\n", R"(container"x =>"@1(line"a"@2))", ""},
    {"f(a) {\nb;\n}\n", R"_(container"f(a)"@1(line"b"@2))_", ""},
    {"f( a,\tb ) {\nc;\n}\n", R"_(container"f( a, b )"@1(line"c"@2))_", "its ) stays"},
    {", f(a) {\nc;\n}\n", R"_(container", f(a)"@1(line"c"@2))_", "so does its comma"},
    {"f(a) {\nb; c }\nd;\n", R"_(container"f(a)"@1(line"b"@2) line"d"@3)_", ""},
    {"f(a) { b; } c;\n", R"_(container"f(a)"@1(line"b"@1) line"c"@1)_", ""},
    {"f(a)\n{\nb;\n}\n", R"(line"f(a"@1 | line"b"@3)", "a header on the line before is none"},
    {"f(function() {\n  a;\n  b\n}\n);\nc;\n", R"_(container"f(function()"@1 line"c"@6)_",
     "in an open call nothing is a statement"},
};

TEST(NodeEmission, OfBlocks) { expectStatements(kBlocks); }

constexpr StatementCase kClassBlocks[] = {
    {"class A {\n  m(x) {\n    y = 1;\n  }\n};\nfunction f() {\n}\n",
     R"_(define"class A"@1(define"m(x)"@2(line"y = 1"@3)) function"function f()"@6)_",
     "until an empty statement"},
    {"class {\n}\n", R"(define"class"@1)", ""},
    {"subclass(a) {\n}\n", R"_(define"subclass(a)"@1)_", "required: any text with these letters"},
    {"Class(a) {\n}\n", R"_(container"Class(a)"@1)_", ""},
    {"class A {\nb {\n}\n}\n", R"(define"class A"@1(define"b"@0))", "a bare block in it"},
    {"class A {\n}\nf(x) {\n}\n", R"_(define"class A"@1 define"f(x)"@3)_",
     "required: its } ends nothing"},
    {"class A {\n}\n;f(x) {\n}\n", R"_(define"class A"@1 container"f(x)"@3)_", ""},
    {"class A {\n}\n));f(x) {\n}\n", R"_(define"class A"@1 container"))f(x)"@3)_", ""},
    {"class A {\n}\na;f(x) {\n}\n", R"_(define"class A"@1 line"a"@3 define"f(x)"@3)_",
     "the statement is not empty"},
    {"class A {\n}\nimport a;\nf(x) {\n}\n", R"_(define"class A"@1 define"f(x)"@4)_", ""},
    {"class A {\n}\n) ) );\nf(x) {\n}\n", R"_(define"class A"@1 define"f(x)"@4)_", ""},
    {"class A {\n;\nf(x) {\n}\n}\n", R"_(define"class A"@1(container"f(x)"@3))_", ""},
    // A quote in the header.
    {"'class' {\na;\n}\n", R"(container"\'class\'"@1(line"a"@2))", "no class, but no bare block"},
    {"f('class') {\na;\n}\ng(x) {\n}\n",
     R"_(container"f(\'class\')"@1(line"a"@2) container"g(x)"@4)_", "nothing is pending"},
    {"f(\"class\") {\na;\n}\n", R"_(container"f(\"class\")"@1(line"a"@2))_", ""},
    {"f(`class`) {\na;\n}\n", R"_(container"f(`class`)"@1(line"a"@2))_", ""},
    {"class A {\n}\nf('class') {\na;\n}\n",
     R"_(define"class A"@1 define"f(\'class\')"@3(line"a"@4))_", "what was pending stays"},
};

TEST(NodeEmission, OfBlocksInAndAfterAClass) { expectStatements(kClassBlocks); }

constexpr StatementCase kOtherText[] = {
    {"class A {\nm(x) {\n}\n}\n", R"_(container"class A"@1(container"m(x)"@2))_", ""},
    {"b {\nc;\n}\n", R"(container"b"@1(line"c"@2))", "no bare blocks"},
    {"{\na;\n}\n", R"(| line"a"@2)", ""},
    {"import a;\nb;\n", R"(line"b"@2)", ""},
    {"const a = require('b');\n", "", ""},
};

TEST(NodeEmission, OfOtherText) { expectStatements(kOtherText, false); }

TEST(NodeEmission, TheWrapperShowsWhetherTheTextHasImports) {
  const ScannerRun run =
      runScanner({"import x from 'y';\nconst z = require('z');\nlet w = 2;\n", "lib/a.b.txt"});
  EXPECT_EQ(dumpRecords(run.answer),
            R"(filepath"a.b.txt"@0 class"class ModuleScope"@0(classvar"let w = 2"@3))");
}

// The number of nodes made by the scan in a run with both wrappers. The other five are the root,
// the wrappers, the defines node and the spare node of the record pass.
int scannedNodes() { return currentIndex - 5; }

TEST(NodeEmission, OfAnInvokedFunction) {
  const ScannerRun run = runScanner({"(function() { a; })();\n"});
  EXPECT_EQ(dumpRecords(run.answer),
            R"_(filepath"a.txt"@0 class"class IIFEScope"@0(container"(function()"@1))_");
  EXPECT_EQ(scannedNodes(), 2) << "the line ( of the rest has no record";
}

struct SilentCase {
  const char* chunk;  // before the end of the statement
  int atLineFeed;     // nodes made by then
  int atSemicolon;
  const char* why;
};

constexpr SilentCase kSilent[] = {
    {"", 0, 0, ""},
    {")", 0, 0, "empty"},
    {") ) )", 0, 0, "cleans to )"},
    {") )) )", 1, 1, "to ))"},
    {") ))) )", 0, 1, "to )))"},
    {") )))) )", 0, 1, "to ))))"},
    {") ))))) )", 1, 1, "to )))))"},
    {"}", 0, 0, ""},
    {"})", 0, 0, "cleans to }"},
    {"}) )", 0, 0, "to })"},
    {"}) ) )", 1, 1, "to }) )"},
    {"});", 0, 1, ""},
    {"};", 0, 1, ""},
    {"{", 0, 1, ""},
    {"{}", 1, 1, ""},
    {"}}", 1, 1, ""},
    {"} ;", 1, 1, ""},
    {";", 1, 1, ""},
    {"(", 1, 1, ""},
    {"});x", 1, 1, ""},
    {"x});", 1, 1, ""},
};

TEST(NodeEmission, SkipsStatementsWithoutContent) {
  for (const SilentCase& row : kSilent) {
    SCOPED_TRACE(std::string(row.chunk) + "  // " + row.why);
    ScannerRequest request{"\n"};
    request.chunk = row.chunk;
    runScanner(request);
    EXPECT_EQ(scannedNodes(), row.atLineFeed);
    EXPECT_EQ(chunk, "");
    request.text = ";";
    runScanner(request);
    EXPECT_EQ(scannedNodes(), row.atSemicolon);
  }
}

// Lists "LABEL CODE" of the nodes below node, in pre-order.
std::string codesBelow(const ObjectBranch* node) {
  std::string codes;
  for (const ObjectBranch* child : node->children) {
    if (!codes.empty()) codes += ", ";
    codes += child->branchTypeAsString + " " + std::to_string(child->branchType);
    const std::string below = codesBelow(child);
    if (!below.empty()) codes += ", " + below;
  }
  return codes;
}

struct CodeCase {
  const char* text;
  const char* codes;  // below the class wrapper
};

constexpr CodeCase kCodes[] = {
    {"a\nb;\n", "line 3, line 3"},
    {"import a\n", "define 4"},
    {"exports.a()\n", "define 4"},
    {"exports.a();\n", "define 3"},  // labelled by the record pass
    {"b {\na;\n}\n", "define 4, line 3"},
    {"f(b) {\na;\n}\n", "container 2, line 3"},
    {"class A {\nf(b) {\na;\n}\n}\n", "define 4, define 4, line 3"},
};

TEST(NodeEmission, SetsCodeAndLabelTogether) {
  for (const CodeCase& row : kCodes) {
    // A root named ; gets no record and keeps its child list; so does the namespace wrapper.
    const ScannerRun run = runScanner({row.text, "lib/;"});
    ASSERT_EQ(run.root->children.size(), 2u) << row.text;
    const ObjectBranch* scope = run.root->children[0];
    ASSERT_EQ(scope->children.size(), 1u) << row.text;
    EXPECT_EQ(codesBelow(scope->children[0]), row.codes) << row.text;
  }
}

TEST(NodeEmission, SetsThePathButNoTags) {
  const ScannerRun run = runScanner({"a\nb;\nc {\nd;\n}\nf(e) {\ng;\n", "dir/;"});
  const ObjectBranch* wrapper = run.root->children.at(0)->children.at(0);
  std::vector<const ObjectBranch*> open{wrapper->children.begin(), wrapper->children.end()};
  ASSERT_EQ(open.size(), 4u);
  open.insert(open.end(), {open[2]->children.at(0), open[3]->children.at(0)});
  for (const ObjectBranch* node : open) {
    EXPECT_EQ(node->filePath, "dir/;") << node->contents;
    EXPECT_EQ(node->tags, "") << node->contents;
    EXPECT_EQ(node->functionID, -1) << node->contents;
    EXPECT_EQ(node->simpleFunctionName, "") << node->contents;
  }
  EXPECT_EQ(open[0]->parent, wrapper);
  EXPECT_EQ(open[4]->parent, open[2]);
}

TEST(NodeEmission, NumbersNodesInTheOrderOfTheirCreation) {
  EXPECT_EQ(runScanner({"a;\nb {\nc;\n}\nd\n"}).printed,
            "nodeid was 0 and now is 0\n"
            "nodeid was 2 and now is 1\n"
            "nodeid was 3 and now is 2\n"
            "nodeid was 4 and now is 3\n"
            "nodeid was 5 and now is 4\n"
            "nodeid was 6 and now is 5\n");
  EXPECT_EQ(runScanner({"}}q;\n"}).printed,
            "nodeid was 0 and now is 0\n"
            "nodeid was 2 and now is 1\n"
            "nodeid was 3 and now is 2\n"
            "nodeid was 4 and now is 3\n"
            "nodeid was 5 and now is 4\n")
      << "namespace, class and then the line";
}

struct CountCase {
  const char* text;
  const char* namespaceName;
  int count;
  const char* why;
};

// The root, the wrappers, the defines and the spare node of the record pass count once.
constexpr CountCase kCounts[] = {
    {"", "", 5, "no statement"},
    {"a\nb;\n", "", 9, "each statement's node counts twice"},
    {"f(a) {\n}\nb {\n}\n", "", 9, "so do blocks"},
    {"import a;\nb }", "", 5, "dropped text does not"},
    {"}}q;\n", "", 11, "repaired scopes count twice"},
    {"}}}", "", 7, "error nodes too"},
    {"b {\n", "N", 7, "also the node that is linked to nothing"},
};

TEST(NodeEmission, CountsItsNodesTwice) {
  for (const CountCase& row : kCounts) {
    runScanner({row.text, "a.txt", row.namespaceName});
    EXPECT_EQ(objectCount, row.count) << row.text << "  // " << row.why;
  }
}

}  // namespace
