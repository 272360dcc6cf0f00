// Reads single values out of an answer, for tests that need not compare all of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace support {

// Returns each record's value for key, in order, as written: with quotes and without the comma
// after it. Works for keys whose value is on one line, so not for childNodeIDs and tags.
inline std::vector<std::string> valuesOf(std::string_view answer, std::string_view key) {
  const std::string head = "    \"" + std::string(key) + "\": ";
  std::vector<std::string> values;
  for (std::size_t at = 0; at < answer.size();) {
    std::size_t end = answer.find('\n', at);
    if (end == std::string_view::npos) end = answer.size();
    std::string_view line = answer.substr(at, end - at);
    if (line.substr(0, head.size()) == head) {
      line.remove_prefix(head.size());
      if (!line.empty() && line.back() == ',') line.remove_suffix(1);
      values.emplace_back(line);
    }
    at = end + 1;
  }
  return values;
}

}  // namespace support
