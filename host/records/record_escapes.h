// How the texts of records are escaped: these bytes are written as a backslash and the letter.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace host {

struct RecordEscape {
  char byte;
  char letter;
};

inline constexpr std::array kRecordEscapes = {RecordEscape{'"', '"'},   RecordEscape{'\'', '\''},
                                              RecordEscape{'\\', '\\'}, RecordEscape{'\n', 'n'},
                                              RecordEscape{'\r', 'r'},  RecordEscape{'\t', 't'}};

std::string escaped(std::string_view text);

// The text without its escapes. A backslash before any other letter stays.
std::string unescaped(std::string_view text);

// The escape with that letter, or null.
const RecordEscape* escapeOf(char letter);

}  // namespace host
