#include "records/answer_path.h"

#include <cstddef>

#include "records/error_answer.h"
#include "records/record_escapes.h"

namespace host {
namespace {

constexpr std::string_view kMemberStart = "\n    \"filePath\": \"";
constexpr std::string_view kMemberEnd = "\",\n";

std::string between(std::string_view start, std::string_view path, std::string_view end) {
  return std::string(start).append(escaped(path)).append(end);
}

}  // namespace

std::string withPath(std::string_view answer, std::string_view from, std::string_view to) {
  if (answer.starts_with(kErrorAnswerStart)) {
    const std::string sought = between(": ", from, kErrorAnswerEnd);
    if (!answer.ends_with(sought)) return std::string(answer);
    answer.remove_suffix(sought.size());
    return std::string(answer).append(between(": ", to, kErrorAnswerEnd));
  }
  const std::string sought = between(kMemberStart, from, kMemberEnd);
  const std::string replacement = between(kMemberStart, to, kMemberEnd);
  std::string result;
  for (std::size_t at = 0;;) {
    const std::size_t found = answer.find(sought, at);
    result.append(answer, at, found - at);
    if (found == std::string_view::npos) return result;
    result += replacement;
    at = found + sought.size();
  }
}

}  // namespace host
