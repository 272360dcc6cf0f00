// What paths lead to.
#pragma once

#include <string>

namespace host {

// The path of the file that the path leads to through links, also if there is no such file yet.
// Throws Failure for links in a circle.
std::string behindLinks(const std::string& path);

// Whether both lead to the same regular file, which need not be there yet.
bool isSameFile(const std::string& path, const std::string& other);

}  // namespace host
