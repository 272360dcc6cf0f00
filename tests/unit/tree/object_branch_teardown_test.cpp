// Which nodes of a tree are destroyed by the teardown and which stay.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/heap.h"
#include "support/numbered_nodes.h"
#include "tree/object_branch.h"

namespace {

using support::nodeOf;
using List = std::vector<ObjectBranch*>;

TEST(ObjectBranchTeardown, TheRootOfARunOnlyLosesItsChildren) {
  ObjectBranch* root = nodeOf(0);
  ObjectBranch* a = nodeOf(1, root);
  ObjectBranch* b = nodeOf(2, a);
  std::set<ObjectBranch*> visited;
  {
    const support::ReleaseWatch watch{root, a, b};
    DeleteNodeTree(root, visited);
    EXPECT_EQ(watch.releases(), (std::vector<int>{0, 0, 0}));
  }
  EXPECT_TRUE(root->children.empty());
  EXPECT_EQ(a->parent, root);
  EXPECT_EQ(a->children, (List{b}));
  EXPECT_EQ(visited, (std::set<ObjectBranch*>{root}));
}

TEST(ObjectBranchTeardown, AnyOtherNodeIsDestroyedWithItsSubtree) {
  ObjectBranch* parent = nodeOf(4);
  ObjectBranch* node = nodeOf(5, parent);
  ObjectBranch* child = nodeOf(6, node);
  ObjectBranch* unnumbered = nodeOf(-1, child);
  objectCount = 9;
  const std::size_t registered = allAllocatedNodes.size();
  std::set<ObjectBranch*> visited;
  const support::ReleaseWatch watch{node, child, unnumbered, parent};
  DeleteNodeTree(node, visited);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 1, 1, 0}));
  EXPECT_EQ(visited, (std::set<ObjectBranch*>{node, child, unnumbered}));
  EXPECT_EQ(parent->children, (List{node})) << "the parent is not changed";
  EXPECT_EQ(allAllocatedNodes.size(), registered);
  EXPECT_EQ(allAllocatedNodes.count(node) + allAllocatedNodes.count(child), 2U);
  EXPECT_EQ(objectCount, 9);
}

TEST(ObjectBranchTeardown, StopsAtNumberZeroAnywhere) {
  ObjectBranch* node = nodeOf(5);
  ObjectBranch* zero = nodeOf(0, node);
  ObjectBranch* below = nodeOf(7, zero);
  ObjectBranch* behind = nodeOf(8, node);
  std::set<ObjectBranch*> visited;
  const support::ReleaseWatch watch{node, zero, below, behind};
  DeleteNodeTree(node, visited);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 0, 0, 1}));
  EXPECT_TRUE(zero->children.empty());
  EXPECT_EQ(visited, (std::set<ObjectBranch*>{node, zero, behind}));
}

TEST(ObjectBranchTeardown, ANodeThatIsItsOwnChild) {
  ObjectBranch* node = nodeOf(5);
  node->children = {node, node};
  ObjectBranch* child = nodeOf(6, node);
  std::set<ObjectBranch*> visited;
  const support::ReleaseWatch watch{node, child};
  DeleteNodeTree(node, visited);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 1}));
}

TEST(ObjectBranchTeardown, ACycleAndASharedNode) {
  ObjectBranch* top = nodeOf(5);
  ObjectBranch* left = nodeOf(6, top);
  ObjectBranch* right = nodeOf(7, top);
  ObjectBranch* shared = nodeOf(8, left);
  right->children = {shared, nullptr, shared};
  shared->children = {top, left};
  std::set<ObjectBranch*> visited;
  const support::ReleaseWatch watch{top, left, right, shared};
  DeleteNodeTree(top, visited);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 1, 1, 1}));
  EXPECT_EQ(visited, (std::set<ObjectBranch*>{top, left, right, shared}));
}

TEST(ObjectBranchTeardown, VisitedNodesAreSkipped) {
  ObjectBranch* node = nodeOf(5);
  ObjectBranch* spared = nodeOf(6, node);
  ObjectBranch* below = nodeOf(7, spared);
  std::set<ObjectBranch*> visited{spared};
  const support::ReleaseWatch watch{node, spared, below};
  DeleteNodeTree(node, visited);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 0, 0}));
  EXPECT_EQ(spared->children, (List{below}));

  DeleteNodeTree(spared, visited);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 0, 0}));
  EXPECT_EQ(visited, (std::set<ObjectBranch*>{node, spared}));
}

TEST(ObjectBranchTeardown, NullAndNullChildren) {
  std::set<ObjectBranch*> visited;
  DeleteNodeTree(nullptr, visited);
  EXPECT_TRUE(visited.empty());

  ObjectBranch* node = nodeOf(5);
  node->children = {nullptr, nullptr};
  const support::ReleaseWatch watch{node};
  DeleteNodeTree(node, visited);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1}));
  EXPECT_EQ(visited, (std::set<ObjectBranch*>{node}));
}

TEST(ObjectBranchTeardown, AMillionNodesDeep) {
  constexpr std::int32_t kCount = 1'000'000;
  ObjectBranch* const top = nodeOf(1);
  ObjectBranch* last = top;
  for (std::int32_t id = 2; id <= kCount; ++id) last = nodeOf(id, last);
  std::set<ObjectBranch*> visited;
  const support::ReleaseWatch watch{top, last};
  DeleteNodeTree(top, visited);
  EXPECT_EQ(visited.size(), static_cast<std::size_t>(kCount));
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 1}));
}

TEST(ObjectBranchTeardown, FreeChildren) {
  ObjectBranch* root = nodeOf(3);
  ObjectBranch* a = nodeOf(4, root);
  ObjectBranch* b = nodeOf(5, a);
  {
    const support::ReleaseWatch watch{root, a, b};
    FreeChildren(root);
    EXPECT_EQ(watch.releases(), (std::vector<int>{0, 0, 0}));
  }
  EXPECT_TRUE(root->children.empty());
  EXPECT_EQ(a->parent, root);
  EXPECT_EQ(a->children, (List{b}));
  FreeChildren(root);
  FreeChildren(nullptr);
  EXPECT_TRUE(root->children.empty());
}

constexpr const char* kCleanupLines = "Cleaning up parse tree...\nCleanup complete\n";

TEST(ObjectBranchTeardown, CleanupTreeOfARun) {
  ObjectBranch* root = nodeOf(0);
  root->branchTypeAsString = "filepath";
  ObjectBranch* a = nodeOf(1, root);
  a->branchTypeAsString = "namespace";
  nodeOf(2, a)->branchTypeAsString = "class";
  EXPECT_EQ(support::stdoutOf([root] { CleanupTree(root); }), kCleanupLines);
  EXPECT_EQ(support::dumpTree(root), "filepath\"\"@0");
  EXPECT_EQ(support::dumpTree(a), "namespace\"\"@0(class\"\"@0)");
}

TEST(ObjectBranchTeardown, CleanupTreeOfAnotherNode) {
  ObjectBranch* node = nodeOf(1);
  ObjectBranch* child = nodeOf(2, node);
  const support::ReleaseWatch watch{node, child};
  EXPECT_EQ(support::stdoutOf([node] { CleanupTree(node); }), kCleanupLines);
  EXPECT_EQ(watch.releases(), (std::vector<int>{1, 1}));
}

TEST(ObjectBranchTeardown, CleanupTreeOfNull) {
  EXPECT_EQ(support::stdoutOf([] { CleanupTree(nullptr); }), kCleanupLines);
}

TEST(ObjectBranchTeardown, CleanupTreeKeepsItsPlaceInTheOutput) {
  const std::string printed = support::stdoutOf([] {
    std::printf("before ");
    CleanupTree(nullptr);
    std::cout << "between ";
    CleanupTree(nullptr);
    std::printf("after");
  });
  EXPECT_EQ(printed, "before " + std::string(kCleanupLines) + "between " + kCleanupLines + "after");
}

TEST(ObjectBranchTeardown, CleanupTreeFlushes) {
  off_t written = -1;
  support::stdoutOf([&written] {
    CleanupTree(nullptr);
    written = lseek(STDOUT_FILENO, 0, SEEK_CUR);
  });
  EXPECT_EQ(written, static_cast<off_t>(std::string(kCleanupLines).size()));
}

}  // namespace
