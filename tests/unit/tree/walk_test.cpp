#include "tree/walk.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/make_tree.h"
#include "support/numbered_nodes.h"

namespace {

using support::addNode;
using tree::Descend;

ObjectBranch* node(ObjectBranch* parent, const std::string& contents) {
  return addNode(parent, kBranchLine, "line", contents);
}

// Returns the texts of the nodes in visiting order; nodes below one whose text is in stops are not
// visited.
std::string visited(ObjectBranch* top, const std::string& stops = "") {
  std::string texts;
  tree::walkPreOrder(top, [&](ObjectBranch* each) {
    texts += each->contents;
    return stops.find(each->contents) == std::string::npos ? Descend::kYes : Descend::kNo;
  });
  return texts;
}

// a(b(c d) e f(g(h)))
ObjectBranch* smallTree() {
  ObjectBranch* a = node(nullptr, "a");
  ObjectBranch* b = node(a, "b");
  node(b, "c");
  node(b, "d");
  node(a, "e");
  node(node(node(a, "f"), "g"), "h");
  return a;
}

TEST(Walk, PreOrder) { EXPECT_EQ(visited(smallTree()), "abcdefgh"); }

TEST(Walk, OneNode) { EXPECT_EQ(visited(node(nullptr, "a")), "a"); }

TEST(Walk, Null) { EXPECT_EQ(visited(nullptr), ""); }

TEST(Walk, NullChildrenAreSkipped) {
  ObjectBranch* a = node(nullptr, "a");
  a->children = {nullptr, nullptr};
  ObjectBranch* b = node(a, "b");
  b->children = {nullptr};
  a->children.push_back(nullptr);
  node(a, "c");
  EXPECT_EQ(visited(a), "abc");
}

TEST(Walk, StopsWhereTheVisitDeclines) {
  EXPECT_EQ(visited(smallTree(), "b"), "abefgh");
  EXPECT_EQ(visited(smallTree(), "f"), "abcdef");
  EXPECT_EQ(visited(smallTree(), "bf"), "abef");
  EXPECT_EQ(visited(smallTree(), "cdeh"), "abcdefgh") << "a leaf has nothing to leave out";
  EXPECT_EQ(visited(smallTree(), "a"), "a");
}

TEST(Walk, DoesNotGoUp) { EXPECT_EQ(visited(smallTree()->children[0]), "bcd"); }

// More children than the list has room for, so that it is reallocated.
TEST(Walk, AVisitMayGrowTheListOfItsNode) {
  ObjectBranch* a = smallTree();
  std::string texts;
  tree::walkPreOrder(a, [&](ObjectBranch* each) {
    texts += each->contents;
    if (each->contents == "a" || each->contents == "e")
      for (int i = 0; i < 100; ++i) node(each, ".");
    return Descend::kYes;
  });
  EXPECT_EQ(texts, "abcde" + std::string(100, '.') + "fgh" + std::string(100, '.'));
}

TEST(Walk, AVisitMayCutTheListOfItsNode) {
  ObjectBranch* a = smallTree();
  std::string texts;
  tree::walkPreOrder(a, [&](ObjectBranch* each) {
    texts += each->contents;
    if (each->contents == "b") each->children.clear();
    if (each->contents == "a") each->children.pop_back();
    return Descend::kYes;
  });
  EXPECT_EQ(texts, "abe");
}

TEST(Walk, AMillionNodesDeep) {
  std::vector<ObjectBranch> chain = support::deepChain(1'000'000);
  std::size_t count = 0;
  tree::walkPreOrder(&chain.front(), [&](const ObjectBranch* each) {
    EXPECT_EQ(each, &chain[count]);
    ++count;
    return Descend::kYes;
  });
  EXPECT_EQ(count, chain.size());
}

}  // namespace
