// Parses an answer strictly by the record format and checks what holds for every answer, whatever
// the file contains.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace fuzz {

struct AnswerCheck {
  std::string fault;  // the first one, empty if there is none
  std::size_t records = 0;
};

// path is the file's path; no record may have a line number above lastLine.
AnswerCheck checkAnswer(std::string_view answer, std::string_view path, int lastLine);

}  // namespace fuzz
