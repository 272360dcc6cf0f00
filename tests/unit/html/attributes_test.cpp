#include "html/attributes.h"

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

struct ValueCase {
  std::string_view tag;
  std::string_view value;
  std::string_view why = "";
};

constexpr ValueCase kHrefCases[] = {
    {R"(a href="x.html")", "x.html"},
    {R"(a href='x.html')", "x.html"},
    {R"(a href=x.html class="b")", "x.html", "unquoted, up to the space"},
    {R"(a href = "x")", "x"},
    {R"(a href= "x")", "x"},
    {R"(a href ="x")", "x"},
    {R"(a href  =  "x")", "x"},
    {R"(a href =x)", "x"},
    {R"(a data-href="y")", "y", "required: any name that ends so"},
    {R"(a hrefhref=x)", "x"},
    {R"(a href)", ""},
    {R"(a href )", "", "no sign after it"},
    {R"(a href class)", "", "nor there"},
    {R"(a x="1" href b)", "", "a sign before the word is none of it"},
    {R"(a href class="b")", "b", "required: whatever comes before the sign"},
    {R"(a title="href x" b="y")", "y", "required: also from inside a value"},
    {R"(a href="x)", "", "not closed"},
    {R"(a href='x)", ""},
    {R"(a href="x')", "", "closed by the other quote"},
    {R"(a href="x class='b')", ""},
    {R"(a href=")", ""},
    {R"(a href=)", ""},
    {R"(a href= )", ""},
    {R"(a href =)", ""},
    {R"(a href = )", ""},
    {R"(a href="")", ""},
    {R"(a href=''b)", ""},
    {R"(a HREF="x")", "", "case-sensitive"},
    {R"(a Href="x")", ""},
    {R"(a hrefs="x")", ""},
    {R"(a hre="x")", ""},
    {"a href\t=\"x\"", "", "only a space may stand before the sign"},
    {"a href\n=\"x\"", ""},
    {R"(href="x")", "x", "no name before it"},
    {R"(href=)", ""},
    {R"(a href="x" href="y")", "x", "the first hit"},
    {R"(a data-href="y" href="x")", "y"},
    {R"(a href="" href="x")", "", "an empty first hit is the hit"},
    {R"(a href="x href='y')", "", "so is one that is not closed"},
    {R"(a href b="1" href="x")", "x", "the word with its sign is sought first"},
    {R"(a href b="1" data-href="y")", "y"},
    {R"(a title="href=z" href="x")", "z\"", "required: a hit inside a value"},
    {R"(a href=href=x)", "href=x"},
    {R"(a href='x"y')", "x\"y", "the other quote is part of the value"},
    {R"(a href="it's")", "it's"},
    {R"(a href="\"x")", "\\", "no escapes"},
    {R"(a href="a b")", "a b"},
    {R"(a href=" x ")", " x ", "nothing is trimmed"},
    {R"(a href=">")", ">"},
    {R"(a href=x'y')", "x'y'", "a quote inside an unquoted value"},
    {R"(a href=x"y z")", "x\"y"},
    {R"(a href=x>y)", "x"},
    {R"(a href=>)", ""},
    {R"(a href=x/)", "x/"},
    {"a href= \t\n\v\f\r\"x\"", "x", "all white space before the value is skipped"},
    {"a href=x\ty", "x"},
    {"a href=x\ny", "x"},
    {"a href=x\vy", "x"},
    {"a href=x\fy", "x"},
    {"a href=x\ry", "x"},
    {"a href=\"x\n y\"", "x\n y", "a quoted value may run over lines"},
    {"a href=\xA0x\x85y z", "\xA0x\x85y", "white space is ASCII alone"},
    {"a href=\0x y"sv, "\0x"sv, "NUL is a byte like any other"},
    {"a href=\"x\0y\""sv, "x\0y"sv},
    {"a\0href=\"x\""sv, "x"},
    {"a href=\"\xC3\xA9\"", "\xC3\xA9"},
    {"", ""},
    {"a", ""},
};

TEST(ExtractHrefValue, Table) {
  for (const ValueCase& row : kHrefCases) {
    SCOPED_TRACE(testing::PrintToString(row.tag) + ": " + std::string(row.why));
    EXPECT_EQ(ExtractHrefValue(std::string(row.tag)), row.value);
  }
}

constexpr ValueCase kSrcCases[] = {
    {R"(img src="a.png")", "a.png"},
    {R"(img src='a.png')", "a.png"},
    {R"(img src=a.png alt="b")", "a.png"},
    {R"(img src= "a.png")", "a.png"},
    {R"(img src= a.png)", "a.png"},
    {R"(img src = "a.png")", "", "required: a space before the sign loses the value"},
    {R"(img src ="a.png")", ""},
    {R"(img src b="c")", ""},
    {R"(img data-src="b")", "b", "required: any name that ends so"},
    {R"(img srcset="x")", ""},
    {R"(img srcset="x" src="y")", "y"},
    {R"(img src=)", ""},
    {R"(img src= )", ""},
    {R"(img src="a)", "", "not closed"},
    {R"(img src='a)", ""},
    {R"(img src="a')", ""},
    {R"(img src=")", ""},
    {R"(img src="")", ""},
    {R"(img src)", ""},
    {R"(img SRC="a")", "", "case-sensitive"},
    {R"(img sr="a")", ""},
    {R"(src="a")", "a"},
    {R"(img src="a" src="b")", "a", "the first hit"},
    {R"(img src="" src="b")", ""},
    {R"(img src = "a" data-src="b")", "b"},
    {R"(img alt="src=q" src="a")", "q\"", "required: a hit inside a value"},
    {R"(img src='a"b')", "a\"b"},
    {R"(img src="a b")", "a b"},
    {R"(img src=a/>b)", "a/"},
    {R"(img src=>)", ""},
    {"img src=\r\f\v\n\t a", "a"},
    {"img src=a\nb", "a"},
    {"img src=a\vb", "a"},
    {"img src=\0a\xA0 b"sv, "\0a\xA0"sv},
    {"", ""},
};

TEST(ExtractSrcValue, Table) {
  for (const ValueCase& row : kSrcCases) {
    SCOPED_TRACE(testing::PrintToString(row.tag) + ": " + std::string(row.why));
    EXPECT_EQ(ExtractSrcValue(std::string(row.tag)), row.value);
  }
}

constexpr ValueCase kIdentifierCases[] = {
    {R"(div)", "div"},
    {R"(div )", "div"},
    {R"(div id="main")", "div#main"},
    {R"(div id='main')", "div#main"},
    {R"(div id="")", "div#", "an empty id counts"},
    {R"(div id="" class="a")", "div#"},
    {R"(div id="a b")", "div#a b", "an id is not cut"},
    {R"(div id="m" class="a")", "div#m"},
    {R"(div class="a" id="m")", "div#m"},
    {R"(div id=m class="a")", "div.a"},
    {R"(div id=m)", "div", "an unquoted id is none"},
    {R"(div id = "m")", "div"},
    {R"(div id ="m")", "div"},
    {R"(div id= "m")", "div", "the quote comes right after the sign"},
    {R"(div id=)", "div"},
    {R"(div id=")", "div"},
    {R"(div id="m)", "div", "not closed"},
    {R"(div id='m")", "div"},
    {R"(div id="m class='a')", "div.a"},
    {R"(div id=m data-id="n")", "div", "required: only the first hit is checked"},
    {R"(div data-id="x")", "div#x", "required: any name that ends so"},
    {R"(div grid="x")", "div#x"},
    {R"(div title="id='q'")", "div#q", "required: a hit inside a value"},
    {R"(div idx="m")", "div"},
    {R"(div ID="m")", "div"},
    {R"(div class="a")", "div.a"},
    {R"(div class='a b')", "div.a"},
    {R"(div class="a b")", "div.a", "the first class"},
    {R"(div class=" a")", "div", "a value that begins with a space is empty"},
    {R"(div class="")", "div"},
    {R"(div class=" ")", "div"},
    {R"(div class=a)", "div", "an unquoted class is none"},
    {R"(div class= "a")", "div"},
    {R"(div class ="a")", "div"},
    {R"(div class="a)", "div"},
    {R"(div class="a')", "div"},
    {R"(div class=)", "div"},
    {R"(div class=a subclass="b")", "div", "required: only the first hit is checked"},
    {R"(div subclass="a")", "div.a", "required: any name that ends so"},
    {R"(div CLASS="a")", "div"},
    {R"(div class="id='z'")", "div#z", "an id anywhere comes first"},
    {"div class=\"a\tb\"", "div.a\tb", "only a space ends a class"},
    {"div class=\"a\nb c\"", "div.a\nb"},
    {R"(script)", "script"},
    {R"(script src="a.js")", "script[src]"},
    {R"(script src=a.js)", "script[src]"},
    {R"(script src=)", "script[src]", "the word and its sign will do"},
    {R"(script src)", "script"},
    {R"(script src ="a.js")", "script"},
    {R"(script data-src="a.js")", "script[src]"},
    {R"(script class="c")", "script.c"},
    {R"(script class="c" src="a.js")", "script[src]", "the class is thrown away"},
    {R"(script id="s" src="a.js")", "script#s", "an id is not"},
    {R"(script id=s src="a.js")", "script[src]"},
    {R"(script href="a.js")", "script"},
    {R"(scripts src="a.js")", "scripts", "the whole name"},
    {R"(Script src="a.js")", "Script"},
    {R"( script src="a.js")", ""},
    {R"(link href="a.css")", "link[href]"},
    {R"(link data-href="a.css")", "link[href]"},
    {R"(link class="c" href="a.css")", "link[href]"},
    {R"(link id="l" href="a.css")", "link#l"},
    {R"(link href ="a.css")", "link"},
    {R"(link rel="x")", "link"},
    {R"(link src="a.css")", "link"},
    {R"(links href="a.css")", "links"},
    {R"(LINK href="a.css")", "LINK"},
    {R"(form action="/go")", "form[action]"},
    {R"(form data-action=go)", "form[action]"},
    {R"(form class="c" action="/go")", "form[action]"},
    {R"(form id="f" action="/go")", "form#f"},
    {R"(form action ="/go")", "form"},
    {R"(form method="post")", "form"},
    {R"(form href="a" src="b")", "form"},
    {R"(forms action="/go")", "forms"},
    {R"(a href="x")", "a"},
    {R"(a href="x" src="y" action="z")", "a"},
    {"div\n  class=\"a\"", "div\n.a", "required: only a space ends the name"},
    {"div\nclass=\"a\" x", "div\nclass=\"a\".a"},
    {"div\tid=\"m\"", "div\tid=\"m\"#m"},
    {"script\n src=\"a.js\"", "script\n", "required: that name is not script"},
    {"link\thref=\"a.css\"", "link\thref=\"a.css\""},
    {R"( div)", "", "a space in front leaves no name"},
    {R"( div id="m")", "#m"},
    {R"( div class="a")", ".a"},
    {R"(id="m")", "id=\"m\"#m", "the name may be the attribute"},
    {R"(br/)", "br/", "a slash is part of the name"},
    {R"(!doctype html)", "!doctype"},
    {"d\0v\xE9 id=\"\xC3\xA9\0\""sv, "d\0v\xE9#\xC3\xA9\0"sv, "bytes are copied as they stand"},
    {"", ""},
    {" ", ""},
};

TEST(GetElementIdentifier, Table) {
  for (const ValueCase& row : kIdentifierCases) {
    SCOPED_TRACE(testing::PrintToString(row.tag) + ": " + std::string(row.why));
    EXPECT_EQ(GetElementIdentifier(std::string(row.tag)), row.value);
  }
}

struct PreviewCase {
  std::string_view text;
  std::size_t maxLength;
  std::string_view preview;
  std::string_view why = "";
};

constexpr std::string_view k30Bytes = "abcdefghijklmnopqrstuvwxyz0123";
constexpr std::string_view k31Bytes = "abcdefghijklmnopqrstuvwxyz01234";
constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

constexpr PreviewCase kPreviewCases[] = {
    {"", 30, ""},
    {"  hello   world ", 30, "hello world"},
    {" \t\r\n\f\v", 30, ""},
    {k30Bytes, 30, k30Bytes, "exactly as long as allowed"},
    {k31Bytes, 30, "abcdefghijklmnopqrstuvwxyz0123...", "one byte too long"},
    {"  abcdefghijklmnop \n qrstuvwxyz012  ", 30, "abcdefghijklmnop qrstuvwxyz012",
     "the reduced text is measured"},
    {"abcdefghijklmnopqrstuvwxyz", 25, "abcdefghijklmnopqrstuvwxy...",
     "required: the result may be longer than the text"},
    {"ab cd", 3, "ab ...", "a space before the dots stays"},
    {"ab\ncd", 3, "ab ..."},
    {"abc", 0, "..."},
    {"", 0, ""},
    {" ", 0, ""},
    {"abc", 1, "a..."},
    {"a  b", kNoLimit, "a b"},
    {R"(say "hi")", 30, R"(say \"hi\")"},
    {R"("")", 2, R"(\"\")", "quotes are escaped after the cut"},
    {R"(""")", 2, R"(\"\"...)"},
    {R"(a"b)", 2, R"(a\"...)", "a quote as the last byte kept"},
    {R"(a"b)", 1, "a...", "a quote as the first byte cut"},
    {R"(a\b)", 30, R"(a\b)", "backslashes stay as they are"},
    {R"(\")", 30, R"(\\")", "required: also before a quote"},
    {"'a'", 30, "'a'"},
    {"a\nb\r\nc\td", 30, "a b c d"},
    {"a\fb\vc", 30, "a\fb\vc", "a form feed inside stays"},
    {"\f a \v", 30, "a"},
    {"\xC3\xA9\xC3\xA9", 3, "\xC3\xA9\xC3...", "required: the cut splits a character"},
    {"\xC3\xA9\xC3\xA9", 4, "\xC3\xA9\xC3\xA9", "bytes are counted"},
    {"a\0b"sv, 30, "a\0b"sv, "NUL is a byte like any other"},
    {"a\0b"sv, 2, "a\0..."sv},
};

TEST(ExtractTextPreview, Table) {
  for (const PreviewCase& row : kPreviewCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " to " + std::to_string(row.maxLength) + ": " +
                 std::string(row.why));
    EXPECT_EQ(ExtractTextPreview(std::string(row.text), row.maxLength), row.preview);
  }
}

TEST(ExtractTextPreview, LeavesItsArgumentAlone) {
  const std::string text = " say \"hello\"  to the world ";
  EXPECT_EQ(ExtractTextPreview(text, 5), "say \\\"...");
  EXPECT_EQ(text, " say \"hello\"  to the world ");
}

}  // namespace
