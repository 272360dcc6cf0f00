// Hand-made nodes, for tests that start from a tree.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "tree/object_branch.h"

namespace support {

// Returns a node numbered from currentIndex and appended to parent's children; a null parent makes
// a root.
inline ObjectBranch* addNode(ObjectBranch* parent, std::uint32_t code, std::string label,
                             std::string contents, std::string path = "a.js") {
  ObjectBranch* node = allocateObjectBranch();
  node->nodeID = currentIndex++;
  node->parent = parent;
  node->branchType = code;
  node->branchTypeAsString = std::move(label);
  node->contents = std::move(contents);
  node->filePath = std::move(path);
  if (parent != nullptr) parent->children.push_back(node);
  return node;
}

}  // namespace support
