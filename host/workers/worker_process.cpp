#include "workers/worker_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <utility>

#include "system/failure.h"
#include "system/io.h"
#include "system/platform.h"
#include "system/signals.h"

namespace host {
namespace {

struct Pipe {
  int readEnd;
  int writeEnd;
};

void closeIfOpen(int descriptor) {
  if (descriptor >= 0) ::close(descriptor);
}

void close(const Pipe& pipe) {
  closeIfOpen(pipe.readEnd);
  closeIfOpen(pipe.writeEnd);
}

// Nothing, with errno set, when the system has none to give.
std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return std::nullopt;
  const Pipe pipe{outOfTheWay(ends[0]), outOfTheWay(ends[1])};
  if (pipe.readEnd >= 0 && pipe.writeEnd >= 0) return pipe;
  const int error = errno;
  close(pipe);
  errno = error;
  return std::nullopt;
}

}  // namespace

bool ProcessEnd::isBySignal(int number) const {
  return WIFSIGNALED(state) && WTERMSIG(state) == number;
}

bool ProcessEnd::isWithStatus(int status) const {
  return WIFEXITED(state) && WEXITSTATUS(state) == status;
}

WorkerProcess::WorkerProcess(const WorkerTask& task, std::span<const WorkerProcess* const> siblings)
    : WorkerProcess([&task](const WorkerEnds& ends) { work(task, ends); }, siblings) {}

WorkerProcess::WorkerProcess(const WorkerBody& body,
                             std::span<const WorkerProcess* const> siblings) {
  const std::optional<Pipe> requests = makePipe();
  const std::optional<Pipe> results = requests ? makePipe() : std::nullopt;
  if (!results) {
    const int error = errno;
    if (requests) close(*requests);
    throw systemFailure("pipe", error);
  }
  requests_ = requests->writeEnd;
  results_ = results->readEnd;
  widenPipe(results_);
  const pid_t parent = ::getpid();
  {
    const SignalsHeld held;
    pid_ = ::fork();
    if (pid_ == 0) becomeWorker(body, parent, requests->readEnd, results->writeEnd, siblings);
    if (pid_ > 0) noteWorker(pid_);
  }
  const int error = errno;
  ::close(requests->readEnd);
  ::close(results->writeEnd);
  if (pid_ < 0) {
    closeOurEnds();
    throw systemFailure("fork", error);
  }
}

WorkerProcess::~WorkerProcess() {
  if (pid_ > 0) {
    kill();
    // One that is stuck in a system call dies when that returns, and is not waited for.
    if (!waitForEnd(kTimeToDie)) forget();
  }
  closeOurEnds();
}

void WorkerProcess::becomeWorker(const WorkerBody& body, pid_t parent, int requestsEnd,
                                 int resultsEnd,
                                 std::span<const WorkerProcess* const> siblings) noexcept {
  endWithParent(parent);
  endWorkerOnSignals();
  closeOurEnds();
  for (const auto& sibling : siblings) {
    if (sibling == nullptr) continue;
    sibling->closeOurEnds();
    sibling->texts_.unmap();
  }
  body({requestsEnd, resultsEnd, errors_, texts_});
  ::_exit(EXIT_FAILURE);
}

void WorkerProcess::closeOurEnds() const {
  closeIfOpen(requests_);
  closeIfOpen(results_);
}

void WorkerProcess::request(std::uint64_t index) {
  request(std::string_view(reinterpret_cast<const char*>(&index), sizeof index));
}

void WorkerProcess::request(std::string_view bytes) {
  writeAll(requests_, bytes);  // a worker that is gone is noticed by the end of its frames
}

void WorkerProcess::endRequests() { closeIfOpen(std::exchange(requests_, -1)); }

void WorkerProcess::abandon() {
  closeOurEnds();
  requests_ = -1;
  results_ = -1;
}

void WorkerProcess::kill() { ::kill(pid_, SIGKILL); }

void WorkerProcess::forget() {
  forgetWorker(pid_);
  pid_ = 0;
}

bool WorkerProcess::hasEnded() const {
  siginfo_t info{};
  return ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT | WNOHANG) == 0 &&
         info.si_pid != 0;
}

std::optional<ProcessEnd> WorkerProcess::endIfEnded() {
  // It stays a zombie until it is no longer noted, so that its number is not reused.
  if (!hasEnded()) return std::nullopt;
  const SignalsHeld held;
  ProcessEnd end;
  ::waitpid(pid_, &end.state, 0);
  forget();
  return end;
}

std::optional<ProcessEnd> WorkerProcess::waitForEnd(std::chrono::milliseconds longest) {
  const auto latest = std::chrono::steady_clock::now() + longest;
  EndPause pause;
  std::optional<ProcessEnd> end = endIfEnded();
  while (!end && std::chrono::steady_clock::now() < latest) {
    pause.sleep();
    end = endIfEnded();
  }
  return end;
}

void EndPause::sleep() {
  constexpr std::chrono::microseconds kLongest{2000};
  std::this_thread::sleep_for(next_);
  next_ = std::min(next_ * 2, kLongest);
}

}  // namespace host
