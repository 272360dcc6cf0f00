// The tree builder: the root, the choice of route and the first nodes of each route.
#include "builder/tree_builder.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/record_values.h"
#include "tree/object_branch.h"

namespace {

using support::valuesOf;
using Values = std::vector<std::string>;

// A root as the tree builder's callers make it: numbered 0, with no other field set.
ObjectBranch* newRoot() {
  currentIndex = 0;
  ObjectBranch* root = allocateObjectBranch();
  root->nodeID = currentIndex++;
  return root;
}

struct Request {
  std::string path;
  std::string text;
  std::string namespaceName = "";
  std::string className = "";
  bool isJavaScript = true;
  std::vector<std::string> defines = {};
};

std::string build(const Request& request, ObjectBranch* root) {
  std::string answer;
  support::stdoutOf([&] {
    answer = TreeBuilderJS(request.path, request.namespaceName, request.className, request.text,
                           request.isJavaScript, root, request.defines)
                 .str();
  });
  return answer;
}

std::string build(const Request& request) { return build(request, newRoot()); }

constexpr std::string_view kPages[] = {"html", "htm", "xhtml", "php"};
constexpr std::string_view kScripts[] = {"js", "jsx", "ts", "tsx", "mjs", "cjs", "es6", "es"};

constexpr std::string_view kOthers[] = {
    "a",        "a.",         "a.txt", "js",     "html",     "a.JS",       "a.Js",
    "a.TSX",    "a.HTML",     "a.Htm", "a.PHP",  "a.mts",    "a.jsm",      "a.es7",
    "a.shtml",  "a.php5",     "a.css", "a.json", "a.js.bak", "a.html.bak", "a.js ",
    "dir.js/a", "dir.html/a", "a.js/", "",       "a.script", "a.j",
};

// Each route leaves a tag that no other route writes.
std::string routeOf(const std::string& path) {
  const std::string answer = build({path, ""});
  std::string route;
  if (answer.find("\"javascript-file\"") != std::string::npos) route += "script";
  if (answer.find("\"html-document\"") != std::string::npos) route += "page";
  if (answer.find("\"scope-wrapper\"") != std::string::npos) route += "scanner";
  return route;
}

TEST(TreeBuilderRoute, IsChosenByTheExtensionAlone) {
  for (const std::string_view extension : kScripts) {
    EXPECT_EQ(routeOf("dir/a." + std::string(extension)), "script") << extension;
    EXPECT_EQ(routeOf("." + std::string(extension)), "script") << extension;
    EXPECT_EQ(routeOf("a.html." + std::string(extension)), "script") << extension;
  }
  for (const std::string_view extension : kPages) {
    EXPECT_EQ(routeOf("dir/a." + std::string(extension)), "page") << extension;
    EXPECT_EQ(routeOf("a.js." + std::string(extension)), "page") << extension;
  }
  for (const std::string_view path : kOthers)
    EXPECT_EQ(routeOf(std::string(path)), "scanner") << testing::PrintToString(path);
}

TEST(TreeBuilder, WithoutRootIsAnErrorAndChangesNothing) {
  currentIndex = 5;
  objectCount = 6;
  chunk = "left";
  std::string answer;
  const std::string printed = support::stdoutOf(
      [&] { answer = TreeBuilderJS("a.js", "", "", "a\n", true, nullptr, {}).str(); });
  EXPECT_EQ(answer, "{ \"error\": \"Invalid root node\" }");
  EXPECT_EQ(printed, "");
  EXPECT_EQ(currentIndex, 5);
  EXPECT_EQ(objectCount, 6);
  EXPECT_EQ(chunk, "left");
}

struct RootCase {
  const char* path;
  const char* contents;
};

constexpr RootCase kRoots[] = {
    {"a.js", "a.js"},         {"/x/y/app.min.js", "app.min.js"}, {"C:\\x\\page.html", "page.html"},
    {"dir.d/noext", "noext"}, {"./../a b.txt", "a b.txt"},
};

TEST(TreeBuilder, TurnsTheRootIntoAFileNode) {
  for (const RootCase& row : kRoots) {
    SCOPED_TRACE(row.path);
    ObjectBranch* root = newRoot();
    root->functionID = 42;
    const std::string answer = build({row.path, ""}, root);
    EXPECT_EQ(root->branchType, kBranchFilePath);
    EXPECT_EQ(root->branchTypeAsString, "filepath");
    EXPECT_EQ(root->contents, row.contents);
    EXPECT_EQ(root->filePath, row.path);
    EXPECT_EQ(root->lineNumber, 0);
    EXPECT_EQ(root->functionID, 42) << "the caller's";
    EXPECT_EQ(root->tags, "");
    EXPECT_EQ(valuesOf(answer, "functionID").front(), "42");
  }
}

void expectNode(const ObjectBranch* node, const ObjectBranch* parent, std::uint32_t code,
                const char* label, const std::string& contents, const char* tags) {
  EXPECT_EQ(node->parent, parent);
  EXPECT_EQ(node->branchType, code);
  EXPECT_EQ(node->branchTypeAsString, label);
  EXPECT_EQ(node->contents, contents);
  EXPECT_EQ(node->tags, tags);
  EXPECT_EQ(node->simpleFunctionName, "");
  EXPECT_EQ(node->lineNumber, 0);
  EXPECT_EQ(node->functionID, -1);
}

TEST(TreeBuilderPage, BeginsWithTwoWrappers) {
  ObjectBranch* root = newRoot();
  const std::string answer = build({"dir/a.html", ""}, root);
  ASSERT_EQ(root->children.size(), 1u);
  const ObjectBranch* document = root->children[0];
  expectNode(document, root, kBranchNamespace, "namespace", "namespace document",
             "\n      \"html-document\"\n");
  EXPECT_EQ(document->filePath, "dir/a.html");
  ASSERT_EQ(document->children.size(), 1u);
  const ObjectBranch* structure = document->children[0];
  expectNode(structure, document, kBranchClass, "class", "HTMLDocument",
             "\n      \"html-structure\"\n");
  EXPECT_EQ(structure->filePath, "dir/a.html");
  EXPECT_TRUE(structure->children.empty());
  EXPECT_EQ(valuesOf(answer, "contents"),
            (Values{"\"a.html\"", "\"namespace document\"", "\"HTMLDocument\""}));
  EXPECT_EQ(valuesOf(answer, "parentID"), (Values{"-1", "0", "1"}));
}

TEST(TreeBuilderPage, IgnoresTheNamesAndTheLanguage) {
  const std::string plain = build({"a.html", ""});
  EXPECT_EQ(build({"a.html", "", "N", "C", false}), plain);
}

TEST(TreeBuilderScript, AddsTheLinesUnderTwoScopeNodes) {
  ObjectBranch* root = newRoot();
  build({"dir/app.js", "function f() {\nreturn 1;\n}\nif (x) {\nconst y = 2;\n}\n"}, root);
  EXPECT_EQ(support::dumpTree(root),
            "filepath\"app.js\"@0(namespace\"namespace global\"@0(class\"App\"@0("
            "function\"function f() {\"@1(line\"return 1;\"@2) "
            "logic\"if (x) {\"@4(line\"const y = 2;\"@5))))");
}

TEST(TreeBuilderScript, OfAnEmptyTextHasOnlyTheScopeNodes) {
  ObjectBranch* root = newRoot();
  build({"a.js", ""}, root);
  EXPECT_EQ(support::dumpTree(root),
            "filepath\"a.js\"@0(namespace\"namespace global\"@0(class\"A\"@0))");
}

TEST(TreeBuilderScript, IgnoresTheNamesAndTheLanguage) {
  const std::string text = "function f() {\nx = [1];\n}\n";
  const std::string plain = build({"a.js", text});
  EXPECT_EQ(build({"a.js", text, "N", "", true}), plain);
  EXPECT_EQ(build({"a.js", text, "N", "C", false}), plain);
}

TEST(TreeBuilderScript, DoesNotChangeTheScannersChunk) {
  chunk = "left";
  build({"a.js", "a\n"});
  EXPECT_EQ(chunk, "left");
}

TEST(TreeBuilderScript, CarriesANulThroughToTheRecords) {
  const std::string nul(1, '\0');
  const std::string answer = build({"a.js", "a" + nul + "b\nc\n"});
  EXPECT_EQ(valuesOf(answer, "contents"),
            (Values{"\"a.js\"", "\"namespace global\"", "\"A\"", "\"a" + nul + "b\"", "\"c\""}));
}

TEST(TreeBuilderScript, RepeatsTheAnswerForTheSameText) {
  const Request first{"a.js", "import a from 'a';\nclass B {\nm() {\n}\n}\n", "", "", true, {"D"}};
  const Request second{"b.js", "x = 1;\n"};
  const std::string answer = build(first);
  const std::string other = build(second);
  EXPECT_EQ(build(first), answer);
  EXPECT_EQ(build(second), other);
  EXPECT_NE(answer, other);
}

}  // namespace
