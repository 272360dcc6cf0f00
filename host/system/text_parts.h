// Texts that are made of parts, such as lines.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The parts of the text, each up to such a byte, which the last may lack. An empty text has none.
std::vector<std::string_view> partsOf(std::string_view text, char end);

// The parts with the text between each two.
std::string joined(std::span<const std::string_view> parts, std::string_view between);

}  // namespace host
