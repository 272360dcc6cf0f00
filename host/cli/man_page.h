// The manual page, section 1, as source for scdoc.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The template with each line such as @OPTIONS@ replaced by what the tables hold. Throws Failure
// for a line of that kind that means nothing.
std::string manPage(std::string_view pageTemplate);

}  // namespace host
