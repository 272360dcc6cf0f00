#include "support/random_tree.h"

#include <cstddef>
#include <iterator>

namespace support {
namespace {

struct Kind {
  std::uint32_t branchType;
  const char* label;
};
constexpr Kind kKinds[] = {{kBranchLine, "line"},
                           {kBranchLine, "line"},
                           {kBranchFunction, "function"},
                           {kBranchClass, "class"},
                           {kBranchNone, "class"},
                           {kBranchNamespace, "namespace"},
                           {kBranchContainer, "container"},
                           {kBranchLink, "link"},
                           {kBranchAppendedDefine, "preprocessor"},
                           {kBranchNone, "namespace"}};
constexpr const char* kPaths[] = {"a.js", "dir.d/b c.html", "it's/\"x\".php", "scripts\\c.txt",
                                  "d.e.htm"};
constexpr const char* kTags[] = {"", "", "\n      \"href\"\n", "\n      \"auto-generated\"\n"};

}  // namespace

TreePlan randomPlan(std::span<const std::string_view> texts, std::size_t most,
                    std::mt19937& random) {
  const std::string path = kPaths[random() % std::size(kPaths)];
  // Makes some trees deep and others wide.
  const std::size_t reach = random() % 2 == 0 ? 2 : most;
  TreePlan plan;
  for (std::size_t count = 1 + random() % most; plan.size() < count;) {
    NodePlan node;
    const std::size_t place = plan.size();
    if (place > 0)
      node.parent = static_cast<int>(place - 1 - random() % (place < reach ? place : reach));
    const Kind& kind = kKinds[random() % std::size(kKinds)];
    node.branchType = place == 0 ? static_cast<std::uint32_t>(kBranchFilePath) : kind.branchType;
    node.label = place == 0 ? "filepath" : kind.label;
    node.contents = texts[random() % texts.size()];
    if (random() % 4 == 0) node.contents += texts[random() % texts.size()];
    node.path = random() % 16 == 0 ? kPaths[random() % std::size(kPaths)] : path;
    node.tags = kTags[random() % std::size(kTags)];
    node.id = static_cast<std::int32_t>(place);
    plan.push_back(node);
  }
  return plan;
}

std::vector<ObjectBranch*> growTree(const TreePlan& plan) {
  std::vector<ObjectBranch*> nodes;
  for (const NodePlan& each : plan) {
    ObjectBranch* const node = allocateObjectBranch();
    node->nodeID = each.id;
    node->branchType = each.branchType;
    node->branchTypeAsString = each.label;
    node->contents = each.contents;
    node->filePath = each.path;
    node->tags = each.tags;
    node->lineNumber = 3 * each.id;
    if (each.parent >= 0) {
      node->parent = nodes[static_cast<std::size_t>(each.parent)];
      node->parent->children.push_back(node);
    }
    nodes.push_back(node);
  }
  currentIndex = static_cast<std::int32_t>(plan.size());
  return nodes;
}

std::string describeNode(const ObjectBranch& node) {
  const auto idOf = [](const ObjectBranch* other) {
    return other == nullptr ? std::string("none") : std::to_string(other->nodeID);
  };
  std::string text = std::to_string(node.nodeID) + " below " + idOf(node.parent) + " of code " +
                     std::to_string(node.branchType) + " on line " +
                     std::to_string(node.lineNumber) + ": " + node.branchTypeAsString + "|" +
                     node.contents + "|" + node.filePath + "|" + node.simpleFunctionName + "|" +
                     node.tags + "|" + std::to_string(node.functionID) + " above";
  for (const ObjectBranch* child : node.children) text += " " + idOf(child);
  return text;
}

}  // namespace support
