// A scope that was closed too often: the repair that gives statements new wrappers, and the error
// that ends the scan.
#include <string>

#include <gtest/gtest.h>

#include "builder/tree_builder.h"
#include "support/dump_records.h"
#include "support/scanner_run.h"

namespace {

using support::dumpRecords;
using support::dumpStatements;
using support::runScanner;
using support::ScannerRequest;
using support::ScannerRun;

struct ScopeCase {
  const char* text;
  const char* records;
  const char* why;
};

constexpr ScopeCase kRepairs[] = {
    {"}\n}\nq;\n}\nnever;\n",
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0(line"q"@3) )"
     R"(line"never"@5)) class"class GlobalScope"@0)",
     "the repaired namespace is under the root, so nothing is made for a line in it"},
    {"}\n}\nq;\nr;\n",
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0(line"q"@3 )"
     R"(line"r"@4))) class"class GlobalScope"@0)",
     "repaired once"},
    {"}\n}\nq;\n}\n}\nr;\n",
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0(line"q"@3)) )"
     R"(namespace"namespace global"@0(class"class GlobalScope"@0(line"r"@6))) )"
     R"(class"class GlobalScope"@0)",
     "and again"},
    {"}\n}\nq\n", R"(filepath"a.txt"@0(line"q"@3) class"class GlobalScope"@0)",
     "a line feed repairs nothing"},
    {"}\n}\nf(a) {\nq;\n",
     R"_(filepath"a.txt"@0(container"f(a)"@3(line"q"@4)) class"class GlobalScope"@0)_",
     "nor does a block, and in it all is well"},
    {"}\n}\nb {\nq;\n", R"(filepath"a.txt"@0(define"b"@0(line"q"@4)) class"class GlobalScope"@0)",
     ""},
    {"}\nq;\n", R"(filepath"a.txt"@0 class"class GlobalScope"@0 line"q"@2)",
     "in the namespace wrapper"},
    {"}\nb {\nq;\nr;\n}\ns;\n",
     R"(filepath"a.txt"@0 class"class GlobalScope"@0 )"
     R"(define"b"@0(class"class GlobalScope"@0(line"q"@3 line"r"@4) )"
     R"(class"class GlobalScope"@0(line"s"@6)))",
     "a block directly in a namespace gets a class, each time that the scan comes back to it"},
    {"}\nb {\nq\n}\n", R"(filepath"a.txt"@0 class"class GlobalScope"@0 define"b"@0(line"q"@3))",
     "not at a line feed"},
    {"}\nb {\nc {\nq;\n",
     R"(filepath"a.txt"@0 class"class GlobalScope"@0 define"b"@0(define"c"@0(line"q"@4)))",
     "not deeper in it"},
    {"}\n}\nq;\n}\nb {\nr;\n",
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0(line"q"@3) )"
     R"(define"b"@0(class"class GlobalScope"@0(line"r"@6)))) class"class GlobalScope"@0)",
     "so does a block in a repaired namespace"},
    {"}\n}\nimport a;\nq\n", R"(filepath"a.txt"@0(line"q"@4) class"class ModuleScope"@0)",
     "an import repairs nothing"},
    {"}\n}\nimport a;\nq;\n",
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0(line"q"@4))) )"
     R"(class"class ModuleScope"@0)",
     "the repair knows no modules"},
    {"}\n}\n) ) );\n;\nq\n", R"(filepath"a.txt"@0(line"q"@5) class"class GlobalScope"@0)",
     "statements that say nothing do not either"},
};

TEST(ScopeRepair, HappensAtStatementsThatEndInASemicolon) {
  for (const ScopeCase& row : kRepairs)
    EXPECT_EQ(dumpRecords(runScanner({row.text}).answer), row.records)
        << row.text << "  // " << row.why;
}

TEST(ScopeRepair, GivesTheScopesCodesAndTags) {
  const ScannerRun run = runScanner({"}}q;\n", "dir/a.txt"});
  ASSERT_EQ(run.root->children.size(), 1u);
  const ObjectBranch* scope = run.root->children[0];
  EXPECT_EQ(scope->branchType, kBranchNamespace);
  EXPECT_EQ(scope->tags, "\n      \"auto-generated\"\n");
  EXPECT_EQ(scope->filePath, "dir/a.txt");
  EXPECT_EQ(scope->functionID, -1);
  ASSERT_EQ(scope->children.size(), 1u);
  const ObjectBranch* wrapper = scope->children[0];
  EXPECT_EQ(wrapper->branchType, kBranchClass);
  EXPECT_EQ(wrapper->tags, "\n      \"auto-generated\"\n      \"scope-wrapper\"\n");
  EXPECT_EQ(wrapper->filePath, "dir/a.txt");
  EXPECT_EQ(wrapper->functionID, -1);
}

TEST(ScopeRepair, GivesTheClassInABlockTheSameCodeAndTags) {
  const ScannerRun run = runScanner({"}b {\nq;\n", "dir/;"});
  const ObjectBranch* block = run.root->children.at(0)->children.at(1);
  ASSERT_EQ(block->children.size(), 1u);
  const ObjectBranch* wrapper = block->children[0];
  EXPECT_EQ(wrapper->branchType, kBranchClass);
  EXPECT_EQ(wrapper->tags, "\n      \"auto-generated\"\n      \"scope-wrapper\"\n");
  EXPECT_EQ(wrapper->filePath, "dir/;");
  EXPECT_EQ(wrapper->lineNumber, 0);
}

struct RepairPathCase {
  const char* path;
  const char* namespaceText;
  const char* classText;
};

constexpr RepairPathCase kRepairPaths[] = {
    {"a.txt", "namespace global", "class GlobalScope"},
    {"script/a.txt", "namespace window", "class WindowScope"},
    {"typescript.txt", "namespace window", "class WindowScope"},
    {"a.script", "namespace window", "class WindowScope"},
    {"Script/a.txt", "namespace global", "class GlobalScope"},
    {"scrip/t.txt", "namespace global", "class GlobalScope"},
    {"a.html.bak", "namespace window", "class WindowScope"},
    {"a.html/b", "namespace window", "class WindowScope"},
    {"a.htmlx", "namespace window", "class WindowScope"},
    {"a.htm.bak", "namespace global", "class GlobalScope"},
    {"html.txt", "namespace global", "class GlobalScope"},
    {"a.HTML", "namespace global", "class GlobalScope"},
};

TEST(ScopeRepair, IsForABrowserByTheWholePath) {
  for (const RepairPathCase& row : kRepairPaths) {
    const ScannerRun run = runScanner({"}}q;\n", row.path});
    ASSERT_EQ(run.root->children.size(), 1u) << row.path;
    const ObjectBranch* scope = run.root->children[0];
    EXPECT_EQ(scope->contents, row.namespaceText) << row.path;
    ASSERT_EQ(scope->children.size(), 1u) << row.path;
    EXPECT_EQ(scope->children[0]->contents, row.classText) << row.path;
  }
}

TEST(ScopeRepair, MakesNoBrowserScopeInABlock) {
  EXPECT_EQ(dumpStatements(runScanner({"}b {\nq;\n", "script/a.txt"}).answer),
            R"(| define"b"@0(class"class GlobalScope"@0(line"q"@2)))");
}

constexpr const char* kNullParent = "Null parent branch? This is not right.";
constexpr const char* kZeroChildren = "zero children. This is not correct.";

struct ErrorCase {
  const char* text;
  const char* namespaceName;
  const char* printed;
  const char* records;
  const char* why;
};

constexpr const char* kBothWrappers = R"(filepath"a.txt"@0 class"class GlobalScope"@0)";

constexpr ErrorCase kErrors[] = {
    {"}\n}\n}\n", "", kNullParent, kBothWrappers, "its text is empty, so it has no record"},
    {"}\n}\nx  y }\nz;\n}}\n", "", kNullParent,
     R"(filepath"a.txt"@0(error: NULL parent branch"x y"@3) class"class GlobalScope"@0)",
     "the scan ends"},
    {"}}foo(1) }", "", kNullParent,
     R"_(filepath"a.txt"@0(error: NULL parent branch"foo(1)"@1) class"class GlobalScope"@0)_",
     "its ) stays"},
    {"a;\n}}\nb\nx}", "", kNullParent,
     R"(filepath"a.txt"@0(line"b"@3 error: NULL parent branch"x"@4) )"
     R"(class"class GlobalScope"@0(line"a"@1))",
     "after the root's other children"},
    {"}}if (x) }", "", kNullParent,
     R"_(filepath"a.txt"@0(logic"if (x)"@1) class"class GlobalScope"@0)_",
     "required: the record pass may take its label"},
    {"}}return x }", "", kNullParent,
     R"(filepath"a.txt"@0(line"return x"@1) class"class GlobalScope"@0)",
     "required: so may the splitting of leaves"},
    {"}}q;}}}", "", kNullParent,
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0(line"q"@1))) )"
     R"(class"class GlobalScope"@0)",
     "a third one too many after a repair as well"},
    {"x }", "N", kNullParent, R"(filepath"a.txt"@0(error: NULL parent branch"x"@1))",
     "without wrappers the first one"},
    {"b {\nc;\n}\n", "N", kZeroChildren, R"(filepath"a.txt"@0(error: Zero child objects"b"@1))",
     "a bare block before any other node"},
    {"\n\n x  = {\n", "N", kZeroChildren, R"(filepath"a.txt"@0(error: Zero child objects"x ="@3))",
     ""},
    {"{\na;\n", "N", kZeroChildren, R"(filepath"a.txt"@0)", "its text is empty"},
};

TEST(ScanError, EndsTheScan) {
  for (const ErrorCase& row : kErrors) {
    SCOPED_TRACE(std::string(row.text) + "  // " + row.why);
    const ScannerRun run = runScanner({row.text, "a.txt", row.namespaceName});
    EXPECT_EQ(dumpRecords(run.answer), row.records);
    EXPECT_EQ(run.printed.substr(0, run.printed.find("nodeid")), row.printed);
    EXPECT_EQ(chunk, "");
  }
}

TEST(ScanError, HasItsOwnCode) {
  const ScannerRun run = runScanner({"}}\nx y }", "dir/;"});
  ASSERT_EQ(run.root->children.size(), 3u) << "between the wrapper and the defines";
  const ObjectBranch* error = run.root->children[1];
  EXPECT_EQ(error->branchType, kBranchError);
  EXPECT_EQ(error->branchTypeAsString, "error: NULL parent branch");
  EXPECT_EQ(error->contents, "x y");
  EXPECT_EQ(error->lineNumber, 2);
  EXPECT_EQ(error->filePath, "dir/;");
  EXPECT_EQ(error->tags, "");
}

TEST(ScanError, IsNumberedAfterTheUnattachedNode) {
  EXPECT_EQ(runScanner({"b {", "a.txt", "N"}).printed,
            "zero children. This is not correct."
            "nodeid was 0 and now is 0\n"
            "nodeid was 2 and now is 1\n");
  EXPECT_EQ(currentIndex, 5) << "root, lost node, error, defines, record pass";
}

constexpr ScopeCase kWithoutWrappers[] = {
    {"a\nb {\nc;\n", R"(filepath"a.txt"@0(line"a"@1 define"b"@0(line"c"@3)))",
     "the root has a child then"},
    {"f(x) {\nc;\n", R"_(filepath"a.txt"@0(container"f(x)"@1(line"c"@2)))_", ""},
    {"class A {\nm;\n", R"(filepath"a.txt"@0(class"class A"@1(line"m"@2)))", ""},
    {"a;\n",
     R"(filepath"a.txt"@0(namespace"namespace global"@0(class"class GlobalScope"@0()"
     R"(line"a"@1))))",
     "the first statement gets its scope"},
    {"f(x) {\n}\na;\n",
     R"_(filepath"a.txt"@0(container"f(x)"@1 namespace"namespace global"@0()_"
     R"_(class"class GlobalScope"@0(line"a"@3))))_",
     ""},
};

TEST(ScanWithoutWrappers, WorksUnderTheRootItself) {
  for (const ScopeCase& row : kWithoutWrappers) {
    const ScannerRun run = runScanner({row.text, "a.txt", "N"});
    EXPECT_EQ(dumpRecords(run.answer), row.records) << row.text << "  // " << row.why;
    EXPECT_EQ(run.printed.find("nodeid"), 0u) << row.text;
  }
}

TEST(ScanWithoutWrappers, OfOtherTextHasNoBareBlocks) {
  ScannerRequest request{"b {\nc;\n", "a.txt", "N"};
  request.isJavaScript = false;
  EXPECT_EQ(dumpRecords(runScanner(request).answer),
            R"(filepath"a.txt"@0(container"b"@1(line"c"@2)))");
}

}  // namespace
