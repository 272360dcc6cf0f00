// A list of names in one column of a table.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace support {

// Splits "A,B" into a list; empty for an empty text.
inline std::vector<std::string> names(std::string_view list) {
  std::vector<std::string> result;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    result.emplace_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return result;
}

}  // namespace support
