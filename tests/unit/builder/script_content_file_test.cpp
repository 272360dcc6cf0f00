// A whole script file: its two scope nodes, and the lines under them.
#include <string>

#include <gtest/gtest.h>

#include "builder/script_content.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace {

ObjectBranch* newRoot() { return support::addNode(nullptr, kBranchFilePath, "filepath", "file"); }

struct ScopeNames {
  std::string scope;      // contents of the namespace node
  std::string className;  // contents of the class node
};

ScopeNames scopeNamesOf(const std::string& path, const std::string& text) {
  ObjectBranch* root = newRoot();
  ParsePureJavaScript(text, root, path);
  if (root->children.size() != 1 || root->children[0]->children.size() != 1) return {};
  return {root->children[0]->contents, root->children[0]->children[0]->contents};
}

struct ClassNameCase {
  const char* path;
  const char* className;
  const char* why;
};

constexpr ClassNameCase kClassNames[] = {
    {"/a/b/app.js", "App", "the first letter is raised"},
    {"/a/my-app.min.js", "Myappmin", "the last extension goes, then what is not a letter or digit"},
    {"/a/_util.js", "util", "required: raised before the symbol goes"},
    {"/a/2d_math.mjs", "2dmath", "a digit stays in front"},
    {"/a/---.js", "Script", "nothing is left"},
    {"/a/.js", "Script", "there is no name"},
    {"/a/", "Script", ""},
    {"", "Script", ""},
    {"app", "App", "no extension"},
    {"C:\\x\\app.js", "App", "a backslash separates directories too"},
    {"/a.b/c", "C", "a dot in a directory"},
    {"/a/ABC.js", "ABC", "the rest keeps its case"},
    {"/a/aBc.ts", "ABc", ""},
    {"/a/a b.js", "Ab", ""},
    {"/a/$scope.js", "scope", ""},
    {"/a/{a.js", "a", "the neighbour after the letters is not raised either"},
    {"/a/a9z0AZ.js", "A9z0AZ", "both ends of each range stay"},
    {"/a/x@[`{:y.js", "Xy", "the neighbours of each range go"},
    {"/a/\xC3\xA9t\xC3\xA9.js", "t", "bytes above 0x7F are neither raised nor kept"},
};

TEST(ScriptFile, NamesTheClassNodeAfterTheFile) {
  for (const ClassNameCase& row : kClassNames) {
    SCOPED_TRACE(std::string(row.path) + "  // " + row.why);
    const ScopeNames names = scopeNamesOf(row.path, "a();\n");
    EXPECT_EQ(names.className, row.className);
    EXPECT_EQ(names.scope, "namespace global");
  }
}

struct ScopeCase {
  const char* text;
  const char* scope;
  const char* why;
};

constexpr ScopeCase kScopes[] = {
    {"", "namespace global", ""},
    {"var a;", "namespace global", ""},
    {"import a from 'a';", "namespace module:my-app.min", ""},
    {"export { a };", "namespace module:my-app.min", ""},
    {"x();\nexport default a;", "namespace module:my-app.min", "anywhere in the text"},
    {"var s = 'import a';", "namespace module:my-app.min", "required: also in a string"},
    {"reimport a", "namespace module:my-app.min", "required: also inside a word"},
    {"module.exports = a;", "namespace commonjs:my-app.min", ""},
    {"a = require('a');", "namespace commonjs:my-app.min", ""},
    {"notmodule.exportsx", "namespace commonjs:my-app.min", "required: also inside a word"},
    {"require('a');\nimport b", "namespace module:my-app.min", "module words win"},
    {"module.exports = a; export b", "namespace module:my-app.min", "module words win"},
    {"import", "namespace global", "no blank after it"},
    {"import('a')", "namespace global", ""},
    {"import\ta", "namespace global", ""},
    {"export\n{ a }", "namespace global", ""},
    {"exports.a = 1", "namespace global", ""},
    {"Import a", "namespace global", "the case counts"},
    {"module.export=a", "namespace global", ""},
    {"module.export = a", "namespace module:my-app.min", "required: a blank after export"},
    {"module .exports = a", "namespace global", ""},
    {"require ('a')", "namespace global", ""},
    {"require", "namespace global", ""},
};

TEST(ScriptFile, NamesTheNamespaceNodeByTheModuleWordsOfTheText) {
  for (const ScopeCase& row : kScopes) {
    SCOPED_TRACE(std::string(row.text) + "  // " + row.why);
    const ScopeNames names = scopeNamesOf("/a/my-app.min.js", row.text);
    EXPECT_EQ(names.scope, row.scope);
    EXPECT_EQ(names.className, "Myappmin");
  }
}

TEST(ScriptFile, KeepsTheRawFileNameInTheScope) {
  EXPECT_EQ(scopeNamesOf("/a/_x y.js", "import a").scope, "namespace module:_x y");
  EXPECT_EQ(scopeNamesOf("/a/.js", "import a").scope, "namespace module:");
  EXPECT_EQ(scopeNamesOf("C:\\d\\$.js", "require(").scope, "namespace commonjs:$");
}

TEST(ScriptFile, FillsBothScopeNodes) {
  currentIndex = 4;
  ObjectBranch* root = newRoot();  // takes 4
  ParsePureJavaScript("a();\n", root, "dir/app.js");
  ASSERT_EQ(root->children.size(), 1u);
  const ObjectBranch* scope = root->children[0];
  EXPECT_EQ(scope->parent, root);
  EXPECT_EQ(scope->branchType, kBranchNamespace);
  EXPECT_EQ(scope->branchTypeAsString, "namespace");
  EXPECT_EQ(scope->contents, "namespace global");
  EXPECT_EQ(scope->tags, "\n      \"javascript-file\"\n");
  EXPECT_EQ(scope->filePath, "dir/app.js");
  EXPECT_EQ(scope->simpleFunctionName, "");
  EXPECT_EQ(scope->lineNumber, 0);
  EXPECT_EQ(scope->functionID, -1);
  EXPECT_EQ(scope->nodeID, 5);
  ASSERT_EQ(scope->children.size(), 1u);
  const ObjectBranch* main = scope->children[0];
  EXPECT_EQ(main->parent, scope);
  EXPECT_EQ(main->branchType, kBranchClass);
  EXPECT_EQ(main->branchTypeAsString, "class");
  EXPECT_EQ(main->contents, "App");
  EXPECT_EQ(main->tags, "\n      \"main-script\"\n");
  EXPECT_EQ(main->filePath, "dir/app.js");
  EXPECT_EQ(main->simpleFunctionName, "");
  EXPECT_EQ(main->lineNumber, 0);
  EXPECT_EQ(main->functionID, -1);
  EXPECT_EQ(main->nodeID, 6);
  ASSERT_EQ(main->children.size(), 1u);
  EXPECT_EQ(main->children[0]->nodeID, 7);
  EXPECT_EQ(currentIndex, 8);
}

TEST(ScriptFile, AddsTheLinesUnderTheClassNodeFromLineOne) {
  ObjectBranch* root = newRoot();
  ParsePureJavaScript("\nfunction f() {\nreturn 1;\n}\nvar x = 1;\n", root, "a.js");
  EXPECT_EQ(support::dumpTree(root),
            "filepath\"file\"@0(namespace\"namespace global\"@0(class\"A\"@0("
            "function\"function f() {\"@2(line\"return 1;\"@3) classvar\"var x = 1;\"@5)))");
}

TEST(ScriptFile, WithoutTextStillMakesTheScopeNodes) {
  ObjectBranch* root = newRoot();
  ParsePureJavaScript("", root, "a.js");
  EXPECT_EQ(support::dumpTree(root),
            "filepath\"file\"@0(namespace\"namespace global\"@0(class\"A\"@0))");
}

TEST(ScriptFile, WithoutRootDoesNothing) {
  currentIndex = 9;
  objectCount = 2;
  ParsePureJavaScript("import a\n", nullptr, "a.js");
  EXPECT_EQ(currentIndex, 9);
  EXPECT_EQ(objectCount, 2);
}

}  // namespace
