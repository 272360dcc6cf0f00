// Patterns with wildcards, read as git reads those of ignore files.
#pragma once

#include <bitset>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// * and ? match anything, in a path anything but a slash; [...] matches a byte of a set, with
// ranges, classes such as [:alpha:], and ! or ^ for all other bytes; a backslash takes the special
// meaning of the next byte away. In a path ** spans directories where slashes or the pattern's ends
// are on both sides of it. As in git, what comes before the first special byte is compared first
// and counts as such an end: a**/b matches a/x/b.
class WildPattern {
 public:
  enum class Subject { kName, kPath };

  WildPattern(std::string_view pattern, Subject subject, bool ignoresCase);

  // Takes time in proportion to the lengths of pattern and text.
  bool matches(std::string_view text) const;

  // The byte, in lower case if case is ignored, that each match ends in; nothing if that varies.
  std::optional<char> lastByte() const;

 private:
  using ByteSet = std::bitset<256>;

  enum class Kind : unsigned char {
    kByte,
    kSet,
    kStar,        // any bytes but slashes
    kDoubleStar,  // any bytes
    kMaySkip,     // nothing; the next two parts, ** and a slash, may be left out
  };

  struct Part {
    Kind kind;
    char byte = 0;        // of kByte
    std::size_t set = 0;  // of kSet
  };

  void compile(std::string_view pattern);
  void addStars(std::string_view pattern, std::size_t start, std::size_t end);
  std::size_t addSet(std::string_view pattern, std::size_t opening);
  void findTail();
  bool consumes(const Part& part, char byte) const;
  bool run(std::string_view text) const;
  void followEmptyParts(std::vector<char>& active) const;
  char folded(char byte) const;

  bool isForPath_;
  bool ignoresCase_;
  bool isMalformed_ = false;  // matches nothing, like an open bracket in git
  std::string prefix_;        // before the first special byte
  std::vector<Part> parts_;   // what follows
  std::vector<ByteSet> sets_;
  std::string tail_;  // the bytes in which each match of parts_ ends
};

}  // namespace host
