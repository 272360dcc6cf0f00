// The passes that each route runs over its tree, and their order. Nodes added to the root
// beforehand go through the same passes as those of the route.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "builder/tree_builder.h"
#include "support/capture.h"
#include "support/make_tree.h"
#include "support/record_values.h"
#include "tree/object_branch.h"

namespace {

using support::addNode;
using support::valuesOf;
using Values = std::vector<std::string>;

constexpr const char* kPaths[] = {"a.js", "a.html", "a.txt"};

ObjectBranch* newRoot() {
  currentIndex = 0;
  return addNode(nullptr, kBranchNone, "", "");
}

std::string build(const std::string& path, ObjectBranch* root, const std::string& text = "",
                  const std::vector<std::string>& defines = {}) {
  std::string answer;
  support::stdoutOf([&] { answer = TreeBuilderJS(path, "", "", text, true, root, defines).str(); });
  return answer;
}

TEST(TreeBuilderPasses, EveryRouteTurnsNodesWithClassIntoClasses) {
  for (const char* path : kPaths) {
    ObjectBranch* root = newRoot();
    ObjectBranch* node = addNode(root, kBranchLine, "line", "el.classList.add(x)");
    build(path, root);
    EXPECT_EQ(node->branchType, kBranchClass) << path;
    EXPECT_EQ(node->branchTypeAsString, "class") << path;
  }
}

TEST(TreeBuilderPasses, EveryRouteAppendsTheDefinesAfterThat) {
  for (const char* path : kPaths) {
    const std::string answer = build(path, newRoot(), "", {"class A", "LEVEL 2"});
    EXPECT_EQ(valuesOf(answer, "contents").back(), "\"class A\\nLEVEL 2\"") << path;
    EXPECT_EQ(valuesOf(answer, "branchTypeAsString").back(), "\"preprocessor\"") << path;
    EXPECT_EQ(valuesOf(answer, "parentID").back(), "0") << path;
    EXPECT_EQ(valuesOf(answer, "lineNumber").back(), "0") << path;
    EXPECT_EQ(valuesOf(answer, "filePath").back(), "\"" + std::string(path) + "\"") << path;
  }
}

TEST(TreeBuilderPasses, NoRouteHasADefinesRecordWithoutDefines) {
  for (const char* path : kPaths) {
    for (const std::vector<std::string>& defines :
         {std::vector<std::string>{}, {" "}, {"", "\t"}}) {
      const std::string answer = build(path, newRoot(), "", defines);
      EXPECT_EQ(answer.find("preprocessor"), std::string::npos) << path;
    }
  }
}

TEST(TreeBuilderPasses, OnlyTheScannerRouteKeepsTheChildrenOfABrace) {
  for (const char* path : kPaths) {
    ObjectBranch* root = newRoot();
    addNode(addNode(root, kBranchLine, "line", "{"), kBranchLine, "line", "inside");
    const std::string answer = build(path, root);
    const bool isKept = answer.find("\"inside\"") != std::string::npos;
    EXPECT_EQ(isKept, std::string(path) == "a.txt") << path;
  }
}

TEST(TreeBuilderPasses, TheChildrenOfOtherDroppedTextsAreKept) {
  for (const char* path : kPaths) {
    ObjectBranch* root = newRoot();
    ObjectBranch* orphan =
        addNode(addNode(root, kBranchLine, "line", "});"), kBranchLine, "line", "inside");
    const std::string answer = build(path, root);
    EXPECT_NE(answer.find("\"inside\""), std::string::npos) << path;
    EXPECT_EQ(orphan->parent, nullptr) << path;
  }
}

TEST(TreeBuilderPasses, RemoveBraceOnlyLinesFromAScriptFile) {
  const std::string answer =
      build("app.js", newRoot(), "a({\nb\n};\nc\n});\nvar classes = 1;\nel.classList.add(x);\n");
  EXPECT_EQ(valuesOf(answer, "contents"),
            (Values{"\"app.js\"", "\"namespace global\"", "\"App\"", "\"a({\"", "\"b\"", "\"c\"",
                    "\"var classes = 1;\"", "\"el.classList.add(x);\""}));
  EXPECT_EQ(valuesOf(answer, "branchTypeAsString"),
            (Values{"\"filepath\"", "\"namespace\"", "\"class\"", "\"line\"", "\"line\"",
                    "\"line\"", "\"classvar\"", "\"class\""}));
  EXPECT_EQ(valuesOf(answer, "lineNumber"), (Values{"0", "0", "0", "1", "2", "4", "6", "7"}));
}

TEST(TreeBuilderPasses, StopAtAClassNodeWithClassInItsName) {
  const std::string answer = build("myclass.js", newRoot(), "el.classList.add(x);\n");
  EXPECT_EQ(valuesOf(answer, "contents"), (Values{"\"myclass.js\"", "\"namespace global\"",
                                                  "\"Myclass\"", "\"el.classList.add(x);\""}));
  EXPECT_EQ(valuesOf(answer, "branchTypeAsString"),
            (Values{"\"filepath\"", "\"namespace\"", "\"class\"", "\"line\""}));
}

}  // namespace
