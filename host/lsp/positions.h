// Places in a text as the protocol counts them: a line, and units of an encoding within it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace host::lsp {

enum class Encoding : std::uint8_t {
  kUtf8,   // units are bytes
  kUtf16,  // a character outside the Basic Multilingual Plane counts two
};

struct Position {
  std::uint32_t line = 0;
  std::uint32_t character = 0;
  bool operator==(const Position&) const = default;
};

inline bool operator<(Position left, Position right) {
  return left.line != right.line ? left.line < right.line : left.character < right.character;
}
inline bool operator<=(Position left, Position right) { return !(right < left); }

struct Range {
  Position start;
  Position end;
  bool operator==(const Range&) const = default;
};

// How many units the text has. Bytes that are not UTF-8 count as the U+FFFD they are shown as.
std::uint32_t unitsOf(std::string_view text, Encoding encoding);

// The byte offset in a line at so many units: its end if it has fewer, the beginning of the
// character that the units would split.
std::size_t bytesOf(std::string_view line, std::uint32_t units, Encoding encoding);

// The offset behind the line end at or after the offset, npos if there is none. LF, CR LF and CR
// end a line.
std::size_t nextLine(std::string_view text, std::size_t from);

// The line that begins at the offset, without its end.
std::string_view lineAt(std::string_view text, std::size_t start);

// Whether the byte belongs to a word: ASCII letters, digits, _ and $, and all that is not ASCII.
bool isWordByte(char byte);

// The byte offset of the position: the end of the line or of the text if it lies beyond.
std::size_t offsetOf(std::string_view text, Position position, Encoding encoding);

// Puts the new text in place of the range, whose ends may be swapped.
void replaceRange(std::string& text, Range range, std::string_view with, Encoding encoding);

}  // namespace host::lsp
