// Texts by the thousand, for holding fast code against the plain reading of its rules.
#pragma once

#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace support {

// Visits before followed by each text of up to count of the pieces, until an assertion fails.
template <typename Visit>
void forEachText(std::span<const std::string_view> pieces, int count, const std::string& before,
                 Visit visit) {
  if (testing::Test::HasFatalFailure()) return;
  visit(before);
  if (count == 0) return;
  for (const std::string_view piece : pieces)
    forEachText(pieces, count - 1, before + std::string(piece), visit);
}

// A text of less than count pieces. It has few kinds of them at a time, so that one piece that
// decides everything behind it, such as an opening quote, is not in every text.
inline std::string randomText(std::span<const std::string_view> pieces, std::size_t count,
                              std::mt19937& random) {
  const std::size_t first = random() % pieces.size();
  const std::size_t kinds = 1 + random() % pieces.size();
  std::string text;
  for (std::size_t left = random() % count; left > 0; --left)
    text += pieces[(first + random() % kinds) % pieces.size()];
  return text;
}

}  // namespace support
