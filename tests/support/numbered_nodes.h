// Nodes whose numbers the test chooses, and a tree too deep for recursion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tree/object_branch.h"

namespace support {

// Appends a node with that number to the children of parent, which may be null.
inline ObjectBranch* nodeOf(std::int32_t id, ObjectBranch* parent = nullptr) {
  ObjectBranch* node = allocateObjectBranch();
  node->nodeID = id;
  node->parent = parent;
  if (parent != nullptr) parent->children.push_back(node);
  return node;
}

// Returns nodes numbered from 0, each the only child of the one before. The vector owns them, so
// none of them may be deleted.
inline std::vector<ObjectBranch> deepChain(std::size_t count, const std::string& contents = "") {
  std::vector<ObjectBranch> chain(count);
  for (std::size_t i = 0; i < count; ++i) {
    chain[i].nodeID = static_cast<std::int32_t>(i);
    chain[i].contents = contents;
    if (i == 0) continue;
    chain[i].parent = &chain[i - 1];
    chain[i - 1].children.push_back(&chain[i]);
  }
  return chain;
}

}  // namespace support
