// Detects what one statement declares. These are pattern tests on a list of parts, not a parser:
// each returns surprising answers for some ordinary statements, and all of those are required. They
// know no context; a caller classifies a statement by the order in which it asks.
#pragma once

#include <string>

#include "base/export.h"
#include "detect/statement.h"

// Returns true for function heads, assigned functions and arrows, and anything with ")" before "{".
// required: so "if (x) {" is a function here.
QUORL_API bool DetectJSFunctionDeclaration(std::string text);

// Returns the statement's function or variable name, empty if it has none. second is ignored.
// required: "function (a) {" is named "(" and "function* g() {" is named "*".
QUORL_API std::string functionName(std::string text, std::string second);

// Returns true for const, let and var, and for an assignment whose value is not a function.
QUORL_API bool DetectJSVariableDeclaration(std::string text);

// Returns true if the first part is "return".
QUORL_API bool DetectJSReturnDeclaration(std::string text);

// Returns true if the text begins with the word "class"; a leading space already hides it.
QUORL_API bool DetectJSClass(std::string text);

namespace detect {

bool isFunction(const Statement& statement);
std::string functionNameOf(const Statement& statement);
bool isVariable(const Statement& statement);
bool isReturn(const Statement& statement);
bool isClass(const Statement& statement);

}  // namespace detect
