#include "child_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <system_error>

namespace host_test {

int checked(int result, const char* call) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), call);
  return result;
}

Channel makePipe() {
  std::array<int, 2> ends{};
  checked(::pipe(ends.data()), "pipe");
  for (const int end : ends) checked(::fcntl(end, F_SETFD, FD_CLOEXEC), "fcntl");
  return {.programEnd = ends[1], .ourEnd = ends[0]};
}

std::string readSome(int descriptor) {
  std::string text(65536, '\0');
  const ssize_t count = ::read(descriptor, text.data(), text.size());
  if (count < 0 && errno == EIO) return {};
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

ProgramWords::ProgramWords(const std::string& program, const std::vector<std::string>& arguments)
    : words_{program} {
  words_.insert(words_.end(), arguments.begin(), arguments.end());
  for (std::string& word : words_) argv_.push_back(word.data());
  argv_.push_back(nullptr);
}

// Only calls that are safe behind a fork.
void becomeProgram(char* const* argv, int out, int err) {
  constexpr std::array kSignals{SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGALRM};
  for (const int signal : kSignals) ::signal(signal, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  if (out == kNoDescriptor) {
    ::close(STDOUT_FILENO);
  } else {
    ::dup2(out, STDOUT_FILENO);
  }
  ::dup2(err, STDERR_FILENO);
  // A pipe of who runs the tests, such as make's, is none of the program's. A process has few
  // descriptors, and they begin low.
  constexpr int kManyDescriptors = 1024;
  for (int descriptor = STDERR_FILENO + 1; descriptor < kManyDescriptors; ++descriptor) {
    ::close(descriptor);
  }
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

}  // namespace host_test
