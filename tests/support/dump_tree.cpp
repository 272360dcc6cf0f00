#include "support/dump_tree.h"

#include <cstddef>

namespace support {

std::string dumpTree(const ObjectBranch* node) {
  std::string text = node->branchTypeAsString + "\"";
  for (const char byte : node->contents)
    text += byte == '\n' ? std::string("\\n") : std::string(1, byte);
  text += "\"@" + std::to_string(node->lineNumber);
  if (!node->children.empty()) text += "(" + dumpChildren(node) + ")";
  return text;
}

std::string dumpChildren(const ObjectBranch* node) {
  std::string text;
  for (std::size_t i = 0; i < node->children.size(); ++i) {
    if (i > 0) text += " ";
    text += dumpTree(node->children[i]);
  }
  return text;
}

}  // namespace support
