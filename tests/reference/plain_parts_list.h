// The word splitter in its plain reading: one byte after the other, a flag for each thing that is
// known, and every part built as a string.
#pragma once

#include <string>
#include <vector>

namespace reference {

std::vector<std::string> partsList(const std::string& statement);

}  // namespace reference
