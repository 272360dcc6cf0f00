// Reads an answer as the record format says, to the byte, and checks what is true of every answer
// for a file, whatever the file holds.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace fuzz {

struct AnswerCheck {
  std::string fault;  // the first, empty if there is none
  std::size_t records = 0;
};

// path is that of the file; no record may have a line number above lastLine.
AnswerCheck checkAnswer(std::string_view answer, std::string_view path, int lastLine);

}  // namespace fuzz
