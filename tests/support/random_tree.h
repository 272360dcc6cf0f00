// Trees by the thousand: each is drawn as a plan, of which any number of trees that are alike can
// be grown.
#pragma once

#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tree/object_branch.h"

namespace support {

struct NodePlan {
  int parent = -1;  // the place of the parent in the plan, -1 for the root
  std::uint32_t branchType = kBranchLine;
  std::string label;
  std::string contents;
  std::string path;
  std::string tags;
  std::int32_t id = 0;
};
using TreePlan = std::vector<NodePlan>;

// A plan of up to most nodes, with the root in front, whose contents are drawn from the texts and
// whose numbers are the places in the plan.
TreePlan randomPlan(std::span<const std::string_view> texts, std::size_t most,
                    std::mt19937& random);

// The nodes in the plan's order, each among its parent's children. currentIndex is behind them.
std::vector<ObjectBranch*> growTree(const TreePlan& plan);

// All fields of the node, with the numbers of its parent and its children.
std::string describeNode(const ObjectBranch& node);

}  // namespace support
