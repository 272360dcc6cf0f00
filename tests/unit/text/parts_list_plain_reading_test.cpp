// Compares the word splitter, whose parts are slices, with the reference implementation.
#include "text/parts_list.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "reference/plain_parts_list.h"
#include "support/many_texts.h"

namespace {

using std::string_view_literals::operator""sv;
using support::forEachText;
using support::forRandomTexts;

void expectPlainParts(const std::string& statement) {
  std::vector<std::string> parts;
  PartsList(statement, parts);
  ASSERT_EQ(parts, reference::partsList(statement)) << testing::PrintToString(statement);
}

TEST(PartsListPlainReading, OfAllShortTexts) {
  forEachText("a'\"`\\ ;", 7, expectPlainParts);
  forEachText("a1.=<+(", 7, expectPlainParts);
  forEachText("=-<!/ a", 7, expectPlainParts);
  forEachText("1.'+\0\xE9 "sv, 6, expectPlainParts);
}

TEST(PartsListPlainReading, OfShortTextsInLongRuns) {
  for (const char filler : {'a', ' ', '1', '='})
    support::forEachTextInARun("a'\"\\ ;.=", 3, filler, expectPlainParts);
}

// clang-format off
constexpr std::string_view kPieces[] = {
    "a", "1", "'", "\"", "`", "\\", ".", "=", "<", "+", "(", " ", ")", "{", "}", "[", "]", ":",
    ";", ",", ">", "!", "*", "%", "/", "-", "\t", "\n", "\v", "\f", "\r", "\0"sv, "\xE9", "&&",
    "|", "?", "~", "^", "$el", "@", "#x", "function", "async ", "return ", "=>", "===", "1.5",
    "a1.b", "\\'", "\\`", "'it\\'s'", "\"x\"", "`${a}`", "...", "  ", "const x", "// ", "0x1F.a"};
// clang-format on

TEST(PartsListPlainReading, OfRandomTexts) {
  forRandomTexts(kPieces, 30, 1'000'000, expectPlainParts);
  forRandomTexts(kPieces, 200, 50'000, expectPlainParts);
}

}  // namespace
