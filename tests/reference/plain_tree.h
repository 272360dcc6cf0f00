// The tree's rules in their plain reading: recursion, and lists that are searched from the front.
#pragma once

#include <set>
#include <vector>

#include "tree/object_branch.h"

namespace reference {

// A new node, numbered as every maker of nodes does it.
ObjectBranch* newNode();

void addObjectToVector(ObjectBranch* node, std::vector<ObjectBranch*>& list);

void deleteNodeTree(ObjectBranch* node, std::set<ObjectBranch*>& visited);

}  // namespace reference
