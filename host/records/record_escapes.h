// How the texts of records are escaped: these bytes are written as a backslash and the letter.
#pragma once

#include <array>

namespace host {

struct RecordEscape {
  char byte;
  char letter;
};

inline constexpr std::array kRecordEscapes = {RecordEscape{'"', '"'},   RecordEscape{'\'', '\''},
                                              RecordEscape{'\\', '\\'}, RecordEscape{'\n', 'n'},
                                              RecordEscape{'\r', 'r'},  RecordEscape{'\t', 't'}};

}  // namespace host
