#include "base/decimal.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

std::string decimalOf(std::int32_t number) {
  std::array<char, base::kMaxDecimalBytes> bytes{};
  return {bytes.data(), base::putDecimal(bytes.data(), number)};
}

TEST(Decimal, HasNoZerosInFrontAtAnyLength) {
  // Both sides of each power of ten, where a digit is added.
  std::string nines, zeros;
  for (std::int32_t power = 1; power <= 100'000'000; power *= 10) {
    EXPECT_EQ(decimalOf(power), "1" + zeros);
    EXPECT_EQ(decimalOf(-power), "-1" + zeros);
    nines += '9';
    zeros += '0';
    EXPECT_EQ(decimalOf(power * 10 - 1), nines);
  }
  EXPECT_EQ(decimalOf(1'000'000'000), "1000000000");
}

TEST(Decimal, KeepsZerosInside) {
  EXPECT_EQ(decimalOf(0), "0");
  EXPECT_EQ(decimalOf(10'000), "10000");
  EXPECT_EQ(decimalOf(100'002), "100002");
  EXPECT_EQ(decimalOf(10'020'030), "10020030");
  EXPECT_EQ(decimalOf(1'000'200'003), "1000200003");
}

TEST(Decimal, WritesEveryNumberOfUpToFiveDigits) {
  for (std::int32_t number = 0; number < 100'000; ++number) {
    ASSERT_EQ(decimalOf(number), std::to_string(number));
    ASSERT_EQ(decimalOf(-number), std::to_string(-number));
  }
}

TEST(Decimal, WritesTheLargestAndTheSmallest) {
  EXPECT_EQ(decimalOf(std::numeric_limits<std::int32_t>::max()), "2147483647");
  EXPECT_EQ(decimalOf(std::numeric_limits<std::int32_t>::min()), "-2147483648");
}

}  // namespace
