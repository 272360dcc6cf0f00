// Whole runs of the scanner route: what the tree builder does around the scan, as far as statements
// show it.
#include <string>

#include <gtest/gtest.h>

#include "builder/tree_builder.h"
#include "plugin/plugin_api.h"
#include "support/dump_records.h"
#include "support/scanner_run.h"
#include "support/temp_dir.h"

namespace {

using support::dumpRecords;
using support::runScanner;
using support::ScannerRequest;
using support::ScannerRun;

struct RouteCase {
  const char* path;
  const char* text;
  const char* records;
  const char* why;
};

constexpr RouteCase kRuns[] = {
    {"a.txt", "let x = 1;",
     R"(filepath"a.txt"@0 class"class GlobalScope"@0(classvar"let x = 1"@1))", ""},
    {"a.txt", "let x = 1", R"(filepath"a.txt"@0 class"class GlobalScope"@0)",
     "a last line without line feed is lost"},
    {"a.txt", "a;\nlet x = 1", R"(filepath"a.txt"@0 class"class GlobalScope"@0(line"a"@1))", ""},
    {"a.txt", "", R"(filepath"a.txt"@0 class"class GlobalScope"@0)", "no text"},
    {"a.JS", "a {\n", R"(filepath"a.JS"@0 class"class GlobalScope"@0(define"a"@0))",
     "an upper-case extension"},
    {"a.html.bak", "<p>\n", R"(filepath"a.html.bak"@0 class"class GlobalScope"@0(line"<p>"@1))",
     ""},
    {"lib/a.b.txt", "export const x = 1;",
     R"(filepath"a.b.txt"@0 class"class ModuleScope"@0(define"export const x = 1"@1))", ""},
    {"a.txt", "import b;\nimport c;\n", R"(filepath"a.txt"@0 class"class ModuleScope"@0)",
     "imports with a ; appear nowhere"},
    {"a.txt", " (function() {\nrequire('b');\n})();\n",
     R"_(filepath"a.txt"@0 class"class IIFEScope"@0(container"(function()"@1))_", ""},
    {"a.txt", "a {\nb {\nc\n",
     R"(filepath"a.txt"@0 class"class GlobalScope"@0(define"a"@0(define"b"@0(line"c"@3))))",
     "open blocks need no closing"},
    {"myclass.txt", "import y\nz;\n",
     R"(filepath"myclass.txt"@0(class"namespace module:myclass"@0) define"import y"@1 line"z"@2)",
     "the class walk ends at the namespace wrapper, so the class wrapper has no record"},
    {"a.txt", "'\\`''a { b }'\n",
     R"(filepath"a.txt"@0 class"class GlobalScope"@0(line"\'\\`\'\'a { b }\'"@1()"
     R"(container"\'\'\\`\'\' a"@1(line"b"@1))))",
     "the scan and the splitting of leaves pair the quotes differently"},
};

TEST(ScannerRouteRuns, AnswersForWholeTexts) {
  for (const RouteCase& row : kRuns)
    EXPECT_EQ(dumpRecords(runScanner({row.text, row.path}).answer), row.records)
        << row.path << ": " << row.text << "  // " << row.why;
}

constexpr RouteCase kRunsWithNamespace[] = {
    {"a.txt", "a\n", R"(filepath"a.txt"@0(line"a"@1))", "no wrappers: the scan begins at the root"},
    {"a.txt", "f(b) {\nc;\n", R"_(filepath"a.txt"@0(container"f(b)"@1(line"c"@2)))_", ""},
    {"a.txt", "import b\n", R"(filepath"a.txt"@0(define"import b"@1))", "no scope word is shown"},
};

TEST(ScannerRouteRuns, WithANamespaceNameBeginsAtTheRoot) {
  for (const RouteCase& row : kRunsWithNamespace) {
    for (const char* className : {"", "C"})
      EXPECT_EQ(dumpRecords(runScanner({row.text, row.path, "N", className}).answer), row.records)
          << row.text << " with class " << className << "  // " << row.why;
  }
}

// The namespace wrapper has no record, so its children have lost their parent.
constexpr RouteCase kRunsWithClass[] = {
    {"a.txt", "a\nb;\n", R"(filepath"a.txt"@0 line"a"@1 line"b"@2)", ""},
    {"a.txt", "f(c) {\nd;\n",
     R"_(filepath"a.txt"@0 container"f(c)"@1(class"class GlobalScope"@0(line"d"@2)))_",
     "a block directly in a namespace"},
    {"a.txt", "}\na;\n",
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0(line"a"@2))))",
     "one } reaches the root"},
};

TEST(ScannerRouteRuns, WithAClassNameAloneBeginsAtTheNamespaceWrapper) {
  for (const RouteCase& row : kRunsWithClass)
    EXPECT_EQ(dumpRecords(runScanner({row.text, row.path, "", "C"}).answer), row.records)
        << row.text << "  // " << row.why;
}

TEST(ScannerRouteRuns, MakesTheSameWrappersForOtherText) {
  ScannerRequest request{"import a\nb {\n"};
  request.isJavaScript = false;
  EXPECT_EQ(dumpRecords(runScanner(request).answer),
            R"(filepath"a.txt"@0 class"class ModuleScope"@0(define"import a"@1 container"b"@2))");
}

TEST(ScannerRouteRuns, NumbersTheFirstNodeOfTheScanAfterTheWrappers) {
  EXPECT_EQ(runScanner({"a\n"}).printed,
            "nodeid was 0 and now is 0\n"
            "nodeid was 2 and now is 1\n"
            "nodeid was 3 and now is 2\n");
  EXPECT_EQ(runScanner({"a\n", "a.txt", "N"}).printed,
            "nodeid was 0 and now is 0\n"
            "nodeid was 1 and now is 1\n");
}

TEST(ScannerRouteRuns, SplitsLeavesBeforeItLooksForClasses) {
  const ScannerRun run = runScanner({"classes = 1\n", "a.txt", "N"});
  ASSERT_EQ(run.root->children.size(), 1u);
  EXPECT_EQ(run.root->children[0]->branchType, kBranchClass) << "no longer that of a variable";
  EXPECT_EQ(run.root->children[0]->branchTypeAsString, "line") << "the record pass comes last";
}

TEST(ScannerRouteRuns, AppendsTheDefinesAfterBoth) {
  ScannerRequest request{"}}q;}}}"};
  request.defines = {"x = 1; class", "y"};
  const ScannerRun run = runScanner(request);
  ASSERT_EQ(run.root->children.size(), 2u) << "after the repaired namespace";
  const ObjectBranch* defines = run.root->children[1];
  EXPECT_EQ(defines->contents, "x = 1; class\ny");
  EXPECT_EQ(defines->branchType, kBranchAppendedDefine);
  EXPECT_EQ(defines->branchTypeAsString, "preprocessor");
  EXPECT_TRUE(defines->children.empty());
}

TEST(ScannerRouteRuns, RepeatsTheAnswerForTheSameText) {
  const ScannerRequest first{"class A {\nb;\n}\nf(c) {\n}\nfor (;;) d", "a.txt"};
  const ScannerRequest second{"}}}", "b.txt"};
  const ScannerRun run = runScanner(first);
  const ScannerRun other = runScanner(second);
  EXPECT_EQ(runScanner(first).answer, run.answer);
  EXPECT_EQ(runScanner(second).answer, other.answer);
  EXPECT_NE(run.answer, other.answer);
}

// Arguments that the entry point passes to the tree builder.

std::string parse(const std::string& path) {
  std::string answer;
  support::stdoutOf([&] { answer = ParseJS(path.c_str(), nullptr); });
  return answer;
}

TEST(ScannerRouteRuns, OfAFileIsThatOfAScriptWithBothWrappers) {
  const support::TempDir directory;
  const std::string path = directory.write("a.txt", "b {\nc;\n}\nx = [\n");
  EXPECT_EQ(
      dumpRecords(parse(path)),
      R"(filepath"a.txt"@0 class"class GlobalScope"@0(define"b"@0(line"c"@2) classvar"x = ["@4))");
}

TEST(ScannerRouteRuns, KeepsAnUnfinishedStatementUntilTheNextRun) {
  const support::TempDir directory;
  const std::string unfinished = directory.write("a.txt", "a;\nlet x");
  const std::string next = directory.write("b.txt", "y;\n");
  parse(unfinished);
  EXPECT_EQ(chunk, "let x");
  EXPECT_EQ(dumpRecords(parse(next)), R"(filepath"b.txt"@0 class"class GlobalScope"@0(line"y"@1))");
  EXPECT_EQ(chunk, "");
}

}  // namespace
