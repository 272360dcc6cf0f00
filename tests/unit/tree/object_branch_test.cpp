#include "tree/object_branch.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/heap.h"
#include "support/sanitized.h"

namespace {

// The record is plain, and the widths of its numbers are documented.
static_assert(!std::is_polymorphic_v<ObjectBranch> && std::is_aggregate_v<ObjectBranch>);
static_assert(std::is_same_v<decltype(ObjectBranch::branchType), std::uint32_t>);
static_assert(std::is_same_v<decltype(ObjectBranch::lineNumber), std::int32_t>);
static_assert(std::is_same_v<decltype(ObjectBranch::functionID), std::int32_t>);
static_assert(std::is_same_v<decltype(ObjectBranch::nodeID), std::int32_t>);
static_assert(std::is_same_v<decltype(currentIndex), std::int32_t>);
static_assert(std::is_same_v<decltype(objectCount), std::int32_t>);
static_assert(std::is_same_v<decltype(allAllocatedNodes), std::set<ObjectBranch*>>);

TEST(ObjectBranch, NewNode) {
  currentIndex = 41;
  objectCount = 7;
  ObjectBranch* node = allocateObjectBranch();
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->parent, nullptr);
  EXPECT_EQ(node->branchType, 13U);
  EXPECT_EQ(node->lineNumber, 0);
  EXPECT_EQ(node->filePath, "");
  EXPECT_EQ(node->contents, "");
  EXPECT_EQ(node->branchTypeAsString, "");
  EXPECT_EQ(node->simpleFunctionName, "");
  EXPECT_EQ(node->functionID, -1);
  EXPECT_TRUE(node->children.empty());
  EXPECT_EQ(node->tags, "");
  EXPECT_EQ(node->nodeID, -1);
  EXPECT_EQ(currentIndex, 41) << "the maker numbers the node, not the allocator";
  EXPECT_EQ(objectCount, 8);
  EXPECT_EQ(allAllocatedNodes.count(node), 1U);
}

TEST(ObjectBranch, NoMemoryForANode) {
  currentIndex = 3;
  objectCount = 7;
  const std::size_t registered = allAllocatedNodes.size();
  std::string message;
  {
    const support::FailingNew noMemory(sizeof(ObjectBranch));
    try {
      allocateObjectBranch();
    } catch (const std::runtime_error& error) {
      message = error.what();
    }
  }
  EXPECT_EQ(message, "Memory allocation failed for ObjectBranch");
  EXPECT_EQ(objectCount, 7);
  EXPECT_EQ(currentIndex, 3);
  EXPECT_EQ(allAllocatedNodes.size(), registered);
}

TEST(ObjectBranch, NoMemoryForANumberedNode) {
  currentIndex = 3;
  const support::FailingNew noMemory(sizeof(ObjectBranch));
  EXPECT_THROW(tree::makeNode(), std::runtime_error);
  EXPECT_EQ(currentIndex, 3) << "no number is used up";
}

TEST(ObjectBranch, MakersNumberTheNode) {
  currentIndex = 5;
  objectCount = 1;
  const ObjectBranch* plain = tree::makeNode();
  EXPECT_EQ(plain->nodeID, 5);
  EXPECT_EQ(plain->functionID, -1);
  EXPECT_EQ(plain->parent, nullptr);
  EXPECT_EQ(plain->branchType, 13U);
  EXPECT_EQ(currentIndex, 6);

  ObjectBranch* parent = tree::makeNode();
  const ObjectBranch* node = tree::makeNode(parent, kBranchLoop, "loop", 12, "/x/a.js");
  EXPECT_EQ(node->nodeID, 7);
  EXPECT_EQ(node->functionID, -1);
  EXPECT_EQ(node->parent, parent);
  EXPECT_EQ(node->branchType, 10U);
  EXPECT_EQ(node->branchTypeAsString, "loop");
  EXPECT_EQ(node->lineNumber, 12);
  EXPECT_EQ(node->filePath, "/x/a.js");
  EXPECT_EQ(node->contents, "");
  EXPECT_EQ(node->simpleFunctionName, "");
  EXPECT_EQ(node->tags, "");
  EXPECT_TRUE(node->children.empty());
  EXPECT_TRUE(parent->children.empty()) << "hanging it there is left to the caller";
  EXPECT_EQ(currentIndex, 8);
  EXPECT_EQ(objectCount, 4);
}

struct WordCase {
  std::uint32_t code;
  std::uint32_t number;
  const char* word;
};

constexpr WordCase kWords[] = {
    {kBranchFile, 0, "filepath"},
    {kBranchInclude, 1, "include"},
    {kBranchContainer, 2, "container"},
    {kBranchLine, 3, "line"},
    {kBranchDefine, 4, "define"},
    {kBranchLogic, 5, "logic"},
    {kBranchFunction, 6, "function"},
    {kBranchClass, 7, "class"},
    {kBranchNamespace, 8, "namespace"},
    {9, 9, "function"},
    {kBranchLoop, 10, "loop"},
    {kBranchFilePath, 11, "filepath"},
    {kBranchClassVar, 12, "classvar"},
    {kBranchNone, 13, "function"},
    {kBranchAppendedDefine, 14, "function"},
    {kBranchHtmlElement, 15, "htmlelement"},
    {kBranchLink, 16, "link"},
    {kBranchSource, 17, "source"},
    {kBranchError, 18, "function"},
    {19, 19, "function"},
    {99, 99, "function"},
    {0x80000000U, 0x80000000U, "function"},
    {std::numeric_limits<std::uint32_t>::max(), 0xFFFFFFFFU, "function"},
};

TEST(ObjectBranch, WordOfEachCode) {
  for (const WordCase& row : kWords) {
    ObjectBranch node;
    node.branchType = row.code;
    node.branchTypeAsString = "a label of its own";
    EXPECT_EQ(row.code, row.number);
    EXPECT_EQ(branchTypeAsString(node), row.word) << "code " << row.number;
    EXPECT_EQ(node.branchTypeAsString, "a label of its own");
  }
}

TEST(ObjectBranch, SafeStringAlloc) {
  struct Case {
    std::size_t size;
    std::size_t bytes;
  };
  for (const Case& row : {Case{0, 2}, Case{1, 2}, Case{5, 6}, Case{4096, 4097}}) {
    char* memory = safeStringAlloc(row.size);
    EXPECT_EQ(std::string(memory, row.bytes), std::string(row.bytes, '\0')) << row.size;
    std::free(memory);
  }
}

TEST(ObjectBranch, SafeStringAllocWithoutMemory) {
#ifdef QUORL_TEST_IS_SANITIZED
  GTEST_SKIP() << "the sanitizer ends the program at a request of that size";
#else
  constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();
  for (const std::size_t size : {kLargest - 1, kLargest}) {  // + 1 wraps the last to 0
    std::string message;
    try {
      // volatile, or the compiler may drop the unused allocation.
      char* volatile memory = safeStringAlloc(size);
      std::free(memory);
    } catch (const std::runtime_error& error) {
      message = error.what();
    }
    EXPECT_EQ(message, "String allocation failed") << size;
  }
#endif
}

}  // namespace
