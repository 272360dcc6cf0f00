#include "records/record_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

namespace {

using records::MallocText;
using records::RecordText;

TEST(RecordText, IsEmptyAtFirst) {
  RecordText text;
  EXPECT_EQ(text.view(), "");
  const MallocText taken = std::move(text).take().text;
  EXPECT_STREQ(taken.get(), "");
}

TEST(RecordText, KeepsItsTextWhileItGrows) {
  RecordText text;
  std::string expected;
  for (int i = 0; i < 2'000; ++i) {
    const std::string piece(static_cast<std::size_t>(i % 7), static_cast<char>('a' + i % 26));
    text.append(piece);
    expected += piece;
  }
  EXPECT_EQ(text.view(), expected);
  const MallocText taken = std::move(text).take().text;
  EXPECT_EQ(std::string(taken.get()), expected) << "with a NUL right after it";
}

TEST(RecordText, CommitsTextWrittenInPlace) {
  RecordText text;
  text.append("ab");
  char* const to = text.reserve(10);
  std::memcpy(to, "cdefghij", 8);
  text.commit(to + 3);
  text.append("!");
  EXPECT_EQ(text.view(), "abcde!");
}

TEST(RecordText, KeepsNulBytes) {
  RecordText text;
  text.append(std::string("a\0b", 3));
  EXPECT_EQ(text.view(), std::string("a\0b", 3));
}

TEST(RecordText, CanBeUsedAgainOnceTaken) {
  RecordText text;
  text.append("first");
  const MallocText first = std::move(text).take().text;
  text.append("second");
  EXPECT_EQ(text.view(), "second");
  EXPECT_STREQ(first.get(), "first");
}

TEST(RecordText, ReusesTheMemoryOfAnEarlierOne) {
  RecordText earlier;
  earlier.append(std::string(1'000, 'x'));
  auto [memory, capacity] = std::move(earlier).take();
  EXPECT_EQ(capacity, 1'001U);
  const char* const place = memory.get();
  RecordText text(std::move(memory), capacity);
  EXPECT_EQ(text.view(), "");
  text.append(std::string(1'000, 'y'));
  EXPECT_EQ(text.view().data(), place);
  EXPECT_EQ(std::string(std::move(text).take().text.get()), std::string(1'000, 'y'));
}

TEST(RecordText, StartsWithoutEarlierMemory) {
  RecordText text(nullptr, 77);
  text.append("a");
  EXPECT_EQ(text.view(), "a");
}

}  // namespace
