#include "records/record_text.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include "support/sanitized.h"

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
  EXPECT_EQ(capacity, 1'063U) << "a sixteenth to spare";
  const char* const place = memory.get();
  RecordText text(std::move(memory), capacity);
  EXPECT_EQ(text.view(), "");
  text.append(std::string(1'000, 'y'));
  EXPECT_EQ(text.view().data(), place);
  EXPECT_EQ(std::string(std::move(text).take().text.get()), std::string(1'000, 'y'));
}

TEST(RecordText, KeepsNoMoreThanThereIs) {
  RecordText text(MallocText(static_cast<char*>(std::malloc(1'010))), 1'010);
  text.append(std::string(1'000, 'x'));
  EXPECT_EQ(std::move(text).take().capacity, 1'010U);
}

TEST(RecordText, StartsWithoutEarlierMemory) {
  RecordText text(nullptr, 77);
  text.append("a");
  EXPECT_EQ(text.view(), "a");
}

constexpr std::size_t kLargePage = std::size_t{2} << 20U;

TEST(RecordText, HasRoomForTheBytesThatAreExpected) {
  RecordText text;
  text.expect(kLargePage + 1);
  const char* const place = text.reserve(1);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(place) % kLargePage, 0U);
  EXPECT_EQ(text.reserve(2 * kLargePage), place);
  text.append("a");
  const auto taken = std::move(text).take();
  EXPECT_STREQ(taken.text.get(), "a");
  EXPECT_EQ(taken.capacity, 2U) << "what is left over is given back";
}

TEST(RecordText, ExpectsNothingOfAFewBytes) {
  RecordText text;
  text.expect(kLargePage - 1);
  EXPECT_EQ(std::move(text).take().capacity, 1U);
  EXPECT_EQ(text.view(), "");
}

TEST(RecordText, KeepsEarlierMemoryOfHalfTheExpectedBytes) {
  for (const bool isEnough : {false, true}) {
    MallocText memory(static_cast<char*>(std::malloc(kLargePage)));
    const char* const place = memory.get();
    RecordText text(std::move(memory), kLargePage);
    text.expect(2 * kLargePage + (isEnough ? 1 : 2));
    EXPECT_EQ(text.reserve(1) == place, isEnough);
  }
}

TEST(RecordText, DoesWithoutMemoryThatThereIsNot) {
#ifdef QUORL_TEST_IS_SANITIZED
  GTEST_SKIP() << "the sanitizer ends the program at a request of that size";
#else
  RecordText text;
  text.append("kept");
  EXPECT_NO_THROW(text.expect(std::numeric_limits<std::size_t>::max() / 4));
  EXPECT_EQ(text.view(), "kept");
#endif
}

}  // namespace
