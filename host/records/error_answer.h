// The module's answer for a file that it could not parse: one error text instead of records.
#pragma once

#include <string>
#include <string_view>

#include "records/record_escapes.h"

namespace host {

inline constexpr std::string_view kErrorAnswerStart = "[{\"error\": \"";
inline constexpr std::string_view kErrorAnswerEnd = "\"}]";

inline std::string errorAnswer(std::string_view message) {
  return std::string(kErrorAnswerStart).append(escaped(message)).append(kErrorAnswerEnd);
}

}  // namespace host
