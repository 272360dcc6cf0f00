// Reference implementation of the word splitter: byte by byte, with one flag per piece of state,
// and every part built as a string.
#pragma once

#include <string>
#include <vector>

namespace reference {

std::vector<std::string> partsList(const std::string& statement);

}  // namespace reference
