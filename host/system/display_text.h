// Texts as a person sees them: on one line, and no wider than there is room.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

inline constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

// Appends the text and gives the columns that it takes up, at most limit; a longer text is cut and
// ends in "...". Line feeds, carriage returns and tabs are shown as \n, \r and \t. With
// escapeControlBytes so is all else that a terminal might obey or that may hide what the text says:
// control bytes and bytes that are not UTF-8 as \xNN, control characters and those that turn the
// direction of writing as \uNNNN.
std::size_t appendDisplay(std::string& out, std::string_view text, bool escapeControlBytes,
                          std::size_t limit);

// The text as one line that no terminal obeys and that says what it seems to: control bytes become
// \xNN, other control characters and those that turn the direction of writing \uNNNN. Bytes that
// are not UTF-8 stay.
std::string onOneLine(std::string_view text);

}  // namespace host
