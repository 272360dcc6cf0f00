#include "reference/plain_tree.h"

namespace reference {

ObjectBranch* newNode() {
  ObjectBranch* node = allocateObjectBranch();
  node->nodeID = currentIndex;
  ++currentIndex;
  node->functionID = -1;
  return node;
}

void addObjectToVector(ObjectBranch* node, std::vector<ObjectBranch*>& list) {
  if (node == nullptr) return;
  bool isPresent = false;
  for (const ObjectBranch* entry : list)
    if (entry != nullptr && entry->nodeID == node->nodeID) isPresent = true;
  if (!isPresent) list.push_back(node);
  for (ObjectBranch* child : node->children) addObjectToVector(child, list);
}

}  // namespace reference
