// Which nodes get a record, their final numbers and links, and what the pass prints.
#include "records/record_pass.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/make_tree.h"
#include "support/record_run.h"
#include "support/record_values.h"
#include "tree/object_branch.h"

namespace {

using namespace std::string_view_literals;
using support::addLine;
using support::addNode;
using support::newRoot;
using support::RecordRun;
using support::recordRunOf;
using support::valuesOf;

using Values = std::vector<std::string>;

struct SkipCase {
  std::string_view contents;
  bool skipped;
};

constexpr SkipCase kSkips[] = {
    {"{", true},
    {"}", true},
    {"};", true},
    {"{}", true},
    {"", true},
    {"(", true},
    {")", true},
    {";", true},
    {");", true},
    {"));", true},
    {"});", true},
    // White space around the text, and inside it.
    {" ", true},
    {"\n\t\r\f\v ", true},
    {"  }\n", true},
    {"\f});\v", true},
    {"} ;", false},
    {"{ }", false},
    {")\n;", false},
    // One byte off.
    {"{{", false},
    {"}}", false},
    {"})", false},
    {"};;", false},
    {"},", false},
    {"{};", false},
    {"()", false},
    {"((", false},
    {"))", false},
    {";;", false},
    {")));", false},
    {"}));", false},
    {"})();", false},
    {"[", false},
    {"]", false},
    {"];", false},
    {",", false},
    {"x", false},
    {"x }", false},
    {"\0"sv, false},
    {"}\0"sv, false},
};

TEST(ShouldSkipNode, IsTrueForElevenTexts) {
  for (const SkipCase& row : kSkips) {
    ObjectBranch node;
    node.contents = row.contents;
    EXPECT_EQ(ShouldSkipNode(node), row.skipped) << testing::PrintToString(node.contents);
  }
}

TEST(ShouldSkipNode, DependsOnTheTextOnly) {
  ObjectBranch child;
  ObjectBranch node;
  node.contents = "};";
  node.branchType = kBranchClass;
  node.branchTypeAsString = "class";
  node.simpleFunctionName = "f";
  node.tags = "\n      \"variable\"\n";
  node.children = {&child};
  EXPECT_TRUE(ShouldSkipNode(node));
  node.contents = "a";
  node.branchType = kBranchNone;
  EXPECT_FALSE(ShouldSkipNode(node));
}

TEST(RecordPass, OfANullRootIsAnEmptyArrayWithoutLineFeed) {
  currentIndex = 7;
  objectCount = 3;
  const RecordRun run = recordRunOf(nullptr);
  EXPECT_EQ(run.answer, "[]");
  EXPECT_EQ(run.printed, "");
  EXPECT_EQ(currentIndex, 7);
  EXPECT_EQ(objectCount, 3);
}

TEST(RecordPass, NumbersTheKeptNodesInPreOrderAndPrintsALineForEach) {
  ObjectBranch* root = newRoot();                 // 0
  ObjectBranch* a = addLine(root, "a");           // 1
  addLine(root, "}");                             // 2, dropped
  ObjectBranch* b = addLine(root, "b");           // 3
  ObjectBranch* inA = addLine(a, "in a");         // 4
  addNode(a, kBranchNone, "class", "untyped");    // 5, dropped
  ObjectBranch* alsoInA = addLine(a, "also in");  // 6
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(run.printed,
            "nodeid was 0 and now is 0\n"
            "nodeid was 1 and now is 1\n"
            "nodeid was 4 and now is 2\n"
            "nodeid was 6 and now is 3\n"
            "nodeid was 3 and now is 4\n");
  EXPECT_EQ(valuesOf(run.answer, "contents"),
            (Values{"\"a.js\"", "\"a\"", "\"in a\"", "\"also in\"", "\"b\""}));
  EXPECT_EQ(valuesOf(run.answer, "nodeID"), (Values{"0", "1", "2", "3", "4"}));
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "0", "1", "1", "0"}));
  EXPECT_EQ(root->children, (std::vector<ObjectBranch*>{a, b}));
  EXPECT_EQ(a->children, (std::vector<ObjectBranch*>{inA, alsoInA}));
  EXPECT_EQ(alsoInA->nodeID, 3);
  EXPECT_EQ(b->parent, root);
}

TEST(RecordPass, WritesTheWholeArray) {
  ObjectBranch* root = newRoot();
  addLine(root, "a();")->lineNumber = 3;
  const std::string keys =
      "    \"lineage\": \"\",\n"
      "    \"argumentList\": \"\",\n";
  EXPECT_EQ(recordRunOf(root).answer,
            "[\n"
            "  {\n"
            "    \"lineNumber\": 0,\n" +
                keys +
                "    \"childNodeIDs\": [   \n"
                "      1\n"
                "    ],\n"
                "    \"nodeID\": 0,\n"
                "    \"parentID\": -1,\n"
                "    \"fileID\": 0,\n"
                "    \"functionID\": -1,\n"
                "    \"isCalled\": false,\n"
                "    \"branchTypeAsString\": \"filepath\",\n"
                "    \"filePath\": \"a.js\",\n"
                "    \"tags\": [],\n"
                "    \"contents\": \"a.js\",\n"
                "    \"simpleFunctionName\": \"\",\n"
                "    \"calloutIDs\": []\n"
                "  },\n"
                "  {\n"
                "    \"lineNumber\": 3,\n" +
                keys +
                "    \"childNodeIDs\": [],\n"
                "    \"nodeID\": 1,\n"
                "    \"parentID\": 0,\n"
                "    \"fileID\": 0,\n"
                "    \"functionID\": -1,\n"
                "    \"isCalled\": false,\n"
                "    \"branchTypeAsString\": \"line\",\n"
                "    \"filePath\": \"a.js\",\n"
                "    \"tags\": [],\n"
                "    \"contents\": \"a();\",\n"
                "    \"simpleFunctionName\": \"\",\n"
                "    \"calloutIDs\": []\n"
                "  }\n"
                "]\n");
}

TEST(RecordPass, PrintsNegativeAndFarApartNumbersAsTheyAre) {
  ObjectBranch* root = newRoot();
  root->nodeID = -5;
  addLine(root, "a")->nodeID = 2000000000;
  addLine(root, "b")->nodeID = -1;
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(run.printed,
            "nodeid was -5 and now is 0\n"
            "nodeid was 2000000000 and now is 1\n"
            "nodeid was -1 and now is 2\n");
  EXPECT_EQ(valuesOf(run.answer, "nodeID"), (Values{"0", "1", "2"}));
}

TEST(RecordPass, UsesOneNumberAndOneAllocation) {
  ObjectBranch* root = newRoot();
  addLine(root, "a");
  objectCount = 40;
  recordRunOf(root);
  EXPECT_EQ(currentIndex, 3) << "two nodes and one more";
  EXPECT_EQ(objectCount, 41);
}

TEST(RecordPass, KeepsTheOtherFields) {
  ObjectBranch* root = newRoot();
  ObjectBranch* node = addNode(root, kBranchFunction, "function", "if (x) {", "dir/b.js");
  node->lineNumber = 12;
  node->functionID = 34;
  recordRunOf(root);
  EXPECT_EQ(node->branchTypeAsString, "logic");
  EXPECT_EQ(node->branchType, kBranchFunction) << "the code keeps what the parser said";
  EXPECT_EQ(node->contents, "if (x) {");
  EXPECT_EQ(node->filePath, "dir/b.js");
  EXPECT_EQ(node->lineNumber, 12);
  EXPECT_EQ(node->functionID, 34);
}

TEST(RecordPass, OrphansTheChildrenOfADroppedNode) {
  ObjectBranch* root = newRoot();                     // 0
  ObjectBranch* dropped = addLine(root, "});");       // 1
  ObjectBranch* orphan = addLine(dropped, "if (x)");  // 2
  ObjectBranch* below = addLine(orphan, "if (y)");    // 3
  ObjectBranch* last = addLine(root, "last");         // 4
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(valuesOf(run.answer, "contents"),
            (Values{"\"a.js\"", "\"if (x)\"", "\"if (y)\"", "\"last\""}));
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "-1", "1", "0"}));
  EXPECT_EQ(valuesOf(run.answer, "branchTypeAsString"),
            (Values{"\"filepath\"", "\"line\"", "\"logic\"", "\"line\""}))
      << "the orphan is not relabelled, but the nodes below it are";
  EXPECT_EQ(orphan->parent, nullptr);
  EXPECT_EQ(below->parent, orphan);
  EXPECT_EQ(root->children, std::vector<ObjectBranch*>{last}) << "an orphan is not lifted up";
  EXPECT_EQ(dropped->nodeID, 1) << "a dropped node keeps its number and its links";
  EXPECT_EQ(dropped->parent, root);
  EXPECT_EQ(dropped->children, std::vector<ObjectBranch*>{orphan});
}

TEST(RecordPass, DropsABraceWithChildren) {
  ObjectBranch* root = newRoot();
  ObjectBranch* brace = addLine(root, " { ");
  addLine(brace, "inside");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(valuesOf(run.answer, "contents"), (Values{"\"a.js\"", "\"inside\""}));
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "-1"}));
}

TEST(RecordPass, KeepsTheSubtreeOfAWrapperWithoutACode) {
  ObjectBranch* root = newRoot("a.txt");
  ObjectBranch* scope = addNode(root, kBranchNone, "namespace", "namespace global");
  ObjectBranch* wrapper = addNode(scope, kBranchClass, "class", "class GlobalScope");
  addLine(wrapper, "x = 1");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(valuesOf(run.answer, "contents"),
            (Values{"\"a.txt\"", "\"class GlobalScope\"", "\"x = 1\""}));
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "-1", "1"}));
  EXPECT_EQ(valuesOf(run.answer, "branchTypeAsString"),
            (Values{"\"filepath\"", "\"class\"", "\"classvar\""}));
  EXPECT_TRUE(root->children.empty());
}

TEST(RecordPass, DropsARootWithASkippedName) {
  ObjectBranch* root = newRoot(";");
  ObjectBranch* a = addLine(root, "x = 1");
  addLine(a, "y = 1");
  addLine(root, "z = 1");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(run.printed,
            "nodeid was 1 and now is 0\n"
            "nodeid was 2 and now is 1\n"
            "nodeid was 3 and now is 2\n");
  EXPECT_EQ(valuesOf(run.answer, "nodeID"), (Values{"0", "1", "2"}));
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "0", "-1"}));
}

TEST(RecordPass, OfNothingButDroppedNodesIsAnEmptyArray) {
  ObjectBranch* root = newRoot(")");
  addLine(addLine(root, "});"), "");
  addNode(root, kBranchNone, "line", "a");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(run.answer, "[\n]\n");
  EXPECT_EQ(run.printed, "");
}

TEST(RecordPass, ForgetsTheParentOfANestedRoot) {
  ObjectBranch* outer = newRoot("outer");
  ObjectBranch* root = addNode(outer, kBranchFilePath, "filepath", "inner");
  addLine(root, "a");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "0"}));
  EXPECT_EQ(root->parent, nullptr);
}

TEST(RecordPass, SkipsNullChildren) {
  ObjectBranch* root = newRoot();
  root->children.push_back(nullptr);
  ObjectBranch* a = addLine(root, "a");
  root->children.push_back(nullptr);
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(root->children, std::vector<ObjectBranch*>{a});
  EXPECT_EQ(valuesOf(run.answer, "nodeID"), (Values{"0", "1"}));
}

TEST(RecordPass, ListsANumberOnceButWalksBelowBothNodes) {
  ObjectBranch* root = newRoot();                 // 0
  ObjectBranch* first = addLine(root, "first");   // 1
  ObjectBranch* second = addLine(root, "again");  // 2, numbered as the first
  second->nodeID = 1;
  ObjectBranch* below = addLine(second, "below");  // 3
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(run.printed,
            "nodeid was 0 and now is 0\n"
            "nodeid was 1 and now is 1\n"
            "nodeid was 3 and now is 2\n");
  EXPECT_EQ(valuesOf(run.answer, "contents"), (Values{"\"a.js\"", "\"first\"", "\"below\""}));
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "0", "-1"}));
  EXPECT_EQ(root->children, (std::vector<ObjectBranch*>{first, second}));
  EXPECT_EQ(below->parent, nullptr);
}

}  // namespace
