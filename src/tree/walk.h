// The only tree walk. It keeps its own stack, so that deep trees use heap, never the caller's
// stack.
#pragma once

#include <cstddef>
#include <vector>

#include "tree/object_branch.h"

namespace tree {

enum class Descend { kYes, kNo };

// Prefetches what a visit reads first; node may be null. A tree is far larger than the caches.
inline void prefetch(const ObjectBranch* node) {
  if (node == nullptr) return;
  const char* const bytes = reinterpret_cast<const char*>(node);
  __builtin_prefetch(bytes);
  __builtin_prefetch(bytes + 64);
  __builtin_prefetch(bytes + 128);
}

// Calls visit(node, depth) for node, at depth 0, and for everything below it, in pre-order; null
// nodes are skipped. The result of visit decides whether the walk enters the node's children. Child
// counts are re-read at each step, so visit may change its node's child list.
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

// The same for a visit(node) that does not need the depth.
template <typename Visit>
void walkPreOrder(ObjectBranch* node, Visit visit) {
  walkWithDepth(node, [&visit](ObjectBranch* visited, std::size_t) { return visit(visited); });
}

}  // namespace tree
