// The page route: a flat scanner from one "<" to the next ">" with a stack of open elements. It
// knows nothing of quoted ">", of the names in closing tags or of which elements may nest.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"
#include "detect/answer_table.h"
#include "tree/object_branch.h"

// Hangs elements, links and inline scripts under root, the first line of text numbered startLine.
// A closing tag without an open element gives a line on standard error. A null root does nothing.
QUORL_API void ParseHTMLStructure(const std::string& text, ObjectBranch* root,
                                  const std::string& path, int startLine);

namespace html {

// Notes in answers what was found out of each line of an inline script.
void parseStructure(std::string_view text, ObjectBranch* root, const std::string& path,
                    int startLine, detect::AnswerTable& answers);

}  // namespace html
