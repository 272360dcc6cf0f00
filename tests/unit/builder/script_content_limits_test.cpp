// The limits of the line scanner: bytes per line, braces per line, lines per text and open scopes.
// Anything over a limit is dropped silently.
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "builder/script_content.h"
#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace {

constexpr std::size_t kMaxLineBytes = 10000;
constexpr std::size_t kMaxBraces = 100;
constexpr std::size_t kMaxLines = 100000;
constexpr int kMaxScopes = 1000;  // the parent passed in is the first

std::string repeat(const std::string& piece, std::size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

ObjectBranch* parsed(const std::string& text) {
  ObjectBranch* top = support::addNode(nullptr, kBranchClass, "class", "Top");
  ParseScriptContent(text, top, "a.js", 1);
  return top;
}

std::string linesOf(const std::string& text) { return support::dumpChildren(parsed(text)); }

TEST(ScriptContentLimits, ALineOfTenThousandBytesIsRead) {
  const std::string line(kMaxLineBytes, 'x');
  EXPECT_EQ(linesOf(line + "\nb\n"), "line\"" + line + "\"@1 line\"b\"@2");
  EXPECT_EQ(linesOf("a" + std::string(kMaxLineBytes - 2, ' ') + "b\n"), "line\"a b\"@1");
}

TEST(ScriptContentLimits, ALongerLineIsDroppedButCounted) {
  const std::string line(kMaxLineBytes + 1, 'x');
  EXPECT_EQ(linesOf("a\n" + line + "\nb\n"), "line\"a\"@1 line\"b\"@3");
  EXPECT_EQ(linesOf("a\n" + line), "line\"a\"@1");
}

TEST(ScriptContentLimits, TheLengthIsThatOfTheLineBeforeTrimming) {
  const std::string blanks(kMaxLineBytes, ' ');
  EXPECT_EQ(linesOf(blanks + "a\nb\n"), "line\"b\"@2");
  const std::string line(kMaxLineBytes, 'x');
  EXPECT_EQ(linesOf(line + "\r\nb\r\n"), "line\"b\"@2") << "a carriage return is a byte of it";
}

TEST(ScriptContentLimits, ADroppedLongLineChangesNoScope) {
  const std::string closing = "}" + std::string(kMaxLineBytes, ' ');
  const std::string opening = "function g() {" + std::string(kMaxLineBytes, ' ');
  EXPECT_EQ(linesOf("function f() {\n" + closing + "\na\n" + opening + "\nb\n"),
            "function\"function f() {\"@1(line\"a\"@3 line\"b\"@5)");
}

TEST(ScriptContentLimits, AHundredOpeningBracesAreRead) {
  const std::string head = "function f() " + repeat("{", kMaxBraces);
  EXPECT_EQ(linesOf(head + "\na\n"), "function\"" + head + "\"@1(line\"a\"@2)");
  EXPECT_EQ(linesOf("function f() " + repeat("{", kMaxBraces + 1) + "\na\n"), "line\"a\"@2");
}

TEST(ScriptContentLimits, AHundredClosingBracesPop) {
  const std::string open = "function f() {\nfunction g() {\n";
  EXPECT_EQ(linesOf(open + repeat("}", kMaxBraces) + "\na\n"),
            "function\"function f() {\"@1(function\"function g() {\"@2(line\"" +
                repeat("}", kMaxBraces - 1) + "\"@3)) line\"a\"@4");
  EXPECT_EQ(linesOf(open + repeat("}", kMaxBraces + 1) + "\na\n"),
            "function\"function f() {\"@1(function\"function g() {\"@2(line\"a\"@4))");
}

TEST(ScriptContentLimits, EachKindOfBraceHasItsOwnLimit) {
  const std::string both = repeat("{}", kMaxBraces);
  EXPECT_EQ(linesOf(both + "\na\n"), "line\"" + both + "\"@1 line\"a\"@2");
  EXPECT_EQ(linesOf(both + "{\na\n"), "line\"a\"@2");
  EXPECT_EQ(linesOf(both + "}\na\n"), "line\"a\"@2");
}

TEST(ScriptContentLimits, BracesInStringsDoNotCountTowardsTheLimit) {
  const std::string line = "a('" + repeat("{", kMaxBraces + 1) + "');";
  EXPECT_EQ(linesOf(line + "\n"), "line\"" + line + "\"@1");
}

TEST(ScriptContentLimits, LinesBeyondTheHundredThousandthAreNotRead) {
  EXPECT_EQ(linesOf(repeat("\n", kMaxLines - 1) + "last\nbeyond\n"), "line\"last\"@100000");
  EXPECT_EQ(linesOf(repeat("\n", kMaxLines - 1) + "last"), "line\"last\"@100000");
  EXPECT_EQ(linesOf(repeat("\n", kMaxLines) + "beyond"), "");
}

TEST(ScriptContentLimits, EveryLineOfAFullFileIsANode) {
  const ObjectBranch* top = parsed(repeat("a();\n", kMaxLines + 1));
  ASSERT_EQ(top->children.size(), kMaxLines);
  EXPECT_EQ(top->children.back()->lineNumber, 100000);
}

TEST(ScriptContentLimits, AScopeOverTheLimitTakesNoChildren) {
  std::string text;
  for (int i = 1; i <= kMaxScopes; ++i) text += "function f" + std::to_string(i) + "() {\n";
  text += "inside\n}\noutside\n";
  const ObjectBranch* scope = parsed(text);
  for (int i = 1; i < kMaxScopes - 1; ++i) {
    ASSERT_FALSE(scope->children.empty()) << i;
    scope = scope->children[0];
    ASSERT_EQ(scope->simpleFunctionName, "f" + std::to_string(i));
  }
  // f998 contains f999, the last on the stack; f1000 is a child of it, next to the following line.
  EXPECT_EQ(support::dumpChildren(scope),
            "function\"function f999() {\"@999(function\"function f1000() {\"@1000 "
            "line\"inside\"@1001) line\"outside\"@1003");
}

TEST(ScriptContentLimits, DroppingIsSilent) {
  const std::string text = std::string(kMaxLineBytes + 1, 'x') + "\n" +
                           repeat("{", kMaxBraces + 1) + "\n" + repeat("\n", kMaxLines) + "a\n";
  std::string errors;
  const std::string output =
      support::stdoutOf([&] { errors = support::stderrOf([&] { EXPECT_EQ(linesOf(text), ""); }); });
  EXPECT_EQ(output, "");
  EXPECT_EQ(errors, "");
}

}  // namespace
