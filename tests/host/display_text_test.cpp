#include "system/display_text.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace {

using host::kNoLimit;

struct Shown {
  std::string text;
  std::size_t columns;
  bool operator==(const Shown&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Shown& shown) {
  return out << '"' << shown.text << "\" in " << shown.columns << " columns";
}

Shown shown(std::string_view text, bool escapeControlBytes, std::size_t limit = kNoLimit) {
  Shown result{"kept ", 0};
  result.columns = host::appendDisplay(result.text, text, escapeControlBytes, limit);
  EXPECT_TRUE(result.text.starts_with("kept "));
  result.text.erase(0, 5);
  return result;
}

TEST(ShownText, StaysOnOneLineAlways) {
  for (const bool escape : {false, true}) {
    EXPECT_EQ(shown("a\nb\rc\td", escape), (Shown{"a\\nb\\rc\\td", 10}));
  }
}

TEST(ShownText, EscapesWhatATerminalObeys) {
  struct Case {
    std::string_view text;
    std::string_view escaped;
    std::string_view why;
  };
  constexpr Case kCases[] = {
      {"\x1b[2J", "\\x1b[2J", "escape"},
      {"\x7f\x07", "\\x7f\\x07", "delete and bell"},
      {"\xc2\x9b", "\\u009b", "a control sequence in one character"},
      {"\xe2\x80\xae", "\\u202e", "right to left"},
      {"\xff", "\\xff", "no UTF-8"},
      {"\xe2\x82", "\\xe2\\x82", "a cut code point"},
      {"\xc3\xa9", "\xc3\xa9", "a letter"},
      {"\\n", "\\n", "a backslash stays"},
  };
  for (const Case& row : kCases) {
    EXPECT_EQ(shown(row.text, true).text, row.escaped) << row.why;
    EXPECT_EQ(shown(row.text, false).text, row.text) << row.why;
  }
}

TEST(OneLine, EscapesWhatATerminalObeysAndKeepsBytes) {
  EXPECT_EQ(host::onOneLine("a\nb\rc\td"), "a\\x0ab\\x0dc\\x09d");
  EXPECT_EQ(host::onOneLine("\x1b[2J\x7f"), "\\x1b[2J\\x7f");
  EXPECT_EQ(host::onOneLine("\xc2\x9b\xe2\x80\xae"), "\\u009b\\u202e");
  EXPECT_EQ(host::onOneLine("\xff\n\xe2\x82\x1b"), "\xff\\x0a\xe2\x82\\x1b");
  EXPECT_EQ(host::onOneLine("caf\xc3\xa9 \\n"), "caf\xc3\xa9 \\n");
}

TEST(ShownText, CutsWhatIsTooWide) {
  EXPECT_EQ(shown("abcdef", true, 6), (Shown{"abcdef", 6}));
  EXPECT_EQ(shown("abcdefg", true, 6), (Shown{"abc...", 6}));
  EXPECT_EQ(shown("abcdefg", true, 2), (Shown{"..", 2}));
  EXPECT_EQ(shown("abc", true, 0), (Shown{"", 0}));
  EXPECT_EQ(shown("", true, 0), (Shown{"", 0}));
  EXPECT_EQ(shown("ab\x1b\x1b", true, 6), (Shown{"ab...", 5})) << "no escape is cut in two";
}

TEST(ShownText, CountsColumnsAndNotBytes) {
  EXPECT_EQ(shown("\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9", true, 4).columns, 4U);
  EXPECT_EQ(shown("\xe6\xbc\xa2\xe5\xad\x97", true, 4).columns, 4U) << "two of two columns";
  EXPECT_EQ(shown("\xe6\xbc\xa2\xe5\xad\x97x", true, 4), (Shown{"...", 3}));
  EXPECT_EQ(shown("e\xcc\x81", true, 1), (Shown{"e\xcc\x81", 1})) << "an accent of its own";
}

}  // namespace
