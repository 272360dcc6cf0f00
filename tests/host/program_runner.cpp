#include "program_runner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <system_error>

namespace host_test {
namespace {

constexpr int kNoDescriptor = -1;

// A failing system call of the runner is no result of a test: it ends the test with an exception.
int checked(int result, const char* call) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), call);
  return result;
}

int temporaryFile() {
  std::string name = "/tmp/quorl-js-test-XXXXXX";
  const int file = checked(::mkstemp(name.data()), "mkstemp");
  ::unlink(name.c_str());
  checked(::fcntl(file, F_SETFD, FD_CLOEXEC), "fcntl");
  return file;
}

// What one read gives; nothing at the end.
std::string readSome(int descriptor) {
  std::string text(65536, '\0');
  const ssize_t count = ::read(descriptor, text.data(), text.size());
  text.resize(static_cast<std::size_t>(checked(static_cast<int>(count), "read")));
  return text;
}

std::string readToEnd(int descriptor) {
  std::string text;
  for (std::string more = readSome(descriptor); !more.empty(); more = readSome(descriptor)) {
    text += more;
  }
  ::close(descriptor);
  return text;
}

std::string readFromStart(int file) {
  checked(static_cast<int>(::lseek(file, 0, SEEK_SET)), "lseek");
  return readToEnd(file);
}

// Both ends of what the program sees as file descriptor 1.
struct Channel {
  int programEnd = kNoDescriptor;
  int ourEnd = kNoDescriptor;
};

Channel openChannel(StandardOutput kind) {
  Channel channel;
  if (kind == StandardOutput::kFile) {
    channel.programEnd = temporaryFile();
    channel.ourEnd = checked(::fcntl(channel.programEnd, F_DUPFD_CLOEXEC, 0), "fcntl");
  } else if (kind == StandardOutput::kFullDisk) {
    channel.programEnd = checked(::open("/dev/full", O_WRONLY | O_CLOEXEC), "open /dev/full");
  } else if (kind != StandardOutput::kClosed) {
    std::array<int, 2> ends{};
    checked(::pipe(ends.data()), "pipe");
    for (const int end : ends) checked(::fcntl(end, F_SETFD, FD_CLOEXEC), "fcntl");
    channel.ourEnd = ends[0];
    channel.programEnd = ends[1];
    if (kind == StandardOutput::kNonBlockingPipe) {
      checked(::fcntl(channel.programEnd, F_SETFL, O_NONBLOCK), "fcntl");
    } else if (kind == StandardOutput::kAbandonedPipe) {
      ::close(channel.ourEnd);
      channel.ourEnd = kNoDescriptor;
    }
  }
  return channel;
}

// The child's side of the fork, where only calls that are safe behind one are made.
[[noreturn]] void becomeProgram(char* const* argv, int out, int err) {
  ::signal(SIGPIPE, SIG_DFL);
  if (out == kNoDescriptor) {
    ::close(STDOUT_FILENO);
  } else {
    ::dup2(out, STDOUT_FILENO);
  }
  ::dup2(err, STDERR_FILENO);
  ::execv(argv[0], argv);
  ::_exit(127);
}

int waitFor(pid_t child) {
  int state = 0;
  while (::waitpid(child, &state, 0) < 0) {
    if (errno != EINTR) checked(-1, "waitpid");
  }
  return WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
}

std::string shown(const std::string& text) {
  std::string result;
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '\n') {
      result += "\\n\n    ";
    } else if (code < 0x20 || code >= 0x7f) {
      std::array<char, 5> escape;
      std::snprintf(escape.data(), escape.size(), "\\x%02x", code);
      result += escape.data();
    } else {
      result += byte;
    }
  }
  return result;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << "status " << outcome.status << "\n  standard output:\n    " << shown(outcome.out)
                << "\n  standard error:\n    " << shown(outcome.err);
}

Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                   StandardOutput standardOutput) {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  const Channel out = openChannel(standardOutput);
  const int err = temporaryFile();
  const pid_t child = checked(::fork(), "fork");
  if (child == 0) becomeProgram(argv.data(), out.programEnd, err);
  if (out.programEnd != kNoDescriptor) ::close(out.programEnd);

  Outcome outcome;
  if (standardOutput == StandardOutput::kBrokenOffPipe) {
    outcome.out = readSome(out.ourEnd);
    ::close(out.ourEnd);
  } else if (standardOutput != StandardOutput::kFile && out.ourEnd != kNoDescriptor) {
    outcome.out = readToEnd(out.ourEnd);
  }
  outcome.status = waitFor(child);
  if (standardOutput == StandardOutput::kFile) outcome.out = readFromStart(out.ourEnd);
  outcome.err = readFromStart(err);
  return outcome;
}

}  // namespace host_test
