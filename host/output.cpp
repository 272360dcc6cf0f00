#include "output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <system_error>
#include <utility>

namespace host {
namespace {

constexpr std::size_t kMaxWriteBytes = std::size_t{1} << 30;  // macOS refuses 2 GiB at once
constexpr int kFirstFreeDescriptor = 3;  // keeps clear of 0 and 2, should they be closed

// Makes file descriptor 1 lead to target.
void pointStandardOutputAt(int target, const std::string& name) {
  if (::dup2(target, STDOUT_FILENO) < 0) throw systemFailure(name, errno);
}

void pointStandardOutputAtFile(const std::string& path) {
  const std::string name = "diagnostics file " + path;
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) throw systemFailure(name, errno);
  pointStandardOutputAt(file, name);
  ::close(file);
}

std::string onOneLine(std::string_view text) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  std::string line;
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 0x20 && code != 0x7f) {
      line += byte;
    } else {
      line += {'\\', 'x', kHexDigits[code >> 4U], kHexDigits[code & 0xfU]};
    }
  }
  return line;
}

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

void complain(std::string_view message) {
  // One call, so that the line stays whole beside those of other processes.
  writeAll(STDERR_FILENO, "quorl-js: " + onOneLine(message) + "\n");
}

Output::Output(std::string_view diagnostics)
    : diagnostics_(diagnostics),
      answers_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstFreeDescriptor)) {
  if (answers_ < 0) throw systemFailure("standard output", errno);
  if (diagnostics == "none") {
    pointStandardOutputAtFile("/dev/null");
  } else if (diagnostics == "stderr") {
    pointStandardOutputAt(STDERR_FILENO, "standard error");
  } else {
    pointStandardOutputAtFile(diagnostics_);
  }
}

Output::~Output() {
  if (answers_ >= 0) ::close(answers_);
}

void Output::write(std::string_view text) {
  if (const int error = writeAll(answers_, text)) throw systemFailure("standard output", error);
}

void Output::checkDiagnostics() {
  // The module does not look at the result of its writes, but the stream remembers a failed one.
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    throw Failure("diagnostics could not be written: " + diagnostics_);
  }
}

void Output::close() {
  if (::close(std::exchange(answers_, -1)) != 0 && errno != EINTR) {
    throw systemFailure("standard output", errno);
  }
}

}  // namespace host
