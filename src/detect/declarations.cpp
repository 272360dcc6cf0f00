#include "detect/declarations.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "text/byte_set.h"
#include "text/string_primitives.h"

namespace detect {
namespace {

using Parts = std::vector<text::Part>;

// Whether the part at index begins "function" or "async function".
bool isFunctionKeywordAt(const Statement& statement, std::size_t index) {
  return statement.partIs(index, "function") ||
         (statement.partIs(index, "async") && statement.partIs(index + 1, "function"));
}

// Whether a function is among the arguments or elements of something else.
bool hasFunctionBehindComma(const Statement& statement) {
  const Parts& parts = statement.parts();
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
    if (parts[i].is(",") && isFunctionKeywordAt(statement, i + 1)) return true;
  }
  return false;
}

// Index of the last ")" directly before "=>", 0 if there is none: an arrow's ")" is never the first
// part.
std::size_t findLastArrowHeadEnd(const Parts& parts) {
  for (std::size_t i = parts.size(); i > 2; --i) {
    if (parts[i - 1].is("=>") && parts[i - 2].is(")")) return i - 2;
  }
  return 0;
}

// Whether an arrow with parentheses, or "async (", follows an "=". Parentheses are not matched: any
// ")" directly before "=>" after "= (" counts.
bool assignsFunction(const Parts& parts) {
  std::size_t arrowHeadEnd = 0;
  bool arrowSought = false;
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
    if (!parts[i].is("=")) continue;
    if (i > 0 && (parts[i - 1].is("=") || parts[i - 1].is("!") || parts[i - 1].is(">") ||
                  parts[i - 1].is("<"))) {
      continue;
    }
    if (parts[i + 1].is("(")) {
      if (!arrowSought) arrowHeadEnd = findLastArrowHeadEnd(parts);
      arrowSought = true;
      if (arrowHeadEnd >= i + 2) return true;
    }
    if (parts[i + 1].is("async") && i + 2 < parts.size() && parts[i + 2].is("(")) return true;
  }
  return false;
}

// Whether a "{" follows a ")" with no ";" between them, whatever else is between and whatever the
// ")" closes. required: so every control statement with parentheses and a brace is a function.
bool hasBodyBehindParentheses(const Parts& parts) {
  const auto isOpening = [](const text::Part& part) { return part.is("("); };
  const auto opening = std::find_if(parts.begin(), parts.end(), isOpening);
  if (opening == parts.end() || opening == parts.begin() || opening + 1 == parts.end())
    return false;
  // Only the first "(" is checked for a call on an object: a dot two parts before it.
  if (opening - parts.begin() >= 2 && (opening - 2)->is(".")) return false;
  bool closed = false;
  for (auto part = opening + 1; part != parts.end(); ++part) {
    if (part->is(")")) {
      closed = true;
    } else if (closed && part->is("{")) {
      return true;
    } else if (closed && part->is(";")) {
      return false;
    }
  }
  return false;
}

// Cheap checks on the text before the rules that need its parts: most statements fail them and are
// never split.

bool startsFunction(const Statement& statement) {
  if (!text::contains(statement.text(), "function")) return false;
  return isFunctionKeywordAt(statement, 0) ||
         (statement.partIs(0, "export") && isFunctionKeywordAt(statement, 1)) ||
         hasFunctionBehindComma(statement);
}

// Whether a "(" or a word that begins with "a" follows a "=", ignoring white space.
bool mayAssignFunction(std::string_view text) {
  for (std::size_t sign = text.find('='); sign != std::string_view::npos;
       sign = text.find('=', sign + 1)) {
    const std::size_t next = text::findNonMember(text, text::kTrimmed, sign + 1);
    if (next < text.size() && (text[next] == '(' || text[next] == 'a')) return true;
  }
  return false;
}

bool mayHaveBodyBehindParentheses(std::string_view text) {
  const std::size_t close = text.find(')');
  return close != std::string_view::npos && text.find('{', close) != std::string_view::npos;
}

bool declaresFunction(const Statement& statement) {
  const std::string_view text = statement.text();
  return startsFunction(statement) ||
         (mayAssignFunction(text) && assignsFunction(statement.parts())) ||
         (mayHaveBodyBehindParentheses(text) && hasBodyBehindParentheses(statement.parts()));
}

bool isAssignment(const text::Part& part) {
  return part.is("=") || part.is("+=") || part.is("-=") || part.is("*=") || part.is("/=");
}

bool isDeclarationKeyword(const text::Part& part) {
  return part.is("const") || part.is("let") || part.is("var");
}

// Index of the first assignment operator, if any.
std::optional<std::size_t> findAssignment(const Statement& statement) {
  for (std::size_t i = 0; const text::Part* part = statement.part(i); ++i) {
    if (isAssignment(*part)) return i;
  }
  return std::nullopt;
}

// A cheap check, as above: without a "=" only a leading keyword declares a variable.
bool mayDeclareVariable(std::string_view text) {
  const std::string_view code = text::ltrimView(text);
  return code.starts_with("const") || code.starts_with("let") || code.starts_with("var") ||
         text::contains(code, "=");
}

bool declaresVariable(const Statement& statement) {
  if (!mayDeclareVariable(statement.text())) return false;
  const text::Part* const first = statement.part(0);
  if (first == nullptr) return false;
  if (isDeclarationKeyword(*first)) return statement.part(1) != nullptr;
  // An assignment needs something on both sides.
  const std::optional<std::size_t> assignment = findAssignment(statement);
  return assignment && *assignment > 0 && statement.part(*assignment + 1) != nullptr &&
         !isFunction(statement);
}

}  // namespace

bool isFunction(const Statement& statement) {
  return statement.answer(Question::kFunction,
                          [&statement] { return declaresFunction(statement); });
}

std::string functionNameOf(const Statement& statement) {
  if (const text::Part* const second = statement.part(1)) {
    const std::string name = second->str();
    if (statement.partIs(0, "function") || isDeclarationKeyword(*statement.part(0))) return name;
    if (isFunctionKeywordAt(statement, 0) && statement.part(2) != nullptr)
      return statement.part(2)->str();
  }
  // From here on the raw text is searched: a "(" inside a string counts too.
  const std::size_t opening = statement.text().find('(');
  if (opening == std::string_view::npos || opening == 0) return {};
  std::string scratch;
  std::string_view name = text::trimAndReduceView(statement.text().substr(0, opening), scratch);
  if (name.starts_with("async ")) name.remove_prefix(6);
  name.remove_prefix(name.rfind(' ') + 1);  // npos + 1 is 0: nothing is removed
  std::string lastScratch;
  return std::string(text::trimAndReduceView(name, lastScratch));
}

bool isVariable(const Statement& statement) {
  return statement.answer(Question::kVariable,
                          [&statement] { return declaresVariable(statement); });
}

bool isReturn(const Statement& statement) {
  return text::ltrimView(statement.text()).starts_with("return") && statement.partIs(0, "return");
}

bool isClass(const Statement& statement) { return statement.firstWord() == "class"; }

}  // namespace detect

bool DetectJSFunctionDeclaration(std::string text) {
  return detect::isFunction(detect::Statement(text));
}

std::string functionName(std::string text, std::string second) {
  static_cast<void>(second);
  return detect::functionNameOf(detect::Statement(text));
}

bool DetectJSVariableDeclaration(std::string text) {
  return detect::isVariable(detect::Statement(text));
}

bool DetectJSReturnDeclaration(std::string text) {
  return detect::isReturn(detect::Statement(text));
}

bool DetectJSClass(std::string text) { return detect::isClass(detect::Statement(text)); }
