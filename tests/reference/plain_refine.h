// The passes over the finished tree in their plain reading: recursion, and no answer is kept from
// one node to the next.
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
