// Compares two trees node by node and field by field.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace support {

// Returns the first node that differs, as it is in both trees; empty if all nodes below the two
// agree in all fields, in their parent links and in their number.
std::string treeDifference(const ObjectBranch* one, const ObjectBranch* other);

// Destroys the tree under node, in which no node may be numbered 0.
void destroyTree(ObjectBranch* node);

}  // namespace support
