// The names of files in tags, which editors take from the folder of the tags file on.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The path from the folder on, whose own path is absolute and free of links. Links in the path
// stay, unless ".." leads out of one.
std::string pathFrom(std::string_view folder, std::string_view path);

}  // namespace host
