// One statement: its parts, every question asked about a statement, and the string primitives below
// them, compared with the reference implementation.
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/module_patterns.h"
#include "detect/statement.h"
#include "harness.h"
#include "reference/plain_detectors.h"
#include "reference/plain_parts_list.h"
#include "reference/plain_strings.h"
#include "targets.h"
#include "text/parts_list.h"
#include "text/string_primitives.h"

namespace fuzz {
namespace {

void testParts(const std::string& statement) {
  std::vector<std::string> list;
  PartsList(statement, list);
  require(list == reference::partsList(statement), "the parts are those of the rules");

  std::vector<text::Part> parts;
  text::splitIntoParts(statement, parts);
  require(parts.size() == list.size(), "as many slices as parts");
  for (std::size_t i = 0; i < list.size(); ++i) {
    require(parts[i].str() == list[i], "slices have the text of the parts");
  }
}

// A question as its exported function, as the function that shares its findings, and as the
// reference implementation.
struct Question {
  bool (*door)(std::string);
  bool (*kernel)(const detect::Statement&);
  bool (*plain)(const std::string&);
};
constexpr std::array<Question, 8> kQuestions{
    {{DetectJSFunctionDeclaration, detect::isFunction, reference::detectJSFunctionDeclaration},
     {DetectJSVariableDeclaration, detect::isVariable, reference::detectJSVariableDeclaration},
     {DetectJSReturnDeclaration, detect::isReturn, reference::detectJSReturnDeclaration},
     {DetectJSClass, detect::isClass, reference::detectJSClass},
     {DetectJSLogic, detect::isLogic, reference::detectJSLogic},
     {DetectJSLoop, detect::isLoop, reference::detectJSLoop},
     {DetectJSImports, detect::isImport, reference::detectJSImports},
     {DetectIIFE, detect::isInvokedFunction, reference::detectIIFE}}};

// An answer must not depend on earlier questions about this statement or another.
void testQuestions(const std::string& statement, detect::Statement& shared) {
  std::array<bool, kQuestions.size()> answers{};
  for (std::size_t i = 0; i < answers.size(); ++i) {
    answers[i] = kQuestions[i].plain(statement);
    require(kQuestions[i].door(statement) == answers[i], "questions by themselves");
  }
  shared.reset(statement);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    require(kQuestions[i].kernel(shared) == answers[i], "questions in their order");
  }
  shared.reset(statement);
  for (std::size_t i = answers.size(); i > 0; --i) {
    require(kQuestions[i - 1].kernel(shared) == answers[i - 1], "questions from the last");
  }
  const std::string name = reference::functionName(statement);
  require(functionName(statement, "") == name && detect::functionNameOf(shared) == name,
          "the name");
  require(DetectWebComponent(statement) == reference::detectWebComponent(statement),
          "web component");
  require(DetectModulePattern(statement) == reference::detectModulePattern(statement),
          "module pattern");
}

void testPrimitives(std::string statement) {
  require(ltrim(statement) == reference::ltrim(statement), "leading white space");
  require(rtrim(statement) == reference::rtrim(statement), "trailing white space");
  require(trim(statement) == reference::trim(statement), "white space at both ends");
  require(
      ConvertWhiteSpacesToSingleSpace(statement) == reference::whiteSpaceToSingleSpace(statement),
      "runs of white space");
  require(FirstWord(statement) == reference::firstWord(statement), "the first word");
  require(LastWord(statement) == reference::lastWord(statement), "what stands before the last");
  require(OutsideStringMatch(statement, "=") == reference::outsideStringMatch(statement, "="),
          "a byte outside of strings");
  std::string reduced = statement;
  require(TrimAndReduce(reduced) == reference::trimAndReduce(statement), "reduced text");
  std::string cut = statement;
  std::string plainlyCut = statement;
  require(LastWordNoDots(cut) == reference::lastWordNoDots(plainlyCut) && cut == plainlyCut,
          "the last word");
}

}  // namespace

void testTokeniser(std::string_view input) {
  const std::string statement(input);
  testParts(statement);
  // What was learned about one statement must not answer for the next.
  detect::Statement shared("async function before(a) { return 1; }");
  for (const Question& question : kQuestions) question.kernel(shared);
  testQuestions(statement, shared);
  testPrimitives(statement);
}

}  // namespace fuzz
