// The word splitter of the detectors. A statement becomes a flat list of parts: words, separators,
// operators glued from adjacent bytes, and whole strings. It knows nothing of comments, regular
// expressions or template holes.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "base/export.h"

// Appends the parts of the statement, up to its first NUL byte, to parts; never an empty one.
// A part opened by a single quote or a backtick begins with that quote twice.
QUORL_API void PartsList(std::string statement, std::vector<std::string>& parts);

namespace text {

// One part as a slice of the statement.
struct Part {
  std::string_view slice;
  bool opensTwice = false;  // the part's text is its first byte and then the slice

  // Whole-text comparison. A part that opens with a doubled quote equals no word.
  template <std::size_t kSize>
  bool is(const char (&word)[kSize]) const {
    return slice.size() == kSize - 1 && !opensTwice &&
           std::memcmp(slice.data(), word, kSize - 1) == 0;
  }
  char firstByte() const { return slice.front(); }
  std::string str() const;
};

// Gives a statement's parts one after the other. The slices live as long as the statement's bytes.
class PartsReader {
 public:
  explicit PartsReader(std::string_view statement = {})
      : statement_(statement.substr(0, statement.find('\0'))) {}

  // Appends the next part to parts; false if there is none.
  bool readInto(std::vector<Part>& parts);

 private:
  std::string_view statement_;
  std::size_t begin_ = 0;  // the part being built is [begin_, end_), empty if they are equal
  std::size_t end_ = 0;
  bool inWord_ = false;  // it is a word or a number that can go on growing
  bool opensTwice_ = false;
};

// Appends all parts of the statement to parts.
void splitIntoParts(std::string_view statement, std::vector<Part>& parts);

}  // namespace text
