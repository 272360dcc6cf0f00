// The script route: each line of cleaned text is one statement and makes at most one node. Nesting
// follows the braces on each line alone.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"
#include "detect/answer_table.h"
#include "tree/object_branch.h"

// Adds a namespace node and a class node under root, and nodes for the file's lines under the class
// node. Does nothing if root is null.
QUORL_API void ParsePureJavaScript(const std::string& text, ObjectBranch* root,
                                   const std::string& path);

// Adds nodes for the lines of text under parent; startLine is the number of the first line. A line
// whose node cannot be allocated is skipped. Does nothing if parent is null.
QUORL_API void ParseScriptContent(const std::string& text, ObjectBranch* parent,
                                  const std::string& path, int startLine);

namespace builder {

// Both note in answers what they learned about each line.
void parseScriptFile(std::string_view text, ObjectBranch* root, const std::string& path,
                     detect::AnswerTable& answers);
void parseScriptContent(std::string_view text, ObjectBranch* parent, const std::string& path,
                        int startLine, detect::AnswerTable& answers);

}  // namespace builder
