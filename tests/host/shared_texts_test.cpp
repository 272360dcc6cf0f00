#include "workers/shared_texts.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>

namespace {

using host::SharedTexts;

// Of digits, so that a piece from another place differs.
std::string textOf(std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += std::to_string(text.size()) + " ";
  text.resize(bytes);
  return text;
}

TEST(SharedTexts, AreTakenInTheOrderInWhichTheyWerePut) {
  SharedTexts texts;
  EXPECT_TRUE(texts.put("first"));
  EXPECT_TRUE(texts.put(""));
  EXPECT_TRUE(texts.put("the second"));
  EXPECT_EQ(texts.take(5), "first");
  EXPECT_EQ(texts.take(0), "");
  EXPECT_EQ(texts.take(10), "the second");
}

TEST(SharedTexts, ThatDoNotFitAreRefusedUntilOthersAreTaken) {
  SharedTexts texts;
  const std::string half = textOf(SharedTexts::kMostBytes / 2);
  EXPECT_TRUE(texts.put(half));
  EXPECT_FALSE(texts.put(half + "1"));
  EXPECT_TRUE(texts.put(half));
  EXPECT_FALSE(texts.put("1"));
  EXPECT_TRUE(texts.put(""));
  EXPECT_EQ(texts.take(half.size()), half);
  EXPECT_TRUE(texts.put("1"));
  EXPECT_EQ(texts.take(half.size()), half);
  EXPECT_EQ(texts.take(1), "1");
}

TEST(SharedTexts, GoOnAtTheBeginningOfTheRing) {
  SharedTexts texts;
  for (const std::size_t bytes : {SharedTexts::kMostBytes - 3, std::size_t{7}, std::size_t{1},
                                  SharedTexts::kMostBytes, SharedTexts::kMostBytes - 1}) {
    const std::string text = textOf(bytes);
    EXPECT_TRUE(texts.put(text)) << bytes;
    EXPECT_EQ(texts.take(bytes), text) << bytes;
  }
}

TEST(SharedTexts, AreNeverLongerThanTheRing) {
  SharedTexts texts;
  EXPECT_FALSE(texts.put(textOf(SharedTexts::kMostBytes + 1)));
  EXPECT_EQ(texts.take(SharedTexts::kMostBytes + 1), std::nullopt);
}

}  // namespace
