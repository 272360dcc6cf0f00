// The file view/dist/page.html, which the build puts into the program.
#pragma once

#include <string_view>

namespace host::view {

std::string_view pageTemplate();

}  // namespace host::view
