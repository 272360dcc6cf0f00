// The page rules in their plain reading: every search starts over, and nothing is remembered from
// one tag to the next but the open elements and the line.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace reference {

// Hangs under root what ParseHTMLStructure hangs there, and gives the number of closing tags that
// close nothing, of which nothing is written.
int parsePage(const std::string& text, ObjectBranch* root, const std::string& path, int startLine);

}  // namespace reference
