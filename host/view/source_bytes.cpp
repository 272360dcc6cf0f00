#include "view/source_bytes.h"

#include <fcntl.h>
#include <unistd.h>

#include "index/content_hash.h"
#include "sources/input_list.h"
#include "system/failure.h"
#include "system/io.h"

namespace host::view {

std::optional<std::string> sourceBytes(const std::string& path, std::int64_t size,
                                       const std::optional<std::string>& hash) {
  if (!hash || regularFileBytes(path) != static_cast<std::uint64_t>(size)) return std::nullopt;
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return std::nullopt;
  std::optional<std::string> bytes;
  try {
    bytes = readToEnd(file, path);
  } catch (const Failure&) {
    // It can be read no more, which is as good as changed.
  }
  ::close(file);
  if (bytes && index::contentHash(*bytes) != *hash) bytes.reset();
  return bytes;
}

}  // namespace host::view
