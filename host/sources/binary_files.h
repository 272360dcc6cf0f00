// Which files are not text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// Whether the first 8 KiB of the file hold a NUL byte. False for a file that cannot be read.
bool isBinary(const std::string& path);

// isBinary for each of the paths. Threads share the work: over many files most of the time goes
// into waiting for the system.
std::vector<bool> areBinary(const std::vector<const std::string*>& paths);

}  // namespace host
