// Reference implementation of the page rules: every search starts over, and only the open elements
// and the line are remembered from one tag to the next.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace reference {

// Adds the nodes of ParseHTMLStructure under root and returns the number of closing tags without an
// open element, without printing warnings.
int parsePage(const std::string& text, ObjectBranch* root, const std::string& path, int startLine);

}  // namespace reference
