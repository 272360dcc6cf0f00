#include "outline/source_lines.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using host::outline::SourceLines;

TEST(SourceLines, EndAtEachKindOfLineBreak) {
  const SourceLines lines("a\r\nb\rc\n\nd");
  ASSERT_EQ(lines.count(), 5);
  EXPECT_EQ(lines.text(1), "a");
  EXPECT_EQ(lines.text(2), "b");
  EXPECT_EQ(lines.text(3), "c");
  EXPECT_EQ(lines.text(4), "");
  EXPECT_EQ(lines.text(5), "d");
  EXPECT_EQ(SourceLines("").count(), 1);
  EXPECT_EQ(SourceLines("a\n").count(), 2);
  EXPECT_EQ(SourceLines("a\r").count(), 2);
  EXPECT_EQ(SourceLines("\r\r\n\n\r").text(4), "");
  EXPECT_EQ(SourceLines("\r\r\n\n\r").count(), 5);
}

TEST(SourceLines, FindBlockEndsByIndentation) {
  struct Case {
    std::string_view text;
    int head;
    int end;
    std::string_view why;
  };
  const Case cases[] = {
      {"f {\n  a\n}\n", 1, 3, "the closer below"},
      {"f {\n  a\n\n}\n", 1, 4, "blank lines are not looked at"},
      {"f {\n  a\n} else {\n  b\n}\n", 1, 5, "a closer that opens again"},
      {"f {\n  a\ng {\n}\n", 1, 1, "no closer comes first"},
      {"  f {\n    a\n}\n", 1, 1, "a line indented less comes first"},
      {"f {\n  g {\n    a\n  }\n}\n", 1, 5, "outer"},
      {"f {\n  g {\n    a\n  }\n}\n", 2, 4, "inner"},
      {"f {\n", 1, 1, "no line at all"},
      {"f([\n  1\n])\n", 1, 3, "another bracket"},
  };
  for (const Case& row : cases) {
    SourceLines lines(row.text);
    EXPECT_EQ(lines.blockEnd(row.head), row.end) << row.why;
  }
}

}  // namespace
