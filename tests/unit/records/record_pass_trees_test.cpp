// The record pass on large and random trees: its numbers and links are held against a plain reading
// of the rule, which searches lists from the front.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/make_tree.h"
#include "support/record_run.h"
#include "support/record_values.h"
#include "tree/object_branch.h"

namespace {

using support::addLine;
using support::addNode;
using support::newRoot;
using support::RecordRun;
using support::recordRunOf;
using support::valuesOf;

using Values = std::vector<std::string>;

TEST(RecordPassTrees, GoesDownADeepTree) {
  constexpr int kDepth = 200000;
  ObjectBranch* root = newRoot();
  ObjectBranch* deepest = root;
  for (int i = 1; i <= kDepth; ++i) deepest = addLine(deepest, "a");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(deepest->nodeID, kDepth);
  EXPECT_EQ(valuesOf(run.answer, "parentID").back(), std::to_string(kDepth - 1));
  const std::string number = std::to_string(kDepth);
  const std::string last = "nodeid was " + number + " and now is " + number + "\n";
  EXPECT_EQ(run.printed.substr(run.printed.size() - last.size()), last);
}

TEST(RecordPassTrees, HandlesAWideParent) {
  constexpr int kWidth = 100000;
  ObjectBranch* root = newRoot();
  for (int i = 1; i <= kWidth; ++i) addLine(root, i % 2 == 0 ? "}" : "a");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(root->children.size(), kWidth / 2u);
  EXPECT_EQ(valuesOf(run.answer, "nodeID").back(), std::to_string(kWidth / 2));
}

TEST(RecordPassTrees, KeepsAFarNumberBeforeManyNearOnes) {
  for (const std::int32_t number : {5000, 10000, 20000}) {
    ObjectBranch* root = newRoot();
    ObjectBranch* far = addLine(root, "far");
    for (std::int32_t i = 1; i < number; ++i) addLine(root, "near")->nodeID = i;
    far->nodeID = number;
    recordRunOf(root);
    EXPECT_EQ(far->nodeID, 1) << number;
    EXPECT_EQ(root->children.size(), static_cast<std::size_t>(number)) << number;
  }
}

// What the pass leaves of a tree, by the plain reading.
struct Kept {
  std::vector<ObjectBranch*> nodes;
  std::vector<std::int32_t> oldIds;
  std::vector<std::int32_t> parents;  // new numbers, -1 for none
  std::vector<std::vector<std::int32_t>> children;
};

Kept keptOf(ObjectBranch* root) {
  std::vector<ObjectBranch*> all;
  AddObjectToVector(root, &all);
  Kept kept;
  for (ObjectBranch* node : all) {
    if (node->branchType == kBranchNone || ShouldSkipNode(*node)) continue;
    kept.nodes.push_back(node);
    kept.oldIds.push_back(node->nodeID);
  }
  const auto newId = [&](const ObjectBranch* node) {
    const auto at = std::find(kept.nodes.begin(), kept.nodes.end(), node);
    return at == kept.nodes.end() ? -1 : static_cast<std::int32_t>(at - kept.nodes.begin());
  };
  for (const ObjectBranch* node : kept.nodes) {
    kept.parents.push_back(newId(node->parent));
    kept.children.emplace_back();
    for (const ObjectBranch* child : node->children)
      if (newId(child) >= 0) kept.children.back().push_back(newId(child));
  }
  return kept;
}

TEST(RecordPassTrees, NumbersRandomTreesAsThePlainReadingDoes) {
  constexpr const char* kContents[] = {"a", "b", "x = 1", "}", "});", "if (x)", "function f() {"};
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    std::vector<ObjectBranch*> nodes{newRoot(random() % 8 == 0 ? ";" : "a.js")};
    for (std::size_t count = random() % 30; count > 0; --count) {
      const std::uint32_t code = random() % 6 == 0 ? kBranchNone : kBranchLine;
      nodes.push_back(addNode(nodes[random() % nodes.size()], code, "line",
                              kContents[random() % std::size(kContents)]));
    }
    std::shuffle(nodes.begin() + 1, nodes.end(), random);  // numbers in no order
    for (std::size_t i = 0; i < nodes.size(); ++i)
      nodes[i]->nodeID = static_cast<std::int32_t>(i) * (random() % 2 == 0 ? 1 : 1000);
    const Kept kept = keptOf(nodes[0]);
    const RecordRun run = recordRunOf(nodes[0]);
    std::string printed;
    Values ids, parents;
    for (std::size_t i = 0; i < kept.nodes.size(); ++i) {
      printed += "nodeid was " + std::to_string(kept.oldIds[i]) + " and now is " +
                 std::to_string(i) + "\n";
      ids.push_back(std::to_string(i));
      parents.push_back(std::to_string(kept.parents[i]));
      std::vector<std::int32_t> children;
      for (const ObjectBranch* child : kept.nodes[i]->children) children.push_back(child->nodeID);
      ASSERT_EQ(children, kept.children[i]) << "round " << round;
    }
    ASSERT_EQ(run.printed, printed) << "round " << round;
    ASSERT_EQ(valuesOf(run.answer, "nodeID"), ids) << "round " << round;
    ASSERT_EQ(valuesOf(run.answer, "parentID"), parents) << "round " << round;
  }
}

}  // namespace
