// A long name is put together from three climbs, each from the node itself and at most nine
// ancestors up: the nearest class, the nearest sign of a module system, the nearest export. What a
// text says is looked up once and remembered, since one long ancestor may stand above a great many
// small nodes.
#include "refine/qualified_names.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "detect/module_patterns.h"
#include "detect/statement.h"
#include "text/file_names.h"
#include "text/string_primitives.h"
#include "tree/walk.h"

namespace {

constexpr int kMaxClimbedNodes = 10;  // the node and nine ancestors

bool holdsClass(const ObjectBranch& node) { return text::contains(node.contents, "class"); }

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

// The kind of scope that a text opens, empty if it opens none.
std::string_view scopeKindOf(std::string_view contents) {
  if (detect::isInvokedFunction(detect::Statement(contents))) return "iife";
  const std::string_view pattern = detect::modulePattern(contents);
  if (!pattern.empty()) return pattern;
  return detect::isWebComponent(contents) ? "webcomponent" : "";
}

// What is known of one node's text; each question is asked at most once.
struct TextFacts {
  std::optional<bool> holdsClass;
  std::optional<std::string> className;
  std::optional<std::string_view> scopeKind;
  std::optional<bool> holdsExport;
};

class LongNames {
 public:
  std::string nameOf(const ObjectBranch* node);

 private:
  // The first node from node upwards for which holds(node, facts) is true, or null.
  template <typename Holds>
  const ObjectBranch* climb(const ObjectBranch* node, Holds holds) {
    for (int count = 0; node != nullptr && count < kMaxClimbedNodes; ++count) {
      if (holds(*node, facts_[node])) return node;
      node = node->parent;
    }
    return nullptr;
  }

  template <typename Value, typename Find>
  static const Value& once(std::optional<Value>& known, Find find) {
    if (!known) known = find();
    return *known;
  }

  std::string nearestClassName(const ObjectBranch* node);
  std::string_view nearestScopeKind(const ObjectBranch* node);
  std::string_view moduleName(const ObjectBranch* node);

  std::unordered_map<const ObjectBranch*, TextFacts> facts_;
};

std::string LongNames::nearestClassName(const ObjectBranch* node) {
  const ObjectBranch* found = climb(node, [](const ObjectBranch& each, TextFacts& facts) {
    return once(facts.holdsClass, [&each] { return holdsClass(each); });
  });
  if (found == nullptr) return {};
  return once(facts_[found].className, [found] { return classNameIn(found->contents); });
}

std::string_view LongNames::nearestScopeKind(const ObjectBranch* node) {
  const ObjectBranch* found = climb(node, [](const ObjectBranch& each, TextFacts& facts) {
    return !once(facts.scopeKind, [&each] { return scopeKindOf(each.contents); }).empty();
  });
  return found == nullptr ? "global" : *facts_[found].scopeKind;
}

std::string_view LongNames::moduleName(const ObjectBranch* node) {
  const ObjectBranch* found = climb(node, [](const ObjectBranch& each, TextFacts& facts) {
    return once(facts.holdsExport, [&each] { return text::contains(each.contents, "export"); });
  });
  return found == nullptr ? std::string_view{} : text::baseNameView(found->filePath);
}

std::string LongNames::nameOf(const ObjectBranch* node) {
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
    // required: the whole path is searched, so a directory called scripts counts.
    const bool isWindow =
        text::extensionView(node->filePath) == "html" || text::contains(node->filePath, "script");
    name = isWindow ? "window" : "global";
  }
  if (!className.empty()) name.append(".").append(className);
  return name;
}

void spelunk(ObjectBranch* node, LongNames& names) {
  tree::walkPreOrder(node, [&names](ObjectBranch* visited) {
    if (!holdsClass(*visited)) return tree::Descend::kYes;
    names.nameOf(visited);  // required: worked out and dropped
    visited->branchType = kBranchClass;
    visited->branchTypeAsString = "class";
    return tree::Descend::kNo;
  });
}

}  // namespace

std::string extractClassName(std::string text) { return classNameIn(text); }

std::string climbForLongName(ObjectBranch* node) { return LongNames().nameOf(node); }

void SpelunkForClasses(ObjectBranch* node) {
  LongNames names;
  spelunk(node, names);
}

void ExpandClassnames(ObjectBranch* root) {
  if (root == nullptr) return;
  LongNames names;
  for (std::size_t i = 0; i < root->children.size(); ++i) {
    ObjectBranch* child = root->children[i];
    if (child != nullptr) names.nameOf(child);  // required: worked out and dropped
    spelunk(child, names);
  }
}
