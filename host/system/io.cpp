#include "system/io.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

#include "system/failure.h"

namespace host {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} * 1024;
constexpr std::size_t kMaxWriteBytes = std::size_t{1} << 30;  // macOS refuses 2 GiB at once

// Whether a call that failed with errno is to be made again, which waits for events if need be.
bool isRetried(int descriptor, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN) return false;
  pollfd ready{descriptor, events, 0};
  return ::poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

ssize_t readSome(int descriptor, char* buffer, std::size_t bytes) {
  ssize_t count = 0;
  do {
    count = ::read(descriptor, buffer, bytes);
  } while (count < 0 && isRetried(descriptor, POLLIN));
  return count;
}

std::string readToEnd(int descriptor, const std::string& subject) {
  std::string text;
  std::array<char, kReadBytes> block;
  while (true) {
    const ssize_t count = readSome(descriptor, block.data(), block.size());
    if (count < 0) throw systemFailure(subject, errno);
    if (count == 0) return text;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
}

int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), std::min(text.size(), kMaxWriteBytes));
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (!isRetried(descriptor, POLLOUT)) {
      return errno;
    }
  }
  return 0;
}

int closeWritten(int descriptor) { return ::close(descriptor) != 0 && errno != EINTR ? errno : 0; }

std::string temporaryParent() {
  const char* const given = std::getenv("TMPDIR");
  return given == nullptr || *given == '\0' ? "/tmp" : given;
}

int outOfTheWay(int descriptor) {
  const int copy = ::fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return copy;
}

}  // namespace host
