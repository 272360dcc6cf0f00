// Compares the flat list of a tree, which uses a table of numbers, and the teardown, which keeps
// its own stack, with the reference implementation.
#include <cstddef>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "reference/plain_tree.h"
#include "support/heap.h"
#include "support/many_texts.h"
#include "support/random_tree.h"
#include "tree/object_branch.h"

namespace {

constexpr std::string_view kTexts[] = {"a"};

TEST(AddObjectToVectorPlainReading, OfRandomTreesAndLists) {
  std::mt19937 random(20240307);
  for (int i = support::textCount(100'000); i > 0 && !HasFatalFailure(); --i) {
    const support::NodeSweep sweep;
    support::TreePlan plan = support::randomPlan(kTexts, 20, random);
    // Numbers near and far, negative, and duplicated.
    const std::int32_t step = random() % 2 == 0 ? 1 : 5'000;
    for (support::NodePlan& node : plan)
      node.id = step * (static_cast<std::int32_t>(random() % 30) - 3);
    const std::vector<ObjectBranch*> nodes = support::growTree(plan);
    // Shared and null children, but no cycles.
    for (std::size_t extra = random() % 3; extra > 0 && nodes.size() > 1; --extra) {
      const std::size_t above = random() % (nodes.size() - 1);
      const std::size_t below = above + 1 + random() % (nodes.size() - above - 1);
      nodes[above]->children.push_back(random() % 4 == 0 ? nullptr : nodes[below]);
    }
    std::vector<ObjectBranch*> real;
    for (std::size_t left = random() % 3; left > 0; --left)
      real.push_back(random() % 3 == 0 ? nullptr : nodes[random() % nodes.size()]);
    std::vector<ObjectBranch*> plain = real;
    AddObjectToVector(nodes[0], &real);
    reference::addObjectToVector(nodes[0], plain);
    ASSERT_EQ(real, plain);
  }
}

// The state of a tree afterwards: for each node whether it was visited and whether it is alive.
template <typename Delete>
std::string leftOf(const support::TreePlan& plan, const std::vector<std::size_t>& extraChildren,
                   Delete deleteTree) {
  const support::NodeSweep sweep;
  const std::vector<ObjectBranch*> nodes = support::growTree(plan);
  for (const std::size_t extra : extraChildren)
    nodes[extra / 100 % nodes.size()]->children.push_back(
        extra % 7 == 0 ? nullptr : nodes[extra % 100 % nodes.size()]);
  std::set<ObjectBranch*> visited;
  if (extraChildren.size() == 1) visited.insert(nodes[nodes.size() / 2]);
  deleteTree(nodes[0], visited);
  std::string left;
  for (ObjectBranch* node : nodes) {
    left += visited.count(node) > 0 ? "v" : "-";
    left += sweep.isAlive(node) ? "a " : "- ";
  }
  return left;
}

TEST(DeleteNodeTreePlainReading, OfRandomTreesAndCycles) {
  std::mt19937 random(20240308);
  for (int i = support::textCount(100'000); i > 0 && !HasFatalFailure(); --i) {
    support::TreePlan plan = support::randomPlan(kTexts, 15, random);
    const std::int32_t shift = static_cast<std::int32_t>(random() % 16);
    for (support::NodePlan& node : plan) node.id = (node.id + shift) % 15;
    std::vector<std::size_t> extraChildren(random() % 4);
    for (std::size_t& extra : extraChildren) extra = random() % 10'000;
    ASSERT_EQ(leftOf(plan, extraChildren, DeleteNodeTree),
              leftOf(plan, extraChildren, reference::deleteNodeTree));
  }
}

}  // namespace
