#include "refine/tidying.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/heap.h"
#include "support/make_tree.h"
#include "support/numbered_nodes.h"

namespace {

using std::string_view_literals::operator""sv;
using List = std::vector<ObjectBranch*>;

ObjectBranch* line(ObjectBranch* parent, std::string_view contents) {
  return support::addNode(parent, kBranchLine, "l", std::string(contents));
}

ObjectBranch* root() { return support::addNode(nullptr, kBranchFilePath, "filepath", "a.js"); }

// ---- CleanUpBranchTypes ----

TEST(CleanUpBranchTypes, ChangesNothing) {
  ObjectBranch* top = root();
  ObjectBranch* wrapper = support::addNode(top, kBranchNone, "", "class A {");
  line(wrapper, "{");
  line(wrapper, "");
  wrapper->children.push_back(nullptr);
  const std::string before = "l\"{\"@0 l\"\"@0";
  CleanUpBranchTypes(top);
  EXPECT_EQ(top->branchType, 11U);
  EXPECT_EQ(wrapper->branchType, 13U);
  EXPECT_EQ(wrapper->branchTypeAsString, "");
  ASSERT_EQ(wrapper->children.size(), 3U);
  EXPECT_EQ(wrapper->children[2], nullptr) << "an empty entry stays";
  wrapper->children.pop_back();
  EXPECT_EQ(support::dumpTree(top), "filepath\"a.js\"@0(\"class A {\"@0(" + before + "))");
  CleanUpBranchTypes(nullptr);
}

// ---- RemoveBraceOnlyNodes ----

struct TextCase {
  std::string_view contents;
  bool removed;
};

constexpr TextCase kContents[] = {
    {"{"sv, true},
    {"}"sv, true},
    {"};"sv, true},
    {""sv, true},
    {" "sv, true},
    {" \t\r\n\f\v "sv, true},
    {" { "sv, true},
    {"\n}\n"sv, true},
    {"\t};\r\n"sv, true},
    {"\f{\v"sv, true},
    {" \v } \f "sv, true},
    {"  }; "sv, true},

    // The record pass skips these, this pass does not.
    {"{}"sv, false},
    {"("sv, false},
    {")"sv, false},
    {";"sv, false},
    {");"sv, false},
    {"));"sv, false},
    {"});"sv, false},

    {"} ;"sv, false},
    {"}\n;"sv, false},
    {"}\f;"sv, false},
    {"{ }"sv, false},
    {"}}"sv, false},
    {"};;"sv, false},
    {";}"sv, false},
    {"{;"sv, false},
    {"},"sv, false},
    {"} else {"sv, false},
    {"a {"sv, false},
    {"["sv, false},
    {"]"sv, false},
    {"\0"sv, false},
    {"}\0"sv, false},
    {"\xA0"sv, false},
    {"x"sv, false},
};

TEST(RemoveBraceOnlyNodes, Texts) {
  for (const TextCase& row : kContents) {
    ObjectBranch* top = root();
    ObjectBranch* child = line(top, row.contents);
    {
      const support::ReleaseWatch watch{child};
      RemoveBraceOnlyNodes(top);
      EXPECT_EQ(watch.releases(), (std::vector<int>{row.removed ? 1 : 0}))
          << testing::PrintToString(row.contents);
    }
    EXPECT_EQ(top->children, row.removed ? List{} : List{child})
        << testing::PrintToString(row.contents);
    if (row.removed) continue;
    EXPECT_EQ(child->contents, row.contents);
  }
}

TEST(RemoveBraceOnlyNodes, TheNodeItselfIsNotChecked) {
  ObjectBranch* top = line(nullptr, "{");
  line(top, "a");
  line(top, "}");
  RemoveBraceOnlyNodes(top);
  EXPECT_EQ(support::dumpTree(top), "l\"{\"@0(l\"a\"@0)");
  RemoveBraceOnlyNodes(nullptr);
}

struct SiblingCase {
  std::string_view why;
  std::vector<std::string> children;
  std::string_view left;
};

TEST(RemoveBraceOnlyNodes, Siblings) {
  const SiblingCase kCases[] = {
      {"no children", {}, ""},
      {"nothing to remove", {"a", "b"}, "l\"a\"@0 l\"b\"@0"},
      {"the first", {"{", "a"}, "l\"a\"@0"},
      {"the last", {"a", "}"}, "l\"a\"@0"},
      {"two side by side", {"a", "{", "}", "b"}, "l\"a\"@0 l\"b\"@0"},
      {"three side by side", {"{", "}", "};"}, ""},
      {"every other one", {"{", "a", "", "b", "};", "c"}, "l\"a\"@0 l\"b\"@0 l\"c\"@0"},
  };
  for (const SiblingCase& row : kCases) {
    ObjectBranch* top = root();
    for (const std::string& contents : row.children) line(top, contents);
    RemoveBraceOnlyNodes(top);
    EXPECT_EQ(support::dumpChildren(top), row.left) << row.why;
  }
}

TEST(RemoveBraceOnlyNodes, NullEntriesAreRemoved) {
  ObjectBranch* top = root();
  top->children = {nullptr, nullptr};
  ObjectBranch* a = line(top, "a");
  a->children = {nullptr};
  line(a, "}");
  a->children.push_back(nullptr);
  top->children.push_back(nullptr);
  line(top, "b");
  top->children.push_back(nullptr);
  RemoveBraceOnlyNodes(top);
  EXPECT_EQ(support::dumpTree(top), "filepath\"a.js\"@0(l\"a\"@0 l\"b\"@0)");
}

TEST(RemoveBraceOnlyNodes, AtEveryDepth) {
  ObjectBranch* top = root();
  ObjectBranch* f = line(top, "function f() {");
  ObjectBranch* empty = line(f, "{}");
  line(empty, "a");
  line(empty, "}");
  line(f, "};");
  ObjectBranch* closer = line(top, "});");
  line(closer, "{");
  line(line(closer, "b"), "}");
  RemoveBraceOnlyNodes(top);
  EXPECT_EQ(support::dumpTree(top),
            "filepath\"a.js\"@0(l\"function f() {\"@0(l\"{}\"@0(l\"a\"@0)) "
            "l\"});\"@0(l\"b\"@0))");
}

// required: the subtree below a brace leaves the tree with it; it is neither moved up nor
// destroyed.
TEST(RemoveBraceOnlyNodes, TheWholeSubtreeIsRemoved) {
  currentIndex = 20;
  objectCount = 30;
  ObjectBranch* top = root();
  ObjectBranch* brace = line(top, "{");
  ObjectBranch* a = line(brace, "a");
  ObjectBranch* inner = line(a, "}");
  ObjectBranch* b = line(brace, "{");
  ObjectBranch* after = line(top, "c");
  const std::size_t registered = allAllocatedNodes.size();
  const support::ReleaseWatch watch{top, brace, a, inner, b, after};
  RemoveBraceOnlyNodes(top);
  EXPECT_EQ(watch.releases(), (std::vector<int>{0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(support::dumpTree(top), "filepath\"a.js\"@0(l\"c\"@0)");
  EXPECT_EQ(support::dumpTree(a), "l\"a\"@0(l\"}\"@0)");
  EXPECT_EQ(support::dumpTree(b), "l\"{\"@0");
  EXPECT_EQ(allAllocatedNodes.size(), registered);
  EXPECT_EQ(allAllocatedNodes.count(brace), 1U);
  EXPECT_EQ(currentIndex, 26);
  EXPECT_EQ(objectCount, 36);
}

TEST(RemoveBraceOnlyNodes, AMillionNodesDeep) {
  std::vector<ObjectBranch> chain = support::deepChain(1'000'000, "a");
  ObjectBranch& last = chain.back();
  line(&last, "}");
  line(&last, "b");
  RemoveBraceOnlyNodes(&chain.front());
  EXPECT_EQ(support::dumpChildren(&last), "l\"b\"@0");
  EXPECT_EQ(chain[chain.size() - 2].children, (List{&last}));
  CleanUpBranchTypes(&chain.front());
}

TEST(RemoveBraceOnlyNodes, AHundredThousandBracesUnderOneNode) {
  ObjectBranch* top = root();
  for (int i = 0; i < 100'000; ++i) line(top, "}");
  ObjectBranch* last = line(top, "a");
  RemoveBraceOnlyNodes(top);
  EXPECT_EQ(top->children, (List{last}));
}

// ---- AppendAllDefines ----

struct DefinesCase {
  std::vector<std::string> defines;
  std::string_view contents;
};

TEST(AppendAllDefines, Contents) {
  const DefinesCase kCases[] = {
      {{}, ""sv},
      {{"DEBUG"}, "DEBUG"sv},
      {{"DEBUG", "LEVEL 2"}, "DEBUG\nLEVEL 2"sv},
      {{"A", "A"}, "A\nA"sv},
      {{"   "}, ""sv},
      {{" \t", "\f\v", ""}, ""sv},
      {{" A "}, "A"sv},
      {{"A ", " B"}, "A \n B"sv},
      {{"  A", "B  "}, "A\nB"sv},
      {{"", "A"}, "A"sv},
      {{"A", ""}, "A"sv},
      {{"A", "", "B"}, "A\n\nB"sv},
      {{"A\n\n"}, "A"sv},
      {{"A\r"}, "A"sv},
      {{"A\nB"}, "A\nB"sv},
      {{"\xE9"}, "\xE9"sv},
      {{std::string("A\0"sv)}, "A\0"sv},
  };
  for (const DefinesCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.defines));
    ObjectBranch* top = root();
    AppendAllDefines(top, row.defines);
    refine::appendAllDefines(top, row.defines);
    ASSERT_EQ(top->children.size(), 2U);
    EXPECT_EQ(top->children[0]->contents, row.contents);
    EXPECT_EQ(top->children[1]->contents, row.contents);
  }
}

TEST(AppendAllDefines, TheNode) {
  ObjectBranch* top = support::addNode(nullptr, kBranchFilePath, "filepath", "a.js", "/x/a.js");
  line(top, "a");
  currentIndex = 17;
  objectCount = 3;
  EXPECT_EQ(support::stdoutOf([top] { AppendAllDefines(top, {"D"}); }), "");
  ASSERT_EQ(top->children.size(), 2U);
  ObjectBranch* node = top->children[1];
  EXPECT_EQ(node->parent, top);
  EXPECT_EQ(node->branchType, 14U);
  EXPECT_EQ(node->lineNumber, 0);
  EXPECT_EQ(node->filePath, "/x/a.js");
  EXPECT_EQ(node->contents, "D");
  EXPECT_EQ(node->branchTypeAsString, "preprocessor");
  EXPECT_EQ(node->simpleFunctionName, "");
  EXPECT_EQ(node->functionID, -1);
  EXPECT_TRUE(node->children.empty());
  EXPECT_EQ(node->tags, "");
  EXPECT_EQ(node->nodeID, 17);
  EXPECT_EQ(currentIndex, 18);
  EXPECT_EQ(objectCount, 4);
  EXPECT_EQ(allAllocatedNodes.count(node), 1U);
}

TEST(AppendAllDefines, NoRoot) {
  currentIndex = 17;
  objectCount = 3;
  EXPECT_EQ(support::stdoutOf([] { AppendAllDefines(nullptr, {"D"}); }), "");
  EXPECT_EQ(currentIndex, 17);
  EXPECT_EQ(objectCount, 3);
}

TEST(AppendAllDefines, NoMemoryForTheNode) {
  ObjectBranch* top = root();
  line(top, "a");
  currentIndex = 17;
  objectCount = 3;
  const std::string printed = support::stdoutOf([top] {
    const support::FailingNew noMemory(sizeof(ObjectBranch));
    EXPECT_NO_THROW(AppendAllDefines(top, {}));
  });
  EXPECT_EQ(printed, "");
  EXPECT_EQ(support::dumpTree(top), "filepath\"a.js\"@0(l\"a\"@0)");
  EXPECT_EQ(currentIndex, 17);
  EXPECT_EQ(objectCount, 3);
}

// A run without defines makes the node and removes it again.
TEST(AppendAllDefines, ANodeWithoutTextIsBraceOnly) {
  ObjectBranch* top = root();
  line(top, "a");
  currentIndex = 17;
  AppendAllDefines(top, {" "});
  EXPECT_EQ(support::dumpTree(top), "filepath\"a.js\"@0(l\"a\"@0 preprocessor\"\"@0)");
  RemoveBraceOnlyNodes(top);
  EXPECT_EQ(support::dumpTree(top), "filepath\"a.js\"@0(l\"a\"@0)");
  EXPECT_EQ(currentIndex, 18) << "its number stays used up";
}

}  // namespace
