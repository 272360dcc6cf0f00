// Reference implementation of the tree's rules: recursion and linear searches.
#pragma once

#include <set>
#include <vector>

#include "tree/object_branch.h"

namespace reference {

// Returns a new node, numbered like every other.
ObjectBranch* newNode();

void addObjectToVector(ObjectBranch* node, std::vector<ObjectBranch*>& list);

void deleteNodeTree(ObjectBranch* node, std::set<ObjectBranch*>& visited);

}  // namespace reference
