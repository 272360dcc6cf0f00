// Memory that the module keeps by contract: the nodes of each run, for the life of the process, and
// the registry that reaches them.
#pragma once

#include <malloc.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "reliability/memory.h"
#include "tree/object_branch.h"

namespace reliability {

inline void addBlock(const void* block, Heap& kept) {
  ++kept.blocks;
  kept.bytes += static_cast<std::int64_t>(malloc_usable_size(const_cast<void*>(block)));
}

inline void addText(const std::string& text, Heap& kept) {
  if (text.capacity() > std::string().capacity()) addBlock(text.data(), kept);
}

// Returns the size of the registry, which holds destroyed nodes too, and of each node that is not
// in destroyed (sorted), with what the node owns.
inline Heap keptBy(const std::set<ObjectBranch*>& registry,
                   const std::vector<const void*>& destroyed) {
  Heap kept;
  for (auto at = registry.begin(); at != registry.end(); ++at) {
    const ObjectBranch* const node = *at;
    addBlock(at._M_node, kept);  // the C++ library's name for the block that holds an element
    if (std::binary_search(destroyed.begin(), destroyed.end(), node)) continue;
    addBlock(node, kept);
    for (const std::string* text : {&node->filePath, &node->contents, &node->branchTypeAsString,
                                    &node->simpleFunctionName, &node->tags}) {
      addText(*text, kept);
    }
    if (node->children.capacity() > 0) addBlock(node->children.data(), kept);
  }
  return kept;
}

}  // namespace reliability
