// Texts by the million, to compare fast code with the reference implementation.
#pragma once

#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/sanitized.h"

namespace support {

#if defined(QUORL_TEST_IS_SANITIZED) || !defined(__OPTIMIZE__)
inline constexpr bool kSlowBuild = true;
#else
inline constexpr bool kSlowBuild = false;
#endif

// A slow build (sanitizers) reads fewer texts and skips the longest.
constexpr int textCount(int count) { return kSlowBuild ? count / 20 : count; }
constexpr int textLength(int length) { return kSlowBuild ? length - 2 : length; }

// Visits text followed by each sequence of up to count of the pieces. Leaves text unchanged.
template <typename Visit>
void visitTexts(std::span<const std::string_view> pieces, int count, std::string& text,
                Visit& visit) {
  if (testing::Test::HasFatalFailure()) return;
  visit(static_cast<const std::string&>(text));
  if (count == 0) return;
  const std::size_t size = text.size();
  for (const std::string_view piece : pieces) {
    text += piece;
    visitTexts(pieces, count - 1, text, visit);
    text.resize(size);
  }
}

// Visits before followed by each text of up to count of the pieces, until an assertion fails.
template <typename Visit>
void forEachText(std::span<const std::string_view> pieces, int count, std::string before,
                 Visit visit) {
  visitTexts(pieces, textLength(count), before, visit);
}

// The same with the bytes of the alphabet as pieces.
template <typename Visit>
void forEachText(std::string_view alphabet, int count, Visit visit) {
  std::string_view bytes[256];
  for (std::size_t i = 0; i < alphabet.size(); ++i) bytes[i] = alphabet.substr(i, 1);
  std::string text;
  visitTexts(std::span(bytes, alphabet.size()), textLength(count), text, visit);
}

// Visits each text of up to count bytes of the alphabet at each position in a long run of filler,
// since code that moves runs may handle many bytes at a time.
template <typename Visit>
void forEachTextInARun(std::string_view alphabet, int count, char filler, Visit visit) {
  constexpr std::size_t kLongest = 70;
  forEachText(alphabet, count, [&](const std::string& text) {
    for (std::size_t before = 0; before <= kLongest; ++before) {
      if (testing::Test::HasFatalFailure()) return;
      const std::string run = std::string(before, filler) + text;
      visit(run);
      visit(run + std::string(kLongest - before, filler));
    }
  });
}

// Returns a text of less than count pieces. It uses few kinds of them, so that a piece that decides
// everything after it, such as an opening quote, is missing from some texts. In every other text
// some of the pieces are single bytes of any value.
inline std::string randomText(std::span<const std::string_view> pieces, std::size_t count,
                              std::mt19937& random) {
  const std::size_t first = random() % pieces.size();
  const std::size_t kinds = 1 + random() % pieces.size();
  const bool hasOddBytes = random() % 2 == 0;
  std::string text;
  for (std::size_t left = random() % count; left > 0; --left) {
    const std::size_t choice = random();
    if (hasOddBytes && choice % 16 == 0) {
      text += static_cast<char>(choice / 16 % 256);
    } else {
      text += pieces[(first + choice / 16 % kinds) % pieces.size()];
    }
  }
  return text;
}

// Visits count random texts, the same ones in each run, until an assertion fails.
template <typename Visit>
void forRandomTexts(std::span<const std::string_view> pieces, std::size_t count, int texts,
                    Visit visit) {
  std::mt19937 random(20240229);
  for (int i = textCount(texts); i > 0 && !testing::Test::HasFatalFailure(); --i)
    visit(randomText(pieces, count, random));
}

}  // namespace support
