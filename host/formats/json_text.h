// Pieces of strict JSON, appended to a text.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// Whether the text is ASCII that stands for itself in JSON. Most names and lines are.
bool isPlainJson(std::string_view text);

// A string in its quotes. The text has to be UTF-8.
void appendJsonString(std::string& out, std::string_view text);

// A string in its quotes, with U+FFFD for what is not UTF-8. Returns whether the text is.
bool appendJsonText(std::string& out, std::string_view text);

// "key":"text". Where the text is not UTF-8, its bad bytes become U+FFFD, and the exact bytes stand
// behind it as base64: "key":"text","keyBytes":"base64".
void appendJsonMember(std::string& out, std::string_view key, std::string_view text);

void appendNumber(std::string& out, std::integral auto number) {
  std::array<char, 20> digits;  // as many as 64 bits take, with a sign
  const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  out.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

// The bytes as base64 with padding.
void appendBase64(std::string& out, std::string_view bytes);

// The bytes that the base64 text stands for, as appendBase64 wrote it; false for other texts.
bool decodeBase64(std::string_view text, std::string& bytes);

}  // namespace host
