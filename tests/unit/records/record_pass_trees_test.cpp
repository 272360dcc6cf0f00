// The record pass on large trees, and on numbers that are far apart.
#include <cstddef>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "support/make_tree.h"
#include "support/record_run.h"
#include "support/record_values.h"
#include "tree/object_branch.h"

namespace {

using support::addLine;
using support::newRoot;
using support::RecordRun;
using support::recordRunOf;
using support::valuesOf;

TEST(RecordPassTrees, HandlesADeepTree) {
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

}  // namespace
