// The page around the data: markup, style and script, made from the sources in view/.
#pragma once

#include <string>
#include <string_view>

namespace host::view {

// The page with the data in it, see PageData::finish.
std::string makePage(std::string_view data);

}  // namespace host::view
