// Bytes in the form that a browser unpacks by itself.
#pragma once

#include <string>
#include <string_view>

namespace host::view {

// The bytes as a gzip file, the same for the same bytes. Throws Failure if the library that does it
// cannot be loaded.
std::string gzip(std::string_view bytes);

}  // namespace host::view
