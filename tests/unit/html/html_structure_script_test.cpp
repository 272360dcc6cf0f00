// Script elements: which of them have inline text, where that text ends, and its line numbers.
#include "html/html_structure.h"

#include <cstddef>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/page_run.h"
#include "tree/object_branch.h"

namespace {

using namespace std::string_view_literals;
using support::pageRunOf;
using support::strayTagWarnings;

struct ScriptCase {
  std::string_view text;
  std::string_view nodes;
  std::string_view why;
  int strayTags = 0;
};

template <std::size_t count>
void expectScripts(const ScriptCase (&rows)[count]) {
  for (const ScriptCase& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.text) + ": " + std::string(row.why));
    const support::PageRun run = pageRunOf(row.text);
    EXPECT_EQ(run.nodes(), row.nodes);
    EXPECT_EQ(run.errors, strayTagWarnings(row.strayTags));
  }
}

constexpr ScriptCase kInline[] = {
    {"<script>x();</script>", "htmlelement\"script\"@0(class\"script\"@1(line\"x();\"@1))", ""},
    {"<script></script>", "htmlelement\"script\"@0(class\"script\"@1)", "no text, yet a node"},
    {"<script> \n\t\f\v\r</script>", "htmlelement\"script\"@0(class\"script\"@1)", "blank text"},
    {"<script>\f;</script>", "htmlelement\"script\"@0(class\"script\"@1(line\";\"@1))", ""},
    {"<script type=\"module\">x();</script>",
     "htmlelement\"script\"@0(class\"script type=\"module\"\"@1(line\"x();\"@1))",
     "the script node shows the whole tag"},
    {"<script id=\"s\">x();</script>",
     "htmlelement\"script#s\"@0(class\"script id=\"s\"\"@1(line\"x();\"@1))", ""},
    {"<script class=\"c\" >x();</script>",
     "htmlelement\"script.c\"@0(class\"script class=\"c\" \"@1(line\"x();\"@1))", ""},
    {"<script href=\"u\">x();</script>",
     "htmlelement\"script\"@0(link\"href: u\"@0 class\"script href=\"u\"\"@1(line\"x();\"@1))",
     "a link comes first"},
    {"<script src = \"a.js\">x();</script>",
     "htmlelement\"script\"@0(class\"script src = \"a.js\"\"@1(line\"x();\"@1))",
     "required: a space hides the src"},
    {"<script SRC=\"a.js\">x();</script>",
     "htmlelement\"script\"@0(class\"script SRC=\"a.js\"\"@1(line\"x();\"@1))", ""},
    {"<scripted>x();</script>", "htmlelement\"scripted\"@0(class\"scripted\"@1(line\"x();\"@1))",
     "required: a prefix will do"},
    {"<script-x>x();</script>", "htmlelement\"script-x\"@0(class\"script-x\"@1(line\"x();\"@1))",
     ""},
    {"<script/>x();</script>", "htmlelement\"script\"@0(class\"script\"@1(line\"x();\"@1))",
     "required: a slash at the end changes nothing"},
    {"<script />x();</script>", "htmlelement\"script\"@0(class\"script \"@1(line\"x();\"@1))", ""},
    {"<script//>x();</script>", "htmlelement\"script/\"@0(class\"script/\"@1(line\"x();\"@1))", ""},
    {"<script>a<b>c</b></script>",
     "htmlelement\"script\"@0(class\"script\"@1(line\"a<b>c</b>\"@1))", "tags in it are text"},
    {"<script>a<script>b</script>",
     "htmlelement\"script\"@0(class\"script\"@1(line\"a<script>b\"@1))", ""},
    {"<script>s = \"</script>\";</script>",
     "htmlelement\"script\"@0(class\"script\"@1(classvar\"s = \"\"@1))",
     "required: the closing tag in a string ends it", 1},
    {"<script>a</SCRIPT>b</script>",
     "htmlelement\"script\"@0(class\"script\"@1(line\"a</SCRIPT>b\"@1))", "case-sensitive"},
    {"<script>a</script >b</script>",
     "htmlelement\"script\"@0(class\"script\"@1(line\"a</script >b\"@1))", "without a space"},
    {"<script>a</script></p>", "htmlelement\"script\"@0(class\"script\"@1(line\"a\"@1))",
     "the element was not opened", 1},
    {"<p><script>a</script></p><i>",
     "htmlelement\"p\"@0(htmlelement\"script\"@0(class\"script\"@1(line\"a\"@1))) "
     "htmlelement\"i\"@0",
     "so this closing tag is the p's"},
    {"<script>a</script>b<p>",
     "htmlelement\"script\"@0(class\"script\"@1(line\"a\"@1)) "
     "htmlelement\"p\"@0",
     "text after it is not its own"},
    {"<p><script>1</script><script>2</script>",
     "htmlelement\"p\"@0(htmlelement\"script\"@0(class\"script\"@1(line\"1\"@1)) "
     "htmlelement\"script\"@0(class\"script\"@1(line\"2\"@1)))",
     "beside each other"},
    {"<script>function f() {</script><script>a();</script>",
     "htmlelement\"script\"@0(class\"script\"@1(function\"function f() {\"@1)) "
     "htmlelement\"script\"@0(class\"script\"@1(line\"a();\"@1))",
     "an open block ends with its script"},
    {"<script>a</script><script src=b></script><script>c</script>",
     "htmlelement\"script\"@0(class\"script\"@1(line\"a\"@1)) "
     "htmlelement\"script[src]\"@0(link\"src: b\"@0) "
     "htmlelement\"script\"@0(class\"script\"@1(line\"c\"@1))",
     ""},
    {"<script>a\0\xE9</script>"sv,
     "htmlelement\"script\"@0(class\"script\"@1(line\"a\0\xE9\"@1))"sv, "odd bytes"},
};

TEST(PageScript, WithInlineTextIsParsed) { expectScripts(kInline); }

constexpr ScriptCase kOrdinary[] = {
    {"<script src=\"a.js\"></script><p>",
     "htmlelement\"script[src]\"@0(link\"src: a.js\"@0) htmlelement\"p\"@0", ""},
    {"<script src=\"a.js\">var x;</script>",
     "htmlelement\"script[src]: \"var x;\"\"@0(link\"src: a.js\"@0)", "its text is not parsed"},
    {"<script src=\"a.js\">a<b>c</b></script><p>",
     "htmlelement\"script[src]: \"a\"\"@0(link\"src: a.js\"@0 htmlelement\"b: \"c\"\"@0) "
     "htmlelement\"p\"@0",
     "but read as page text"},
    {"<script src>x();</script>", "htmlelement\"script\"@0(class\"script src\"@1(line\"x();\"@1))",
     "required: without the sign it is not a src"},
    {"<script src=>x</script>", "htmlelement\"script[src]: \"x\"\"@0", "an empty one is"},
    {"<script data-src=\"a\">x</script>", "htmlelement\"script[src]: \"x\"\"@0(link\"src: a\"@0)",
     "required: any name that ends so"},
    {"<script type=\"src=\">x</script>", "htmlelement\"script[src]: \"x\"\"@0",
     "required: also inside a value"},
    {"<script id=\"s\" src=\"a\">x</script>", "htmlelement\"script#s: \"x\"\"@0(link\"src: a\"@0)",
     ""},
    {"<script src=\"a.js\" /><p>",
     "htmlelement\"script[src]\"@0(link\"src: a.js\"@0) htmlelement\"p\"@0", "void by its slash"},
    {"<script src=/>x</script>", "htmlelement\"script[src]\"@0", "", 1},
    {"<script>", "htmlelement\"script\"@0", "no closing tag anywhere"},
    {"<script>a<b>c", "htmlelement\"script: \"a\"\"@0(htmlelement\"b\"@0)",
     "then its text is page text"},
    {"<script>a < b && c > d</SCRIPT><p>",
     "htmlelement\"script: \"a\"\"@0(htmlelement\": \"d\"\"@0 htmlelement\"p\"@0)",
     "required: what looks like a tag is one"},
    {"<script>a</script ><p>", "htmlelement\"script: \"a\"\"@0 htmlelement\"p\"@0", ""},
    {"<script>a</script", "htmlelement\"script: \"a\"\"@0", "cut short"},
    {"<script/><p>", "htmlelement\"script\"@0 htmlelement\"p\"@0", "void, without closing tag"},
    {"</script><script><p>", "htmlelement\"script\"@0(htmlelement\"p\"@0)",
     "a closing tag before it is none of its own", 1},
    {"<SCRIPT>x();</SCRIPT><p>", "htmlelement\"SCRIPT: \"x();\"\"@0 htmlelement\"p\"@0",
     "case-sensitive"},
    {"<Script>x();</script><p>", "htmlelement\"Script: \"x();\"\"@0 htmlelement\"p\"@0", ""},
    {"< script>x();</script><p>", "htmlelement\": \"x();\"\"@0 htmlelement\"p\"@0", ""},
    {"<scrip>x();</script><p>", "htmlelement\"scrip: \"x();\"\"@0 htmlelement\"p\"@0", ""},
    {"<noscript>x();</script><p>", "htmlelement\"noscript: \"x();\"\"@0 htmlelement\"p\"@0", ""},
    {"<style>x();</script><p>", "htmlelement\"style: \"x();\"\"@0 htmlelement\"p\"@0", ""},
};

TEST(PageScript, WithoutInlineTextIsAnOrdinaryElement) { expectScripts(kOrdinary); }

constexpr ScriptCase kLines[] = {
    {"<script>\nvar x = 1;\n</script>\n<p>",
     "htmlelement\"script\"@0(class\"script\"@1(classvar\"var x = 1;\"@2)) htmlelement\"p\"@3",
     "statements count from one beside elements from zero"},
    {"\n\n<script>\n\nf();\n</script><p>",
     "htmlelement\"script\"@2(class\"script\"@3(line\"f();\"@5)) htmlelement\"p\"@5", ""},
    {"<script>f();\ng();</script>\n<script>h();</script>",
     "htmlelement\"script\"@0(class\"script\"@1(line\"f();\"@1 line\"g();\"@2)) "
     "htmlelement\"script\"@2(class\"script\"@3(line\"h();\"@3))",
     ""},
    {"<script\n>\nf();\n</script><p>",
     "htmlelement\"script\\n\"@0(class\"script\\n\"@1(line\"f();\"@2)) htmlelement\"p\"@2",
     "required: line feeds in the tag are lost"},
    {"<script>\n\n</script><p>", "htmlelement\"script\"@0(class\"script\"@1) htmlelement\"p\"@2",
     "blank text counts too"},
    {"<script>\nfunction f() {\n  if (x) {\n    y();\n  }\n  return x;\n}\nz();\n</script>",
     "htmlelement\"script\"@0(class\"script\"@1(function\"function f() {\"@2("
     "function\"if (x) {\"@3(line\"y();\"@4) line\"return x;\"@6) line\"z();\"@8))",
     "blocks nest by their braces"},
    {"<script>\na\n<p>\n", "htmlelement\"script: \"a\"\"@0(htmlelement\"p\"@2)",
     "without closing tag, as anywhere"},
};

TEST(PageScript, NumbersItsLines) { expectScripts(kLines); }

}  // namespace
