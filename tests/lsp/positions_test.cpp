#include "lsp/positions.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lsp/plain_text.h"

namespace {

using namespace host::lsp;

// "a", two bytes, three bytes, four bytes (two units of UTF-16), "b".
constexpr std::string_view kMixed =
    "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80"
    "b";

TEST(Positions, CountUnitsOfTheirEncoding) {
  EXPECT_EQ(unitsOf("", Encoding::kUtf16), 0U);
  EXPECT_EQ(unitsOf(kMixed, Encoding::kUtf8), 11U);
  EXPECT_EQ(unitsOf(kMixed, Encoding::kUtf16), 6U);
  EXPECT_EQ(unitsOf("\xff", Encoding::kUtf16), 1U);
}

// ASCII is counted in blocks.
TEST(Positions, CountUnitsAtEveryOffset) {
  for (std::size_t before = 0; before < 20; ++before) {
    for (std::size_t behind = 0; behind < 20; ++behind) {
      const std::string text =
          std::string(before, 'a') + "\xf0\x9f\x98\x80" + std::string(behind, 'b') + "\xc3\xa4";
      EXPECT_EQ(unitsOf(text, Encoding::kUtf16), before + 2 + behind + 1);
      EXPECT_EQ(unitsOf(text, Encoding::kUtf8), before + 4 + behind + 2);
    }
  }
}

TEST(Positions, AreTheBytesAtThatManyUnits) {
  const std::vector<std::size_t> utf16 = {0, 1, 3, 6, 6, 10, 11, 11};
  for (std::uint32_t units = 0; units < utf16.size(); ++units) {
    EXPECT_EQ(bytesOf(kMixed, units, Encoding::kUtf16), utf16[units]) << units;
  }
  const std::vector<std::size_t> utf8 = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
  for (std::uint32_t units = 0; units < utf8.size(); ++units) {
    EXPECT_EQ(bytesOf(kMixed, units, Encoding::kUtf8), utf8[units]) << units;
  }
}

TEST(Positions, LineEndsAreLfCrLfAndCr) {
  const std::string text = "a\nb\r\nc\rd\n\re";
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t next = nextLine(text, start);; next = nextLine(text, start)) {
    lines.emplace_back(lineAt(text, start));
    if (next == std::string::npos) break;
    start = next;
  }
  EXPECT_EQ(lines, (std::vector<std::string>{"a", "b", "c", "d", "", "e"}));
  EXPECT_EQ(nextLine("", 0), std::string::npos);
  EXPECT_EQ(nextLine("a", 0), std::string::npos);
  EXPECT_EQ(nextLine("a\n", 0), 2U);
  EXPECT_EQ(lineAt("a\n", 2), "");
}

// Line ends are searched in windows.
TEST(Positions, LinesMayBeLong) {
  for (const std::size_t length : {127U, 128U, 129U, 383U, 384U, 385U, 5000U}) {
    for (const std::string end : {"\n", "\r\n", "\r"}) {
      const std::string text = std::string(length, 'x') + end + "y";
      EXPECT_EQ(nextLine(text, 0), length + end.size()) << length;
      EXPECT_EQ(lineAt(text, 0).size(), length);
    }
  }
}

struct OffsetCase {
  Position position;
  std::size_t offset;
  const char* why;
};

TEST(Positions, LieInTheText) {
  const std::string text = "ab\r\n\xf0\x9f\x98\x80x\n\nend";
  const std::vector<OffsetCase> cases = {{{0, 0}, 0, "the beginning"},
                                         {{0, 2}, 2, "the end of a line"},
                                         {{0, 3}, 2, "beyond it"},
                                         {{0, 4'000'000'000U}, 2, "far beyond it"},
                                         {{1, 0}, 4, "the next line"},
                                         {{1, 1}, 4, "half a character"},
                                         {{1, 2}, 8, "behind the character"},
                                         {{2, 0}, 10, "an empty line"},
                                         {{2, 5}, 10, "beyond an empty line"},
                                         {{3, 3}, 14, "the end"},
                                         {{3, 9}, 14, "beyond the last line's end"},
                                         {{4, 0}, 14, "beyond the last line"},
                                         {{4'000'000'000U, 0}, 14, "far beyond it"}};
  for (const OffsetCase& row : cases) {
    EXPECT_EQ(offsetOf(text, row.position, Encoding::kUtf16), row.offset) << row.why;
  }
}

TEST(Edits, ReplaceRanges) {
  struct EditCase {
    std::string text;
    Range range;
    std::string with;
    std::string expected;
  };
  const std::vector<EditCase> rows = {
      {"", {{0, 0}, {0, 0}}, "a", "a"},
      {"abc", {{0, 1}, {0, 2}}, "", "ac"},
      {"abc", {{0, 1}, {0, 1}}, "\n", "a\nbc"},
      {"a\nb\nc", {{0, 1}, {2, 0}}, "", "ac"},
      {"a\r\nb", {{0, 9}, {1, 0}}, "-", "a-b"},
      {"abc", {{0, 2}, {0, 1}}, "x", "axc"},
      {"a\n", {{1, 0}, {1, 0}}, "b", "a\nb"},
      {"\xf0\x9f\x98\x80z", {{0, 2}, {0, 3}}, "y", "\xf0\x9f\x98\x80y"},
      {"abc", {{7, 0}, {9, 9}}, "d", "abcd"}};
  for (const EditCase& row : rows) {
    std::string text = row.text;
    replaceRange(text, row.range, row.with, Encoding::kUtf16);
    EXPECT_EQ(text, row.expected) << row.text;
  }
}

TEST(Edits, KeepTheTextEqualToTheClients) {
  const std::vector<std::u16string> pieces = {
      u"", u"x", u"\n", u"\r", u"\r\n", u"\xe4y", u"\x20ac", u"\xd83d\xde00", u"ab\ncd\r"};
  std::mt19937 random(7);
  for (const Encoding encoding : {Encoding::kUtf8, Encoding::kUtf16}) {
    for (int round = 0; round < 200; ++round) {
      lsp_test::PlainText client(encoding);
      std::string server;
      for (int edit = 0; edit < 100; ++edit) {
        const std::size_t begin = client.placeBefore(random() % (client.size() + 1));
        const std::size_t behind = begin + random() % (client.size() - begin + 1);
        const std::size_t end =
            random() % 3 == 0 ? std::max(begin, client.placeBefore(behind)) : begin;
        const std::u16string& piece = pieces[random() % pieces.size()];
        const Range range = {client.positionOf(begin), client.positionOf(end)};
        client.replace(begin, end, piece);
        replaceRange(server, range, lsp_test::PlainText::utf8Of(piece), encoding);
        ASSERT_EQ(server, client.utf8()) << round << " " << edit;
      }
    }
  }
}

}  // namespace
