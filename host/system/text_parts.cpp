#include "system/text_parts.h"

#include <algorithm>
#include <cstddef>

namespace host {

std::vector<std::string_view> partsOf(std::string_view text, char end) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    parts.push_back(text.substr(0, text.find(end)));
    text.remove_prefix(std::min(parts.back().size() + 1, text.size()));
  }
  return parts;
}

std::string joined(std::span<const std::string_view> parts, std::string_view between) {
  std::string text;
  for (const std::string_view& part : parts) {
    if (&part != &parts.front()) text += between;
    text += part;
  }
  return text;
}

std::string withCommas(std::int64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, 1, ',');
  }
  return digits;
}

}  // namespace host
