#include "lsp/json.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace host::lsp;

std::string reprinted(const std::string& text) {
  rapidjson::Document document;
  return parseJson(text, document) ? jsonText(document) : "no JSON";
}

TEST(Json, IsReadAsItStands) {
  for (const char* text : {"null", "{\"id\":1}", "{\"id\":\"a\"}", "[1,-2,3.5,true]", "\"\\u0000\"",
                           "\"\xf0\x9f\x98\x80\"", "18446744073709551615"}) {
    EXPECT_EQ(reprinted(text), text);
  }
  for (const char* text : {"", "{", "{]", "{\"a\":}", "nul", "1 2", "\"a", "{'a':1}"}) {
    EXPECT_EQ(reprinted(text), "no JSON") << text;
  }
}

// Editors send half a pair of a text that has one, and it counts one in UTF-16 as U+FFFD does.
TEST(Json, HalvesOfPairsBecomeReplacements) {
  EXPECT_EQ(reprinted(R"("\ud83d\ude00")"), "\"\xf0\x9f\x98\x80\"");
  EXPECT_EQ(reprinted(R"("a\ud83db")"),
            "\"a\xef\xbf\xbd"
            "b\"");
  EXPECT_EQ(reprinted(R"("\ude00\ud83d")"), "\"\xef\xbf\xbd\xef\xbf\xbd\"");
  EXPECT_EQ(reprinted(R"("\ud83d\ud83d\ude00")"), "\"\xef\xbf\xbd\xf0\x9f\x98\x80\"");
  EXPECT_EQ(reprinted(R"("\\ud83d\ud83d")"), "\"\\\\ud83d\xef\xbf\xbd\"");
  EXPECT_EQ(reprinted(R"("\ud83d\u0041")"),
            "\"\xef\xbf\xbd"
            "A\"");
  EXPECT_EQ(reprinted(R"("\ud83d)"), "no JSON");
}

TEST(Json, MayBeDeep) {
  const std::string deep(2'000'000, '[');
  EXPECT_EQ(reprinted(deep), "no JSON");
  rapidjson::Document document;
  EXPECT_TRUE(parseJson(deep + std::string(deep.size(), ']'), document));
}

TEST(Json, IsLookedIntoByPaths) {
  rapidjson::Document document;
  ASSERT_TRUE(parseJson(R"({"a":{"b":[1],"c":"x","d":7,"e":true,"f":-1,"g":1.5}})", document));
  EXPECT_EQ(findText(document, {"a", "c"}), "x");
  EXPECT_EQ(findText(document, {"a", "d"}), std::nullopt);
  EXPECT_EQ(findText(document, {"a", "c", "x"}), std::nullopt);
  EXPECT_EQ(findText(document, {"z"}), std::nullopt);
  EXPECT_EQ(findNumber(document, {"a", "d"}), 7U);
  EXPECT_EQ(findNumber(document, {"a", "f"}), std::nullopt);
  EXPECT_EQ(findNumber(document, {"a", "g"}), std::nullopt);
  EXPECT_TRUE(isTrue(document, {"a", "e"}));
  EXPECT_FALSE(isTrue(document, {"a", "d"}));
  EXPECT_NE(findArray(document, {"a", "b"}), nullptr);
  EXPECT_EQ(findArray(document, {"a", "c"}), nullptr);
}

TEST(Json, WritesTextsAsUtf8) {
  rapidjson::StringBuffer buffer;
  JsonWriter out(buffer);
  writeText(out, "a\"\xff\xc3\xa4\n");
  EXPECT_STREQ(buffer.GetString(), "\"a\\\"\xef\xbf\xbd\xc3\xa4\\n\"");
}

}  // namespace
