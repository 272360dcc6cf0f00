#include "outline/comment_lines.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "outline/script_scanner.h"

namespace {

using namespace host::outline;
using Lines = std::vector<CommentLines>;

Lines ofScript(const std::string& text) { return scanScript(text, 1, 1000, {}).comments; }

TEST(CommentLines, OfScripts) {
  struct Row {
    const char* why;
    std::string text;
    Lines comments;
  };
  const std::vector<Row> rows = {
      {"none", "a;\n", {}},
      {"a single line", "// a\nb;\n", {}},
      {"a run of single lines", "// a\n// b\n  // c\nd;\n", {{1, 3}}},
      {"two runs", "// a\n// b\n\n// c\n// d\n", {{1, 2}, {4, 5}}},
      {"of several lines", "/* a\n */\nb;\n", {{1, 2}}},
      {"one behind the other", "/* a\n */\n/* b\n */\n", {{1, 2}, {3, 4}}},
      {"a run before one of several lines", "// a\n// b\n/* c\n*/\n", {{1, 2}, {3, 4}}},
      {"behind code on the line", "a; /* b\n */\n", {}},
      {"a line with code does not continue a run", "// a\nb; // c\n// d\n", {}},
      {"inside a template", "a = `\n/* b\n*/\n`;\n", {}},
      {"inside a string", "a = '\\\n// b\\\n// c';\n", {}},
      {"without an end", "a;\n/* b\nc\n", {{2, 4}}},
      {"CR LF and CR", "/* a\r\n */\r// b\r// c\r", {{1, 2}, {3, 4}}}};
  for (const Row& row : rows) EXPECT_EQ(ofScript(row.text), row.comments) << row.why;
}

TEST(CommentLines, OfOtherText) {
  EXPECT_EQ(findComments("<!-- a\n b -->\n<p>\n  /* c\n  */\n// d\n// e\n"),
            (Lines{{1, 2}, {4, 5}, {6, 7}}));
  EXPECT_EQ(findComments("a /* b\n*/\n/* c */\n<!-- d\n"), (Lines{{4, 5}}));
  EXPECT_EQ(findComments(""), Lines{});
  EXPECT_EQ(findComments("/*/\n*/\n"), (Lines{{1, 2}}));
}

}  // namespace
