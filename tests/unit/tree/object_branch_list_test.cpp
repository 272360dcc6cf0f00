// The flat list of a tree.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/numbered_nodes.h"
#include "tree/object_branch.h"

namespace {

using support::nodeOf;
using List = std::vector<ObjectBranch*>;

TEST(ObjectBranchList, PreOrder) {
  ObjectBranch* root = nodeOf(0);
  ObjectBranch* a = nodeOf(1, root);
  ObjectBranch* b = nodeOf(2, root);
  ObjectBranch* c = nodeOf(3, a);
  List list;
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, (List{root, a, c, b}));
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, (List{root, a, c, b})) << "a second time adds nothing";
}

TEST(ObjectBranchList, StartsAtAnyNode) {
  ObjectBranch* root = nodeOf(0);
  ObjectBranch* a = nodeOf(1, root);
  ObjectBranch* b = nodeOf(2, a);
  nodeOf(3, root);
  List list;
  AddObjectToVector(a, &list);
  EXPECT_EQ(list, (List{a, b})) << "the node's own siblings are not listed";
}

TEST(ObjectBranchList, NullArguments) {
  ObjectBranch* node = nodeOf(0);
  List list{node};
  AddObjectToVector(nullptr, &list);
  EXPECT_EQ(list, (List{node}));
  AddObjectToVector(node, nullptr);
  AddObjectToVector(nullptr, nullptr);
  EXPECT_TRUE(node->children.empty());
}

TEST(ObjectBranchList, NullChildrenAndNullEntries) {
  ObjectBranch* root = nodeOf(0);
  root->children = {nullptr, nullptr};
  ObjectBranch* a = nodeOf(1, root);
  root->children.push_back(nullptr);
  List list{nullptr};
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, (List{nullptr, root, a}));
}

// Presence depends on the number, not on the node.
TEST(ObjectBranchList, AListedNumberAddsNothingButItsChildren) {
  ObjectBranch* root = nodeOf(0);
  ObjectBranch* first = nodeOf(5, root);
  ObjectBranch* second = nodeOf(5, root);
  ObjectBranch* child = nodeOf(6, second);
  List list;
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, (List{root, first, child}));
}

TEST(ObjectBranchList, NumbersThatTheListHeldBefore) {
  ObjectBranch* stranger = nodeOf(1);
  ObjectBranch* twin = nodeOf(1);
  ObjectBranch* root = nodeOf(0);
  ObjectBranch* a = nodeOf(1, root);
  ObjectBranch* b = nodeOf(2, a);
  List list{stranger, nullptr, twin};
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, (List{stranger, nullptr, twin, root, b}));
}

TEST(ObjectBranchList, OneNodeTwice) {
  ObjectBranch* root = nodeOf(0);
  ObjectBranch* a = nodeOf(1, root);
  ObjectBranch* b = nodeOf(2, a);
  root->children.push_back(a);
  List list;
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, (List{root, a, b}));
}

// required: unnumbered nodes share the number -1, so only the first is listed.
TEST(ObjectBranchList, UnnumberedNodes) {
  ObjectBranch* root = allocateObjectBranch();
  nodeOf(-1, root);
  ObjectBranch* numbered = nodeOf(4, nodeOf(-1, root));
  List list;
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, (List{root, numbered}));
}

TEST(ObjectBranchList, NumbersFarApart) {
  constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  ObjectBranch* root = nodeOf(kMost);
  List expected{root};
  for (const std::int32_t id : {kLeast, kMost - 1, -1, 0, 1'000'000'000, -2, 1})
    expected.push_back(nodeOf(id, root));
  for (const std::int32_t id : {kMost, kLeast, 0, -2}) nodeOf(id, root);
  List list;
  AddObjectToVector(root, &list);
  EXPECT_EQ(list, expected);
}

// A number that was far away from all others when listed stays listed.
TEST(ObjectBranchList, AFarNumberThatTheOthersReach) {
  constexpr std::int32_t kFar = 50'000;
  ObjectBranch* root = nodeOf(0);
  List expected{root, nodeOf(kFar, root)};
  for (std::int32_t id = 1; id < kFar; ++id) expected.push_back(nodeOf(id, root));
  nodeOf(kFar, root);
  List list;
  AddObjectToVector(root, &list);
  EXPECT_EQ(list.size(), expected.size());
  EXPECT_TRUE(list == expected);
}

TEST(ObjectBranchList, AMillionNodesDeep) {
  std::vector<ObjectBranch> chain = support::deepChain(1'000'000);
  List list;
  AddObjectToVector(&chain.front(), &list);
  ASSERT_EQ(list.size(), chain.size());
  for (std::size_t i = 0; i < chain.size(); ++i) ASSERT_EQ(list[i], &chain[i]) << i;
}

TEST(ObjectBranchList, AMillionNodesWide) {
  ObjectBranch root;
  root.nodeID = 0;
  std::vector<ObjectBranch> children(1'000'000);
  for (ObjectBranch& child : children) {
    root.children.push_back(&child);
    child.nodeID = static_cast<std::int32_t>(root.children.size());
  }
  List list;
  AddObjectToVector(&root, &list);
  ASSERT_EQ(list.size(), children.size() + 1);
  EXPECT_EQ(List(list.begin() + 1, list.end()), root.children);
}

}  // namespace
