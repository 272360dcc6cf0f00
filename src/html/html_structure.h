// The page route: a flat scan from one "<" to the next ">" with a stack of open elements. It
// ignores quoted ">", the names in closing tags and which elements may nest.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"
#include "detect/answer_table.h"
#include "tree/object_branch.h"

// Adds nodes for elements, links and inline scripts under root; startLine is the number of the
// first line. Prints a line on standard error for a closing tag without an open element. Does
// nothing if root is null.
QUORL_API void ParseHTMLStructure(const std::string& text, ObjectBranch* root,
                                  const std::string& path, int startLine);

namespace html {

// Notes in answers what it learned about each line of an inline script.
void parseStructure(std::string_view text, ObjectBranch* root, const std::string& path,
                    int startLine, detect::AnswerTable& answers);

}  // namespace html
