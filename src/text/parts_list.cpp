// One pass; every byte has a class, and there are three kinds of string. A part is always a slice
// of the statement: bytes that join a part are adjacent to it, and white space ends it. The one
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
  std::array<ByteClass, 256> classes{};  // bytes not listed below are word bytes
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

// Offset just past the string that opens at from, or the end of the statement if it is not closed.
// A backslash escapes the next byte. required: a backtick inside the other two kinds of string does
// not use up the escape, which then applies to the byte after it.
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

bool PartsReader::readInto(std::vector<Part>& parts) {
  // Ends the part being built. If there was one, the current byte waits for the next call.
  const auto flush = [&]() __attribute__((always_inline)) {
    const bool any = begin_ < end_;
    if (any) parts.push_back({statement_.substr(begin_, end_ - begin_), opensTwice_});
    begin_ = end_;
    opensTwice_ = false;
    inWord_ = false;
    return any;
  };
  while (end_ < statement_.size()) {
    const char byte = statement_[end_];
    switch (classOf(byte)) {
      case ByteClass::kWord:
        if (!inWord_ && flush()) return true;
        do {
          ++end_;
        } while (end_ < statement_.size() && classOf(statement_[end_]) == ByteClass::kWord);
        inWord_ = true;
        continue;
      case ByteClass::kQuote:
        if (flush()) return true;
        opensTwice_ = byte != '"';
        end_ = skipString(statement_, end_);
        continue;
      case ByteClass::kSpace: {
        const bool any = flush();
        begin_ = ++end_;
        if (any) return true;
        continue;
      }
      case ByteClass::kSeparator:
        if (flush()) return true;
        break;
      case ByteClass::kDot:
        // A dot after a digit belongs to the number, or to a word that ends in a digit.
        if (end_ > 0 && kDigits(statement_[end_ - 1])) {
          inWord_ = true;
        } else if (flush()) {
          return true;
        }
        break;
      case ByteClass::kComparison:
        if ((inWord_ || (begin_ < end_ && !kJoinedByComparison(statement_[end_ - 1]))) && flush())
          return true;
        break;
      case ByteClass::kArithmetic:
        if ((inWord_ || (begin_ < end_ && !kJoinedByArithmetic(statement_[end_ - 1]))) && flush())
          return true;
        break;
    }
    ++end_;
  }
  return flush();
}

void splitIntoParts(std::string_view statement, std::vector<Part>& parts) {
  PartsReader reader(statement);
  while (reader.readInto(parts)) {
  }
}

}  // namespace text

void PartsList(std::string statement, std::vector<std::string>& parts) {
  std::vector<text::Part> slices;
  text::splitIntoParts(statement, slices);
  for (const text::Part& part : slices) parts.push_back(part.str());
}
