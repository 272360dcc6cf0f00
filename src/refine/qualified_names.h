// Long names for classes, which nothing keeps, and the walk that turns every node that holds the
// letters "class" into a class node.
#pragma once

#include <string>

#include "base/export.h"
#include "tree/object_branch.h"

// The class name in "class Name ...", with "WebComponent:" before it if it extends something that
// has "Element" in its name; empty for any other text.
QUORL_API std::string extractClassName(std::string text);

// The scope in which the node lives and the class that it stands in, from the node and at most nine
// of its ancestors. "global" for a null node.
QUORL_API std::string climbForLongName(ObjectBranch* node);

// Makes a class node of the first node on each path down from node whose text holds "class".
QUORL_API void SpelunkForClasses(ObjectBranch* node);

// SpelunkForClasses for each child of the root. required: despite its name it makes no long names.
QUORL_API void ExpandClassnames(ObjectBranch* root);

namespace refine {

bool holdsClass(const ObjectBranch& node);

// Makes a class node of the node if its text holds "class"; tells whether it did.
bool markClass(ObjectBranch& node);

}  // namespace refine
