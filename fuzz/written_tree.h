// A tree as bytes, for the record writer's target. The first byte tells how nodes are numbered.
// Then a node is four bytes and its text up to the byte kTextEnd or the end:
//
//   which earlier node it hangs under, counted back from the last
//   its code, of those that there are and some that there are not
//   its label, tags and path, see the tables
//   its number, where numbers are free; else bits: a null child before it, no link to its parent, a
//   link to the first node in place of that
#pragma once

#include <string_view>
#include <vector>

#include "tree/object_branch.h"

namespace fuzz {

inline constexpr char kTextEnd = '\xFF';
inline constexpr char kFreeNumbers = 'f';  // as the first byte; by any other they count from 0

// The nodes of the tree with the root in front, none if the bytes describe none. Each stands in one
// child list.
std::vector<ObjectBranch*> treeWrittenAs(std::string_view bytes);

}  // namespace fuzz
