#include "workers/worker_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
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

WorkerProcess::WorkerProcess(const WorkerTask& task,
                             std::span<const WorkerProcess* const> siblings) {
  const std::optional<Pipe> requests = makePipe();
  const std::optional<Pipe> results = requests ? makePipe() : std::nullopt;
  if (!results) {
    const int error = errno;
    if (requests) close(*requests);
    throw systemFailure("worker", error);
  }
  requests_ = requests->writeEnd;
  results_ = results->readEnd;
  widenPipe(results_);
  const pid_t parent = ::getpid();
  {
    const SignalsHeld held;
    pid_ = ::fork();
    if (pid_ == 0) becomeWorker(task, parent, requests->readEnd, results->writeEnd, siblings);
    if (pid_ > 0) noteWorker(pid_);
  }
  const int error = errno;
  ::close(requests->readEnd);
  ::close(results->writeEnd);
  if (pid_ < 0) {
    closeOurEnds();
    throw systemFailure("worker", error);
  }
}

WorkerProcess::~WorkerProcess() {
  if (pid_ > 0) {
    kill();
    waitForEnd();
  }
  closeOurEnds();
}

void WorkerProcess::becomeWorker(const WorkerTask& task, pid_t parent, int requestsEnd,
                                 int resultsEnd, std::span<const WorkerProcess* const> siblings) {
  endWithParent(parent);
  endWorkerOnSignals();
  closeOurEnds();
  for (const auto& sibling : siblings) {
    if (sibling != nullptr) sibling->closeOurEnds();
  }
  work(task, requestsEnd, resultsEnd, errors_);
}

void WorkerProcess::closeOurEnds() const {
  closeIfOpen(requests_);
  closeIfOpen(results_);
}

void WorkerProcess::request(std::uint64_t index) {
  // A worker that is gone is noticed by the end of its frames.
  writeAll(requests_, std::string_view(reinterpret_cast<const char*>(&index), sizeof index));
}

void WorkerProcess::endRequests() { closeIfOpen(std::exchange(requests_, -1)); }

void WorkerProcess::abandon() {
  closeOurEnds();
  requests_ = -1;
  results_ = -1;
}

void WorkerProcess::kill() { ::kill(pid_, SIGKILL); }

ProcessEnd WorkerProcess::waitForEnd() {
  // It stays a zombie until it is no longer noted, so that nobody else has its number.
  siginfo_t info{};
  while (::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT) != 0) {
    if (errno != EINTR) break;
  }
  const SignalsHeld held;
  ProcessEnd end;
  ::waitpid(pid_, &end.state, 0);
  forgetWorker(pid_);
  pid_ = 0;
  return end;
}

bool WorkerProcess::hasEnded() const {
  siginfo_t info{};
  return ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT | WNOHANG) == 0 &&
         info.si_pid != 0;
}

std::optional<ProcessEnd> WorkerProcess::endIfEnded() {
  if (!hasEnded()) return std::nullopt;
  return waitForEnd();
}

Version askVersion(const WorkerTask& task) {
  WorkerProcess worker(task, {});
  worker.request(kVersionRequest);
  worker.endRequests();
  Frame frame;
  while (frame.kind == FrameKind::kReady) {
    const FrameReader::State state = worker.frames().next(frame);
    if (state == FrameReader::State::kWhole) continue;
    if (state == FrameReader::State::kSpoilt ||
        worker.frames().read(worker.results()) == FrameReader::State::kEnded) {
      throw Failure("the plug-in ended its process");
    }
  }
  const ProcessEnd end = worker.waitForEnd();
  if (frame.kind == FrameKind::kUnusable) throw Failure(frame.message);
  return {frame.text, frame.diagnosticsLost || end.isWithStatus(kWorkerLostDiagnostics)};
}

}  // namespace host
