// The manual page, section 1, as source for scdoc.
#pragma once

#include <string>

namespace host {

std::string manPage();

}  // namespace host
