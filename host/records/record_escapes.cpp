#include "records/record_escapes.h"

#include <algorithm>
#include <cstddef>

namespace host {

std::string escaped(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    const auto* const row = std::find_if(kRecordEscapes.begin(), kRecordEscapes.end(),
                                         [byte](const auto& known) { return known.byte == byte; });
    if (row == kRecordEscapes.end()) {
      result += byte;
    } else {
      result += {'\\', row->letter};
    }
  }
  return result;
}

std::string unescaped(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool mayBegin = text[at] == '\\' && at + 1 < text.size();
    const RecordEscape* const escape = mayBegin ? escapeOf(text[at + 1]) : nullptr;
    result += escape == nullptr ? text[at] : escape->byte;
    if (escape != nullptr) ++at;
  }
  return result;
}

const RecordEscape* escapeOf(char letter) {
  const auto* const row =
      std::find_if(kRecordEscapes.begin(), kRecordEscapes.end(),
                   [letter](const auto& known) { return known.letter == letter; });
  return row == kRecordEscapes.end() ? nullptr : row;
}

}  // namespace host
