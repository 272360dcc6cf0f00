// Long names for classes, which no record carries, and the walk that marks every node whose text
// contains "class" as a class node.
#pragma once

#include <string>

#include "base/export.h"
#include "tree/object_branch.h"

// Returns the class name in "class Name ...", with "WebComponent:" before it if it extends a name
// that contains "Element"; empty for any other text.
QUORL_API std::string extractClassName(std::string text);

// Returns the scope that the node is in and its class, from the node and at most nine ancestors.
// "global" for a null node.
QUORL_API std::string climbForLongName(ObjectBranch* node);

// Marks as a class the first node on each path down from node whose text contains "class".
QUORL_API void SpelunkForClasses(ObjectBranch* node);

// Runs SpelunkForClasses on each child of the root. required: despite its name it makes no long
// names.
QUORL_API void ExpandClassnames(ObjectBranch* root);

namespace refine {

bool holdsClass(const ObjectBranch& node);

// Marks the node as a class if its text contains "class". Returns whether it did.
bool markClass(ObjectBranch& node);

}  // namespace refine
