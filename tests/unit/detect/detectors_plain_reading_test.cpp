// Compares the detectors, which run cheap checks before they split a statement, pass over its parts
// once and keep answers for the next question, with the reference implementation.
#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/module_patterns.h"
#include "reference/plain_detectors.h"
#include "support/many_texts.h"

namespace {

using std::string_view_literals::operator""sv;
using support::forEachText;
using support::forRandomTexts;

struct Question {
  const char* name;
  bool (*door)(std::string);
  bool (*kernel)(const detect::Statement&);
  bool (*plain)(const std::string&);
};

constexpr Question kQuestions[] = {
    {"function", DetectJSFunctionDeclaration, detect::isFunction,
     reference::detectJSFunctionDeclaration},
    {"variable", DetectJSVariableDeclaration, detect::isVariable,
     reference::detectJSVariableDeclaration},
    {"return", DetectJSReturnDeclaration, detect::isReturn, reference::detectJSReturnDeclaration},
    {"class", DetectJSClass, detect::isClass, reference::detectJSClass},
    {"logic", DetectJSLogic, detect::isLogic, reference::detectJSLogic},
    {"loop", DetectJSLoop, detect::isLoop, reference::detectJSLoop},
    {"import", DetectJSImports, detect::isImport, reference::detectJSImports},
    {"invoked function", DetectIIFE, detect::isInvokedFunction, reference::detectIIFE}};

// Counts how often each answer came up.
struct Tally {
  int yes[std::size(kQuestions)] = {};
  int all = 0;

  void expectBothAnswers(int least) const {
    if (support::kSlowBuild) return;
    for (std::size_t i = 0; i < std::size(kQuestions); ++i) {
      EXPECT_GT(yes[i], least) << kQuestions[i].name;
      EXPECT_LT(yes[i], all - least) << kQuestions[i].name;
    }
  }
};

void expectPlainAnswers(const std::string& text, Tally& tally) {
  ++tally.all;
  for (std::size_t i = 0; i < std::size(kQuestions); ++i) {
    const bool answer = kQuestions[i].plain(text);
    tally.yes[i] += answer ? 1 : 0;
    ASSERT_EQ(kQuestions[i].door(text), answer)
        << kQuestions[i].name << ": " << testing::PrintToString(text);
  }
  ASSERT_EQ(functionName(text, ""), reference::functionName(text)) << testing::PrintToString(text);
}

constexpr std::string_view kWords[] = {"(", ")", "{",     ";",        "=",      "=>", ",",
                                       ".", "a", "async", "function", "export", "<",  "\")\""};

TEST(DetectorsPlainReading, OfAllShortStatements) {
  Tally tally;
  const auto compare = [&tally](const std::string& text) { expectPlainAnswers(text, tally); };
  constexpr std::string_view kBodyWords[] = {"(", ")", "{", ";", "a", "."};
  forEachText(kBodyWords, 7, "", compare);
  constexpr std::string_view kArrowWords[] = {"= ", "(", ")", "=>", "async ", "a "};
  forEachText(kArrowWords, 7, "", compare);
  constexpr std::string_view kKeywords[] = {"function ", "async ", "export ", ",", "a "};
  forEachText(kKeywords, 7, "", compare);
  constexpr std::string_view kHeads[] = {"(", "function ", "async ", ")", " ", "\n", "x"};
  forEachText(kHeads, 6, "", compare);
  forEachText(kWords, 4, "", compare);
}

TEST(DetectorsPlainReading, OfAllShortTexts) {
  Tally tally;
  const auto compare = [&tally](const std::string& text) { expectPlainAnswers(text, tally); };
  forEachText("a=(){, \"", 6, compare);
  forEachText("=+(a> \n", 6, compare);
}

// clang-format off
constexpr std::string_view kPieces[] = {
    "(", ")", "{", "}", ";", "=", "=>", ",", ".", "a", " ", " ", "\"", "'", "`", "\\", "<", "\n",
    "\f", "[", "]", ":", "\0"sv, "async ", "function ", "function", "export ", "default ", "const ",
    "let ", "var ", "return ", "class ", "if ", "else", "switch", "try", "catch (e)", "finally",
    "case 1:", "while ", "for (", "do", "import ", "require(", "module.exports", "exports.",
    " = ", " += ", " -= ", " *= ", " /= ", " == ", "!", "x", "foo(", ") {", "(a) => ", "async(",
    ", function", ", async function", "\"(\"", "1", "$", "_", "#", "extends HTMLElement",
    "extends HTMLDivElement", "customElements.define", "define(", "typeof exports",
    "typeof module", "export default", "export {", "extends HTMLButtonElement", "returnx", "lets"};
// clang-format on

TEST(DetectorsPlainReading, OfRandomTexts) {
  Tally tally;
  forRandomTexts(kPieces, 14, 300'000,
                 [&tally](const std::string& text) { expectPlainAnswers(text, tally); });
  tally.expectBothAnswers(50);
}

TEST(DetectorsPlainReading, OfRandomStatements) {
  Tally tally;
  std::mt19937 random(20240301);
  for (int i = support::textCount(150'000); i > 0 && !HasFatalFailure(); --i) {
    std::string text = "a";
    for (std::size_t left = 5 + random() % 12; left > 0; --left)
      text.append(" ").append(kWords[random() % std::size(kWords)]);
    expectPlainAnswers(text, tally);
  }
  if (!support::kSlowBuild) {
    EXPECT_GT(tally.yes[0], 1000) << "the statements must show both answers";
  }
}

TEST(DetectorsPlainReading, OfModulePatterns) {
  forRandomTexts(kPieces, 14, 500'000, [](const std::string& text) {
    ASSERT_EQ(DetectModulePattern(text), reference::detectModulePattern(text))
        << testing::PrintToString(text);
    ASSERT_EQ(DetectWebComponent(text), reference::detectWebComponent(text))
        << testing::PrintToString(text);
  });
}

// One statement after another in the same storage, asked in any order and repeatedly.
TEST(DetectorsPlainReading, OfQuestionsInAnyOrder) {
  std::mt19937 random(20240302);
  detect::Statement statement;
  forRandomTexts(kPieces, 14, 200'000, [&](const std::string& text) {
    statement.reset(text);
    for (std::size_t left = random() % 12; left > 0; --left) {
      const std::size_t choice = random() % (std::size(kQuestions) + 1);
      if (choice == std::size(kQuestions)) {
        ASSERT_EQ(detect::functionNameOf(statement), reference::functionName(text))
            << testing::PrintToString(text);
        continue;
      }
      const Question& question = kQuestions[choice];
      ASSERT_EQ(question.kernel(statement), question.plain(text))
          << question.name << ": " << testing::PrintToString(text);
    }
  });
}

}  // namespace
