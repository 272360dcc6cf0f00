// Writes numbers as decimal text, in half the instructions of std::to_chars: a record has some
// seven of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace base {

// A sign and as many digits as a number may have.
inline constexpr std::size_t kMaxDecimalBytes = std::numeric_limits<std::int32_t>::digits10 + 2;

namespace decimal {

// "00" to "99"
inline constexpr std::array<char, 200> kPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Two digits.
inline char* putPair(char* to, std::uint32_t number) {
  std::memcpy(to, kPairs.data() + 2 * static_cast<std::size_t>(number), 2);
  return to + 2;
}

// Four digits.
inline char* putFour(char* to, std::uint32_t number) {
  return putPair(putPair(to, number / 100), number % 100);
}

// One or two digits.
inline char* putUpToTwo(char* to, std::uint32_t number) {
  if (number >= 10) return putPair(to, number);
  *to = static_cast<char>('0' + number);
  return to + 1;
}

// One to four digits.
inline char* putUpToFour(char* to, std::uint32_t number) {
  if (number < 100) return putUpToTwo(to, number);
  return putPair(putUpToTwo(to, number / 100), number % 100);
}

}  // namespace decimal

// Writes the number at to, where there must be room for kMaxDecimalBytes, and returns the end of
// what it wrote.
inline char* putDecimal(char* to, std::int32_t number) {
  constexpr std::uint32_t kFourDigits = 10'000;
  auto rest = static_cast<std::uint32_t>(number);
  if (number < 0) {
    *to++ = '-';
    rest = 0 - rest;
  }
  if (rest < kFourDigits) return decimal::putUpToFour(to, rest);
  const std::uint32_t high = rest / kFourDigits;
  to = high < kFourDigits
           ? decimal::putUpToFour(to, high)
           : decimal::putFour(decimal::putUpToFour(to, high / kFourDigits), high % kFourDigits);
  return decimal::putFour(to, rest % kFourDigits);
}

}  // namespace base
