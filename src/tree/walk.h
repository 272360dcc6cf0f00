// The one walk over the tree. It keeps its own stack, so that the depth of a tree costs heap and
// never the caller's stack.
#pragma once

#include <cstddef>
#include <vector>

#include "tree/object_branch.h"

namespace tree {

enum class Descend { kYes, kNo };

// Calls visit(node) for node and then for everything below it, in pre-order; null nodes are passed
// over. visit answers whether to go on into the node's children. Child counts are read again at
// each step, so visit may change the child list of the node that it is given.
template <typename Visit>
void walkPreOrder(ObjectBranch* node, Visit visit) {
  if (node == nullptr || visit(node) == Descend::kNo) return;
  struct Frame {
    ObjectBranch* node;
    std::size_t next;  // index of the child to visit next
  };
  std::vector<Frame> open{{node, 0}};
  while (!open.empty()) {
    Frame& frame = open.back();
    if (frame.next >= frame.node->children.size()) {
      open.pop_back();
      continue;
    }
    ObjectBranch* child = frame.node->children[frame.next++];
    if (child == nullptr || visit(child) == Descend::kNo) continue;
    if (!child->children.empty()) open.push_back({child, 0});
  }
}

}  // namespace tree
