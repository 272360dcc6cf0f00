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

// Deletes each node below node whose text is only a brace, "};" or blank, and takes its whole
// subtree out of the tree. The node itself is not checked.
QUORL_API void RemoveBraceOnlyNodes(ObjectBranch* node);

// Appends one node with all defines, one per line, to the root's children, even if there are none.
// If memory runs out the tree stays unchanged.
QUORL_API void AppendAllDefines(ObjectBranch* root, std::vector<std::string> defines);

namespace refine {

// Appends the node of AppendAllDefines and returns it, or null if memory runs out.
ObjectBranch* appendAllDefines(ObjectBranch* root, const std::vector<std::string>& defines);

// Tidies each node of a finished tree, as part of a walk that does other work too.
class TreeTidier {
 public:
  // definesNode, which may be null, is never marked as a class.
  TreeTidier(const ObjectBranch* definesNode, bool removesBraceOnlyNodes)
      : definesNode_(definesNode), removesBraceOnlyNodes_(removesBraceOnlyNodes) {}

  // Applies ExpandClassnames and, if enabled, RemoveBraceOnlyNodes to the node and its child list.
  // The nodes come in pre-order; the root has depth 0.
  void operator()(ObjectBranch& node, std::size_t depth);

 private:
  static constexpr std::size_t kNoClass = std::numeric_limits<std::size_t>::max();

  const ObjectBranch* definesNode_;
  bool removesBraceOnlyNodes_;
  std::size_t classDepth_ = kNoClass;  // depth of the enclosing class node
};

}  // namespace refine
