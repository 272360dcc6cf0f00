// Splits a statement into words for the detectors: a flat list of words, separators, operators
// joined from adjacent bytes, and whole strings. It does not recognise comments, regular
// expressions or template substitutions.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "base/export.h"

// Appends the parts of the statement, up to its first NUL byte, to parts; none is empty. A part
// opened by a single quote or a backtick begins with that quote twice.
QUORL_API void PartsList(std::string statement, std::vector<std::string>& parts);

namespace text {

// A slice of the statement.
struct Part {
  std::string_view slice;
  bool opensTwice = false;  // the part's text is its first byte followed by the slice

  // Compares the whole text. A part that opens with a doubled quote equals no word.
  template <std::size_t kSize>
  bool is(const char (&word)[kSize]) const {
    return slice.size() == kSize - 1 && !opensTwice &&
           std::memcmp(slice.data(), word, kSize - 1) == 0;
  }
  char firstByte() const { return slice.front(); }
  std::string str() const;
};

// Reads a statement's parts one by one. The statement's bytes must outlive the slices.
class PartsReader {
 public:
  explicit PartsReader(std::string_view statement = {})
      : statement_(statement.substr(0, statement.find('\0'))) {}

  // Appends the next part to parts. Returns false if there is none.
  bool readInto(std::vector<Part>& parts);

 private:
  std::string_view statement_;
  std::size_t begin_ = 0;  // the part being built is [begin_, end_), empty if equal
  std::size_t end_ = 0;
  bool inWord_ = false;  // it is a word or number that can still grow
  bool opensTwice_ = false;
};

// Appends all parts of the statement to parts.
void splitIntoParts(std::string_view statement, std::vector<Part>& parts);

}  // namespace text
