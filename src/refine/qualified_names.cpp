// A long name combines three climbs, each over the node and at most nine ancestors: to the nearest
// class, the nearest sign of a module system, and the nearest export.
#include "refine/qualified_names.h"

#include <algorithm>
#include <string_view>

#include "detect/module_patterns.h"
#include "detect/statement.h"
#include "text/file_names.h"
#include "text/string_primitives.h"
#include "tree/walk.h"

namespace {

constexpr int kMaxClimbedNodes = 10;  // the node and nine ancestors

std::string classNameIn(std::string_view contents) {
  const detect::Statement statement(contents);
  const std::vector<text::Part>& parts = statement.parts();
  if (parts.size() < 2 || !parts[0].is("class")) return {};
  std::string name = parts[1].str();
  const auto isExtends = [](const text::Part& part) { return part.is("extends"); };
  const auto extends = std::find_if(parts.begin(), parts.end() - 1, isExtends);
  if (extends != parts.end() - 1 && text::contains((extends + 1)->slice, "Element")) {
    name.insert(0, "WebComponent:");
  }
  return name;
}

// The kind of scope that the text opens, empty if none.
std::string_view scopeKindOf(std::string_view contents) {
  if (detect::isInvokedFunction(detect::Statement(contents))) return "iife";
  const std::string_view pattern = detect::modulePattern(contents);
  if (!pattern.empty()) return pattern;
  return detect::isWebComponent(contents) ? "webcomponent" : "";
}

// The first node, from node upwards, for which holds(node) is true, or null.
template <typename Holds>
const ObjectBranch* climb(const ObjectBranch* node, Holds holds) {
  for (int count = 0; node != nullptr && count < kMaxClimbedNodes; ++count) {
    if (holds(*node)) return node;
    node = node->parent;
  }
  return nullptr;
}

std::string nearestClassName(const ObjectBranch* node) {
  const ObjectBranch* const found =
      climb(node, [](const ObjectBranch& each) { return refine::holdsClass(each); });
  return found == nullptr ? std::string() : classNameIn(found->contents);
}

std::string_view nearestScopeKind(const ObjectBranch* node) {
  std::string_view kind = "global";
  climb(node, [&kind](const ObjectBranch& each) {
    const std::string_view found = scopeKindOf(each.contents);
    if (!found.empty()) kind = found;
    return !found.empty();
  });
  return kind;
}

std::string_view moduleName(const ObjectBranch* node) {
  const ObjectBranch* const found =
      climb(node, [](const ObjectBranch& each) { return text::contains(each.contents, "export"); });
  return found == nullptr ? std::string_view{} : text::baseNameView(found->filePath);
}

std::string longNameOf(const ObjectBranch* node) {
  if (node == nullptr) return "global";
  const std::string className = nearestClassName(node);
  const std::string_view scopeKind = nearestScopeKind(node);
  const std::string_view module = moduleName(node);

  std::string name;
  if (scopeKind == "iife" || scopeKind == "webcomponent") {
    name = scopeKind;
  } else if (scopeKind != "global") {
    name = scopeKind;
    if (!module.empty()) name.append(":").append(module);
  } else if (!module.empty()) {
    name = module;
  } else {
    // required: the whole path is searched, so a directory named scripts counts.
    const bool isWindow =
        text::extensionView(node->filePath) == "html" || text::contains(node->filePath, "script");
    name = isWindow ? "window" : "global";
  }
  if (!className.empty()) name.append(".").append(className);
  return name;
}

}  // namespace

std::string extractClassName(std::string text) { return classNameIn(text); }

std::string climbForLongName(ObjectBranch* node) { return longNameOf(node); }

void SpelunkForClasses(ObjectBranch* node) {
  tree::walkPreOrder(node, [](ObjectBranch* visited) {
    return refine::markClass(*visited) ? tree::Descend::kNo : tree::Descend::kYes;
  });
}

void ExpandClassnames(ObjectBranch* root) {
  if (root == nullptr) return;
  for (ObjectBranch* child : root->children) SpelunkForClasses(child);
}

namespace refine {

bool holdsClass(const ObjectBranch& node) { return text::contains(node.contents, "class"); }

bool markClass(ObjectBranch& node) {
  if (!holdsClass(node)) return false;
  node.branchType = kBranchClass;
  node.branchTypeAsString = "class";
  return true;
}

}  // namespace refine
