// Three small passes over the finished tree.
#pragma once

#include <cstddef>
#include <limits>
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

// Appends the node of AppendAllDefines and gives it, null if there is no memory for it.
ObjectBranch* appendAllDefines(ObjectBranch* root, const std::vector<std::string>& defines);

// What is to be done to each node of a finished tree, for a walk that has more to do on its way.
class TreeTidier {
 public:
  // definesNode, which may be null, is no class, whatever it holds.
  TreeTidier(const ObjectBranch* definesNode, bool removesBraceOnlyNodes)
      : definesNode_(definesNode), removesBraceOnlyNodes_(removesBraceOnlyNodes) {}

  // ExpandClassnames and, if asked for, RemoveBraceOnlyNodes, as far as they concern the node and
  // its list of children. The nodes come in pre-order, from the root at depth 0 on.
  void operator()(ObjectBranch& node, std::size_t depth);

 private:
  static constexpr std::size_t kNoClass = std::numeric_limits<std::size_t>::max();

  const ObjectBranch* definesNode_;
  bool removesBraceOnlyNodes_;
  std::size_t classDepth_ = kNoClass;  // of the class node that the walk is below
};

}  // namespace refine
