// Detects the module system of a piece of text by plain substring tests: they also match inside
// longer words and inside strings.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"
#include "detect/statement.h"

// Returns true for import, require at the start, an export that is not a function, and any mention
// of "module.exports" or "exports.".
QUORL_API bool DetectJSImports(std::string text);

// Returns true for the head of an immediately invoked function: "(function", "(async" or "(()".
QUORL_API bool DetectIIFE(std::string text);

// Returns true if the text names one of three element base classes or registers a custom element.
QUORL_API bool DetectWebComponent(std::string text);

// Returns "module", "commonjs", "amd", "umd" or the empty string.
QUORL_API std::string DetectModulePattern(std::string text);

namespace detect {

bool isImport(const Statement& statement);
bool isInvokedFunction(const Statement& statement);
bool isWebComponent(std::string_view text);
std::string_view modulePattern(std::string_view text);

}  // namespace detect
