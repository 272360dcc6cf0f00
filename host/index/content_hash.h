// The hash by which a file is known to be unchanged although its times have changed.
#pragma once

#include <string>
#include <string_view>

namespace host::index {

// XXH3 of 64 bits, as 16 hexadecimal digits.
std::string contentHash(std::string_view bytes);

}  // namespace host::index
