// Text between tags: which element shows it, and how much of it.
#include "html/html_structure.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/make_tree.h"
#include "support/page_run.h"
#include "tree/object_branch.h"

namespace {

using namespace std::string_view_literals;
using support::pageRunOf;

struct TextCase {
  std::string_view text;
  std::string_view nodes;
  std::string_view why = "";
};

constexpr TextCase kTexts[] = {
    {"<p>a</p>", "htmlelement\"p: \"a\"\"@0"},
    {"<p> \n a \t b\r\n</p>", "htmlelement\"p: \"a b\"\"@0", "trimmed and reduced"},
    {"<p></p>", "htmlelement\"p\"@0"},
    {"<p> \t\r\n\f\v</p>", "htmlelement\"p\"@0", "white space is not text"},
    {"<p> \n </p>x", "htmlelement\"p\"@0", "text after the last tag is dropped"},
    {"<p>x", "htmlelement\"p\"@0", "also in an open element"},
    {"<p>x<", "htmlelement\"p: \"x\"\"@0", "but not in front of an unfinished tag"},
    {"<p>x<b", "htmlelement\"p: \"x\"\"@0"},
    {"<p>x</p", "htmlelement\"p: \"x\"\"@0"},
    {"<p>a<b>c</b>d</p>", "htmlelement\"p: \"a\"\"@0(htmlelement\"b: \"c\"\"@0)",
     "only the first text is kept"},
    {"<p><b></b>d</p>", "htmlelement\"p: \"d\"\"@0(htmlelement\"b\"@0)",
     "wherever it is in the element"},
    {"<p> <b></b>\n<i></i>d<u></u>e</p>",
     "htmlelement\"p: \"d\"\"@0(htmlelement\"b\"@0 htmlelement\"i\"@1 htmlelement\"u\"@1)",
     "white space is not the first text"},
    {"<p>a<br>d</p>", "htmlelement\"p: \"a\"\"@0(htmlelement\"br\"@0)"},
    {"<p><br>d</p>", "htmlelement\"p: \"d\"\"@0(htmlelement\"br\"@0)",
     "a void element takes no text"},
    {"<p><b/>d</p>", "htmlelement\"p: \"d\"\"@0(htmlelement\"b\"@0)"},
    {"<p><!-- x -->d</p>", "htmlelement\"p: \"d\"\"@0"},
    {"<p><!-- x > y -->d</p>", "htmlelement\"p: \"y -->d\"\"@0",
     "required: what follows the first > of a comment is text"},
    {"<p>a<?php ?>b</p>", "htmlelement\"p: \"a\"\"@0"},
    {"<input value=\"a>b\"><p>", "htmlelement\"input\"@0 htmlelement\"p\"@0"},
    {"<p title=\"a>b\">c</p>", "htmlelement\"p: \"b\\\">c\"\"@0",
     "required: what follows a > in a value is text"},
    {"<p>a > b</p>", "htmlelement\"p: \"a > b\"\"@0"},
    {"<a href=x>t</a>", "htmlelement\"a: \"t\"\"@0(link\"href: x\"@0)"},
    {"<>t</>", "htmlelement\": \"t\"\"@0", "an element without a name"},
    {"<p>say \"hi\"</p>", "htmlelement\"p: \"say \\\"hi\\\"\"\"@0", "double quotes are escaped"},
    {"<p>it's a\\b</p>", "htmlelement\"p: \"it's a\\b\"\"@0", "nothing else is"},
    {"<p>&lt;b&gt;</p>", "htmlelement\"p: \"&lt;b&gt;\"\"@0"},
    {"<p>: \"</p>", "htmlelement\"p: \": \\\"\"\"@0"},
    {"<p>abcdefghijklmnopqrstuvwxyz0123</p>",
     "htmlelement\"p: \"abcdefghijklmnopqrstuvwxyz0123\"\"@0", "30 bytes"},
    {"<p>abcdefghijklmnopqrstuvwxyz01234</p>",
     "htmlelement\"p: \"abcdefghijklmnopqrstuvwxyz0123...\"\"@0", "31 bytes"},
    {"<p>abcdefghijklmnop \n qrstuvwxyz012</p>",
     "htmlelement\"p: \"abcdefghijklmnop qrstuvwxyz012\"\"@0", "30 bytes when reduced"},
    {"<p>a\0b</p>"sv, "htmlelement\"p: \"a\0b\"\"@0"sv, "odd bytes stay"},
    {"<p>\xC3\xA9</p>", "htmlelement\"p: \"\xC3\xA9\"\"@0"},
    {"<p>a\fb</p>", "htmlelement\"p: \"a\fb\"\"@0"},
    {"<p id='x: \"'>t</p>", "htmlelement\"p#x: \"\"@0",
     "required: an id with these three bytes counts as a text"},
    {"<p id='x: \"'> <b></b>t</p>", "htmlelement\"p#x: \"\"@0(htmlelement\"b\"@0)"},
    {"<p id='x:\"'>t</p>", "htmlelement\"p#x:\": \"t\"\"@0", "not without the space"},
    {"<p id='x: '>t</p>", "htmlelement\"p#x: : \"t\"\"@0", "nor without the quote"},
    {"<p id=': '>t</p><p id='\"'>t</p>",
     "htmlelement\"p#: : \"t\"\"@0 htmlelement\"p#\": \"t\"\"@0"},
    {"<p id=\"\">t</p>", "htmlelement\"p#: \"t\"\"@0"},
    {"<script src=\"a.js\">var x;</script>",
     "htmlelement\"script[src]: \"var x;\"\"@0(link\"src: a.js\"@0)", "as for any element"},
    {"<style>a > b { }</style>", "htmlelement\"style: \"a > b { }\"\"@0"},
    {"<p>a</p>b<p>c</p>", "htmlelement\"p: \"a\"\"@0 htmlelement\"p: \"c\"\"@0",
     "the b is the root's"},
    {"<li>a<li>b</li>c</li>", "htmlelement\"li: \"a\"\"@0(htmlelement\"li: \"b\"\"@0)"},
};

TEST(PageText, OfAnElementIsItsFirstText) {
  for (const TextCase& row : kTexts) {
    SCOPED_TRACE(testing::PrintToString(row.text) + ": " + std::string(row.why));
    EXPECT_EQ(pageRunOf(row.text).nodes(), row.nodes);
  }
}

constexpr TextCase kRootTexts[] = {
    {"Hi<a>", "HTMLDocument: \"Hi\""},
    {"Hi<", "HTMLDocument: \"Hi\"", "a tag need not follow whole"},
    {"Hi</a>", "HTMLDocument: \"Hi\"", "also before a closing tag too many"},
    {"Hi", "HTMLDocument", "text after the last tag is dropped"},
    {"<a></a>Hi", "HTMLDocument"},
    {"<a></a>Hi<b>", "HTMLDocument: \"Hi\""},
    {"<a>Ho</a>Hi<b>", "HTMLDocument: \"Hi\""},
    {"<a>Hi<b>", "HTMLDocument", "the text of an element is its own"},
    {"One<br>two<br>", "HTMLDocument: \"One\""},
    {" \n <a></a>\n<b></b>", "HTMLDocument"},
    {"<!-- a > b --><i>", "HTMLDocument: \"b -->\""},
    {"<input value=\"a>b\"><p>", "HTMLDocument: \"b\\\">\""},
    {"<?php if ($a > 1) echo '<b>'; ?>", "HTMLDocument: \"1) echo '\""},
};

TEST(PageText, OutsideAllElementsBelongsToTheRoot) {
  for (const TextCase& row : kRootTexts) {
    SCOPED_TRACE(testing::PrintToString(row.text) + ": " + std::string(row.why));
    EXPECT_EQ(pageRunOf(row.text).top->contents, row.nodes);
  }
}

TEST(PageText, IsNotAddedToARootThatShowsAText) {
  ObjectBranch* top = support::addNode(nullptr, kBranchClass, "class", "Top: \"x\"");
  ParseHTMLStructure("Hi<a>", top, "a.html", 0);
  EXPECT_EQ(top->contents, "Top: \"x\"");
  ParseHTMLStructure("Ho<a>", top, "a.html", 0);
  EXPECT_EQ(top->contents, "Top: \"x\"");
}

TEST(PageText, OfAnotherRunIsNotAddedEither) {
  ObjectBranch* top = pageRunOf("One<a>").top;
  ParseHTMLStructure("Two<a>", top, "a.html", 0);
  EXPECT_EQ(top->contents, "HTMLDocument: \"One\"");
}

}  // namespace
