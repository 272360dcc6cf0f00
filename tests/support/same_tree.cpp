#include "support/same_tree.h"

#include <cstddef>
#include <set>

#include "support/dump_tree.h"

namespace support {
namespace {

bool haveSameFields(const ObjectBranch& one, const ObjectBranch& other) {
  return one.branchType == other.branchType && one.lineNumber == other.lineNumber &&
         one.filePath == other.filePath && one.contents == other.contents &&
         one.branchTypeAsString == other.branchTypeAsString &&
         one.simpleFunctionName == other.simpleFunctionName && one.functionID == other.functionID &&
         one.tags == other.tags && one.nodeID == other.nodeID &&
         one.children.size() == other.children.size();
}

std::string describe(const ObjectBranch& node) {
  return dumpTree(&node) + " of code " + std::to_string(node.branchType) + ", number " +
         std::to_string(node.nodeID) + ", path " + node.filePath + ", name " +
         node.simpleFunctionName + ", tags " + node.tags;
}

}  // namespace

std::string treeDifference(const ObjectBranch* one, const ObjectBranch* other) {
  if (!haveSameFields(*one, *other)) return describe(*one) + " and " + describe(*other);
  for (std::size_t i = 0; i < one->children.size(); ++i) {
    if (one->children[i]->parent != one || other->children[i]->parent != other)
      return "the parent of " + describe(*one->children[i]);
    std::string difference = treeDifference(one->children[i], other->children[i]);
    if (!difference.empty()) return difference;
  }
  return "";
}

void destroyTree(ObjectBranch* node) {
  std::set<ObjectBranch*> visited;
  DeleteNodeTree(node, visited);
}

}  // namespace support
