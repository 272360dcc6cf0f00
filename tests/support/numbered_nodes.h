// Nodes whose numbers the test chooses, and a tree as deep as no stack could follow.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tree/object_branch.h"

namespace support {

// A node of that number as the last child of parent, which may be null.
inline ObjectBranch* nodeOf(std::int32_t id, ObjectBranch* parent = nullptr) {
  ObjectBranch* node = allocateObjectBranch();
  node->nodeID = id;
  node->parent = parent;
  if (parent != nullptr) parent->children.push_back(node);
  return node;
}

// Nodes with the numbers from 0 on, of which each is the only child of the one before. They belong
// to the vector, so none of them may be destroyed.
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
