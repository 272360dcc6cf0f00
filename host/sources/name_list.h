// Lists of file names, as find and git write them.
#pragma once

#include <string>
#include <vector>

namespace host {

enum class NameEnd : char { kLineFeed = '\n', kNul = '\0' };

// The names in the file, "-" being standard input, in their order. Each has one such byte behind
// it, which the last may lack; empty ones are left out and no byte is changed. Throws Failure when
// the list cannot be read whole, or has NUL bytes where a line ends a name: no file's name has any.
std::vector<std::string> readNameList(const std::string& list, NameEnd nameEnd);

}  // namespace host
