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

// For a list in which a name with a carriage return at its end leads to nothing: what to say of its
// lines.
inline constexpr const char* kLineEndHint = "end in CR LF; remove the CRs with tr -d '\\r'";

// Whether the list was probably written with CR LF line ends: some name with a CR at the end is no
// file, and without the CR it is.
bool hasWindowsLineEnds(const std::vector<std::string>& names);

}  // namespace host
