// Bytes that may be UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

struct CodePoint {
  char32_t value = 0;     // kReplacement if the bytes are not UTF-8
  std::size_t bytes = 0;  // that it takes up; of bad ones, as many as could have begun a code point
  bool valid = false;
};

inline constexpr char32_t kReplacement = 0xfffd;

// The code point that begins at the offset, which lies within the text.
CodePoint codePointAt(std::string_view text, std::size_t offset);

// The offset of the first byte from 0x80 up, at the given offset or behind it; the text's length if
// there is none.
std::size_t findHighByte(std::string_view text, std::size_t from);

bool isUtf8(std::string_view text);

// The text with U+FFFD for each run of bytes that codePointAt calls bad.
std::string withReplacements(std::string_view text);

// The columns that a terminal gives to it: 0, 1 or 2.
std::size_t columnsOf(char32_t codePoint);

}  // namespace host
