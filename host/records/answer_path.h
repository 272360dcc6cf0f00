// The path that an answer names.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The answer as the module would have given it to the same text at another path whose last part is
// the same. from is the path that it was given. Exact: a text inside double quotes holds no double
// quote but as an escape, so that what is replaced can only be the path of a record or of an error
// answer.
std::string withPath(std::string_view answer, std::string_view from, std::string_view to);

}  // namespace host
