// The answer to --help.
#pragma once

#include <string>

#include "cli/option_table.h"

namespace host {

std::string helpText(const Command& command);

}  // namespace host
