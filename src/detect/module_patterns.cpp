#include "detect/module_patterns.h"

#include <algorithm>
#include <array>

#include "text/string_primitives.h"

namespace detect {
namespace {

using text::contains;

constexpr std::array<text::Needle, 4> kWebComponentSigns{
    "extends HTMLElement", "extends HTMLDivElement", "extends HTMLButtonElement",
    "customElements.define"};

// An exported function is not an import; any other export is.
bool exportsNoFunction(const Statement& statement) {
  return !statement.partIs(1, "function") &&
         !(statement.partIs(1, "async") && statement.partIs(2, "function"));
}

}  // namespace

bool isImport(const Statement& statement) {
  const std::string_view word = statement.firstWord();
  if (word == "import" || word == "require") return true;
  if (word == "export") return exportsNoFunction(statement);
  // "module.exports" is checked separately: it needs no dot after it.
  return contains(statement.text(), "exports") &&
         (contains(statement.text(), "module.exports") || contains(statement.text(), "exports."));
}

bool isInvokedFunction(const Statement& statement) {
  // A cheap check before the text is split.
  if (!text::ltrimView(statement.text()).starts_with('(')) return false;
  if (!statement.partIs(0, "(") || statement.part(2) == nullptr) return false;
  return statement.partIs(1, "function") || statement.partIs(1, "async") ||
         (statement.partIs(1, "(") && statement.partIs(2, ")"));
}

bool isWebComponent(std::string_view text) {
  return std::any_of(kWebComponentSigns.begin(), kWebComponentSigns.end(),
                     [text](const text::Needle& sign) { return contains(text, sign); });
}

std::string_view modulePattern(std::string_view text) {
  // The order matters for real files: a universal wrapper that mentions module.exports is
  // "commonjs".
  if (contains(text, "export default") || contains(text, "export {")) return "module";
  if (contains(text, "module.exports") || contains(text, "exports.")) return "commonjs";
  if (contains(text, "define(") && contains(text, "function")) return "amd";
  if (contains(text, "typeof exports") && contains(text, "typeof module")) return "umd";
  return {};
}

}  // namespace detect

bool DetectJSImports(std::string text) { return detect::isImport(detect::Statement(text)); }

bool DetectIIFE(std::string text) { return detect::isInvokedFunction(detect::Statement(text)); }

bool DetectWebComponent(std::string text) { return detect::isWebComponent(text); }

std::string DetectModulePattern(std::string text) {
  return std::string(detect::modulePattern(text));
}
