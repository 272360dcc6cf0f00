// The text as the module reads it once comments are gone, with the source line of each of its
// lines.
//
// Records count the lines of that text: a carriage return is a line feed there, except in a page
// comment, where it vanishes, and a marker run takes its line feeds along. Pages need the bytes
// too: which tags there are depends on what was taken for a comment.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace host::outline {

// Source line, from 1, of each line of the cleaned text. Where they are the same nothing is stored.
class LineMap {
 public:
  LineMap() = default;
  explicit LineMap(std::vector<std::int32_t> lines) : lines_(std::move(lines)) {}

  // The index counts from 0. Beyond the last line it is that of the last, or none that there is.
  std::int32_t sourceLine(std::size_t index) const {
    if (lines_.empty()) return static_cast<std::int32_t>(std::min(index, kMaxIndex)) + 1;
    return index < lines_.size() ? lines_[index] : lines_.back();
  }

 private:
  static constexpr std::size_t kMaxIndex = std::numeric_limits<std::int32_t>::max() - 1;

  std::vector<std::int32_t> lines_;
};

struct CleanedText {
  std::string text;  // without directives and with all conditional branches
  LineMap lines;
  std::int32_t openComment = 0;  // source line of a comment that runs to the end; 0 if none does
};

CleanedText cleanText(std::string_view source);

// The lines alone, without a copy of the text where they are those of the source.
LineMap cleanedLines(std::string_view source);

}  // namespace host::outline
