// Reads single values out of an answer, for tests that need not compare the whole of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace support {

// What each record, in order, gives for key: the text as it stands, with its quotes and without
// the comma behind it. For the keys whose value stands on one line, so not childNodeIDs and tags.
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
