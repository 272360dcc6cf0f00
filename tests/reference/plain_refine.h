// Reference implementation of the passes over the finished tree: recursive, and no answer is
// cached.
#pragma once

#include <string>
#include <vector>

#include "tree/object_branch.h"

namespace reference {

std::string extractClassName(const std::string& text);
std::string climbForLongName(const ObjectBranch* node);
void expandClassnames(ObjectBranch* root);

void removeBraceOnlyNodes(ObjectBranch* node);
void appendAllDefines(ObjectBranch* root, const std::vector<std::string>& defines);

}  // namespace reference
