// Which bytes are appended to the chunk and which end it, seen through the nodes: their texts and
// line numbers.
#include <cstddef>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "builder/tree_builder.h"
#include "support/dump_records.h"
#include "support/record_values.h"
#include "support/scanner_run.h"

namespace {

using std::string_view_literals::operator""sv;
using support::dumpStatements;
using support::runScanner;

struct StatementCase {
  std::string_view text;
  std::string_view statements;  // below the class wrapper; orphans after a bar
  const char* why;
};

template <std::size_t kCount>
void expectStatements(const StatementCase (&rows)[kCount], bool isJavaScript) {
  for (const StatementCase& row : rows) {
    support::ScannerRequest request{std::string(row.text)};
    request.isJavaScript = isJavaScript;
    EXPECT_EQ(dumpStatements(runScanner(request).answer), row.statements)
        << testing::PrintToString(std::string(row.text)) << "  // " << row.why;
  }
}

constexpr StatementCase kEnds[] = {
    {"", "", "an empty text"},
    {"\n", "", ""},
    {";", "", ""},
    {"a;\nb\n", R"(line"a"@1 line"b"@2)", "both end a statement"},
    {"a;b;c\n", R"(line"a"@1 line"b"@1 line"c"@1)", ""},
    {"a", "", "the end of the text ends nothing"},
    {"a;b", R"(line"a"@1)", ""},
    {"\n\n a \n", R"(line"a"@3)", ""},
    {"a b\tc\r;\n", R"(line"a b c"@1)", "a carriage return is white space"},
    {"a\r\nb\r\n", R"(line"a"@1 line"b"@2)", "and no end of a line"},
    {"a\fb;\n", "line\"a\fb\"@1", ""},
};

TEST(CharacterScanner, EndsStatements) { expectStatements(kEnds, true); }

constexpr StatementCase kStrings[] = {
    {"s = 'a;b';\n", R"(classvar"s = \'a;b\'"@1)", "; in a string is plain text"},
    {"s = \"a;b\";\n", R"(classvar"s = \"a;b\""@1)", ""},
    {"s = `a;b`;\n", R"(classvar"s = `a;b`"@1)", ""},
    {"s = '{}()[]';\nt;\n", R"(classvar"s = \'{}()[]\'"@1 line"t"@2)", "so are these"},
    {"s = \"}(\";\nt;\n", R"(classvar"s = \"}(\""@1 line"t"@2)", ""},
    {"s = `{(`;\nt;\n", R"(classvar"s = `{(`"@1 line"t"@2)", ""},
    {"'';b;\n", R"(line"\'\'"@1 line"b"@1)", "an empty string"},
    {"s = 'a", "", "never closed"},
    {"a;\ns = 'b;\nc;\n", R"(line"a"@1)", "an open string runs to the end"},
    // Quotes of the other kind.
    {"s = \"it's\"; b;\n", R"(classvar"s = \"it\'s\""@1 line"b"@1)", ""},
    {"s = 'a\"b`c'; b;\n", R"(classvar"s = \'a\"b`c\'"@1 line"b"@1)", ""},
    {"s = `a\"b'c`; b;\n", R"(classvar"s = `a\"b\'c`"@1 line"b"@1)", ""},
    // Backslashes.
    {"s = 'it\\'s';\n", R"(classvar"s = \'it\\\'s\'"@1)", "keeps the string open"},
    {"s = \"\\\"\"; b;\n", R"(classvar"s = \"\\\"\""@1 line"b"@1)", ""},
    {"s = `\\``; b;\n", R"(classvar"s = `\\``"@1 line"b"@1)", ""},
    {"s = 'a\\\\'; b;\n", R"(classvar"s = \'a\\\\\'"@1 line"b"@1)", "two cancel each other"},
    {"s = '\\\\\\'; b'; c;\n", R"(classvar"s = \'\\\\\\\'; b\'"@1 line"c"@1)", "three do not"},
    {"s = '\\a'; b;\n", R"(classvar"s = \'\\a\'"@1 line"b"@1)", "a plain byte uses it up"},
    {"s = \"\\'\"; b;\n", R"(classvar"s = \"\\\'\""@1 line"b"@1)", "so does another quote"},
    {"s = \"\\`\"; b;\n", R"(classvar"s = \"\\`\""@1 line"b"@1)", ""},
    {"s = '\\\"'; b;\n", R"(classvar"s = \'\\\"\'"@1 line"b"@1)", ""},
    {"s = `\\'`; b;\n", R"(classvar"s = `\\\'`"@1 line"b"@1)", ""},
    {"s = `\\\"`; b;\n", R"(classvar"s = `\\\"`"@1 line"b"@1)", ""},
    {"a \\'; b;\nc';\nd;\n", R"(line"a \\\'; b; c\'"@1 line"d"@2)", "outside it protects nothing"},
    // Line feeds.
    {"s = 'a\nb';\nt;\n", R"(classvar"s = \'a b\'"@1 line"t"@2)",
     "required: in a string they are not counted"},
    {"s = `a\n\nb`;\nt\n", R"(classvar"s = `a b`"@1 line"t"@2)", ""},
    {"s = 'a\\\nb'; t;\n", R"(classvar"s = \'a\\ b\'"@1 line"t"@1)", "they use up a backslash"},
};

TEST(CharacterScanner, KeepsStringsWhole) { expectStatements(kStrings, true); }

constexpr StatementCase kParentheses[] = {
    {"for (i = 0; i < 3; i++) x;\n",
     R"(loop"for (i = 0; i < 3; i++) x"@1(loop"for ( i = 0"@1 line"i < 3"@1))",
     "only the last ; ends a statement"},
    {"f(a; b);\n", R"(line"f(a; b"@1(line"f ( a"@1))", ""},
    {"f(a;b\nc)d;\n", R"(line"c)d"@2)", "a line feed throws the gathered text away"},
    {"f(\na;\n);\nb;\n", R"(line"b"@4)", ""},
    {"f((a);\nb;\n", "", "one is still open"},
    {"a)\nb;\n", R"(line"a"@1 line"b"@2)", "the count does not go below zero"},
    {"a))))\n(x\nb);c;\n", R"(line"a"@1 line"b"@3 line"c"@3)", ""},
    {"a(b {\nc;\nd\n}\ne;\n", R"(container"a(b"@1 line"e"@5)",
     "open in the block, and its } resets"},
    {"g(x) {\nf(a;\n}\nb;\n", R"_(container"g(x)"@1 line"b"@4)_", ""},
    {"g(x) {\nf((a;\n}\nb);c;\n", R"_(container"g(x)"@1 line"b"@4 line"c"@4)_",
     "to zero, not by one"},
};

TEST(CharacterScanner, CountsParentheses) { expectStatements(kParentheses, true); }

// required: the end of the text before the last blank decides.
constexpr StatementCase kContinuations[] = {
    {"c\\\nd\n", R"(line"c\\d"@2)", "the backslash stays, the line feed is counted"},
    {"a \\\nb\n", R"(line"a \\"@1 line"b"@2)", "the text before the last blank is a"},
    {"a  \\\nb;\n", R"(line"a \\"@1 line"b"@2)", ""},
    {" \\\nx\n", R"(line"\\"@1 line"x"@2)", "there is none before it"},
    {"a\\ b\nc;\n", R"(line"a\\ bc"@2)", "a backslash in the middle of the line"},
    {"a\\ b\nc\n", "", "it goes on continuing"},
    {"a\\ \nb;\n", R"(line"a\\ b"@2)", ""},
    {"\\\nx\n", R"(line"\\x"@2)", ""},
    {"a\\\\\nb;\n", R"(line"a\\\\b"@2)", "two do not cancel each other"},
    {"a\\b\nc;\n", R"(line"a\\b"@1 line"c"@2)", ""},
    {"a\t\\\nb;\n", R"(line"a \\b"@2)", "a tab is not a blank here"},
    {"a\\\n\n\nb;\n", R"(line"a\\b"@4)", "empty lines continue it too"},
    {"a\\\nb c\nd\n", R"(line"a\\b c"@2 line"d"@3)", ""},
    {"f(\\\na);\n", R"(line"f(\\a"@2)", "the text is kept in parentheses too"},
    {"s = '\\ '\nb;\n", R"(classvar"s = \'\\ \'b"@2)", "a backslash in a string counts"},
};

TEST(CharacterScanner, ContinuesLines) { expectStatements(kContinuations, true); }

constexpr StatementCase kScriptBrackets[] = {
    {"x = [1];\n", R"(classvar"x = [1]"@1)", ""},
    {"[1];\n", R"(line"[1]"@1)", ""},
    {"[a] b;\n", R"(line"[a] b"@1)", ""},
    {"] a;\n", R"(line"] a"@1)", ""},
};

constexpr StatementCase kOtherBrackets[] = {
    {"x = [1];\n", R"(classvar"x = [1]"@1)", "only at the start of a statement"},
    {"x[a]b;\n", R"(line"x[a]b"@1)", ""},
    {"\"s\"[a];\n", R"(line"\"s\"[a]"@1)", ""},
    {"[1];\nx;\n", R"(line"x"@2)", "the statement is empty"},
    {"[a] b;\n", R"(line"b"@1)", ""},
    {" [a]b;\n", R"(line"b"@1)", "white space before it does not matter"},
    {"\f[a]b;\n", R"(line"b"@1)", ""},
    {"x\n[a]b\n", R"(line"x"@1 line"b"@2)", ""},
    {"x;[a]b;\n", R"(line"x"@1 line"b"@1)", ""},
    {"f(x) {[a]b;\n", R"_(container"f(x)"@1(line"b"@1))_", ""},
    {")[a]b;\n", R"(line"[a]b"@1)", "a ) before it does"},
    {"(\n[a]);\n", R"(line"[a]"@2)", "not in parentheses"},
    {"] a;\n", R"(line"] a"@1)", "closes nothing"},
    // Inside the brackets.
    {"[a;b]c;\n", R"(line"c"@1)", "; ends statements"},
    {"[a\nb] c;\n", R"(line"c"@2)", "so do line feeds"},
    {"[ 'x;' ] y;\n", R"(line"\'x;\' y"@1)", "required: strings join the statement"},
    {"[']'a]b;\n", R"(line"\']\'b"@1)", "and a ] in them closes nothing"},
    {"[[a]b];\n", R"(line"b]"@1)", "they do not nest"},
    {"[(]a;\nb\n", "", "parentheses are counted"},
    {"[a{b}c]d;\n", R"(line"d"@1)", "braces open and close a block"},
    {"[a{b]c;}d;\n", R"(line"d"@1 | line"c"@1)", ""},
    {"[a\n", "", ""},
    {"[a\nb;\n", "", "nothing but ] ends it"},
};

TEST(CharacterScanner, KeepsBracketsOfScripts) { expectStatements(kScriptBrackets, true); }

TEST(CharacterScanner, DropsBracketsOfOtherText) { expectStatements(kOtherBrackets, false); }

constexpr StatementCase kOddBytes[] = {
    {"a\0b;\n"sv, "line\"a\0b\"@1"sv, "a NUL is an ordinary byte"},
    {"\0\n"sv, "line\"\0\"@1"sv, ""},
    {"s\0'a;b';c;\n"sv, "line\"s\0\\'a;b\\'\"@1 line\"c\"@1"sv, "and the text after it is scanned"},
    {"s = '\\\0'; b;\n"sv, "classvar\"s = \\'\\\\\0\\'\"@1 line\"b\"@1"sv, ""},
    {"\x80\xFF;\n", "line\"\x80\xFF\"@1", "so are bytes outside ASCII"},
    {"\x01\x7F\n", "line\"\x01\x7F\"@1", ""},
};

TEST(CharacterScanner, AcceptsAnyByte) { expectStatements(kOddBytes, true); }

struct ChunkCase {
  std::string_view before;
  std::string_view text;
  std::string_view after;
  const char* why;
};

constexpr ChunkCase kChunks[] = {
    {"", "", "", ""},
    {"", "a;\n", "", ""},
    {"", "let x = 1", "let x = 1", "what nothing ended stays"},
    {"", "a; b", " b", ""},
    {"", "a\n ", " ", ""},
    {"", " ;", " ", "required: an empty statement leaves it"},
    {"", "));", "))", ""},
    {"", "));\n", "", ""},
    {"", ",;", ",", ""},
    {"", "import a;", "", ""},
    {"", ") ) );", "", "it cleans to a ) and is thrown away"},
    {"", "f(a;", "f(a;", ""},
    {"", "f(a;\n", "", ""},
    {"", "a {", "", ""},
    {"", "f(a) {", "", ""},
    {"", "a b }", "", ""},
    {"", "}a", "a", ""},
    {"", "a}}}b", "", "nothing is scanned after an error"},
    {"", "c\\\n", "c\\", ""},
    {"", "a\\ b\nc\n", "a\\ bc", "continued to the end"},
    {"", "s = 'b;\nc;\n", "s = 'b;\nc;\n", "an open string"},
    {"left", "", "left", ""},
    {"left", "\n", "", ""},
    {"", "a\0b"sv, "a\0b"sv, ""},
};

TEST(CharacterScanner, LeavesTheUnfinishedStatementInTheChunk) {
  for (const ChunkCase& row : kChunks) {
    support::ScannerRequest request{std::string(row.text)};
    request.chunk = row.before;
    runScanner(request);
    EXPECT_EQ(chunk, row.after) << testing::PrintToString(std::string(row.text)) << " after "
                                << row.before << "  // " << row.why;
  }
}

TEST(CharacterScanner, ContinuesWithTheTextInTheChunk) {
  support::ScannerRequest request{"x;\n"};
  request.chunk = "var ";
  EXPECT_EQ(dumpStatements(runScanner(request).answer), R"(classvar"var x"@1)");
  request.chunk = "a\\";
  request.text = "\nb;\n";
  EXPECT_EQ(dumpStatements(runScanner(request).answer), R"(line"a\\b"@2)");
  request.chunk = "x";
  request.text = "[a];\n";
  request.isJavaScript = false;
  EXPECT_EQ(dumpStatements(runScanner(request).answer), R"(line"x[a]"@1)");
}

constexpr std::size_t kLimit = 10'485'760;

// That many bytes, then tail. The bytes are one call whose text is dropped at its line feed, so
// that tail is scanned on line 2 with a ")" in the chunk.
std::string textBehind(std::size_t bytes, std::string_view tail) {
  return "f('" + std::string(bytes - 6, 'x') + "'\n)" + std::string(tail);
}

TEST(CharacterScannerLimit, TheLastByteWithinItIsScanned) {
  const std::string text = textBehind(kLimit - 2, "y;");
  ASSERT_EQ(text.size(), kLimit);
  EXPECT_EQ(dumpStatements(runScanner({text}).answer), R"(line"y"@2)");
  EXPECT_EQ(chunk, "");
  EXPECT_EQ(dumpStatements(runScanner({text + "z;z\n"}).answer), R"(line"y"@2)");
  EXPECT_EQ(chunk, "") << "the rest is ignored";
}

TEST(CharacterScannerLimit, TheNextByteIsNot) {
  const std::string text = textBehind(kLimit - 1, "y;");
  ASSERT_EQ(text.size(), kLimit + 1);
  EXPECT_EQ(dumpStatements(runScanner({text}).answer), "");
  EXPECT_EQ(chunk, ")y") << "the statement that it would have ended is lost";
  EXPECT_EQ(dumpStatements(runScanner({text + "z;z\n"}).answer), "");
  EXPECT_EQ(chunk, ")y");
}

TEST(CharacterScannerLimit, CutsStringsToo) {
  const std::string text = textBehind(kLimit - 2, "'y';z;\n");
  EXPECT_EQ(dumpStatements(runScanner({text}).answer), "");
  EXPECT_EQ(chunk, ")'y");
  const std::string escaped = textBehind(kLimit - 2, "'\\';z;\n");
  EXPECT_EQ(dumpStatements(runScanner({escaped}).answer), "");
  EXPECT_EQ(chunk, ")'\\") << "cut between a backslash and its byte";
}

TEST(CharacterScannerLimit, DoesNotBoundTheScopeWord) {
  const std::string answer = runScanner({textBehind(kLimit, "import ")}).answer;
  EXPECT_EQ(support::valuesOf(answer, "contents").at(1), "\"class ModuleScope\"");
}

}  // namespace
