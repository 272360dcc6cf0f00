// Random trees: each is drawn as a plan, from which any number of identical trees can be built.
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
  int parent = -1;  // index of the parent in the plan, -1 for the root
  std::uint32_t branchType = kBranchLine;
  std::string label;
  std::string contents;
  std::string path;
  std::string tags;
  std::int32_t id = 0;
};
using TreePlan = std::vector<NodePlan>;

// Returns a plan of up to most nodes, root first. Contents are drawn from texts; numbers are the
// indexes in the plan.
TreePlan randomPlan(std::span<const std::string_view> texts, std::size_t most,
                    std::mt19937& random);

// Returns the nodes in the plan's order, each among its parent's children. Sets currentIndex past
// them.
std::vector<ObjectBranch*> growTree(const TreePlan& plan);

// Returns all fields of the node, with the numbers of its parent and its children.
std::string describeNode(const ObjectBranch& node);

}  // namespace support
