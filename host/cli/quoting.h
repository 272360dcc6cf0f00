// Texts inside those of another language.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The text with a backslash before each byte of the set.
std::string withBackslashes(std::string_view text, std::string_view set);

}  // namespace host
