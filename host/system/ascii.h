// Case folding of ASCII letters; other bytes stay.
#pragma once

#include <algorithm>
#include <string>

namespace host {

constexpr char asciiLower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

constexpr char asciiUpper(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

inline std::string asciiUpper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char byte) { return asciiUpper(byte); });
  return text;
}

}  // namespace host
