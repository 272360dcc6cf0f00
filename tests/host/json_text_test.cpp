#include "formats/json_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

std::string stringOf(std::string_view text) {
  std::string out = "before ";
  host::appendJsonString(out, text);
  return out.substr(7);
}

std::string memberOf(std::string_view text) {
  std::string out;
  host::appendJsonMember(out, "key", text);
  return out;
}

TEST(JsonText, EscapesWhatJsonAsksFor) {
  EXPECT_EQ(stringOf(""), R"("")");
  EXPECT_EQ(stringOf("it's a/b"), R"("it's a/b")");
  EXPECT_EQ(stringOf("\"\\\b\f\n\r\t"), R"("\"\\\b\f\n\r\t")");
  EXPECT_EQ(stringOf("\0\x1b\x1f\x7f"sv), "\"\\u0000\\u001B\\u001F\x7f\"");
  EXPECT_EQ(stringOf("\xc3\xa9\xf0\x9f\x98\x80"), "\"\xc3\xa9\xf0\x9f\x98\x80\"");
}

TEST(JsonText, WritesLongTextsWhole) {
  const std::string text(65'535, 'a');
  EXPECT_EQ(stringOf(text + "\xc3\xa9" + text + text),
            "\"" + text + "\xc3\xa9" + text + text + "\"")
      << "a code point across two pieces";
}

TEST(JsonText, PutsExactBytesBesideWhatIsNotUtf8) {
  EXPECT_EQ(memberOf("a"), R"("key":"a")");
  EXPECT_EQ(memberOf("\xff"), "\"key\":\"\xef\xbf\xbd\",\"keyBytes\":\"/w==\"");
  EXPECT_EQ(memberOf("\xff\xfe"), "\"key\":\"\xef\xbf\xbd\xef\xbf\xbd\",\"keyBytes\":\"//4=\"");
  EXPECT_EQ(memberOf("a\"\xff"), "\"key\":\"a\\\"\xef\xbf\xbd\",\"keyBytes\":\"YSL/\"");
}

TEST(JsonText, DecodesBase64) {
  struct Case {
    std::string_view text;
    std::string_view bytes;
  };
  constexpr Case kGood[] = {{"", ""},
                            {"/w==", "\xff"},
                            {"//4=", "\xff\xfe"},
                            {"YSL/", "a\"\xff"},
                            {"AAAAAAA=", "\0\0\0\0\0"sv}};
  std::string bytes;
  for (const Case& row : kGood) {
    EXPECT_TRUE(host::decodeBase64(row.text, bytes)) << row.text;
    EXPECT_EQ(bytes, row.bytes) << row.text;
  }
  for (const std::string_view text : {"A", "YSL", "YS!/", "====", "Y=S/"}) {
    EXPECT_FALSE(host::decodeBase64(text, bytes)) << text;
  }
}

TEST(JsonText, WritesNumbersOfEverySize) {
  std::string out;
  host::appendNumber(out, std::numeric_limits<std::int32_t>::min());
  host::appendNumber(out, std::numeric_limits<std::uint64_t>::max());
  host::appendNumber(out, 0);
  EXPECT_EQ(out, "-2147483648184467440737095516150");
}

}  // namespace
