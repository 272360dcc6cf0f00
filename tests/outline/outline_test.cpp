#include "outline/outline.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "outline/record_tags.h"
#include "outline_of.h"

namespace {

using host::outline::Item;

// A line an item: indentation by depth, lines, kind, name, and the record.
std::string written(const std::vector<Item>& items) {
  std::string text;
  for (const Item& item : items) {
    text.append(static_cast<std::size_t>(item.depth) * 2, ' ');
    text.append(std::to_string(item.firstLine)).append("-").append(std::to_string(item.lastLine));
    text.append(" ").append(host::outline::kindWord(item.kind));
    if (!item.name.empty()) text.append(" ").append(item.name);
    text.append(" #").append(std::to_string(item.record)).append("\n");
  }
  return text;
}

std::string outlineText(const std::string& name, std::string_view text) {
  return written(outlineOf(name, text).items);
}

std::string withCarriageReturns(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    if (byte == '\n') result += '\r';
    result += byte;
  }
  return result;
}

// Records 0 to 2 are the file, its scope and its class.
TEST(Outline, OfAScript) {
  const std::string_view text =
      "import a from 'b';\n"
      "class A {\n"
      "  m() {\n"
      "    if (a) {\n"
      "      b();\n"
      "    } else if (c) {\n"
      "    }\n"
      "  }\n"
      "  #p() {\n"
      "  }\n"
      "}\n"
      "export const f = (x) =>\n"
      "  x;\n"
      "run(function () {\n"
      "});\n";
  const std::string_view expected =
      "1-1 module #3\n"
      "2-11 class A #4\n"
      "  3-8 method m #5\n"
      "    4-6 logic #6\n"
      "      5-5 statement #7\n"
      "    6-7 logic #8\n"
      "  9-10 method #p #-1\n"
      "12-13 function f #9\n"
      "  13-13 statement #10\n"
      "14-15 callback #11\n";
  EXPECT_EQ(outlineText("a.js", text), expected);
  EXPECT_EQ(outlineText("a.js", withCarriageReturns(text)), expected);
}

TEST(Outline, OneItemALine) {
  EXPECT_EQ(outlineText("a.js", "var a = 1, f = function () { return function g() {}; };\n"),
            "1-1 function f #3\n")
      << "a function before the variable in front of it";
  EXPECT_EQ(outlineText("a.js", "class A { m() {} n() {} }\n"), "1-1 class A #3\n");
}

TEST(Outline, LinesThatTheModuleLeavesOut) {
  const std::string text = "function f() {\n  var s = '" + std::string(10'001, 's') +
                           "';\n}\nfunction g() {" + std::string(10'000, ' ') + "}\n";
  EXPECT_EQ(outlineText("a.js", text), "1-3 function f #3\n")
      << "a definition on a line that is too long is none";
  std::string lines(99'999, '\n');
  lines += "function f() {}\nfunction g() {}\n";
  EXPECT_EQ(outlineText("a.js", lines), "100000-100000 function f #3\n");
}

TEST(Outline, EndsByIndentationWhereBracketsAreWrong) {
  EXPECT_EQ(outlineText("a.js", "function f() {\n  a();\n}\nfunction g() {\n  (\n"),
            "1-3 function f #3\n"
            "  2-2 statement #4\n"
            "4-4 function g #5\n");
}

// Elements count from 0 in records, lines of scripts from 1, and line feeds in tags not at all.
TEST(Outline, OfAPage) {
  const std::string_view text =
      "<!DOCTYPE html>\n"
      "<html>\n"
      "<div\n"
      "  class=\"a b\"\n"
      ">\n"
      "  <a href=\"x\">it's</a><br>\n"
      "  <!-- <i>\n"
      "  -->\n"
      "  <script\n"
      "  >\n"
      "    function f() {\n"
      "      g();\n"
      "    }\n"
      "  </script>\n"
      "</div>\n"
      "<p>one\n"
      "<p>two\n"
      "</html>\n";
  // The first space ends the name of an element, and the module drops the blanks that indent a
  // line.
  const std::string_view expected =
      "2-18 element html #3\n"
      "  3-15 element div #4\n"
      "    6-6 element a #5\n"
      "      6-6 link x #6\n"
      "    6-6 element br #7\n"
      "    9-14 element script #8\n"
      "      9-14 script #9\n"
      "        11-13 function f #10\n"
      "          12-12 statement #11\n"
      "  16-17 element p #12\n"
      "  17-18 element p #13\n";
  EXPECT_EQ(outlineText("a.html", text), expected);
  EXPECT_EQ(outlineText("a.html", withCarriageReturns(text)), expected);
}

TEST(Outline, ElementsOfOneLineNestByTheirTags) {
  EXPECT_EQ(outlineText("a.html", "<ul><li><b>x</b></li><li>y</li></ul><i>z</i>\n"),
            "1-1 element ul #3\n"
            "  1-1 element li #4\n"
            "    1-1 element b #5\n"
            "  1-1 element li #6\n"
            "1-1 element i #7\n");
}

TEST(Outline, ATagInACommentHasNoItem) {
  EXPECT_EQ(outlineText("a.html", "<p>see // <b>x</b>\n</p><i>y</i>\n"),
            "1-2 element p #3\n"
            "2-2 element i #4\n");
}

// A block takes its first child's line if its record has none, and ends with its last child.
TEST(Outline, OfOtherText) {
  EXPECT_EQ(outlineText("a.css", ".a {\n  color: red;\n  left: 0;\n}\n.b {\n}\n"),
            "2-3 block .a #2\n"
            "  2-2 statement #3\n"
            "  3-3 statement #4\n");
  EXPECT_EQ(outlineText("a.py", "class A:\r\n  def b(self):\r\n"),
            "1-1 statement #2\n"
            "2-2 statement #3\n");
}

TEST(Outline, IsTheSameForASourceReadAhead) {
  const std::string_view text =
      "// a\r\n// b\r\nimport a from 'b';\r\nclass A {\r\n  #m() {\r\n  }\r\n}\r\n"
      "const f = <T,>(x: T) => <T>x;\n";
  for (const std::string name : {"a.js", "a.ts", "a.tsx"}) {
    const Outlined outlined = outlineOf(name, text);
    host::outline::ScriptSource source(text, name);
    std::vector<host::outline::CommentLines> comments;
    EXPECT_EQ(written(host::outline::makeOutline(text, outlined.answer,
                                                 {.comments = &comments, .script = &source})),
              written(outlined.items));
    EXPECT_EQ(comments, (std::vector<host::outline::CommentLines>{{1, 2}}));
  }
}

TEST(Outline, LeavesOutLinesThatAreNotWanted) {
  const std::string_view text = "a();\nfunction f() {\n  b();\n  if (c) {\n    d();\n  }\n}\n";
  const Outlined outlined = outlineOf("a.js", text);
  const auto isOneStatement = [](const Item& item) {
    return item.kind == host::outline::Kind::kStatement && item.firstLine == item.lastLine;
  };
  EXPECT_EQ(
      written(host::outline::makeOutline(text, outlined.answer, {.isUnwanted = isOneStatement})),
      "2-7 function f #4\n"
      "  4-6 logic #6\n");
}

TEST(Outline, KeepsLinesThatAreNotWantedAroundOthers) {
  const std::string_view text = "a(); b();\nc();\n";
  std::string answer = outlineOf("a.js", text).answer;
  answer.replace(answer.find("\"lineNumber\": 2,"), 15, "\"lineNumber\": 1");
  const auto isOneStatement = [](const Item& item) {
    return item.kind == host::outline::Kind::kStatement && item.firstLine == item.lastLine;
  };
  EXPECT_EQ(written(host::outline::makeOutline(text, answer)),
            "1-1 statement #3\n"
            "  1-1 statement #4\n");
  EXPECT_EQ(written(host::outline::makeOutline(text, answer, {.isUnwanted = isOneStatement})),
            "1-1 statement #3\n");
}

TEST(Outline, RoutesByName) {
  using host::outline::Route;
  using host::outline::routeOfName;
  for (const std::string_view name :
       {"/b/c.d.ts", "a.js", "x.jsx", "x.tsx", "a.mjs", "a.cjs", "x.es6", "x.es", ".mjs"}) {
    EXPECT_EQ(routeOfName(name), Route::kScript) << name;
  }
  for (const std::string_view name : {"a.html", "b/a.htm", "a.js.xhtml", "a.php"}) {
    EXPECT_EQ(routeOfName(name), Route::kPage) << name;
  }
  for (const std::string_view name : {"", "js", "a.JS", "a.HTML", "a.jsonc", "a.", "a.mts"}) {
    EXPECT_EQ(routeOfName(name), Route::kOther) << name;
  }
}

// The module takes a line that begins with "#" for a directive, which leaves no record.
TEST(Outline, AddsWhatHasNoRecordIfItHasAName) {
  const auto namesAdded = [](std::string_view text) {
    std::vector<std::string> names;
    for (const Item& item : outlineOf("a.js", text).items)
      if (item.record < 0) names.emplace_back(item.name);
    return names;
  };
  EXPECT_EQ(namesAdded("#{\"x\"() {\n}\n}\n"), std::vector<std::string>{"x"});
  EXPECT_EQ(namesAdded("#{\"\"() {\n}\n}\n"), std::vector<std::string>{});
  EXPECT_EQ(namesAdded("#{\";\n(){"), std::vector<std::string>{}) << "a string without an end";
}

TEST(Outline, OfAnswersWithoutRecords) {
  EXPECT_TRUE(host::outline::makeOutline("", "[{\"error\": \"File is empty: a.js\"}]").empty());
  EXPECT_TRUE(host::outline::makeOutline("a", "").empty());
  EXPECT_TRUE(host::outline::makeOutline("a", "[\n]\n").empty());
}

}  // namespace
