#include "output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <system_error>

#include "platform.h"
#include "shown_text.h"

namespace host {
namespace {

constexpr std::size_t kMaxWriteBytes = std::size_t{1} << 30;  // macOS refuses 2 GiB at once

}  // namespace

Failure systemFailure(const std::string& subject, int errorNumber) {
  return Failure(subject + ": " + std::generic_category().message(errorNumber));
}

int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), std::min(text.size(), kMaxWriteBytes));
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {  // a pipe that its other users have made non-blocking
      pollfd ready{descriptor, POLLOUT, 0};
      if (::poll(&ready, 1, -1) < 0 && errno != EINTR) return errno;
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int closeWritten(int descriptor) { return ::close(descriptor) != 0 && errno != EINTR ? errno : 0; }

void complain(std::string_view message) {
  // One call, so that the line stays whole beside those of other processes.
  writeAll(STDERR_FILENO, "quorl-js: " + onOneLine(message) + "\n");
}

int outOfTheWay(int descriptor) {
  const int copy = ::fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return copy;
}

Output::Output() {
  if (::fcntl(STDOUT_FILENO, F_GETFD) < 0) throw systemFailure("standard output", errno);
}

void Output::write(std::string_view text) { check(writeAll(STDOUT_FILENO, text)); }

void Output::check(int errorNumber) const {
  if (errorNumber != 0) throw systemFailure("standard output", errorNumber);
}

void Output::checkReader() const {
  if (isAbandoned(STDOUT_FILENO)) throw systemFailure("standard output", EPIPE);
}

void Output::close() { check(closeWritten(STDOUT_FILENO)); }

}  // namespace host
