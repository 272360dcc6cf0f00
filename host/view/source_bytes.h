// The bytes of sources that were read before.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace host::view {

// The bytes at the path if they are still those that were read: as many, and with that hash.
std::optional<std::string> sourceBytes(const std::string& path, std::int64_t size,
                                       const std::optional<std::string>& hash);

}  // namespace host::view
