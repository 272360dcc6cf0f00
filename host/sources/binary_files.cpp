#include "sources/binary_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <system_error>
#include <thread>

#include "system/io.h"
#include "system/platform.h"

namespace host {
namespace {

constexpr std::size_t kBytesRead = 8192;

// Files that a thread takes at once, and below which no second thread is worth its start.
constexpr std::size_t kFilesAtOnce = 256;

}  // namespace

bool isBinary(const std::string& path) {
  // Without O_NONBLOCK the opening of a FIFO, should the file have become one, would wait.
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return false;
  std::array<char, kBytesRead> block;
  const ssize_t count = readSome(file, block.data(), block.size());
  ::close(file);
  return count > 0 && std::memchr(block.data(), 0, static_cast<std::size_t>(count)) != nullptr;
}

std::vector<bool> areBinary(const std::vector<const std::string*>& paths) {
  std::vector<char> marks(paths.size());  // bytes: threads write neighbours at the same time
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t start = 0; (start = next.fetch_add(kFilesAtOnce)) < paths.size();) {
      const std::size_t end = std::min(start + kFilesAtOnce, paths.size());
      for (std::size_t at = start; at < end; ++at) marks[at] = isBinary(*paths[at]) ? 1 : 0;
    }
  };
  std::vector<std::jthread> threads;
  const std::size_t wanted =
      std::min<std::size_t>(availableCores(), (paths.size() + kFilesAtOnce - 1) / kFilesAtOnce);
  try {
    while (threads.size() + 1 < wanted) threads.emplace_back(work);
  } catch (const std::system_error&) {
    // The system has no more threads; those that there are do the work.
  }
  work();
  threads.clear();
  return {marks.begin(), marks.end()};
}

}  // namespace host
