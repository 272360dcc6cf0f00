// Tags and their elements: names, void elements, links, nesting by closing tags, and line numbers.
#include "html/html_structure.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "support/page_run.h"
#include "tree/object_branch.h"

namespace {

using namespace std::string_view_literals;
using support::pageRunOf;
using support::strayTagWarnings;

struct PageCase {
  std::string_view text;
  std::string_view nodes;
  std::string_view why;
  int strayTags = 0;
};

template <std::size_t count>
void expectPages(const PageCase (&rows)[count]) {
  for (const PageCase& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.text) + ": " + std::string(row.why));
    const support::PageRun run = pageRunOf(row.text);
    EXPECT_EQ(run.nodes(), row.nodes);
    EXPECT_EQ(run.errors, strayTagWarnings(row.strayTags));
  }
}

// After <TAG><i>, whether the second element is a sibling or a child of the first.
struct TagCase {
  std::string_view tag;
  bool isVoid;
  std::string_view identifier;
  std::string_view why = "";
};

constexpr TagCase kTags[] = {
    {"meta", true, "meta"},
    {"link", true, "link"},
    {"img", true, "img"},
    {"br", true, "br"},
    {"hr", true, "hr"},
    {"input", true, "input"},
    {"meta charset=\"x\"", true, "meta"},
    {"br\n", true, "br\n", "only a space ends a name"},
    {"br/", true, "br", "the slash goes"},
    {"brand", true, "brand", "required: a prefix will do"},
    {"hrule", true, "hrule"},
    {"metadata", true, "metadata"},
    {"inputs", true, "inputs"},
    {"linker", true, "linker"},
    {"imgbox", true, "imgbox"},
    {"link-x id=\"m\"", true, "link-x#m"},
    {"b", false, "b"},
    {"h1", false, "h1"},
    {"met", false, "met"},
    {"lin", false, "lin"},
    {"im", false, "im"},
    {"inpu", false, "inpu"},
    {"xbr", false, "xbr"},
    {"Br", false, "Br", "case-sensitive"},
    {"IMG", false, "IMG"},
    {" br", false, "", "the space comes first"},
    {"area", false, "area", "required: the list of void elements is short"},
    {"base", false, "base"},
    {"col", false, "col"},
    {"embed", false, "embed"},
    {"param", false, "param"},
    {"source", false, "source"},
    {"track", false, "track"},
    {"wbr", false, "wbr"},
    {"div/", true, "div", "a slash at the end makes any element void"},
    {"div /", true, "div"},
    {"div//", true, "div/", "one slash goes"},
    {"div/ ", false, "div/", "a space after the slash"},
    {"a/b", false, "a/b"},
    {"", false, "", "an empty tag is an open element"},
    {" ", false, ""},
    {" /div", false, "", "no closing tag after a space"},
    {"a<b", false, "a<b", "a < in a tag begins no other"},
    {"<", false, "<"},
    {"!doctype html", false, "!doctype", "required: case-sensitive, and left open"},
    {"!Doctype html", false, "!Doctype"},
    {"!DOCTYP", false, "!DOCTYP"},
    {" !DOCTYPE", false, ""},
    {"!ELEMENT a", false, "!ELEMENT"},
    {"![CDATA[x]]", false, "![CDATA[x]]"},
    {"!-x-", false, "!-x-"},
    {"!", false, "!"},
    {" !--", false, ""},
    {"a?", false, "a?"},
    {"%= x %", false, "%="},
    {"div id=\"m\" class=\"c\"", false, "div#m"},
    {"div class=\"a b\"", false, "div.a"},
    {"form action=\"/go\"", false, "form[action]"},
    {"d\0v x"sv, false, "d\0v"sv, "NUL is a byte like any other"},
    {"\xC3\xA9", false, "\xC3\xA9"},
};

TEST(PageElement, IsNamedByItsTagAndOpenUnlessVoid) {
  for (const TagCase& row : kTags) {
    SCOPED_TRACE(testing::PrintToString(row.tag) + ": " + std::string(row.why));
    ObjectBranch* top = pageRunOf("<" + std::string(row.tag) + "><i>").top;
    ASSERT_EQ(top->children.size(), row.isVoid ? 2u : 1u);
    EXPECT_EQ(top->children[0]->contents, row.identifier);
    EXPECT_EQ(top->children[0]->branchTypeAsString, "htmlelement");
    EXPECT_EQ(support::dumpTree(row.isVoid ? top->children[1] : top->children[0]->children.at(0)),
              "htmlelement\"i\"@0");
  }
}

constexpr std::string_view kIgnored[] = {
    "!--",
    "!-- x --",
    "!--x",
    "!---",
    "!--/",
    "!--script",
    "!DOCTYPE",
    "!DOCTYPE html",
    "!DOCTYPEhtml PUBLIC \"-\"",
    "!DOCTYPE a/",
    "!DOCTYPE href=\"x\"",
    "?",
    "?/",
    "?script",
    "?php echo 1; ?",
    "?= $a ?",
    "?xml version=\"1.0\"?",
};

TEST(PageElement, IsNotMadeFromCommentsDocumentTypesOrInstructions) {
  for (const std::string_view tag : kIgnored) {
    SCOPED_TRACE(tag);
    const support::PageRun run = pageRunOf("<p><" + std::string(tag) + "></p><i>");
    EXPECT_EQ(run.nodes(), "htmlelement\"p\"@0 htmlelement\"i\"@0");
    EXPECT_EQ(run.errors, "");
  }
}

constexpr PageCase kClosers[] = {
    {"", "", "nothing at all"},
    {"\n", "", "an empty line"},
    {"text", "", "no tag"},
    {"a > b", "", "a > alone is text"},
    {"<", "", "a tag without end"},
    {"<a", "", ""},
    {"<a href=\"x\"", "", ""},
    {"<!--", "", ""},
    {"</a", "", "nothing is closed, so nothing is said"},
    {"<p></p", "htmlelement\"p\"@0", ""},
    {"<b><i", "htmlelement\"b\"@0", "the earlier text is kept"},
    {"<i<b>", "htmlelement\"i<b\"@0", "the first > ends the tag"},
    {"<input value=\"a>b\">", "htmlelement\"input\"@0", "required: a > in a value ends the tag"},
    {"<p title=\"a>b\">", "htmlelement\"p\"@0", ""},
    {"<!-- a > b --><i>", "htmlelement\"i\"@0", "the first > ends a comment too"},
    {"<!-- <b> --><i>", "htmlelement\"i\"@0", "so this tag is part of it"},
    {"<!-- > <b> --><i>", "htmlelement\"b: \"-->\"\"@0(htmlelement\"i\"@0)", "and this one is not"},
    {"<?php if ($a > 1) echo '<b>'; ?>", "htmlelement\"b\"@0", "nor here"},
};

TEST(PageTag, RunsToTheFirstCloser) { expectPages(kClosers); }

constexpr PageCase kNesting[] = {
    {"<a></a><b></b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", "beside each other"},
    {"<a><b></b></a>", "htmlelement\"a\"@0(htmlelement\"b\"@0)", "one in the other"},
    {"<a><b><i>", "htmlelement\"a\"@0(htmlelement\"b\"@0(htmlelement\"i\"@0))", "never closed"},
    {"<a><b></a><i>", "htmlelement\"a\"@0(htmlelement\"b\"@0 htmlelement\"i\"@0)",
     "required: a closing tag of any name closes what is open"},
    {"<a></><b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", "also one without a name"},
    {"<a></ a><b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", ""},
    {"<a><//><b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", ""},
    {"<a></!--><b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", ""},
    {"<a></b href=\"x\"><b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", "it has no attributes"},
    {"<a></br><b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", "required: of a void element too"},
    {"<p><br></br><i>", "htmlelement\"p\"@0(htmlelement\"br\"@0) htmlelement\"i\"@0", ""},
    {"<ul><li>1<li>2</ul><p>",
     "htmlelement\"ul\"@0(htmlelement\"li: \"1\"\"@0(htmlelement\"li: \"2\"\"@0 "
     "htmlelement\"p\"@0))",
     "required: without </li> each closing tag is one level off"},
    {"<table><col><tr></table><p>",
     "htmlelement\"table\"@0(htmlelement\"col\"@0(htmlelement\"tr\"@0 htmlelement\"p\"@0))", ""},
    {"<!doctype html><p></p></html><i>",
     "htmlelement\"!doctype\"@0(htmlelement\"p\"@0) htmlelement\"i\"@0", ""},
    {"</div>", "", "nothing is open", 1},
    {"</a></b></a>", "", "each is told", 3},
    {"<a></a></a><b></b></b>", "htmlelement\"a\"@0 htmlelement\"b\"@0", "", 2},
    {"<br></br><hr/></hr>", "htmlelement\"br\"@0 htmlelement\"hr\"@0", "", 2},
    {"</a\n>\n</b\n>", "", "", 2},
    {"<!-- </a> --></b>", "", "only the latter is a tag", 1},
    {"</a href=\"x\" src=\"y\">", "", "", 1},
    {"</script>", "", "", 1},
};

TEST(PageStack, IsPoppedByEveryClosingTag) { expectPages(kNesting); }

constexpr PageCase kLinks[] = {
    {"<a href=\"x\">", "htmlelement\"a\"@0(link\"href: x\"@0)", ""},
    {"<img src='y'>", "htmlelement\"img\"@0(link\"src: y\"@0)", "void elements have links too"},
    {"<a src=y href=x>", "htmlelement\"a\"@0(link\"href: x\"@0 link\"src: y\"@0)", "href first"},
    {"<a href=x><b></b></a>", "htmlelement\"a\"@0(link\"href: x\"@0 htmlelement\"b\"@0)",
     "before what is in the element"},
    {"<a href=\"\" src=''>", "htmlelement\"a\"@0", "no value, no link"},
    {"<a href=\"x\" />", "htmlelement\"a\"@0(link\"href: x\"@0)", "a space before the slash"},
    {"<a href=\"x\"/>", "htmlelement\"a\"@0(link\"href: x\"@0)", ""},
    {"<a href=x/>", "htmlelement\"a\"@0(link\"href: x\"@0)", "the slash goes before the reading"},
    {"<a href=x//>", "htmlelement\"a\"@0(link\"href: x/\"@0)", "but only one"},
    {"<a href=/>", "htmlelement\"a\"@0", ""},
    {"<a href =x src =y>", "htmlelement\"a\"@0(link\"href: x\"@0)",
     "required: no src with a space"},
    {"<a href=\"x>y\">", "htmlelement\"a\"@0", "cut off by the >"},
    {"<a href=x>y>", "htmlelement\"a\"@0(link\"href: x\"@0)", ""},
    {"<p data-href=x lowsrc=y>", "htmlelement\"p\"@0(link\"href: x\"@0 link\"src: y\"@0)", ""},
    {"<link href=\"a.css\"><i>",
     "htmlelement\"link[href]\"@0(link\"href: a.css\"@0) htmlelement\"i\"@0", ""},
    {"<a href=\" x\n\">", "htmlelement\"a\"@0(link\"href:  x\\n\"@0)", "values stay as they are"},
    {"<a href=\"a\0\xE9\">"sv, "htmlelement\"a\"@0(link\"href: a\0\xE9\"@0)"sv, "odd bytes too"},
    {"<a HREF=x Src=y>", "htmlelement\"a\"@0", "case-sensitive"},
};

TEST(PageLink, IsMadeForEachValue) { expectPages(kLinks); }

constexpr PageCase kLinesOfTags[] = {
    {"\n\n<a>", "htmlelement\"a\"@2", "empty lines count"},
    {"x\ny\n<a>", "htmlelement\"a\"@2", "so do lines of text"},
    {" \n <a>", "htmlelement\"a\"@1", ""},
    {"<a>\n<b>", "htmlelement\"a\"@0(htmlelement\"b\"@1)", ""},
    {"<a>1\n2\n\n3<b>\n\n<i>",
     "htmlelement\"a: \"1 2 3\"\"@0(htmlelement\"b\"@3(htmlelement\"i\"@5))", ""},
    {"<div\n class=\"a\">\n<i>", "htmlelement\"div\\n.a\"@0(htmlelement\"i\"@1)",
     "required: line feeds in a tag are lost"},
    {"<a href=\"x\n\ny\"><i>", "htmlelement\"a\"@0(link\"href: x\\n\\ny\"@0 htmlelement\"i\"@0)",
     ""},
    {"<a></a\n\n>\n<i>", "htmlelement\"a\"@0 htmlelement\"i\"@1", "in a closing tag"},
    {"<!--\n\n-->\n<i>", "htmlelement\"i\"@1", "and in a comment"},
    {"<!DOCTYPE\nhtml>\n<?php\n?>\n<i>", "htmlelement\"i\"@2", ""},
    {"\n<a href=x src=y\n>", "htmlelement\"a\"@1(link\"href: x\"@1 link\"src: y\"@1)", ""},
    {"\r\n<a>\r<b>", "htmlelement\"a\"@1(htmlelement\"b\"@1)", "carriage returns end no line"},
    {"\n\n\n\n<a>\n\n<b>", "htmlelement\"a\"@4(htmlelement\"b\"@6)",
     "lines that end in two line feeds count double"},
};

TEST(PageLine, CountsTheLineFeedsOutsideTags) { expectPages(kLinesOfTags); }

TEST(PageLine, StartsAtTheGivenNumber) {
  EXPECT_EQ(pageRunOf("<a>\n<b href=x>", 7).nodes(),
            "htmlelement\"a\"@7(htmlelement\"b\"@8(link\"href: x\"@8))");
  EXPECT_EQ(pageRunOf("<a>\n\n\n<b>", -2).nodes(), "htmlelement\"a\"@-2(htmlelement\"b\"@1)");
}

constexpr char kWorkedPage[] =
    "<!DOCTYPE html>\n"
    "<html>\n"
    "<head>\n"
    "  <title>My page</title>\n"
    "  <link rel=\"stylesheet\" href=\"a.css\">\n"
    "  <script src=\"a.js\"></script>\n"
    "  <script>\n"
    "    var x = 1;\n"
    "    function f() {\n"
    "      return x;\n"
    "    }\n"
    "  </script>\n"
    "</head>\n"
    "<body class=\"main wide\">\n"
    "  <h1 id=\"top\">Hello \"world\"</h1>\n"
    "  <p>One<br>two\n"
    "  <img src=\"b.png\"/>\n"
    "  <a href=\"c.html\">link</a>\n"
    "</body>\n"
    "</html>\n";

TEST(PageStructure, ReadsAWholePage) {
  const support::PageRun run = pageRunOf(kWorkedPage);
  EXPECT_EQ(support::dumpTree(run.top),
            "class\"HTMLDocument\"@0("
            "htmlelement\"html\"@1("
            "htmlelement\"head\"@2("
            "htmlelement\"title: \"My page\"\"@3 "
            "htmlelement\"link[href]\"@4(link\"href: a.css\"@4) "
            "htmlelement\"script[src]\"@5(link\"src: a.js\"@5) "
            "htmlelement\"script\"@6(class\"script\"@7("
            "classvar\"var x = 1;\"@8 function\"function f() {\"@9(line\"return x;\"@10)))) "
            "htmlelement\"body.main\"@13("
            "htmlelement\"h1#top: \"Hello \\\"world\\\"\"\"@14 "
            "htmlelement\"p: \"One\"\"@15("
            "htmlelement\"br\"@15 "
            "htmlelement\"img\"@16(link\"src: b.png\"@16) "
            "htmlelement\"a: \"link\"\"@17(link\"href: c.html\"@17)))))");
  EXPECT_EQ(run.errors, "");
}

struct NodeCase {
  const ObjectBranch* node;
  const ObjectBranch* parent;
  std::int32_t id, line;
  std::uint32_t code;
  const char *label, *contents, *tags;
};

TEST(PageStructure, FillsAndNumbersItsNodesInOrder) {
  currentIndex = 20;
  ObjectBranch* top = support::addNode(nullptr, kBranchClass, "class", "Top");  // takes 20
  ParseHTMLStructure("\n<a href=x src=y>\n<script>\nf();\n</script></a><b>", top, "dir/a.html", 3);
  ASSERT_EQ(support::dumpChildren(top),
            "htmlelement\"a\"@4(link\"href: x\"@4 link\"src: y\"@4 "
            "htmlelement\"script\"@5(class\"script\"@6(line\"f();\"@7))) htmlelement\"b\"@7");
  const ObjectBranch* a = top->children[0];
  const ObjectBranch* script = a->children[2];
  const ObjectBranch* inlineScript = script->children[0];
  const NodeCase rows[] = {
      {a, top, 21, 4, kBranchHtmlElement, "htmlelement", "a", ""},
      {a->children[0], a, 22, 4, kBranchLink, "link", "href: x", "\n      \"href\"\n"},
      {a->children[1], a, 23, 4, kBranchLink, "link", "src: y", "\n      \"src\"\n"},
      {script, a, 24, 5, kBranchHtmlElement, "htmlelement", "script", ""},
      {inlineScript, script, 25, 6, kBranchClass, "class", "script", "\n      \"inline-script\"\n"},
      {inlineScript->children[0], inlineScript, 26, 7, kBranchLine, "line", "f();", ""},
      {top->children[1], top, 27, 7, kBranchHtmlElement, "htmlelement", "b", ""},
  };
  for (const NodeCase& row : rows) {
    SCOPED_TRACE(row.contents);
    EXPECT_EQ(row.node->parent, row.parent);
    EXPECT_EQ(row.node->nodeID, row.id);
    EXPECT_EQ(row.node->lineNumber, row.line);
    EXPECT_EQ(row.node->branchType, row.code);
    EXPECT_EQ(row.node->branchTypeAsString, row.label);
    EXPECT_EQ(row.node->contents, row.contents);
    EXPECT_EQ(row.node->tags, row.tags);
    EXPECT_EQ(row.node->filePath, "dir/a.html");
    EXPECT_EQ(row.node->functionID, -1);
    EXPECT_EQ(row.node->simpleFunctionName, "");
  }
  EXPECT_EQ(currentIndex, 28);
}

TEST(PageStructure, WithoutRootDoesNothing) {
  currentIndex = 3;
  const std::string errors =
      support::stderrOf([] { ParseHTMLStructure("</a><b>", nullptr, "a.html", 0); });
  EXPECT_EQ(errors, "");
  EXPECT_EQ(currentIndex, 3);
}

TEST(PageStructure, AppendsToTheRootsChildrenAndKeepsNoState) {
  ObjectBranch* top = pageRunOf("<a><b>").top;
  ParseHTMLStructure("<i>", top, "a.html", 0);
  EXPECT_EQ(support::dumpChildren(top),
            "htmlelement\"a\"@0(htmlelement\"b\"@0) htmlelement\"i\"@0");
}

TEST(PageStructure, WritesNothingToStandardOutput) {
  ObjectBranch* top = support::addNode(nullptr, kBranchClass, "class", "Top");
  std::string errors;
  const std::string output = support::stdoutOf([&] {
    errors = support::stderrOf(
        [&] { ParseHTMLStructure(std::string(kWorkedPage) + "</x></y>", top, "a.html", 0); });
  });
  EXPECT_EQ(output, "");
  EXPECT_EQ(errors, strayTagWarnings(1)) << "the first closes html";
}

}  // namespace
