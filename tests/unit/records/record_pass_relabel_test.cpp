// How the record pass sets a node's label, tags and function name from its text.
#include <cstdint>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "records/record_pass.h"
#include "support/make_tree.h"
#include "support/record_run.h"
#include "tree/object_branch.h"

namespace {

using support::addLine;
using support::addNode;
using support::newRoot;
using support::recordRunOf;

constexpr const char* kVariable = "\n      \"variable\"\n";
constexpr const char* kIife = "\n      \"iife\"\n";
constexpr const char* kConstructor = "\n      \"constructor\"\n";
constexpr const char* kGlobal = "\n      \"global-function\"\n";

struct RelabelCase {
  const char* contents;
  const char* parentLabel;
  const char* before;  // the parser's label
  const char* label;
  const char* tags;
  const char* name;  // the parser's was "old"
  const char* why;
};

constexpr RelabelCase kCases[] = {
    // Logic, imports and loops come first, and keep the parser's name.
    {"if (x) {", "class", "function", "logic", "", "old", "required: a function to the parser"},
    {"if (x = 1)", "class", "line", "logic", "", "old", "logic before a variable"},
    {"else {", "function", "line", "logic", "", "old", ""},
    {"switch (x) {", "class", "function", "logic", "", "old", ""},
    {"try {", "class", "logic", "logic", "", "old", ""},
    {"catch (e) {", "class", "function", "logic", "", "old", ""},
    {"case 1: x = 2;", "function", "classvar", "logic", "", "old", ""},
    {"default: x = 2;", "function", "classvar", "logic", "", "old", ""},
    {"import a from b;", "class", "line", "define", "", "old", ""},
    {"import('x').then(function() {", "class", "line", "define", "", "old", ""},
    {"export { a };", "class", "line", "define", "", "old", ""},
    {"export const f = () => {", "class", "function", "define", "", "old", ""},
    {"export default function() {", "class", "function", "define", "", "old", ""},
    {"export class A {", "class", "class", "define", "", "old", "no protection for a class node"},
    {"require('a');", "class", "line", "define", "", "old", ""},
    {"module.exports = x;", "class", "classvar", "define", "", "old", ""},
    {"const b = exports.a;", "class", "classvar", "define", "", "old", "a mention is enough"},
    {"if (exports.a) {", "class", "function", "logic", "", "old", "logic before an import"},
    {"while (go) {", "function", "function", "loop", "", "old", "required: as above"},
    {"for (i = 0; i < n; i++) {", "class", "function", "loop", "", "old", ""},
    {"for (const a of exports.b) {", "class", "function", "define", "", "old", "import first"},
    {"do {", "class", "loop", "loop", "", "old", ""},
    // Functions: the name is replaced, even by an empty one.
    {"function foo(a) {", "class", "function", "function", "", "foo", ""},
    {"function foo(a) {", "function", "line", "function", "", "foo", "whatever the parser said"},
    {"function classify() {", "class", "class", "function", "", "classify", "a class node too"},
    {"export function foo() {", "class", "function", "function", "", "foo", "no import"},
    {"export async function foo() {", "class", "line", "function", "", "foo", "no import"},
    {"const f = () => {", "class", "function", "function", "", "f", "before a variable"},
    {"x: function() {", "class", "line", "function", "", "function", "required: that name"},
    {"} catch (e) {", "class", "function", "function", "", "catch", "begins with }: no logic"},
    {"function", "class", "line", "function", "", "", "no name empties the field"},
    // Constructors: the part after a leading "function" begins with a capital.
    {"function Foo(a) {", "class", "function", "function", kConstructor, "Foo", ""},
    {"function Foo", "class", "line", "function", kConstructor, "Foo", "two parts are enough"},
    {"function Z() {", "class", "function", "function", kConstructor, "Z", ""},
    {"function A() {", "class", "function", "function", kConstructor, "A", ""},
    {"function _Foo() {", "class", "function", "function", "", "_Foo", ""},
    {"function $Foo() {", "class", "function", "function", "", "$Foo", ""},
    {"function fooBar() {", "class", "function", "function", "", "fooBar", ""},
    {"function \xC3\x89() {", "class", "function", "function", "", "\xC3\x89", "no ASCII letter"},
    {"function* Gen() {", "class", "function", "function", "", "*", "part 1 is the star"},
    {"function (Foo) {", "class", "function", "function", "", "(", "part 1 is the bracket"},
    {"async function Foo() {", "class", "function", "function", "", "Foo", "part 0 is async"},
    {"export function Foo() {", "class", "function", "function", "", "Foo", "part 0 is export"},
    {"var F = function Foo() {", "class", "function", "function", "", "F", ""},
    // Global functions: the parent's label is "namespace".
    {"function foo(a) {", "namespace", "function", "function", kGlobal, "foo", ""},
    {"foo(a) {", "namespace", "line", "function", kGlobal, "foo", ""},
    {"function foo(a) {", "filepath", "function", "function", "", "foo", ""},
    {"function foo(a) {", "Namespace", "function", "function", "", "foo", ""},
    {"function Foo() {", "namespace", "function", "function",
     "\n      \"constructor\"\n\n      \"global-function\"\n", "Foo", "required: no comma"},
    // Wrapped functions that something else in their text makes functions.
    {"(function() { x = (a) => a", "class", "line", "function", kIife, "", ""},
    {"(async () => { x = (a) => a", "class", "line", "function", kIife, "", ""},
    {"(() => { x = (a) => a", "class", "line", "function", kIife, "", ""},
    {"((b) => { x = (a) => a", "class", "line", "function", "", "", "an arrow with a parameter"},
    {"(function() { x = (a) => a", "namespace", "line", "function",
     "\n      \"iife\"\n\n      \"global-function\"\n", "", ""},
    {"(function() {", "class", "line", "line", "", "old", "required: not a function by itself"},
    // Variables: the label depends on the parent's.
    {"var x = 1;", "class", "classvar", "classvar", kVariable, "old", ""},
    {"var x = 1;", "function", "classvar", "line", kVariable, "old", ""},
    {"x = 1;", "namespace", "classvar", "line", kVariable, "old", ""},
    {"x = 1;", "filepath", "function", "line", kVariable, "old", "whatever the parser said"},
    {"x = 1;", "Class", "line", "line", kVariable, "old", ""},
    {"let y", "class", "line", "classvar", kVariable, "old", ""},
    {"const a = require('a');", "class", "classvar", "classvar", kVariable, "old", "no import"},
    {"const add = a => {", "class", "function", "classvar", kVariable, "old",
     "required: a function to the parser"},
    {"x = y => {", "function", "function", "line", kVariable, "old", "required: as above"},
    {"return a = 1;", "function", "line", "line", kVariable, "old", "an = is enough"},
    {"return a = 1;", "class", "line", "classvar", kVariable, "old", ""},
    {"class A { x = 1", "class", "class", "classvar", kVariable, "old", "a class node too"},
    {"namespace a = b", "class", "namespace", "namespace", "", "old", "a namespace node stays"},
    // No rule applies: the parser's label stays.
    {"return x;", "function", "line", "line", "", "old", ""},
    {"a();", "class", "container", "container", "", "old", ""},
    {"el.classList.add(x);", "class", "class", "class", "", "old", ""},
    {"class A {", "class", "class", "class", "", "old", ""},
    {"x == 1", "class", "line", "line", "", "old", ""},
    {" if (x)", "class", "line", "line", "", "old", "nothing is trimmed first"},
    {"Import a", "class", "line", "line", "", "old", ""},
};

TEST(Relabel, TheFirstMatchingRuleDecides) {
  for (const RelabelCase& row : kCases) {
    SCOPED_TRACE(std::string(row.contents) + " under " + row.parentLabel + "  // " + row.why);
    ObjectBranch* parent = addNode(newRoot(), kBranchContainer, row.parentLabel, "parent");
    ObjectBranch* node = addNode(parent, kBranchContainer, row.before, row.contents);
    node->simpleFunctionName = "old";
    recordRunOf(parent->parent);
    EXPECT_EQ(parent->branchTypeAsString, row.parentLabel);
    EXPECT_EQ(node->branchTypeAsString, row.label);
    EXPECT_EQ(node->tags, row.tags);
    EXPECT_EQ(node->simpleFunctionName, row.name);
    EXPECT_EQ(node->branchType, kBranchContainer);
  }
}

struct TagCase {
  const char* contents;
  const char* before;
  const char* after;
};

constexpr TagCase kTagCases[] = {
    {"x = 1;", "", "\n      \"variable\"\n"},
    {"x = 1;", "\n      \"src\"\n", "\n      \"src\"\n    \"variable\"\n"},
    {"x = 1;", " ", "     \"variable\"\n"},
    {"function F() {", "\n      \"src\"\n", "\n      \"src\"\n\n      \"constructor\"\n"},
    {"if (x)", "\n      \"src\"\n", "\n      \"src\"\n"},
    {"a();", "\n      \"src\"\n", "\n      \"src\"\n"},
};

TEST(Relabel, AddsToExistingTags) {
  for (const TagCase& row : kTagCases) {
    SCOPED_TRACE(std::string(row.contents) + " with " + testing::PrintToString(row.before));
    ObjectBranch* root = newRoot();
    ObjectBranch* node = addLine(root, row.contents);
    node->tags = row.before;
    recordRunOf(root);
    EXPECT_EQ(node->tags, row.after);
  }
}

TEST(Relabel, ALinkWithAnEqualsSignIsAVariable) {
  for (const auto& [parentLabel, label] :
       {std::pair("htmlelement", "line"), {"class", "classvar"}}) {
    ObjectBranch* element = addNode(newRoot("a.html"), kBranchHtmlElement, parentLabel, "a");
    ObjectBranch* link = addNode(element, kBranchLink, "link", "href: page?a=1", "a.html");
    link->tags = "\n      \"href\"\n";
    recordRunOf(element->parent);
    EXPECT_EQ(link->branchTypeAsString, label);
    EXPECT_EQ(link->tags, "\n      \"href\"\n    \"variable\"\n");
  }
}

struct DefineCase {
  const char* contents;
  const char* label;
};

constexpr DefineCase kDefineCases[] = {
    {"DEBUG\nLEVEL 2", "preprocessor"},
    {"if\nB", "logic"},
    {"import x\nB", "define"},
    {"A\nmodule.exports", "define"},
    {"for\nB", "loop"},
    {"A\nfor", "preprocessor"},
    {"A = 1", "preprocessor"},
    {"function F() {", "preprocessor"},
};

TEST(Relabel, ADefinesNodeGoesThroughTheFirstThreeRulesOnly) {
  for (const DefineCase& row : kDefineCases) {
    SCOPED_TRACE(row.contents);
    ObjectBranch* root = newRoot();
    ObjectBranch* node = addNode(root, kBranchAppendedDefine, "preprocessor", row.contents);
    recordRunOf(root);
    EXPECT_EQ(node->branchTypeAsString, row.label);
    EXPECT_EQ(node->tags, "");
    EXPECT_EQ(node->simpleFunctionName, "");
  }
}

TEST(Relabel, TheRootKeepsItsLabelWhateverItsName) {
  for (const char* name : {"for.js", "if", "import.js", "x = 1", "function f() {"}) {
    ObjectBranch* root = newRoot(name);
    recordRunOf(root);
    EXPECT_EQ(root->branchTypeAsString, "filepath") << name;
    EXPECT_EQ(root->tags, "") << name;
    EXPECT_EQ(root->simpleFunctionName, "") << name;
  }
}

TEST(Relabel, AnOrphanKeepsTheParsersFields) {
  ObjectBranch* root = newRoot();
  ObjectBranch* orphan = addNode(addLine(root, "{"), kBranchClass, "class", "x = 1");
  ObjectBranch* below = addLine(orphan, "x = 1");
  recordRunOf(root);
  EXPECT_EQ(orphan->branchTypeAsString, "class");
  EXPECT_EQ(orphan->tags, "");
  EXPECT_EQ(below->branchTypeAsString, "classvar");
  EXPECT_EQ(below->tags, kVariable);
}

TEST(Relabel, ReadsTheParentsNewLabel) {
  ObjectBranch* root = newRoot();
  ObjectBranch* arrow = addNode(root, kBranchClass, "class", "x = a => {");  // becomes a line
  ObjectBranch* inArrow = addLine(arrow, "y = 1");
  ObjectBranch* scope = addNode(root, kBranchNamespace, "namespace", "if (x) {");  // logic
  ObjectBranch* inScope = addLine(scope, "function f() {");
  ObjectBranch* method = addNode(root, kBranchClass, "class", "subclass() {");  // a function
  ObjectBranch* inMethod = addLine(method, "y = 1");
  recordRunOf(root);
  EXPECT_EQ(inArrow->branchTypeAsString, "line");
  EXPECT_EQ(inScope->tags, "");
  EXPECT_EQ(inMethod->branchTypeAsString, "line");
}

TEST(Relabel, ReadsTheLabelOfARootThatIsANamespace) {
  ObjectBranch* root = newRoot();
  root->branchTypeAsString = "namespace";
  ObjectBranch* node = addLine(root, "function f() {");
  recordRunOf(root);
  EXPECT_EQ(node->tags, kGlobal);
}

struct PathCase {
  const char* path;
  const char* name;
};

constexpr PathCase kPathCases[] = {
    {"a.html", "on('click')"},    {"a.htm", "on('click')"}, {"a.xhtml", "on('click')"},
    {"dir/a.php", "on('click')"}, {"a.js", "on"},           {"a.HTML", "on"},
    {"a.html.bak", "on"},         {"html", "on"},           {"", "on"},
};

TEST(Relabel, NamesFunctionsOfAPageByTheirFirstQuotedText) {
  for (const PathCase& row : kPathCases) {
    ObjectBranch* root = newRoot();
    ObjectBranch* node = addNode(root, kBranchLine, "line", "on('click', function() {", row.path);
    recordRunOf(root);
    EXPECT_EQ(node->simpleFunctionName, row.name) << row.path;
  }
}

TEST(Relabel, TheStringArgumentChangesNothing) {
  ObjectBranch* root = newRoot();
  ObjectBranch* node = addLine(root, "function f() {");
  std::string answer;
  support::stdoutOf([&] { answer = StartGeneratingObjects(root, "Other").str(); });
  EXPECT_EQ(node->simpleFunctionName, "f");
  EXPECT_EQ(answer.find("Other"), std::string::npos);
}

struct PreviewCase {
  const char* contents;
  const char* name;
  const char* why;
};

constexpr PreviewCase kPreviewCases[] = {
    {"$('.menu').on('click', function() {", "('.menu')", "$ is no word byte"},
    {"addEventListener('click', function () {", "addEventListener('click')", ""},
    {"setTimeout(\"tick()\", 100, function () {", "setTimeout('tick()')", "double quotes"},
    {"function go() {", "go", "nothing quoted"},
    {"f(\"a\", 'b', function() {", "f('b')", "required: single quotes first, wherever they are"},
    {"f('a\", function() {", "f('a')", "required: a double quote closes a single one"},
    {"f(\"it's\", function() {", "f('s')", "required: the single quote, closed by the double one"},
    {"f('it\", b', function() {", "f('it\\\", b')", "a single one closes before a double one"},
    {"f('', function() {", "f", "nothing between the quotes"},
    {"f('', 'b', function() {", "f", "and no second try"},
    {"f(\"\", function() {", "f", ""},
    {"f(a', function() {", "f", "a quote that is not closed"},
    {"f(\"a, function() {", "f", ""},
    {"f(' ', function() {", "f('')", "the preview trims"},
    {"f('  a   b ', function() {", "f('a b')", "and reduces"},
    {"f('1234567890123456789012345', function() {", "f('1234567890123456789012345')", "25 bytes"},
    {"f('12345678901234567890123456', function() {", "f('1234567890123456789012345...')", "26"},
    {"f('say \"hi\"', function() {", "f('say \\\"hi\\\"')", "the preview escapes double quotes"},
    {"#x_1('a'", "#x_1('a')", "the first word"},
    {" f('a'", "('a')", "nothing is trimmed before the first word"},
    {"'a'", "('a')", ""},
    {"const g = function() {", "g", ""},
    {"a.b(function() {", "a.b", ""},
    {"x => x + 1", "", ""},
    {"", "", ""},
    {"'", "", "a lone quote"},
    {"\"", "", ""},
    {"''", "", ""},
};

TEST(PreviewName, IsTheFirstWordAndTheFirstQuotedText) {
  for (const PreviewCase& row : kPreviewCases) {
    SCOPED_TRACE(std::string(row.contents) + "  // " + row.why);
    EXPECT_EQ(ExtractSimpleFunctionNameForPreview(row.contents), row.name);
  }
}

}  // namespace
