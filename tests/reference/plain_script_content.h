// Reference implementation of the script route: a stream of lines, and a copy of the line per
// question.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace reference {

void parsePureJavaScript(const std::string& text, ObjectBranch* root, const std::string& path);
void parseScriptContent(const std::string& text, ObjectBranch* parent, const std::string& path,
                        int startLine);

}  // namespace reference
