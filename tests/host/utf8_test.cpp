#include "system/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kBad = "\xef\xbf\xbd";  // U+FFFD

TEST(Utf8, TellsGoodTextFromBad) {
  struct Case {
    std::string_view text;
    bool good;
    std::string_view why;
  };
  constexpr Case kCases[] = {
      {"", true, "empty"},
      {"a\0b\x7f"sv, true, "ASCII with control bytes"},
      {"\xc2\x80\xdf\xbf", true, "first and last of two bytes"},
      {"\xe0\xa0\x80\xef\xbf\xbf", true, "first and last of three"},
      {"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", true, "first and last of four"},
      {"\xed\x9f\xbf\xee\x80\x80", true, "around the surrogates"},
      {"\x80", false, "nothing that it follows"},
      {"\xc1\xbf", false, "overlong"},
      {"\xe0\x9f\xbf", false, "overlong"},
      {"\xf0\x8f\xbf\xbf", false, "overlong"},
      {"\xed\xa0\x80", false, "surrogate"},
      {"\xf4\x90\x80\x80", false, "above U+10FFFF"},
      {"\xf5\x80\x80\x80", false, "no such first byte"},
      {"\xe2\x82", false, "cut"},
      {"\xe2\x82x", false, "broken off"},
      {"12345678\xff", false, "behind a whole word"},
      {"1234567\xc3\xa9", true, "across the end of a word"},
  };
  for (const Case& row : kCases) EXPECT_EQ(host::isUtf8(row.text), row.good) << row.why;
}

TEST(Utf8, PutsOneReplacementForWhatCouldHaveBegunACodePoint) {
  const std::string bad(kBad);
  EXPECT_EQ(host::withReplacements("a\xff\xfe"), "a" + bad + bad);
  EXPECT_EQ(host::withReplacements("\xe2\x82!"), bad + "!");
  EXPECT_EQ(host::withReplacements("\xf0\x9f\x98"), bad) << "three bytes of four";
  EXPECT_EQ(host::withReplacements("\xed\xa0\x80"), bad + bad + bad)
      << "a surrogate begins nothing";
  EXPECT_EQ(host::withReplacements("\xc0\xaf"), bad + bad);
  EXPECT_EQ(host::withReplacements("\xe2\x82\xac"), "\xe2\x82\xac");
}

TEST(Utf8, DecodesCodePoints) {
  EXPECT_EQ(host::codePointAt("a", 0).value, U'a');
  EXPECT_EQ(host::codePointAt("x\xc3\xa9", 1).value, 0xe9U);
  EXPECT_EQ(host::codePointAt("\xe2\x82\xac", 0).value, 0x20acU);
  EXPECT_EQ(host::codePointAt("\xf0\x9f\x98\x80", 0).value, 0x1f600U);
  EXPECT_EQ(host::codePointAt("\xf0\x9f\x98\x80", 0).bytes, 4U);
}

TEST(Utf8, CountsColumns) {
  EXPECT_EQ(host::columnsOf(U'a'), 1U);
  EXPECT_EQ(host::columnsOf(0xe9), 1U);
  EXPECT_EQ(host::columnsOf(0x301), 0U) << "combining acute accent";
  EXPECT_EQ(host::columnsOf(0x200b), 0U) << "zero width space";
  EXPECT_EQ(host::columnsOf(0x6f22), 2U) << "CJK";
  EXPECT_EQ(host::columnsOf(0xff21), 2U) << "full width A";
  EXPECT_EQ(host::columnsOf(0x1f600), 2U) << "grinning face";
}

}  // namespace
