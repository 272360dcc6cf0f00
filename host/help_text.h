// The answer to --help.
#pragma once

#include <string>

#include "options.h"

namespace host {

std::string helpText(const Command& command);

}  // namespace host
