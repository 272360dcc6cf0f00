// One pass with three kinds of string and a class for every other byte. A part is always a slice of
// the statement: what joins a part stands directly behind it, and white space ends it. The one
// exception is the doubled opening quote of '...' and `...`, which is a flag on the part.
#include "text/parts_list.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "text/byte_set.h"

namespace text {
namespace {

enum class ByteClass : std::uint8_t {
  kWord,
  kSeparator,
  kDot,
  kComparison,
  kArithmetic,
  kSpace,
  kQuote
};

constexpr std::array<ByteClass, 256> kByteClasses = [] {
  std::array<ByteClass, 256> classes{};  // all that is named below is no word byte
  const auto assign = [&classes](std::string_view bytes, ByteClass byteClass) {
    for (const char byte : bytes) classes[static_cast<unsigned char>(byte)] = byteClass;
  };
  assign(":();[]{},", ByteClass::kSeparator);
  assign(".", ByteClass::kDot);
  assign("><=!", ByteClass::kComparison);
  assign("+*%/-", ByteClass::kArithmetic);
  assign(" \t\n\v\f\r", ByteClass::kSpace);
  assign("'\"`", ByteClass::kQuote);
  return classes;
}();

// required: a comparison byte joins any operator before it, an arithmetic byte only these.
constexpr ByteSet kJoinedByComparison{"><=!+/*-%"};
constexpr ByteSet kJoinedByArithmetic{"+*%/-="};

ByteClass classOf(char byte) { return kByteClasses[static_cast<unsigned char>(byte)]; }

// The offset just behind the string that opens at from, or the end of the statement if it does not
// close. A backslash protects the byte behind it; required: but a backtick inside the other two
// kinds of string leaves the protection in place for the byte after it.
std::size_t skipString(std::string_view statement, std::size_t from) {
  const char own = statement[from];
  bool escaped = false;
  for (std::size_t i = from + 1; i < statement.size(); ++i) {
    const char byte = statement[i];
    if (byte == '\\') {
      escaped = !escaped;
    } else if (byte == own) {
      if (!escaped) return i + 1;
      escaped = false;
    } else if (byte != '`') {
      escaped = false;
    }
  }
  return statement.size();
}

}  // namespace

std::string Part::str() const {
  std::string text;
  if (opensTwice) text.push_back(slice.front());
  text.append(slice);
  return text;
}

void splitIntoParts(std::string_view statement, std::vector<Part>& parts) {
  statement = statement.substr(0, statement.find('\0'));
  std::size_t begin = 0;  // the part being built is [begin, i), empty if they are equal
  bool inWord = false;    // it is a word or a number that can go on growing
  bool opensTwice = false;
  std::size_t i = 0;
  // In the hottest loop of a run, and not seen as such by every optimiser.
  const auto flush = [&]() __attribute__((always_inline)) {
    if (begin < i) parts.push_back({statement.substr(begin, i - begin), opensTwice});
    begin = i;
    opensTwice = false;
    inWord = false;
  };
  while (i < statement.size()) {
    const char byte = statement[i];
    switch (classOf(byte)) {
      case ByteClass::kWord:
        if (!inWord) flush();
        do {
          ++i;
        } while (i < statement.size() && classOf(statement[i]) == ByteClass::kWord);
        inWord = true;
        continue;
      case ByteClass::kQuote:
        flush();
        opensTwice = byte != '"';
        i = skipString(statement, i);
        continue;
      case ByteClass::kSpace:
        flush();
        begin = ++i;
        continue;
      case ByteClass::kSeparator:
        flush();
        break;
      case ByteClass::kDot:
        // A dot behind a digit belongs to the number, or to a word that ends in a digit.
        if (i > 0 && kDigits(statement[i - 1])) {
          inWord = true;
        } else {
          flush();
        }
        break;
      case ByteClass::kComparison:
        if (inWord || (begin < i && !kJoinedByComparison(statement[i - 1]))) flush();
        break;
      case ByteClass::kArithmetic:
        if (inWord || (begin < i && !kJoinedByArithmetic(statement[i - 1]))) flush();
        break;
    }
    ++i;
  }
  flush();
}

}  // namespace text

void PartsList(std::string statement, std::vector<std::string>& parts) {
  std::vector<text::Part> slices;
  text::splitIntoParts(statement, slices);
  for (const text::Part& part : slices) parts.push_back(part.str());
}
