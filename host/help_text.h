// The answer to --help.
#pragma once

#include <string>

namespace host {

std::string helpText();

}  // namespace host
