// Messages to the user.
#pragma once

#include <string_view>

namespace host {

// Writes one line to standard error: "quorl-js: ", the message and a line feed. It stays one line
// whatever a file is called, see onOneLine.
void printMessage(std::string_view message);

}  // namespace host
