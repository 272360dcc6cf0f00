// Three small passes over the finished tree.
#pragma once

#include <string>
#include <vector>

#include "base/export.h"
#include "tree/object_branch.h"

// required: changes nothing.
QUORL_API void CleanUpBranchTypes(ObjectBranch* node);

// Destroys each node below node whose text is only a brace, "};" or blank, and takes its whole
// subtree out of the tree. The node itself is not looked at.
QUORL_API void RemoveBraceOnlyNodes(ObjectBranch* node);

// Appends one node with all defines, a line each, to the root's children, also for no defines.
// Without memory for it the tree stays as it is.
QUORL_API void AppendAllDefines(ObjectBranch* root, std::vector<std::string> defines);

namespace refine {

// ExpandClassnames, AppendAllDefines and RemoveBraceOnlyNodes of a root, which may not be null, in
// one walk. The node of the defines is no class, whatever it holds, and goes when it is blank.
void tidyTree(ObjectBranch* root, const std::vector<std::string>& defines);

void appendAllDefines(ObjectBranch* root, const std::vector<std::string>& defines);

}  // namespace refine
