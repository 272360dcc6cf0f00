// The page route: a flat scanner from one "<" to the next ">" with a stack of open elements. It
// knows nothing of quoted ">", of the names in closing tags or of which elements may nest.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"
#include "tree/object_branch.h"

// Hangs elements, links and inline scripts under root, the first line of text numbered startLine.
// A closing tag without an open element gives a line on standard error. A null root does nothing.
QUORL_API void ParseHTMLStructure(const std::string& text, ObjectBranch* root,
                                  const std::string& path, int startLine);

namespace html {

void parseStructure(std::string_view text, ObjectBranch* root, const std::string& path,
                    int startLine);

}  // namespace html
