// Decodes a tree from bytes, for the record writer's target. The first byte says how nodes are
// numbered. Each node is four bytes and its text up to the byte kTextEnd or the end:
//
//   its parent, as a distance back from the latest node
//   its code, valid or not
//   its label, tags and path, as indexes into the tables
//   its number, if numbers are free; else bits: a null child before it, no link to its parent, a
//   link to the first node instead
#pragma once

#include <string_view>
#include <vector>

#include "tree/object_branch.h"

namespace fuzz {

inline constexpr char kTextEnd = '\xFF';
inline constexpr char kFreeNumbers = 'f';  // as the first byte; otherwise numbers count from 0

// Returns the nodes of the tree, root first; none if the bytes describe none. Each is in one child
// list.
std::vector<ObjectBranch*> treeWrittenAs(std::string_view bytes);

}  // namespace fuzz
