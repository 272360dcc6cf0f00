#include "running_program.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

namespace host_test {
namespace {

int checked(int result, const char* call) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), call);
  return result;
}

struct Channel {
  int ours;
  int theirs;
};

Channel makePipe() {
  std::array<int, 2> ends{};
  checked(::pipe(ends.data()), "pipe");
  for (const int end : ends) checked(::fcntl(end, F_SETFD, FD_CLOEXEC), "fcntl");
  return {ends[0], ends[1]};
}

Channel makeTerminal() {
  const int ours = checked(::posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
  checked(::grantpt(ours), "grantpt");
  checked(::unlockpt(ours), "unlockpt");
  checked(::fcntl(ours, F_SETFD, FD_CLOEXEC), "fcntl");
  const int theirs = checked(::open(::ptsname(ours), O_RDWR | O_NOCTTY | O_CLOEXEC), "open");
  winsize size{};
  size.ws_col = 40;
  checked(::ioctl(theirs, TIOCSWINSZ, &size), "ioctl");
  return {ours, theirs};
}

std::string readToEnd(int& descriptor) {
  std::string text;
  std::array<char, 4096> block;
  while (true) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count <= 0) break;  // a terminal that nobody else has open gives an error
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  ::close(std::exchange(descriptor, -1));
  return text;
}

}  // namespace

RunningProgram::RunningProgram(const std::string& program,
                               const std::vector<std::string>& arguments,
                               StandardError standardError) {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const Channel out = makePipe();
  const Channel err = standardError == StandardError::kPipe ? makePipe() : makeTerminal();
  pid_ = checked(::fork(), "fork");
  if (pid_ == 0) {
    ::setpgid(0, 0);
    ::signal(SIGPIPE, SIG_DFL);
    ::dup2(out.theirs, STDOUT_FILENO);
    ::dup2(err.theirs, STDERR_FILENO);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ::close(out.theirs);
  ::close(err.theirs);
  out_ = out.ours;
  err_ = err.ours;
}

RunningProgram::~RunningProgram() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    waitForEnd();
  }
  if (out_ >= 0) ::close(out_);
  if (err_ >= 0) ::close(err_);
}

void RunningProgram::waitForFile(const std::string& path) {
  while (!std::filesystem::exists(path)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

void RunningProgram::send(int signal) const { checked(::kill(pid_, signal), "kill"); }

void RunningProgram::sendToGroup(int signal) const { checked(::kill(-pid_, signal), "kill"); }

void RunningProgram::leaveStandardOutput() { ::close(std::exchange(out_, -1)); }

std::string RunningProgram::readErrorsUpTo(const std::string& text) const {
  std::string seen;
  for (char byte = 0; !seen.ends_with(text) && ::read(err_, &byte, 1) == 1;) seen += byte;
  return seen;
}

std::string RunningProgram::errorsToTheEnd() { return readToEnd(err_); }

std::string RunningProgram::readOutput(std::size_t count) const {
  std::string seen;
  for (char byte = 0; seen.size() < count && ::read(out_, &byte, 1) == 1;) seen += byte;
  return seen;
}

std::string RunningProgram::outputToTheEnd() { return readToEnd(out_); }

int RunningProgram::waitForEnd() {
  int state = 0;
  while (::waitpid(pid_, &state, 0) < 0) {
    if (errno != EINTR) checked(-1, "waitpid");
  }
  pid_ = 0;
  return WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
}

}  // namespace host_test
