#include "detect/declarations.h"

#include <algorithm>
#include <cstddef>

#include "text/string_primitives.h"

namespace detect {
namespace {

using Parts = std::vector<text::Part>;

template <std::size_t kSize>
bool partIs(const Parts& parts, std::size_t index, const char (&word)[kSize]) {
  return index < parts.size() && parts[index].is(word);
}

// "function", or "async function", from the part at index on.
bool isFunctionKeywordAt(const Parts& parts, std::size_t index) {
  return partIs(parts, index, "function") ||
         (partIs(parts, index, "async") && partIs(parts, index + 1, "function"));
}

// A function among the arguments or elements of something else.
bool hasFunctionBehindComma(const Parts& parts) {
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
    if (parts[i].is(",") && isFunctionKeywordAt(parts, i + 1)) return true;
  }
  return false;
}

// The index of the last ")" that stands directly before "=>", 0 if there is none: an arrow's ")"
// is never the first part that counts.
std::size_t findLastArrowHeadEnd(const Parts& parts) {
  for (std::size_t i = parts.size(); i > 2; --i) {
    if (parts[i - 1].is("=>") && parts[i - 2].is(")")) return i - 2;
  }
  return 0;
}

// An arrow with parentheses, or "async (", behind an "=". Parentheses are not matched: any ")"
// directly before "=>" anywhere behind "= (" will do.
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
    if (parts[i + 1].is("async") && partIs(parts, i + 2, "(")) return true;
  }
  return false;
}

// A ")" with a "{" behind it and no ";" between them, whatever else stands there and whatever the
// ")" closes. required: so every control statement with parentheses and a brace is a function.
bool hasBodyBehindParentheses(const Parts& parts) {
  const auto isOpening = [](const text::Part& part) { return part.is("("); };
  const auto opening = std::find_if(parts.begin(), parts.end(), isOpening);
  if (opening == parts.end() || opening == parts.begin() || opening + 1 == parts.end())
    return false;
  // The first "(" alone tells a call on an object from a definition, by the dot two parts before.
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

bool declaresFunction(const Parts& parts) {
  return isFunctionKeywordAt(parts, 0) ||
         (partIs(parts, 0, "export") && isFunctionKeywordAt(parts, 1)) ||
         hasFunctionBehindComma(parts) || assignsFunction(parts) || hasBodyBehindParentheses(parts);
}

// Each rule needs one of these in the text. Most statements have none, and need not be split.
bool mayBeFunction(std::string_view text) {
  return text::contains(text, "=") || text::contains(text, "{") || text::contains(text, "function");
}

bool isAssignment(const text::Part& part) {
  return part.is("=") || part.is("+=") || part.is("-=") || part.is("*=") || part.is("/=");
}

// As mayBeFunction: without a "=" only a leading keyword makes a variable.
bool mayBeVariable(std::string_view text) {
  const std::string_view code = text::ltrimView(text);
  return code.starts_with("const") || code.starts_with("let") || code.starts_with("var") ||
         text::contains(code, "=");
}

bool isDeclarationKeyword(const text::Part& part) {
  return part.is("const") || part.is("let") || part.is("var");
}

bool declaresVariable(const Statement& statement) {
  const Parts& parts = statement.parts();
  if (parts.size() < 2) return false;
  if (isDeclarationKeyword(parts[0])) return true;
  const auto assignment = std::find_if(parts.begin(), parts.end(), isAssignment);
  if (assignment == parts.begin() || parts.end() - assignment < 2) return false;
  return !isFunction(statement);
}

}  // namespace

bool isFunction(const Statement& statement) {
  return statement.answer(Question::kFunction, [&statement] {
    return mayBeFunction(statement.text()) && declaresFunction(statement.parts());
  });
}

std::string functionNameOf(const Statement& statement) {
  const Parts& parts = statement.parts();
  if (parts.size() > 1) {
    if (parts[0].is("function")) return parts[1].str();
    if (parts.size() > 2 && isFunctionKeywordAt(parts, 0)) return parts[2].str();
    if (isDeclarationKeyword(parts[0])) return parts[1].str();
  }
  // From here on the raw text: the first "(" counts inside a string too.
  const std::size_t opening = statement.text().find('(');
  if (opening == std::string_view::npos || opening == 0) return {};
  std::string scratch;
  std::string_view name = text::trimAndReduceView(statement.text().substr(0, opening), scratch);
  if (name.starts_with("async ")) name.remove_prefix(6);
  name.remove_prefix(name.rfind(' ') + 1);  // npos + 1 is 0: nothing goes
  std::string lastScratch;
  return std::string(text::trimAndReduceView(name, lastScratch));
}

bool isVariable(const Statement& statement) {
  return statement.answer(Question::kVariable, [&statement] {
    return mayBeVariable(statement.text()) && declaresVariable(statement);
  });
}

bool isReturn(const Statement& statement) {
  // Worth a look before the text is split.
  return text::ltrimView(statement.text()).starts_with("return") &&
         partIs(statement.parts(), 0, "return");
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
