// The worker of the language server: a process of its own that loads the module and makes an
// outline of one file after the other. It also walks folders, since that may take long.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lsp/positions.h"
#include "workers/file_limits.h"

namespace host::lsp {

struct OutlineTask {
  std::string plugin;  // the module's path
  FileLimits limits;
  std::uint64_t maxGrowth = std::uint64_t{64} << 20U;  // then the worker is replaced
  int niceness = 0;
  bool isUrgent = false;    // an editor waits, so a second core and memory in advance are worth it
  std::vector<int> closed;  // descriptors of the server that a worker has no use for
};

enum class RequestKind : std::uint8_t { kOutline, kWalk };

// The request as bytes. Frames of kind kFile answer it: one with an outline, or for a walk several
// with paths, a NUL behind each, and then one without an answer.
std::string requestBytes(RequestKind kind, Encoding encoding, std::string_view path);

// Reads requests to their end and answers each. It runs in a child process and ends it.
[[noreturn]] void workOnOutlines(const OutlineTask& task, int requests, int results) noexcept;

}  // namespace host::lsp
