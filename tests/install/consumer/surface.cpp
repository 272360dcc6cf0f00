// Links the installed module and calls every documented function once, each with a known result. It
// can also be built with the project's own header instead of promised.h.
//
// usage: surface SCRATCH_FOLDER; exit status 0 if every result is correct
#ifdef SURFACE_FROM_HEADER
#include <quorl_js.h>
#else
#include "promised.h"
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Names = std::vector<std::string>;

int failures = 0;

void check(bool holds, const char* what) {
  if (holds) return;
  ++failures;
  std::fprintf(stderr, "wrong: %s\n", what);
}
#define CHECK(condition) check((condition), #condition)

// Returns a numbered node, like every node that the module makes.
ObjectBranch* node(std::string contents, ObjectBranch* parent = nullptr) {
  ObjectBranch* const made = allocateObjectBranch();
  made->nodeID = currentIndex++;
  made->contents = std::move(contents);
  made->parent = parent;
  if (parent != nullptr) parent->children.push_back(made);
  return made;
}

void checkStrings() {
  CHECK(BothAreSpaces(' ', ' '));
  std::string text = "aXbX";
  replaceAll(text, "X", "yy");
  CHECK(text == "ayybyy");
  CHECK(ltrim("\v a ") == "a ");
  CHECK(rtrim(" a \f") == " a");
  CHECK(trim(" a ") == "a");
  CHECK(ConvertWhiteSpacesToSingleSpace(" a \n\tb ") == " a b ");
  text = " a \t b\n";
  CHECK(TrimAndReduce(text) == "a b");
  text = "foo(bar)";
  CHECK(FirstWord(text) == "foo");
  CHECK(FirstWord(static_cast<const std::string&>(text)) == "foo");
  text = "a b c";
  CHECK(LastWord(text) == "a b");
  text = "ns ab::c";
  CHECK(LastWordNoDots(text) == "ab" && text == "ab");
  text = "subclassing";
  CHECK(Contains(text, "class"));
  CHECK(ContainsWord(text, "class"));
  CHECK(OutsideStringMatch("a=b", "="));
  CHECK(IndexOf("abc", "c") == 2);
  Names parts;
  PartsList("return a;", parts);
  CHECK((parts == Names{"return", "a", ";"}));
}

void checkFileNames() {
  CHECK(GetFileExtension("a/b.tar.gz") == "gz");
  CHECK(IsHTMLFile("a.php"));
  CHECK(IsJavaScriptOnlyFile("a.mjs"));
  CHECK(FileName("/a/b.c.js") == "b.c");
  CHECK(FileNameWithExtension("/a/b.c.js") == "b.c.js");
}

void checkCleaner() {
  constexpr std::string_view kCondition = "#ifdef A\nx\n#endif\ny\n";
  Cleaner cleaner;
  Names defines;
  CHECK(cleaner.CleanText("\tlet a; // b\n", {}, defines) == "let a; \n");
  CHECK(cleaner.CleanText("let a; // b\n", {}, defines, true) == "let a; \n");
  CHECK(cleaner.RemoveHTMLComments("a<!-- b -->c") == "ac");
  std::string text = "aXb";
  cleaner.ReplaceAll(text, "X", "");
  CHECK(text == "ab");
  CHECK(cleaner.UncommentAndUnquoteText("a // b") == "a ");
  // required: the first byte after the opening of a comment stays.
  CHECK(cleaner.UncommentAndUnquoteText("'a' /*-b */", true) == "'a' -");
  CHECK(cleaner.PreProcessorSimulation(std::string(kCondition), {}, defines) == "\n\n\ny\n");
  CHECK(defines == Names{"A"});
  CHECK(cleaner.PreProcessorSimulation(std::string(kCondition), {"A"}, defines) == "\nx\n\ny\n");
  CHECK(cleaner.GetPreProcessorDirectiveActiveState("#ifdef A", 1, {"A"}));
  Names parts;
  cleaner.CleanerPartsList("#define A 1", parts);
  CHECK((parts == Names{"#define", "A 1"}));
}

void checkDetectors() {
  CHECK(DetectJSFunctionDeclaration("function foo(a) {"));
  CHECK(functionName("function foo(a) {", "") == "foo");
  CHECK(DetectJSVariableDeclaration("let a = 1;"));
  CHECK(DetectJSReturnDeclaration("return a;"));
  CHECK(DetectJSClass("class A {"));
  CHECK(DetectJSLogic("if (a) {"));
  CHECK(DetectJSLoop("while (a) {"));
  CHECK(DetectJSImports("import a from 'a';"));
  CHECK(DetectIIFE("(function () {"));
  CHECK(DetectWebComponent("class A extends HTMLElement {"));
  CHECK(DetectModulePattern("module.exports = a;") == "commonjs");
}

void checkPages() {
  CHECK(ExtractHrefValue("a href=\"x\"") == "x");
  CHECK(ExtractSrcValue("img src='y'") == "y");
  CHECK(GetElementIdentifier("div id=\"main\"") == "div#main");
  CHECK(ExtractTextPreview("hello world", 5) == "hello...");
  ObjectBranch* const page = node("HTMLDocument");
  ParseHTMLStructure("<div id=\"main\"></div>", page, "a.html", 0);
  CHECK(page->children.size() == 1 && page->children[0]->contents == "div#main");
  CHECK(page->children[0]->branchTypeAsString == "htmlelement");
}

void checkTree() {
  ObjectBranch* const parent = node("parent");
  ObjectBranch* const child = node("child", parent);
  CHECK(child->branchType == 13 && child->functionID == -1);
  CHECK(allAllocatedNodes.count(child) == 1);
  ObjectBranch named;
  named.branchType = 7;
  CHECK(branchTypeAsString(named) == "class");
  char* const zeros = safeStringAlloc(3);
  CHECK(std::all_of(zeros, zeros + 4, [](char byte) { return byte == 0; }));
  std::free(zeros);
  std::vector<ObjectBranch*> list;
  AddObjectToVector(parent, &list);
  CHECK((list == std::vector<ObjectBranch*>{parent, child}));
  FreeChildren(parent);
  CHECK(parent->children.empty() && child->contents == "child");
  parent->children.push_back(child);
  parent->nodeID = 0;  // teardown stops at a root
  CleanupTree(parent);
  CHECK(parent->children.empty());
  std::set<ObjectBranch*> visited;
  DeleteNodeTree(child, visited);
  CHECK(visited.count(child) == 1);
}

void checkBuilders() {
  CHECK(CleanupChunk(" foo(1) ") == "foo(1");
  ObjectBranch* const script = node("a.js");
  ParsePureJavaScript("let a;\n", script, "a.js");
  CHECK(script->children.size() == 1 && script->children[0]->contents == "namespace global");
  ObjectBranch* const scope = node("scope");
  ParseScriptContent("let a;\n", scope, "a.js", 7);
  CHECK(scope->children.size() == 1 && scope->children[0]->lineNumber == 7);
  currentIndex = 0;
  ObjectBranch* const root = node("");
  const std::string records = TreeBuilderJS("a.js", "", "", "let a = 1;\n", true, root, {}).str();
  CHECK(records.rfind("[\n  {\n    \"lineNumber\": 0,\n", 0) == 0);
}

void checkRefinement() {
  ObjectBranch* const leaf = node("a; b;");
  GenerateInlineFunctions(leaf, true);
  CHECK(leaf->children.size() == 2 && leaf->children[1]->contents == "b");
  CHECK(extractClassName("class A extends HTMLElement {") == "WebComponent:A");
  CHECK(climbForLongName(nullptr) == "global");
  ObjectBranch* const classNode = node("class A {");
  SpelunkForClasses(classNode);
  CHECK(classNode->branchType == 7 && classNode->branchTypeAsString == "class");
  ObjectBranch* const root = node("a.js");
  ObjectBranch* const second = node("class B {", root);
  ExpandClassnames(root);
  CHECK(second->branchTypeAsString == "class");
  CleanUpBranchTypes(root);
  CHECK(second->branchType == 7);
  node("}", root);
  RemoveBraceOnlyNodes(root);
  CHECK(root->children.size() == 1);
  AppendAllDefines(root, {"A", "B"});
  CHECK(root->children.size() == 2 && root->children[1]->contents == "A\nB");
}

void checkRecords() {
  CHECK(EscapeString("it's") == "it\\'s");
  CHECK(StartGeneratingObjects(nullptr, "").str() == "[]");
  ObjectBranch brace;
  brace.contents = "}";
  CHECK(ShouldSkipNode(brace));
  CHECK(ExtractSimpleFunctionNameForPreview("function foo() {") == "foo");
}

void checkFiles(const std::string& folder) {
  const std::string file = folder + "/written.js";
  CHECK(IsDirectory(folder));
  CHECK(IsJavaScriptFile("a.php"));
  writeafile("let a = 1;\n", file);
  appendafile("let b = 2;\n", file);
  CHECK(GetFilesInDirectory(folder) == Names{file});
  currentIndex = 0;
  ProcessSingleFile(file, "");
  // File, namespace, class, two lines, defines, and one node that is in no tree.
  CHECK(currentIndex == 7);
  CHECK(ExtractNamespaceName("namespace Foo::Bar {") == "Foo::Bar");
  CHECK(GetFileNameWithoutExtension("/a/b.tar.gz") == "b.tar");
  CHECK(SanitizeFileName("a-b c_d.js") == "abc_djs");
  constexpr std::string_view kFirstRecord = "[\n  {\n    \"lineNumber\": 0,\n";
  CHECK(std::string_view(ParseJS(file.c_str(), nullptr)).substr(0, kFirstRecord.size()) ==
        kFirstRecord);
  CHECK(std::string_view(Info()).substr(0, 6) == "Quorl ");
  CleanupJS();
  cleanup();
}

void checkData() {
  CHECK(AllBranches.empty());
  CHECK(!startPath.empty());
  currentIndex = 41;
  const std::int32_t count = objectCount;
  chunk = "the program's";
  ParseJS("no such file", nullptr);  // resets all three
  CHECK(chunk.empty() && currentIndex == 0);
  CHECK(objectCount == 1 && count != 1);
  CHECK(!allAllocatedNodes.empty());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  checkStrings();
  checkFileNames();
  checkCleaner();
  checkDetectors();
  checkPages();
  checkTree();
  checkBuilders();
  checkRefinement();
  checkRecords();
  checkFiles(argv[1]);
  checkData();
  return failures == 0 ? 0 : 1;
}
