// The help of a command, as its output.
#pragma once

#include "cli/option_table.h"

namespace host {

// Prints the help text and returns the exit status. Throws Failure or BrokenPipe if it cannot be
// written.
int printHelp(const Command& command);

}  // namespace host
