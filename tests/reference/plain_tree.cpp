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

void deleteNodeTree(ObjectBranch* node, std::set<ObjectBranch*>& visited) {
  if (node == nullptr || visited.count(node) > 0) return;
  visited.insert(node);
  if (node->nodeID == 0) {
    node->children.clear();
    return;
  }
  const std::vector<ObjectBranch*> children = node->children;
  node->children.clear();
  for (ObjectBranch* child : children) deleteNodeTree(child, visited);
  delete node;
}

}  // namespace reference
