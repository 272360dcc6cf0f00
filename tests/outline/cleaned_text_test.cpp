#include "outline/cleaned_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "cleaner/cleaner.h"

namespace {

using host::outline::cleanedLines;
using host::outline::cleanText;
using host::outline::LineMap;

std::vector<std::int32_t> firstLines(const LineMap& map, std::size_t count) {
  std::vector<std::int32_t> lines;
  for (std::size_t i = 0; i < count; ++i) lines.push_back(map.sourceLine(i));
  return lines;
}

TEST(CleanedLines, MapToTheSource) {
  using Lines = std::vector<std::int32_t>;
  EXPECT_EQ(firstLines(cleanedLines("a\nb\nc"), 3), (Lines{1, 2, 3}));
  EXPECT_EQ(firstLines(cleanedLines("a\r\nb\r\nc"), 5), (Lines{1, 1, 2, 2, 3}));
  EXPECT_EQ(firstLines(cleanedLines("a\rb\rc"), 3), (Lines{1, 2, 3}));
  EXPECT_EQ(firstLines(cleanedLines("a\r\n\nb"), 4), (Lines{1, 1, 2, 3}));
  EXPECT_EQ(firstLines(cleanedLines("<!--\r\n\r\n-->\r\nb"), 5), (Lines{1, 2, 3, 3, 4}))
      << "a page comment keeps line feeds only";
  EXPECT_EQ(firstLines(cleanedLines("TTTTTx\ny\n;z\nb"), 2), (Lines{1, 4}))
      << "a marker run takes its line feeds along";
  EXPECT_EQ(firstLines(cleanedLines("\"TTTTTx\ny\n;z\nb\""), 4), (Lines{1, 2, 3, 4}));
  EXPECT_EQ(cleanedLines("a\r\nb").sourceLine(17), 2) << "behind the end: the last line";
}

TEST(CleanedText, IsTheTextThatTheModuleReads) {
  const std::vector<std::string_view> pieces = {
      "a",     "b;",   "[",   "'", "\"", "\\",       "/",    "//",   "/*", "*/",
      "*",     "<!--", "-->", "-", ">",  "\n",       "\r",   "\r\n", "\t", " ",
      "TTTTT", "T",    "d",   ";", "}",  "\xc3\xa9", "\x7f", "\x01", "<p>"};
  std::mt19937 random(7);
  for (int round = 0; round < 200'000; ++round) {
    std::string text;
    const std::size_t count = random() % 24;
    for (std::size_t i = 0; i < count; ++i) text += pieces[random() % pieces.size()];
    std::string expected = text;
    std::vector<std::string> defines;
    cleaner::clean(expected, {}, defines);
    const host::outline::CleanedText cleaned = cleanText(text);
    ASSERT_EQ(cleaned.text, expected) << text;
    const auto lines = std::count(expected.begin(), expected.end(), '\n');
    const LineMap alone = cleanedLines(text);
    for (std::size_t line = 0; line <= static_cast<std::size_t>(lines); ++line) {
      ASSERT_EQ(alone.sourceLine(line), cleaned.lines.sourceLine(line)) << text;
    }
  }
}

TEST(CleanedText, HasNoDirectives) {
  EXPECT_EQ(cleanText("#a <p>\n<b>\n").text, "\n<b>\n");
  EXPECT_EQ(cleanText("<b>\n  # x <p>\n#").text, "<b>\n\n");
  EXPECT_EQ(cleanText("#a \\\n<p>\n<b>\n").text, "\n\n<b>\n") << "a line that goes on";
  EXPECT_EQ(cleanText("x #a\n").text, "x #a\n");
}

}  // namespace
