#include "refine/qualified_names.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "support/numbered_nodes.h"

namespace {

using support::addNode;
using std::string_view_literals::operator""sv;

// ---- extractClassName ----

struct ClassNameCase {
  std::string_view why;
  std::string_view text;
  std::string_view name;
};

constexpr ClassNameCase kClassNames[] = {
    {"no text", ""sv, ""sv},
    {"a name", "class Foo"sv, "Foo"sv},
    {"with a body", "class Foo {"sv, "Foo"sv},
    {"the brace right behind it", "class Foo{"sv, "Foo"sv},
    {"white space before and between", " \t class\n\tFoo"sv, "Foo"sv},
    {"the word alone", "class"sv, ""sv},
    {"another word", "function Foo"sv, ""sv},
    {"case counts", "Class Foo"sv, ""sv},
    {"a longer word", "classes Foo"sv, ""sv},
    {"not the first word", "export class Foo {"sv, ""sv},
    {"behind an assignment", "module.exports = class Foo {"sv, ""sv},
    {"required: a brace is a name too", "class {"sv, "{"sv},
    {"and any other part", "class."sv, "."sv},
    {"a dot ends the name", "class Foo.Bar"sv, "Foo"sv},
    {"but not behind a digit", "class Foo1.Bar"sv, "Foo1.Bar"sv},
    {"a quoted name keeps its doubled quote", "class 'Foo'"sv, "''Foo'"sv},
    {"a double-quoted one has none", "class \"Foo\""sv, "\"Foo\""sv},

    {"a plain base", "class Foo extends Base {"sv, "Foo"sv},
    {"the base of an element", "class Foo extends HTMLElement {"sv, "WebComponent:Foo"sv},
    {"a certain element", "class Foo extends HTMLDivElement {"sv, "WebComponent:Foo"sv},
    {"any name with the word in it", "class Foo extends MyElementBase {"sv, "WebComponent:Foo"sv},
    {"the word alone as the base", "class Foo extends Element"sv, "WebComponent:Foo"sv},
    {"case counts in the base", "class Foo extends htmlelement {"sv, "Foo"sv},
    {"a byte short", "class Foo extends HTMLElemen {"sv, "Foo"sv},
    {"without its first byte", "class Foo extends HTMLelement {"sv, "Foo"sv},
    {"only the next part counts", "class Foo extends ns.MyElement {"sv, "Foo"sv},
    {"a digit joins the parts", "class Foo extends ns1.MyElement {"sv, "WebComponent:Foo"sv},
    {"a bracket is the next part", "class Foo extends (MyElement) {"sv, "Foo"sv},
    {"a string may be", "class Foo extends 'MyElement'"sv, "WebComponent:Foo"sv},
    {"over two lines", "class Foo\n  extends MyElement {"sv, "WebComponent:Foo"sv},
    {"not directly behind the name", "class Foo { extends MyElement"sv, "WebComponent:Foo"sv},
    {"nothing behind it", "class Foo extends"sv, "Foo"sv},
    {"a longer word is another", "class Foo extendsBar {"sv, "Foo"sv},
    {"so is one in a string", "class Foo \"extends\" MyElement"sv, "Foo"sv},
    {"the first one decides", "class Foo extends Base extends MyElement"sv, "Foo"sv},
    {"and not the second", "class Foo extends MyElement extends Base"sv, "WebComponent:Foo"sv},
    {"the base's word elsewhere", "class MyElement extends Base {"sv, "MyElement"sv},
    {"without a name", "class extends HTMLElement {"sv, "WebComponent:extends"sv},
    {"the second word is the last", "class extends"sv, "extends"sv},
};

TEST(QualifiedNames, ClassNames) {
  for (const ClassNameCase& row : kClassNames)
    EXPECT_EQ(extractClassName(std::string(row.text)), row.name)
        << row.why << ": " << testing::PrintToString(row.text);
}

// ---- climbForLongName ----

// A node in a script file's tree: root, namespace, the file's class, the node.
ObjectBranch* nodeInScript(std::string_view contents, const std::string& path) {
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "greet.js", path);
  ObjectBranch* scope = addNode(root, kBranchNamespace, "namespace", "namespace global", path);
  ObjectBranch* fileClass = addNode(scope, kBranchClass, "class", "Greet", path);
  return addNode(fileClass, kBranchLine, "line", std::string(contents), path);
}

struct LongNameCase {
  std::string_view why;
  std::string_view contents;
  std::string_view path;
  std::string_view name;
};

constexpr std::string_view kPath = "/src/greet.js";

constexpr LongNameCase kLongNames[] = {
    {"nothing to tell", "var x = 1;", kPath, "global"},
    {"no text", "", kPath, "global"},

    {"a class", "class Foo {", kPath, "global.Foo"},
    {"with a base", "class Foo extends Base {", kPath, "global.Foo"},
    {"of an element", "class Foo extends HTMLElement {", kPath, "webcomponent.WebComponent:Foo"},
    {"of a certain element", "class Foo extends HTMLButtonElement {", kPath,
     "webcomponent.WebComponent:Foo"},
    {"of one that makes no web component", "class Foo extends HTMLSpanElement {", kPath,
     "global.WebComponent:Foo"},
    {"the letters alone are no name", "el.classList.add(x);", kPath, "global"},
    {"a class without a name", "class", kPath, "global"},

    {"an exported default", "export default class Foo {", kPath, "module:greet"},
    {"an exported class", "export class Foo {", kPath, "greet"},
    {"an export list", "export { a, b };", kPath, "module:greet"},
    {"an exported name", "export const a = 1;", kPath, "greet"},
    {"the letters alone are an export", "reexported();", kPath, "greet"},
    {"a byte short of an export", "expor(a);", kPath, "global"},
    {"an export without its first byte", "xport(a);", kPath, "global"},
    {"an assigned class", "module.exports = class Foo {", kPath, "commonjs:greet"},
    {"an assigned member", "exports.a = 1;", kPath, "commonjs:greet"},
    {"a definition call", "define(['a'], function(a) {", kPath, "amd"},
    {"one that exports", "define(['exports'], function(exports) {", kPath, "amd:greet"},
    {"one without a function", "define(x);", kPath, "global"},
    {"a universal head", "if (typeof exports === 'object' && typeof module) {", kPath, "umd:greet"},
    {"a registration", "customElements.define('a-b', AB);", kPath, "webcomponent"},

    {"an invoked function", "(function () {", kPath, "iife"},
    {"that exports", "(function () { module.exports = a;", kPath, "iife"},
    {"an invoked arrow", "(() => {", kPath, "iife"},
    {"a module before a web component", "export default class A extends HTMLElement {", kPath,
     "module:greet"},
    {"a web component that is exported", "export class A extends HTMLElement {", kPath,
     "webcomponent"},

    {"a page", "class Foo {", "/src/a.html", "window.Foo"},
    {"a page without a class", "var x;", "/src/a.html", "window"},
    {"the short extension does not count", "class Foo {", "/src/a.htm", "global.Foo"},
    {"nor does the long one", "class Foo {", "/src/a.xhtml", "global.Foo"},
    {"nor a shorter one", "class Foo {", "/src/a.tml", "global.Foo"},
    {"nor upper case", "class Foo {", "/src/a.HTML", "global.Foo"},
    {"nor a directory's", "class Foo {", "/src.html/a", "global.Foo"},
    {"required: the whole path is searched for script", "class Foo {", "/scripts/app.js",
     "window.Foo"},
    {"within a word too", "var x;", "/typescript/app.ts", "window"},
    {"and in the file's name", "var x;", "javascript.js", "window"},
    {"a byte short", "var x;", "/scrip/app.js", "global"},
    {"without its first byte", "var x;", "/cripts/app.js", "global"},
    {"case counts there", "var x;", "/Scripts/app.js", "global"},
    {"no path", "var x;", "", "global"},
    {"an export goes before the page", "export class Foo {", "/scripts/app.js", "app"},
    {"so does the kind of module", "module.exports = a;", "/src/a.html", "commonjs:a"},
    {"only the last extension goes", "export class Foo {", "/src/app.min.js", "app.min"},
    {"a file without a name", "export default a;", "/src/.hidden", "module"},
    {"makes an export count for nothing", "export const a = 1;", "/src/.hidden", "global"},
    {"also before a page", "export const a = 1;", "/src/.html", "window"},
};

TEST(QualifiedNames, LongNames) {
  for (const LongNameCase& row : kLongNames)
    EXPECT_EQ(climbForLongName(nodeInScript(row.contents, std::string(row.path))), row.name)
        << row.why << ": " << row.contents << " in " << row.path;
}

TEST(QualifiedNames, LongNameOfNull) { EXPECT_EQ(climbForLongName(nullptr), "global"); }

// A node below its ancestors, outermost first.
struct AncestryCase {
  std::string_view why;
  std::vector<std::string> texts;
  std::string_view name;
};

TEST(QualifiedNames, LongNamesFromAbove) {
  const AncestryCase kCases[] = {
      {"an invoked function", {"(function () {", "var x = 1;"}, "iife"},
      {"a class", {"class Foo {", "var x = 1;"}, "global.Foo"},
      {"a class in an invoked function", {"(function () {", "class Foo {", "x;"}, "iife.Foo"},
      {"the nearest class", {"class Foo {", "class Bar {", "x;"}, "global.Bar"},
      {"required: the nearest letters, though they give no name",
       {"class Foo {", "el.classList.add(x);"},
       "global"},
      {"the nearest kind", {"(function () {", "export default x;", "y;"}, "module:a"},
      {"not the first of the order", {"export default x;", "(function () {", "y;"}, "iife"},
      {"kind and class from two nodes", {"module.exports = {", "class Foo {"}, "commonjs:a.Foo"},
      {"an export above a class", {"export const x = {", "class Foo {"}, "a.Foo"},
      {"an element above",
       {"class Foo extends HTMLElement {", "x;"},
       "webcomponent.WebComponent:Foo"},
      {"the file's name is a text too", {"class.js", "x;"}, "global.."},
      {"a file's name without a class", {"myclass.js", "x;"}, "global"},
      {"a file named after an export", {"export.js", "x;"}, "a"},
  };
  for (const AncestryCase& row : kCases) {
    ObjectBranch* node = nullptr;
    for (const std::string& text : row.texts) node = addNode(node, kBranchLine, "line", text);
    EXPECT_EQ(climbForLongName(node), row.name) << row.why;
  }
}

// The climb reads the node and nine ancestors, and no more.
TEST(QualifiedNames, TheClimbIsTenNodesLong) {
  struct Case {
    std::string_view top;
    std::string_view seen;
  };
  for (const Case& row :
       {Case{"class Foo {", "global.Foo"}, Case{"(function () {", "iife"},
        Case{"define(function () {", "amd"}, Case{"export const x;", "a"},
        Case{"export { x };", "module:a"}, Case{"customElements.define(x);", "webcomponent"}}) {
    for (const int ancestors : {1, 8, 9, 10, 11, 50}) {
      ObjectBranch* node = addNode(nullptr, kBranchLine, "line", std::string(row.top));
      for (int i = 0; i < ancestors; ++i) node = addNode(node, kBranchLine, "line", "x;");
      EXPECT_EQ(climbForLongName(node), ancestors <= 9 ? row.seen : "global")
          << row.top << " above " << ancestors;
    }
  }
}

// The module is named after the file of the exporting node; the node itself decides whether it is a
// page.
TEST(QualifiedNames, PathsOfTwoNodes) {
  ObjectBranch* exporting = addNode(nullptr, kBranchLine, "line", "export const x;", "/src/lib.js");
  EXPECT_EQ(climbForLongName(addNode(exporting, kBranchLine, "line", "y;", "/src/a.html")), "lib");
  ObjectBranch* page = addNode(nullptr, kBranchLine, "line", "x;", "/scripts/a.html");
  EXPECT_EQ(climbForLongName(addNode(page, kBranchLine, "line", "y;", "/src/b.js")), "global");
}

TEST(QualifiedNames, TheClimbWritesNothing) {
  ObjectBranch* root = addNode(nullptr, kBranchNone, "", "class A {");
  ObjectBranch* node = addNode(root, kBranchLine, "line", "class Foo {");
  node->tags = "t";
  climbForLongName(node);
  EXPECT_EQ(support::dumpTree(root), "\"class A {\"@0(line\"class Foo {\"@0)");
  EXPECT_EQ(root->branchType, 13U);
  EXPECT_EQ(node->branchType, 3U);
  EXPECT_EQ(node->simpleFunctionName, "");
  EXPECT_EQ(node->tags, "t");
}

// ---- SpelunkForClasses, ExpandClassnames ----

struct LettersCase {
  std::string_view contents;
  bool holds;
};

constexpr LettersCase kLetters[] = {
    {"class Foo {", true},
    {"class", true},
    {"var classes = 1;", true},
    {"el.classList.add(x);", true},
    {"function classify() {", true},
    {"x = \"a class\";", true},
    {"subclass", true},
    {"namespace module:myclass", true},
    {"Class Foo {", false},
    {"clas s", false},
    {"clss", false},
    {"lass", false},
    {"clas", false},
    {"CLASS", false},
    {"", false},
    {"Greet", false},
};

TEST(QualifiedNames, AnyTextThatContainsClassBecomesAClass) {
  for (const LettersCase& row : kLetters) {
    ObjectBranch* node = addNode(nullptr, kBranchLoop, "loop", std::string(row.contents));
    SpelunkForClasses(node);
    EXPECT_EQ(node->branchType, row.holds ? 7U : 10U) << row.contents;
    EXPECT_EQ(node->branchTypeAsString, row.holds ? "class" : "loop") << row.contents;
    EXPECT_EQ(node->contents, row.contents);
  }
}

TEST(QualifiedNames, NothingElseChangesInAClass) {
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "a.js");
  currentIndex = 9;
  ObjectBranch* node = addNode(root, kBranchNone, "", "class Foo {", "/x/a.js");
  node->lineNumber = 4;
  node->tags = "t";
  SpelunkForClasses(node);
  EXPECT_EQ(node->parent, root);
  EXPECT_EQ(node->lineNumber, 4);
  EXPECT_EQ(node->filePath, "/x/a.js");
  EXPECT_EQ(node->simpleFunctionName, "");
  EXPECT_EQ(node->functionID, -1);
  EXPECT_EQ(node->tags, "t");
  EXPECT_EQ(node->nodeID, 9);
  EXPECT_EQ(currentIndex, 10);
}

// root(a(class b(class c)) null d(e(class f) class g))
ObjectBranch* treeWithClasses() {
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "myclass.js");
  ObjectBranch* a = addNode(root, kBranchNone, "", "a");
  addNode(addNode(a, kBranchNone, "", "class b"), kBranchLine, "line", "class c");
  root->children.push_back(nullptr);
  ObjectBranch* d = addNode(root, kBranchLine, "line", "d");
  addNode(addNode(d, kBranchLoop, "loop", "e"), kBranchLine, "line", "class f");
  addNode(d, kBranchLine, "line", "class g");
  return root;
}

constexpr std::string_view kExpanded =
    "filepath\"myclass.js\"@0(\"a\"@0(class\"class b\"@0(line\"class c\"@0)) "
    "line\"d\"@0(loop\"e\"@0(class\"class f\"@0) class\"class g\"@0))";

TEST(QualifiedNames, ExpandGoesDownToTheFirstClassOnEachPath) {
  ObjectBranch* root = treeWithClasses();
  ExpandClassnames(root);
  ASSERT_EQ(root->children.size(), 3U);
  EXPECT_EQ(root->children[1], nullptr) << "an empty entry stays";
  root->children.erase(root->children.begin() + 1);
  EXPECT_EQ(support::dumpTree(root), kExpanded) << "the root is ignored";
  EXPECT_EQ(root->branchType, 11U);
  const ObjectBranch* a = root->children[0];
  EXPECT_EQ(a->branchType, 13U);
  EXPECT_EQ(a->children[0]->branchType, 7U);
  EXPECT_EQ(a->children[0]->children[0]->branchType, 3U);
}

TEST(QualifiedNames, SpelunkChecksTheNodeItself) {
  ObjectBranch* root = treeWithClasses();
  SpelunkForClasses(root);
  root->children.erase(root->children.begin() + 1);
  EXPECT_EQ(support::dumpTree(root),
            "class\"myclass.js\"@0(\"a\"@0(\"class b\"@0(line\"class c\"@0)) "
            "line\"d\"@0(loop\"e\"@0(line\"class f\"@0) line\"class g\"@0))");
}

TEST(QualifiedNames, SpelunkSkipsNullEntries) {
  ObjectBranch* top = addNode(nullptr, kBranchLine, "line", "a");
  top->children.push_back(nullptr);
  addNode(top, kBranchLine, "line", "class b");
  SpelunkForClasses(top);
  EXPECT_EQ(top->branchType, 3U);
  EXPECT_EQ(top->children[1]->branchType, 7U);
}

// The wrappers of the scanner route: a class wrapper gets its code here, unless the text of the
// wrapper above it contains "class".
TEST(QualifiedNames, Wrappers) {
  struct Case {
    std::string_view outer;
    std::string_view inner;
    std::uint32_t outerCode;
    std::uint32_t innerCode;
  };
  for (const Case& row : {Case{"namespace global", "class GlobalScope", 13, 7},
                          Case{"namespace module:myclass", "class GlobalScope", 7, 13},
                          Case{"namespace global", "GlobalScope", 13, 13}}) {
    ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "a.txt");
    ObjectBranch* outer = addNode(root, kBranchNone, "", std::string(row.outer));
    ObjectBranch* inner = addNode(outer, kBranchNone, "", std::string(row.inner));
    ExpandClassnames(root);
    EXPECT_EQ(outer->branchType, row.outerCode) << row.outer;
    EXPECT_EQ(inner->branchType, row.innerCode) << row.outer;
  }
}

TEST(QualifiedNames, Null) {
  SpelunkForClasses(nullptr);
  ExpandClassnames(nullptr);
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "class.js");
  ExpandClassnames(root);
  EXPECT_EQ(support::dumpTree(root), "filepath\"class.js\"@0");
}

TEST(QualifiedNames, AMillionNodesDeep) {
  std::vector<ObjectBranch> chain = support::deepChain(1'000'000, "x;");
  chain.back().contents = "class Foo {";
  ExpandClassnames(&chain.front());
  EXPECT_EQ(chain.back().branchType, 7U);
  EXPECT_EQ(chain.back().branchTypeAsString, "class");
  EXPECT_EQ(chain[chain.size() - 2].branchType, 13U);
}

}  // namespace
