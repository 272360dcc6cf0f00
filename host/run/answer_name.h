// The names of answer files.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The name for the answer to the file: its path, with each byte other than A-Z, a-z, 0-9, ".", "_"
// and "-" as %XX, and so a leading dot; "%" for the empty path; the extension behind it. No other
// path has the same name. Where the path makes more than 200 bytes of this, what is behind "~" is a
// hash of the whole path instead of the rest: two such paths with the same beginning and the same
// 64-bit hash would share a name.
std::string answerName(std::string_view path, std::string_view extension);

}  // namespace host
