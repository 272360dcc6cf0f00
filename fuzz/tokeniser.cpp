// One statement: its parts, and every question that is asked of a statement.
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/module_patterns.h"
#include "detect/statement.h"
#include "harness.h"
#include "targets.h"
#include "text/parts_list.h"
#include "text/string_primitives.h"

namespace fuzz {
namespace {

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
}

void testParts(const std::string& statement) {
  std::vector<text::Part> parts;
  text::splitIntoParts(statement, parts);
  std::size_t end = 0;
  for (const text::Part& part : parts) {
    require(!part.slice.empty(), "no part is empty");
    const auto begin = static_cast<std::size_t>(part.slice.data() - statement.data());
    require(begin >= end && begin + part.slice.size() <= statement.size(),
            "parts follow each other");
    require(isBlank(std::string_view(statement).substr(end, begin - end)),
            "only white space stands between parts");
    const bool opensTwice = part.firstByte() == '\'' || part.firstByte() == '`';
    require(part.opensTwice == opensTwice, "these quotes stand twice, and no others");
    end = begin + part.slice.size();
  }
  const std::size_t limit = std::min(statement.find('\0'), statement.size());
  require(end <= limit && isBlank(std::string_view(statement).substr(end, limit - end)),
          "parts reach up to the first NUL");

  std::vector<std::string> list;
  PartsList(statement, list);
  require(list.size() == parts.size(), "the list has the parts");
  for (std::size_t i = 0; i < list.size(); ++i) {
    require(list[i] == parts[i].str(), "the list has the text of the parts");
  }
}

// A question by the function that hosts have, and by the one that shares what it learns with
// others.
struct Question {
  bool (*door)(std::string);
  bool (*kernel)(const detect::Statement&);
};
constexpr std::array<Question, 8> kQuestions{{{DetectJSFunctionDeclaration, detect::isFunction},
                                              {DetectJSVariableDeclaration, detect::isVariable},
                                              {DetectJSReturnDeclaration, detect::isReturn},
                                              {DetectJSClass, detect::isClass},
                                              {DetectJSLogic, detect::isLogic},
                                              {DetectJSLoop, detect::isLoop},
                                              {DetectJSImports, detect::isImport},
                                              {DetectIIFE, detect::isInvokedFunction}}};

// The answers may not depend on what has been asked before, of this statement or another.
void testQuestions(const std::string& statement, detect::Statement& shared) {
  std::array<bool, kQuestions.size()> answers{};
  for (std::size_t i = 0; i < answers.size(); ++i) answers[i] = kQuestions[i].door(statement);
  shared.reset(statement);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    require(kQuestions[i].kernel(shared) == answers[i], "questions in their order");
  }
  shared.reset(statement);
  for (std::size_t i = answers.size(); i > 0; --i) {
    require(kQuestions[i - 1].kernel(shared) == answers[i - 1], "questions from the last");
  }
  require(functionName(statement, "") == detect::functionNameOf(shared), "the name");
  require(DetectWebComponent(statement) == detect::isWebComponent(statement), "web component");
  require(DetectModulePattern(statement) == detect::modulePattern(statement), "module pattern");
}

// What the answers say of the text.
void testAnswers(std::string statement) {
  const std::string word = FirstWord(statement);
  const bool keepsWord = Contains(statement, word) && IndexOf(statement, word) == 0;
  require(keepsWord, "the first word begins the text");
  require(DetectJSClass(statement) == (word == "class"), "a class begins with its word");
  require(!DetectJSLogic(statement) || !DetectJSLoop(statement), "a branch is no loop");
  require(!DetectJSReturnDeclaration(statement) || ltrim(statement).starts_with("return"),
          "a return begins with its word");
  require(!DetectIIFE(statement) || ltrim(statement).starts_with("("),
          "an invoked function begins with a parenthesis");
  require(!DetectJSVariableDeclaration(statement) || !DetectJSFunctionDeclaration(statement) ||
              ltrim(statement).starts_with("const") || ltrim(statement).starts_with("let") ||
              ltrim(statement).starts_with("var"),
          "only behind a keyword a function is a variable too");

  const std::string reduced = TrimAndReduce(statement);
  require(reduced == trim(ConvertWhiteSpacesToSingleSpace(statement)), "reducing is two steps");
  std::string again = reduced;
  require(TrimAndReduce(again) == reduced, "reduced text stays as it is");
  require(!OutsideStringMatch(statement, "=="), "a needle of two bytes never matches");
}

}  // namespace

void testTokeniser(std::string_view input) {
  const std::string statement(input);
  testParts(statement);
  // What has been learnt of one statement may not answer for the next.
  detect::Statement shared("async function before(a) { return 1; }");
  for (const Question& question : kQuestions) question.kernel(shared);
  testQuestions(statement, shared);
  testAnswers(statement);
}

}  // namespace fuzz
