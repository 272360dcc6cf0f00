// Reading of the one file of a run.
#pragma once

#include <optional>
#include <string>

namespace plugin {

// All bytes of the file, nothing if it cannot be opened. A directory reads as empty. Throws
// std::runtime_error with a clear message when reading fails half way.
std::optional<std::string> readSourceFile(const std::string& path);

}  // namespace plugin
