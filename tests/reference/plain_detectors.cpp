#include "reference/plain_detectors.h"

#include <cstddef>
#include <vector>

#include "reference/plain_parts_list.h"
#include "reference/plain_strings.h"

namespace reference {
namespace {

using Parts = std::vector<std::string>;

bool commaRule(const Parts& parts) {
  for (std::size_t i = 0; i + 2 <= parts.size(); ++i) {
    if (parts[i] != ",") continue;
    if (parts[i + 1] == "function") return true;
    if (i + 2 < parts.size() && parts[i + 1] == "async" && parts[i + 2] == "function") return true;
  }
  return false;
}

bool assignmentRule(const Parts& parts) {
  for (std::size_t i = 0; i + 2 <= parts.size(); ++i) {
    if (parts[i] != "=") continue;
    if (i > 0 &&
        (parts[i - 1] == "=" || parts[i - 1] == "!" || parts[i - 1] == ">" || parts[i - 1] == "<"))
      continue;
    if (parts[i + 1] == "(") {
      for (std::size_t j = i + 2; j + 2 <= parts.size(); ++j)
        if (parts[j] == ")" && parts[j + 1] == "=>") return true;
    }
    if (parts[i + 1] == "async" && i + 2 < parts.size() && parts[i + 2] == "(") return true;
  }
  return false;
}

bool bodyRule(const Parts& parts) {
  std::size_t p = 0;
  while (p < parts.size() && parts[p] != "(") ++p;
  if (p == parts.size() || p < 1) return false;
  if (p >= parts.size() - 1) return false;
  if (p >= 2 && parts[p - 2] == ".") return false;
  for (std::size_t j = p + 1; j < parts.size(); ++j) {
    if (parts[j] != ")") continue;
    for (std::size_t k = j + 1; k < parts.size(); ++k) {
      if (parts[k] == "{") return true;
      if (parts[k] == ";") return false;
    }
  }
  return false;
}

}  // namespace

bool detectJSFunctionDeclaration(const std::string& text) {
  const Parts parts = partsList(text);
  if (parts.empty()) return false;
  if (parts[0] == "function") return true;
  if (parts.size() > 1 && parts[0] == "async" && parts[1] == "function") return true;
  if (parts.size() > 1 && parts[0] == "export" && parts[1] == "function") return true;
  if (parts.size() > 2 && parts[0] == "export" && parts[1] == "async" && parts[2] == "function")
    return true;
  return commaRule(parts) || assignmentRule(parts) || bodyRule(parts);
}

std::string functionName(const std::string& text) {
  const Parts parts = partsList(text);
  if (parts.size() > 1 && parts[0] == "function") return parts[1];
  if (parts.size() > 2 && parts[0] == "async" && parts[1] == "function") return parts[2];
  if (parts.size() > 1 && (parts[0] == "const" || parts[0] == "let" || parts[0] == "var"))
    return parts[1];
  const std::size_t opening = text.find('(');
  if (opening == std::string::npos || opening == 0) return "";
  std::string name = trimAndReduce(text.substr(0, opening));
  if (beginsWith(name, "async ")) name = name.substr(6);
  if (contains(name, " ")) name = name.substr(name.rfind(' ') + 1);
  return trimAndReduce(name);
}

bool detectJSVariableDeclaration(const std::string& text) {
  const Parts parts = partsList(text);
  if (parts.size() < 2) return false;
  if (parts[0] == "const") return true;
  if (parts[0] == "let") return true;
  if (parts[0] == "var") return true;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (parts[i] != "=" && parts[i] != "+=" && parts[i] != "-=" && parts[i] != "*=" &&
        parts[i] != "/=")
      continue;
    return i > 0 && i < parts.size() - 1 && !detectJSFunctionDeclaration(text);
  }
  return false;
}

bool detectJSReturnDeclaration(const std::string& text) {
  const Parts parts = partsList(text);
  return !parts.empty() && parts[0] == "return";
}

bool detectJSClass(const std::string& text) { return firstWord(text) == "class"; }

bool detectJSLogic(const std::string& text) {
  if (firstWord(text) == "if") return true;
  if (firstWord(text) == "else") return true;
  if (firstWord(text) == "switch") return true;
  if (firstWord(text) == "try") return true;
  if (firstWord(text) == "catch") return true;
  if (firstWord(text) == "finally") return true;
  if (firstWord(text) == "case") return true;
  if (firstWord(text) == "default") return true;
  if (outsideStringMatch(text, "==")) return true;
  if (outsideStringMatch(text, "===")) return true;
  if (outsideStringMatch(text, "!=")) return true;
  return outsideStringMatch(text, "!==");
}

bool detectJSLoop(const std::string& text) {
  if (firstWord(text) == "while") return true;
  if (firstWord(text) == "for") return true;
  return firstWord(text) == "do";
}

bool detectJSImports(const std::string& text) {
  if (firstWord(text) == "import") return true;
  if (firstWord(text) == "require") return true;
  if (firstWord(text) == "export") {
    const Parts parts = partsList(text);
    if (parts.size() >= 2 && parts[1] == "function") return false;
    if (parts.size() < 3) return true;
    if (parts[1] != "async") return true;
    return parts[2] != "function";
  }
  return contains(text, "module.exports") || contains(text, "exports.");
}

bool detectIIFE(const std::string& text) {
  const Parts parts = partsList(text);
  if (parts.size() < 3) return false;
  if (parts[0] == "(" && parts[1] == "function") return true;
  if (parts[0] == "(" && parts[1] == "async") return true;
  return parts[0] == "(" && parts[1] == "(" && parts[2] == ")";
}

bool detectWebComponent(const std::string& text) {
  return contains(text, "extends HTMLElement") || contains(text, "extends HTMLDivElement") ||
         contains(text, "extends HTMLButtonElement") || contains(text, "customElements.define");
}

std::string detectModulePattern(const std::string& text) {
  if (contains(text, "export default") || contains(text, "export {")) return "module";
  if (contains(text, "module.exports")) return "commonjs";
  if (contains(text, "exports.")) return "commonjs";
  if (contains(text, "define(") && contains(text, "function")) return "amd";
  if (!contains(text, "typeof exports")) return "";
  if (!contains(text, "typeof module")) return "";
  return "umd";
}

}  // namespace reference
