// Reference implementation of the questions about a statement: each splits its own copy of the text
// and searches again from every part.
#pragma once

#include <string>

namespace reference {

bool detectJSFunctionDeclaration(const std::string& text);
std::string functionName(const std::string& text);
bool detectJSVariableDeclaration(const std::string& text);
bool detectJSReturnDeclaration(const std::string& text);
bool detectJSClass(const std::string& text);

bool detectJSLogic(const std::string& text);
bool detectJSLoop(const std::string& text);

bool detectJSImports(const std::string& text);
bool detectIIFE(const std::string& text);
bool detectWebComponent(const std::string& text);
std::string detectModulePattern(const std::string& text);

}  // namespace reference
