#include "reference/plain_refine.h"

#include <cstddef>

#include "reference/plain_detectors.h"
#include "reference/plain_parts_list.h"
#include "reference/plain_strings.h"
#include "reference/plain_tree.h"

namespace reference {
namespace {

constexpr int kClimbedNodes = 10;

std::string nearestClassName(const ObjectBranch* node) {
  for (int i = 0; i < kClimbedNodes && node != nullptr; ++i, node = node->parent)
    if (contains(node->contents, "class")) return extractClassName(node->contents);
  return "";
}

std::string nearestScopeKind(const ObjectBranch* node) {
  for (int i = 0; i < kClimbedNodes && node != nullptr; ++i, node = node->parent) {
    if (detectIIFE(node->contents)) return "iife";
    const std::string pattern = detectModulePattern(node->contents);
    if (!pattern.empty()) return pattern;
    if (detectWebComponent(node->contents)) return "webcomponent";
  }
  return "global";
}

std::string moduleName(const ObjectBranch* node) {
  for (int i = 0; i < kClimbedNodes && node != nullptr; ++i, node = node->parent)
    if (contains(node->contents, "module.exports") || contains(node->contents, "export"))
      return fileName(node->filePath);
  return "";
}

void spelunkForClasses(ObjectBranch* node) {
  if (node == nullptr) return;
  if (contains(node->contents, "class")) {
    node->branchType = 7;
    node->branchTypeAsString = "class";
    return;
  }
  for (std::size_t i = 0; i < node->children.size(); ++i) spelunkForClasses(node->children[i]);
}

}  // namespace

std::string extractClassName(const std::string& text) {
  const std::vector<std::string> parts = partsList(text);
  if (parts.size() < 2) return "";
  if (parts[0] != "class") return "";
  const std::string name = parts[1];
  if (!contains(text, "extends")) return name;
  for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
    if (parts[i] != "extends") continue;
    if (contains(parts[i + 1], "HTMLElement") || contains(parts[i + 1], "Element"))
      return "WebComponent:" + name;
    return name;
  }
  return name;
}

std::string climbForLongName(const ObjectBranch* node) {
  if (node == nullptr) return "global";
  const std::string className = nearestClassName(node);
  const std::string scopeKind = nearestScopeKind(node);
  const std::string module = moduleName(node);
  std::string result;
  if (scopeKind == "iife") {
    result = "iife";
  } else if (scopeKind == "webcomponent") {
    result = "webcomponent";
  } else if (scopeKind != "global") {
    result = module.empty() ? scopeKind : scopeKind + ":" + module;
  } else if (!module.empty()) {
    result = module;
  } else if (fileExtension(node->filePath) == "html" || contains(node->filePath, "script")) {
    result = "window";
  } else {
    result = "global";
  }
  if (!className.empty()) result += "." + className;
  return result;
}

void expandClassnames(ObjectBranch* root) {
  if (root == nullptr) return;
  for (std::size_t i = 0; i < root->children.size(); ++i) spelunkForClasses(root->children[i]);
}

void removeBraceOnlyNodes(ObjectBranch* node) {
  if (node == nullptr) return;
  auto entry = node->children.begin();
  while (entry != node->children.end()) {
    if (*entry == nullptr) {
      entry = node->children.erase(entry);
      continue;
    }
    const std::string text = trimAndReduce((*entry)->contents);
    if (text == "}" || text == "{" || text == "};" || text.empty()) {
      delete *entry;
      entry = node->children.erase(entry);
      continue;
    }
    removeBraceOnlyNodes(*entry);
    ++entry;
  }
}

void appendAllDefines(ObjectBranch* root, const std::vector<std::string>& defines) {
  if (root == nullptr) return;
  ObjectBranch* node = newNode();
  node->parent = root;
  node->branchType = 14;
  node->branchTypeAsString = "preprocessor";
  node->filePath = root->filePath;
  std::string text;
  for (const std::string& define : defines) text += define + "\n";
  node->contents = trim(text);
  root->children.push_back(node);
}

}  // namespace reference
