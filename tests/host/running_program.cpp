#include "running_program.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

namespace host_test {
namespace {

Channel makeTerminal() {
  const int ours = checked(::posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
  checked(::grantpt(ours), "grantpt");
  checked(::unlockpt(ours), "unlockpt");
  checked(::fcntl(ours, F_SETFD, FD_CLOEXEC), "fcntl");
  const int theirs = checked(::open(::ptsname(ours), O_RDWR | O_NOCTTY | O_CLOEXEC), "open");
  winsize size{};
  size.ws_col = 40;
  checked(::ioctl(theirs, TIOCSWINSZ, &size), "ioctl");
  return {.programEnd = theirs, .ourEnd = ours};
}

}  // namespace

std::string RunningProgram::whyNoTerminal() {
  try {
    const Channel terminal = makeTerminal();
    ::close(terminal.programEnd);
    ::close(terminal.ourEnd);
  } catch (const std::system_error& error) {
    return std::string("no pseudo-terminals here: ") + error.what();
  }
  return {};
}

RunningProgram::RunningProgram(const std::string& program,
                               const std::vector<std::string>& arguments,
                               StandardError standardError) {
  const ProgramWords words(program, arguments);
  const Channel out = makePipe();
  const Channel err = standardError == StandardError::kPipe ? makePipe() : makeTerminal();
  pid_ = checked(::fork(), "fork");
  if (pid_ == 0) {
    ::setpgid(0, 0);
    becomeProgram(words.argv(), out.programEnd, err.programEnd);
  }
  ::close(out.programEnd);
  ::close(err.programEnd);
  out_ = out.ourEnd;
  err_ = err.ourEnd;
}

RunningProgram::~RunningProgram() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    waitForEnd();
  }
  if (out_ >= 0) ::close(out_);
  if (err_ >= 0) ::close(err_);
}

bool RunningProgram::hasEnded() const {
  siginfo_t info{};  // stays as it is while there is nothing to tell
  checked(::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT), "waitid");
  return info.si_pid == pid_;
}

void RunningProgram::waitForFile(const std::string& path) const {
  const auto isThere = [&path] { return std::filesystem::exists(path); };
  while (!isThere()) {
    if (hasEnded() && !isThere()) {
      ADD_FAILURE() << "the program has ended, and there is no " << path;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

void RunningProgram::send(int signal) const { checked(::kill(pid_, signal), "kill"); }

void RunningProgram::sendToGroup(int signal) const { checked(::kill(-pid_, signal), "kill"); }

void RunningProgram::leaveStandardOutput() { ::close(std::exchange(out_, kNoDescriptor)); }

std::string RunningProgram::readErrorsUpTo(const std::string& text) const {
  std::string seen;
  for (char byte = 0; !seen.ends_with(text) && ::read(err_, &byte, 1) == 1;) seen += byte;
  return seen;
}

std::string RunningProgram::errorsToTheEnd() {
  return readToEnd(std::exchange(err_, kNoDescriptor));
}

std::string RunningProgram::readOutput(std::size_t count) const {
  std::string seen;
  for (char byte = 0; seen.size() < count && ::read(out_, &byte, 1) == 1;) seen += byte;
  return seen;
}

std::string RunningProgram::outputToTheEnd() {
  return readToEnd(std::exchange(out_, kNoDescriptor));
}

int RunningProgram::waitForEnd() { return waitFor(std::exchange(pid_, 0)); }

void waitForUnlocked(const std::string& path) {
  const int file = checked(::open(path.c_str(), O_RDONLY | O_CLOEXEC), "open");
  checked(::flock(file, LOCK_EX), "flock");
  ::close(file);
}

}  // namespace host_test
