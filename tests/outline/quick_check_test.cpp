#include "outline/quick_check.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "outline/cleaned_text.h"

namespace {

using host::outline::cleanText;
using host::outline::isSurelyReadWhole;

TEST(QuickCheck, KnowsEachLimit) {
  EXPECT_TRUE(isSurelyReadWhole(""));
  EXPECT_TRUE(isSurelyReadWhole("f();\n/* a */ g(); // b /*\n"));
  EXPECT_TRUE(isSurelyReadWhole(std::string(10'000, 'a') + "\n"));
  EXPECT_FALSE(isSurelyReadWhole(std::string(10'001, 'a')));
  EXPECT_TRUE(isSurelyReadWhole(std::string(100, '{') + std::string(100, '}')));
  EXPECT_FALSE(isSurelyReadWhole(std::string(101, '{')));
  EXPECT_FALSE(isSurelyReadWhole(std::string(101, '}')));
  EXPECT_TRUE(isSurelyReadWhole(std::string(100'000, '\n')));
  EXPECT_FALSE(isSurelyReadWhole(std::string(100'001, '\n')));
  EXPECT_FALSE(isSurelyReadWhole("`**/*.js`"));
}

TEST(QuickCheck, IsRightAboutComments) {
  const std::vector<std::string_view> pieces = {"a",        "b;",   "'",  "\"", "\\", "/",
                                                "//",       "/*",   "*/", "*",  "/",  "\n",
                                                "\xc3\xa9", "\x01", " ",  "["};
  std::mt19937 random(11);
  int open = 0;
  for (int round = 0; round < 200'000; ++round) {
    std::string text;
    const std::size_t count = random() % 24;
    for (std::size_t i = 0; i < count; ++i) text += pieces[random() % pieces.size()];
    const bool isOpen = cleanText(text).openComment != 0;
    open += isOpen ? 1 : 0;
    ASSERT_EQ(isSurelyReadWhole(text), !isOpen) << text;
  }
  EXPECT_GT(open, 10'000);
}

}  // namespace
