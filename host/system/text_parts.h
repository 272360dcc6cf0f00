// Texts that are made of parts, such as lines and digits.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The parts of the text, each up to such a byte, which the last may lack. An empty text has none.
std::vector<std::string_view> partsOf(std::string_view text, char end);

// The parts with the text between each two.
std::string joined(std::span<const std::string_view> parts, std::string_view between);

// The number with a comma between each three digits. It is not negative.
std::string withCommas(std::int64_t number);

}  // namespace host
