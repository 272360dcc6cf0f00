// The one walk over the tree. It keeps its own stack, so that the depth of a tree costs heap and
// never the caller's stack.
#pragma once

#include <cstddef>
#include <vector>

#include "tree/object_branch.h"

namespace tree {

enum class Descend { kYes, kNo };

// Starts to fetch what a visit will read first, if there is a node. A tree is far larger than the
// caches.
inline void prefetch(const ObjectBranch* node) {
  if (node == nullptr) return;
  const char* const bytes = reinterpret_cast<const char*>(node);
  __builtin_prefetch(bytes);
  __builtin_prefetch(bytes + 64);
  __builtin_prefetch(bytes + 128);
}

// Calls visit(node, depth) for node, at depth 0, and then for everything below it, in pre-order;
// null nodes are passed over. visit answers whether to go on into the node's children. Child counts
// are read again at each step, so visit may change the child list of the node that it is given.
template <typename Visit>
void walkWithDepth(ObjectBranch* node, Visit visit) {
  if (node == nullptr || visit(node, std::size_t{0}) == Descend::kNo) return;
  struct Frame {
    ObjectBranch* node;
    std::size_t next;  // index of the child to visit next
  };
  std::vector<Frame> open{{node, 0}};
  while (!open.empty()) {
    Frame& frame = open.back();
    const std::vector<ObjectBranch*>& children = frame.node->children;
    if (frame.next >= children.size()) {
      open.pop_back();
      continue;
    }
    ObjectBranch* child = children[frame.next++];
    if (frame.next < children.size()) prefetch(children[frame.next]);
    if (child == nullptr || visit(child, open.size()) == Descend::kNo) continue;
    if (!child->children.empty()) open.push_back({child, 0});
  }
}

// The same for a visit(node) that does not ask for the depth.
template <typename Visit>
void walkPreOrder(ObjectBranch* node, Visit visit) {
  walkWithDepth(node, [&visit](ObjectBranch* visited, std::size_t) { return visit(visited); });
}

}  // namespace tree
