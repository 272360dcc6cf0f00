// Compares whole runs with the reference implementation, on files of all three routes: the answer,
// the output on both streams, and the state that a run leaves.
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <random>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "plugin/exported_data.h"
#include "plugin/plugin_api.h"
#include "reference/plain_run.h"
#include "support/capture.h"
#include "support/heap.h"
#include "support/many_texts.h"
#include "support/page_run.h"
#include "support/temp_dir.h"

namespace {

using std::string_view_literals::operator""sv;

// clang-format off
constexpr std::string_view kScriptPieces[] = {
    "\n", "\n", "\n", "\r\n", " ", "\t", "    ", ";", "{", "}", "(", ")", "[", "]", ",", "=", "=>",
    "'", "\"", "`", "\\", "\\\n", "a", "x1.y", "\0"sv, "\xC3\xA9", "// note\n", "/* a */", "/**\n",
    "*/", "<!--", "-->", "#ifdef A\n", "#ifndef B\n", "#else\n", "#endif\n", "#x = 1;\n",
    "#!/usr/bin/env node\n", "TTTTT", "TTTTTq;", "function TTTTTTx() {\n",
    "import a from 'b';\n", "const b = require('b');\n", "export default class A {\n",
    "export function f() {\n", "module.exports = f;\n", "exports.a = 1;\n", "(function() {\n",
    "})();\n", "function Foo(a) {\n", "function bar() { return 1; }\n", "async function g() {\n",
    "class A extends HTMLElement {\n", "  m(x) {\n", "if (x) {\n", "} else {\n", "while (y)\n",
    "for (i = 0; i < 3; i++) {\n", "var x = 1;\n", "let f = (a) => {\n", "x = 'it\\'s';\n",
    "return x;\n", "foo(a,\n  b);\n", "};\n", "});\n", "}\n", "}\n", "[1, 2].map(f);\n",
    "a.classList.add(b);\n", "/x'y/g", "http://a.b/c", "x += 1;\n", "a ? b : c;\n"};
constexpr std::string_view kPagePieces[] = {
    "\n", "\n", " ", "\t", "\r\n", "<", ">", "/", "</", "/>", "\"", "'", "=", "text", "it's", "a//b",
    "<!DOCTYPE html>\n", "<html>\n", "<head>", "</head>", "<body class=\"a b\">", "</body>\n",
    "<div id=\"m\">", "</div>\n", "<p>", "</p>", "<br>", "<br/>", "<img src=\"a.png\">",
    "<a href='b.html'>", "<a href=c.html?x=1>", "</a>", "<script>\n", "<script src=\"a.js\">",
    "<script type=\"module\">", "</script>\n", "<link href=\"a.css\">", "<form action=\"/go\">",
    "<!-- note -->", "<!--", "-->", "<?php echo 1; ?>", "<style>\n", "#id { a: b }\n", "</style>",
    "$('.m').on('click', function() {\n", "});\n", "}\n", "var x = 1;\n", "if (x) {\n",
    "class A {\n", "function f() {\n", "/* c */", "\xE9", "[", ";", "{", "<td", ": \"", "<h1>"};
// clang-format on

struct Route {
  const char* name;
  std::span<const std::string_view> pieces;
  std::span<const char* const> files;
};

void PrintTo(const Route& route, std::ostream* out) { *out << route.name; }

constexpr const char* kScriptFiles[] = {"a.js", "my-app.min.ts", "classes.mjs", "it's.jsx"};
constexpr const char* kPageFiles[] = {"a.html", "b.php", "c.d.htm", "class.xhtml"};
constexpr const char* kOtherFiles[] = {"a.txt", "noext", "script.html.bak", "b.JS"};
constexpr const char* kDefineLists[] = {"", "", "A", "A\n\nB", "if x", "\n", "import y\r\n \n"};

class WholeRun : public testing::TestWithParam<Route> {
 protected:
  ~WholeRun() override { CleanupJS(); }

  void compare(const std::string& file, const std::string& bytes, const char* defines) {
    const support::NodeSweep sweep;
    const std::string path = directory_.write(file, bytes);
    const std::string answer = ParseJS(path.c_str(), defines);
    std::filesystem::remove(path);  // much faster than overwriting it
    const auto nextId = currentIndex;
    const auto count = objectCount;
    std::string plainChunk;
    const reference::Run plain = reference::parseJS(path, bytes, defines, plainChunk);
    printed_ += plain.printed;
    strayTags_ += plain.strayTags;
    records_ += plain.answer.size();
    if (answer != plain.answer) first_ = answer + " and\n" + plain.answer;
    if (nextId != currentIndex || count != objectCount) first_ = "the counters";
    if (chunk != plainChunk) first_ = "chunk " + chunk + " and " + plainChunk;
    if (!first_.empty())
      first_ = file + " with " + testing::PrintToString(bytes) + " and the defines " +
               testing::PrintToString(defines) + ": " + first_;
  }

  const support::TempDir directory_;
  std::string first_;  // the first difference
  std::string printed_;
  int strayTags_ = 0;
  std::size_t records_ = 0;
};

TEST_P(WholeRun, EqualsThePlainReading) {
  std::mt19937 random(20240310);
  std::string printed;
  const std::string errors = support::stderrOf([&] {
    printed = support::stdoutOf([&] {
      for (int i = support::textCount(30'000); i > 0 && first_.empty(); --i) {
        const std::string bytes = support::randomText(GetParam().pieces, 80, random);
        compare(GetParam().files[random() % GetParam().files.size()], bytes,
                kDefineLists[random() % std::size(kDefineLists)]);
      }
    });
  });
  EXPECT_EQ(first_, "");
  EXPECT_TRUE(printed == printed_);
  EXPECT_TRUE(errors == support::strayTagWarnings(strayTags_));
  EXPECT_GT(records_, 1'000u * static_cast<unsigned>(support::textCount(30'000)))
      << "the files must give records";
}

INSTANTIATE_TEST_SUITE_P(PlainReading, WholeRun,
                         testing::Values(Route{"script", kScriptPieces, kScriptFiles},
                                         Route{"page", kPagePieces, kPageFiles},
                                         Route{"other", kScriptPieces, kOtherFiles}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
