// The script route: one line of cleaned text is one statement and gives at most one node. Nesting
// is followed by the braces on each line alone.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"
#include "detect/answer_table.h"
#include "tree/object_branch.h"

// Hangs a namespace node and a class node under root and the file's lines under the class node. A
// null root does nothing.
QUORL_API void ParsePureJavaScript(const std::string& text, ObjectBranch* root,
                                   const std::string& path);

// Hangs the lines of text under parent, the first of them numbered startLine. A line whose node
// cannot be made (out of memory) is left out and the rest goes on. A null parent does nothing.
QUORL_API void ParseScriptContent(const std::string& text, ObjectBranch* parent,
                                  const std::string& path, int startLine);

namespace builder {

// Both note in answers what they found out of each line.
void parseScriptFile(std::string_view text, ObjectBranch* root, const std::string& path,
                     detect::AnswerTable& answers);
void parseScriptContent(std::string_view text, ObjectBranch* parent, const std::string& path,
                        int startLine, detect::AnswerTable& answers);

}  // namespace builder
