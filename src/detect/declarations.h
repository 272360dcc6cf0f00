// What one statement declares. These are pattern tests on a list of parts, not a parser: each gives
// surprising answers for some ordinary statements, and all of those are required. They know no
// context, and a caller sorts a statement out by the order in which it asks.
#pragma once

#include <string>

#include "base/export.h"
#include "detect/statement.h"

// True for function heads, assigned functions and arrows, and anything with ")" before "{".
// required: so "if (x) {" is a function here.
QUORL_API bool DetectJSFunctionDeclaration(std::string text);

// The statement's function or variable name, empty if it has none. The second argument is not read.
// required: "function (a) {" is named "(" and "function* g() {" is named "*".
QUORL_API std::string functionName(std::string text, std::string second);

// True for const, let and var, and for an assignment that does not assign a function.
QUORL_API bool DetectJSVariableDeclaration(std::string text);

// True when the first part is "return".
QUORL_API bool DetectJSReturnDeclaration(std::string text);

// True when the text begins with the word "class"; a leading space already hides it.
QUORL_API bool DetectJSClass(std::string text);

namespace detect {

bool isFunction(const Statement& statement);
std::string functionNameOf(const Statement& statement);
bool isVariable(const Statement& statement);
bool isReturn(const Statement& statement);
bool isClass(const Statement& statement);

}  // namespace detect
