// Compares the script route, which works on slices of the text and shares one statement's parts
// among its questions, with the reference implementation.
#include "builder/script_content.h"

#include <iterator>
#include <random>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "reference/plain_script_content.h"
#include "support/make_tree.h"
#include "support/many_texts.h"
#include "support/same_tree.h"
#include "tree/object_branch.h"

namespace {

using std::string_view_literals::operator""sv;

// Parses each text both ways, under nodes numbered from 1 so that they can be destroyed.
class Comparison {
 public:
  void operator()(const std::string& text) {
    ObjectBranch* real = newTop();
    ParseScriptContent(text, real, "a.js", 3);
    expectSame(real, text,
               [&](ObjectBranch* top) { reference::parseScriptContent(text, top, "a.js", 3); });
  }

  void file(const std::string& text, const std::string& path) {
    ObjectBranch* real = newTop();
    ParsePureJavaScript(text, real, path);
    expectSame(real, text + " in " + path,
               [&](ObjectBranch* top) { reference::parsePureJavaScript(text, top, path); });
  }

  const std::set<std::string>& labels() const { return labels_; }

 private:
  static ObjectBranch* newTop() {
    currentIndex = 1;
    objectCount = 0;
    return support::addNode(nullptr, kBranchClass, "top", "Top", "a.js");
  }

  template <typename Plain>
  void expectSame(ObjectBranch* real, const std::string& text, Plain plainly) {
    const int nextId = currentIndex;
    const int count = objectCount;
    ObjectBranch* plain = newTop();
    plainly(plain);
    ASSERT_EQ(support::treeDifference(real, plain), "") << testing::PrintToString(text);
    ASSERT_EQ(nextId, currentIndex) << testing::PrintToString(text);
    ASSERT_EQ(count, objectCount) << testing::PrintToString(text);
    noteLabels(real);
    support::destroyTree(real);
    support::destroyTree(plain);
  }

  void noteLabels(const ObjectBranch* node) {
    labels_.insert(node->branchTypeAsString);
    for (const ObjectBranch* child : node->children) noteLabels(child);
  }

  std::set<std::string> labels_;
};

constexpr std::string_view kLines[] = {"if (x) {\n", "}\n",  "{\n",  "};\n",
                                       "else {",     "a;\n", "} }\n"};

TEST(ScriptContentPlainReading, OfAllShortTexts) {
  Comparison comparison;
  const auto compare = [&comparison](const std::string& text) { comparison(text); };
  support::forEachText("{}'\\\n a", 7, compare);
  support::forEachText("{}\"`=;", 6, compare);
  support::forEachText(kLines, 6, "", compare);
}

TEST(ScriptContentPlainReading, OfShortTextsInLongRuns) {
  Comparison comparison;
  const auto compare = [&comparison](const std::string& text) { comparison(text); };
  support::forEachTextInARun("{}'\\\n", 3, 'a', compare);
  support::forEachTextInARun("{}\" \n=", 3, ' ', compare);
}

// clang-format off
constexpr std::string_view kPieces[] = {
    "a", " ", "\n", "\n", "\n", "{", "}", "{\n", "}\n", "};\n", "});\n", "'", "\"", "`", "\\",
    "\\{", "\t", "\r", "\f", "\v", "\0"sv, "\xE9", ";", "(", ")", "=", "=>", ",", "}}\n", "} }\n",
    "function f(a) {\n", "function g() { return 1; }\n", "class A {\n", "if (x) {\n", "if (x)\n",
    "} else {\n", "} else if (y) {\n", "else {\n", "try {\n", "} catch (e) {\n", "while (x) {\n",
    "do {\n", "} while (x);\n", "case 1:\n", "const f = a => {\n", "const f = () => {\n",
    "x = y => {\n", "var o = {\n", "let s = \"{\";\n", "return x;\n", "return { a: 1 }; }\n",
    "foo(); }\n", "a = 1; }\n", "import a from 'b';\n", "export default {\n", "m() {\n",
    "async foo() {\n", "get x() {\n", "items.forEach(function(i) {\n", "  indented();\n", "/'/; {\n",
    "{{{", "}}}", "exports.a = 1;\n"};
// clang-format on

TEST(ScriptContentPlainReading, OfRandomTexts) {
  Comparison comparison;
  support::forRandomTexts(kPieces, 40, 100'000,
                          [&comparison](const std::string& text) { comparison(text); });
  EXPECT_EQ(comparison.labels(), (std::set<std::string>{"class", "classvar", "function", "line",
                                                        "logic", "loop", "top"}))
      << "the texts must show all kinds of nodes";
}

constexpr const char* kPaths[] = {"a.js", "dir.d/my-app.min.js", "_util.ts", "---.js",
                                  ".js",  "\xE9z.es6",           "2d.mjs",   "noext"};
constexpr std::string_view kSigns[] = {
    "export ", "import ", "module.exports", "require(", "exports",
    "a;\n",    "\n",      "'import ';\n",   "x",        "modul"};

TEST(ScriptContentPlainReading, OfRandomFiles) {
  Comparison comparison;
  std::mt19937 random(20240304);
  support::forRandomTexts(kSigns, 8, 100'000, [&](const std::string& text) {
    comparison.file(text, kPaths[random() % std::size(kPaths)]);
  });
}

// Lines and scopes close to the limits for bytes, braces and open scopes.
TEST(ScriptContentPlainReading, AroundTheLimits) {
  const std::string spaces(4'999, ' ');
  const std::string letters(5'000, 'z');
  const std::string opening(50, '{');
  const std::string closing(50, '}');
  std::string scopes;
  for (int i = 0; i < 499; ++i) scopes += "if (x) {\n";
  std::string ends;
  for (int i = 0; i < 499; ++i) ends += "}\n";
  const std::string_view pieces[] = {spaces, letters, opening, closing, scopes, ends,
                                     "\n",   "a",     "{",     "}",     "\"",   "if (x) {\n"};
  Comparison comparison;
  support::forRandomTexts(pieces, 12, 1'500,
                          [&comparison](const std::string& text) { comparison(text); });
}

TEST(ScriptContentPlainReading, AroundTheLimitOfLines) {
  std::string text(99'997, '\n');
  Comparison comparison;
  for (int i = 0; i < 6; ++i) comparison(text += "a\n");
}

}  // namespace
