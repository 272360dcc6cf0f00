// The page route from its wrappers to the records: where nodes are attached, and which passes reach
// them.
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "builder/tree_builder.h"
#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "support/record_values.h"
#include "tree/object_branch.h"

namespace {

using support::valuesOf;
using Values = std::vector<std::string>;

struct Page {
  ObjectBranch* root;
  std::string answer;

  std::string tree() const { return support::dumpTree(root); }
};

Page pageOf(const std::string& text, const std::string& path = "a.html",
            const std::vector<std::string>& defines = {}) {
  currentIndex = 0;
  Page page{support::addNode(nullptr, kBranchNone, "", ""), ""};
  support::stdoutOf(
      [&] { page.answer = TreeBuilderJS(path, "", "", text, true, page.root, defines).str(); });
  return page;
}

// The tree above the elements.
std::string wrapped(const std::string& elements, const std::string& document = "HTMLDocument") {
  return "filepath\"a.html\"@0(namespace\"namespace document\"@0(class\"" + document + "\"@0(" +
         elements + ")))";
}

TEST(TreeBuilderPage, AddsElementsUnderTheSecondWrapperFromLineZero) {
  EXPECT_EQ(pageOf("<p>x</p>\n<a href=u>").tree(),
            wrapped("htmlelement\"p: \"x\"\"@0 htmlelement\"a\"@1(link\"href: u\"@1)"));
}

TEST(TreeBuilderPage, ShowsTextOutsideElementsInTheSecondWrapper) {
  EXPECT_EQ(pageOf("Hi<p>").tree(), wrapped("htmlelement\"p\"@0", "HTMLDocument: \"Hi\""));
}

TEST(TreeBuilderPage, NumbersTheWrappersFirst) {
  const Page page = pageOf("<p></p><a href=u></a>");
  // The root, two wrappers, p, a, its link, the defines and the spare node of the record pass.
  EXPECT_EQ(currentIndex, 8);
  EXPECT_EQ(valuesOf(page.answer, "nodeID"), (Values{"0", "1", "2", "3", "4", "5"}));
  EXPECT_EQ(valuesOf(page.answer, "parentID"), (Values{"-1", "0", "1", "2", "2", "4"}));
}

TEST(TreeBuilderPage, IsTheSameForAllPageExtensions) {
  const std::string text = "<p>x</p><script>\nf(1);\n</script>";
  const std::string answer = pageOf(text).answer;
  for (const char* path : {"a.htm", "a.xhtml", "a.php"}) {
    const std::string other = pageOf(text, path).answer;
    for (const char* key : {"lineNumber", "nodeID", "parentID", "branchTypeAsString"})
      EXPECT_EQ(valuesOf(other, key), valuesOf(answer, key)) << path << " " << key;
  }
}

TEST(TreeBuilderPage, LooksForClassesInElementsLinksAndStatements) {
  EXPECT_EQ(pageOf("<p class=\"class-a\"></p><a href=class></a><script>use(x.classList);</script>")
                .tree(),
            wrapped("class\"p.class-a\"@0 htmlelement\"a\"@0(class\"href: class\"@0) "
                    "htmlelement\"script\"@0(class\"script\"@1(class\"use(x.classList);\"@1))"));
}

TEST(TreeBuilderPage, StopsAtTheFirstClass) {
  const std::string statement = "<script>use(x.classList);</script>";
  EXPECT_EQ(pageOf("<p>a class" + statement).tree(),
            wrapped("class\"p: \"a class\"\"@0(htmlelement\"script\"@0(class\"script\"@1("
                    "line\"use(x.classList);\"@1)))"));
  EXPECT_EQ(pageOf("a class" + statement).tree(),
            wrapped("htmlelement\"script\"@0(class\"script\"@1(line\"use(x.classList);\"@1))",
                    "HTMLDocument: \"a class\""));
}

TEST(TreeBuilderPage, RemovesBraceOnlyNodesWithTheirSubtrees) {
  const Page elements = pageOf("<{><a></a></{><};><u></u></};><><b></b></><i></i>");
  EXPECT_EQ(elements.tree(), wrapped("htmlelement\"i\"@0"));
  EXPECT_EQ(valuesOf(elements.answer, "contents"),
            (Values{"\"a.html\"", "\"namespace document\"", "\"HTMLDocument\"", "\"i\""}))
      << "what lies in them is not an orphan either";
  EXPECT_EQ(pageOf("<script>\na({\n};\n</script>").tree(),
            wrapped("htmlelement\"script\"@0(class\"script\"@1(line\"a({\"@2))"));
}

TEST(TreeBuilderPage, KeepsTheChildrenOfOtherDroppedTexts) {
  const Page page = pageOf("<});><a></a></});><i></i>");
  EXPECT_EQ(page.tree(), wrapped("htmlelement\"i\"@0"));
  EXPECT_EQ(valuesOf(page.answer, "contents"),
            (Values{"\"a.html\"", "\"namespace document\"", "\"HTMLDocument\"", "\"a\"", "\"i\""}));
  EXPECT_EQ(valuesOf(page.answer, "parentID"), (Values{"-1", "0", "1", "-1", "2"}));
}

TEST(TreeBuilderPage, DoesNotSplitStatements) {
  EXPECT_EQ(pageOf("<script>go(); if (a) { b(); c(); }</script>").tree(),
            wrapped("htmlelement\"script\"@0(class\"script\"@1("
                    "line\"go(); if (a) { b(); c(); }\"@1))"));
}

TEST(TreeBuilderPage, PutsTheDefinesAfterTheDocument) {
  EXPECT_EQ(pageOf("<p>", "a.html", {"A", "B 1"}).tree(),
            "filepath\"a.html\"@0(namespace\"namespace document\"@0(class\"HTMLDocument\"@0("
            "htmlelement\"p\"@0)) preprocessor\"A\\nB 1\"@0)");
}

TEST(TreeBuilderPage, NamesFunctionsByTheirQuotedText) {
  const std::string line = "on('click', function () {";
  EXPECT_EQ(valuesOf(pageOf("<script>" + line + "</script>").answer, "simpleFunctionName").back(),
            "\"on(\\'click\\')\"");
  EXPECT_EQ(valuesOf(pageOf(line, "a.js").answer, "simpleFunctionName").back(), "\"on\"");
}

TEST(TreeBuilderPage, HasNoOwnLimit) {
  const std::size_t tenMebibytes = 10'485'760;
  EXPECT_EQ(pageOf("<!--" + std::string(tenMebibytes, ' ') + "><p>").tree(),
            wrapped("htmlelement\"p\"@0"));
}

}  // namespace
