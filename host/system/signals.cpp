#include "system/signals.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>

namespace host {
namespace {

constexpr std::array kSignals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
constexpr std::size_t kMaxNotedWorkers = 1024;  // of more, the rest ends when its pipes do
constexpr std::size_t kMaxNameBytes = 64;
constexpr std::size_t kMaxPathBytes = 4096;  // as much as Linux takes for one

// What the handler reads; it is written while the signals wait.
std::array<std::atomic<pid_t>, kMaxNotedWorkers> workers;
std::atomic<int> temporaryDirectory = -1;
std::array<char, kMaxNameBytes> temporaryName;
std::array<char, kMaxPathBytes> directoryToRemove;
std::array<char, kMaxPathBytes> fileToRemove;
std::atomic<bool> hasDirectoryToRemove = false;
std::atomic<bool> passingLine = false;

sigset_t endingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int number : kSignals) sigaddset(&set, number);
  return set;
}

// Sent to all processes of a terminal by its keys.
bool isTyped(int number) { return number == SIGINT || number == SIGQUIT; }

bool isIgnored(int number) {
  struct sigaction action {};
  return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// Calls only what may be called in a handler.
void endRun(int number) {
  for (const auto& worker : workers) {
    const pid_t pid = worker;
    if (pid > 0) ::kill(pid, SIGKILL);
  }
  const int directory = temporaryDirectory;
  if (directory >= 0) ::unlinkat(directory, temporaryName.data(), 0);
  if (hasDirectoryToRemove) {
    ::unlink(fileToRemove.data());
    ::rmdir(directoryToRemove.data());
  }
  if (passingLine) {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, kEraseLine, sizeof kEraseLine - 1);
  }
  std::signal(number, SIG_DFL);
  std::raise(number);  // is delivered when this function returns
}

void replaceNote(pid_t from, pid_t to) {
  const auto note = std::find(workers.begin(), workers.end(), from);
  if (note != workers.end()) *note = to;
}

}  // namespace

void endRunOnSignals() {
  std::signal(SIGCHLD, SIG_DFL);  // ignored, it would keep how workers end from their parent
  for (const int number : kSignals) {
    if (isIgnored(number)) continue;
    struct sigaction action {};
    action.sa_handler = endRun;
    action.sa_mask = endingSignals();
    ::sigaction(number, &action, nullptr);
  }
}

void endWorkerOnSignals() {
  for (const int number : kSignals) {
    if (!isIgnored(number)) std::signal(number, isTyped(number) ? SIG_IGN : SIG_DFL);
  }
  std::signal(SIGALRM, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

SignalsHeld::SignalsHeld() {
  const sigset_t set = endingSignals();
  ::sigprocmask(SIG_BLOCK, &set, &before_);
}

SignalsHeld::~SignalsHeld() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

void noteWorker(pid_t worker) { replaceNote(0, worker); }

void forgetWorker(pid_t worker) { replaceNote(worker, 0); }

void noteTemporaryFile(int directory, const std::string& name) {
  if (name.size() >= temporaryName.size()) return;
  std::copy_n(name.c_str(), name.size() + 1, temporaryName.begin());
  temporaryDirectory = directory;
}

void forgetTemporaryFile() { temporaryDirectory = -1; }

void noteTemporaryDirectory(const std::string& directory, const std::string& file) {
  if (directory.size() >= kMaxPathBytes || file.size() >= kMaxPathBytes) return;
  std::copy_n(directory.c_str(), directory.size() + 1, directoryToRemove.begin());
  std::copy_n(file.c_str(), file.size() + 1, fileToRemove.begin());
  hasDirectoryToRemove = true;
}

void forgetTemporaryDirectory() { hasDirectoryToRemove = false; }

void endByBrokenPipe() {
  std::signal(SIGPIPE, SIG_DFL);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
  std::raise(SIGPIPE);
  ::_exit(128 + SIGPIPE);
}

void notePassingLine(bool isThere) { passingLine = isThere; }

}  // namespace host
