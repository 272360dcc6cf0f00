#include "cli/suggestion.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "system/ascii.h"

namespace host {
namespace {

// The fewest typing mistakes that lead from one word to the other: the optimal string alignment
// distance, row by row.
std::size_t mistakesBetween(std::string_view left, std::string_view right) {
  std::vector<std::size_t> beforeLast(right.size() + 1);
  std::vector<std::size_t> last(right.size() + 1);
  std::vector<std::size_t> row(right.size() + 1);
  for (std::size_t j = 0; j <= right.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= left.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const bool isSame = asciiLower(left[i - 1]) == asciiLower(right[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
      const bool isSwapped = i > 1 && j > 1 &&
                             asciiLower(left[i - 1]) == asciiLower(right[j - 2]) &&
                             asciiLower(left[i - 2]) == asciiLower(right[j - 1]);
      if (isSwapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[right.size()];
}

}  // namespace

std::string_view nearest(std::string_view word, std::span<const std::string_view> candidates) {
  constexpr std::size_t kMaxWordBytes = 64;  // the time grows with the product of the lengths
  constexpr std::size_t kLettersPerMistake = 3;
  std::string_view best;
  if (word.size() > kMaxWordBytes) return best;
  std::size_t fewest = kMaxWordBytes;
  for (const std::string_view candidate : candidates) {
    const std::size_t mistakes = mistakesBetween(word, candidate);
    if (mistakes * kLettersPerMistake > candidate.size() || mistakes >= fewest) continue;
    best = candidate;
    fewest = mistakes;
  }
  return best;
}

std::string suggestion(std::string_view word, std::span<const std::string_view> candidates) {
  const std::string_view near = nearest(word, candidates);
  return near.empty() ? std::string() : "; did you mean " + std::string(near) + "?";
}

}  // namespace host
