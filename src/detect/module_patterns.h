// Signs of a module system in one piece of text. All substring tests are plain: they see words
// inside longer words and inside strings.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"
#include "detect/statement.h"

// True for import, require at the start, an export that is no function, and any mention of
// "module.exports" or "exports.".
QUORL_API bool DetectJSImports(std::string text);

// True for the head of an immediately invoked function: "(function", "(async" or "(()".
QUORL_API bool DetectIIFE(std::string text);

// True when the text names one of three element base classes or registers a custom element.
QUORL_API bool DetectWebComponent(std::string text);

// "module", "commonjs", "amd", "umd" or the empty string.
QUORL_API std::string DetectModulePattern(std::string text);

namespace detect {

bool isImport(const Statement& statement);
bool isInvokedFunction(const Statement& statement);
bool isWebComponent(std::string_view text);
std::string_view modulePattern(std::string_view text);

}  // namespace detect
