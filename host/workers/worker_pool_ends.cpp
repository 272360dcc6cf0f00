// How the workers of a pool end, and what becomes of the files that they had.

#include <poll.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <utility>

#include "system/failure.h"
#include "workers/worker_pool.h"

namespace host {
namespace {

constexpr std::chrono::seconds kTimeToEnd{10};  // for workers whose module cannot be used

bool isReadable(int descriptor) {
  pollfd end{descriptor, POLLIN, 0};
  return ::poll(&end, 1, 0) > 0;
}

}  // namespace

void WorkerPool::renewDeadline(Slot& slot) {
  const auto time = slot.isReady ? task_.limits.time : task_.timeBesidesFiles;
  slot.deadline = clock_.now() + time + kTimeGrace;
}

// A worker ends by its own timer, unless it is stopped, stuck in a system call or beyond reach for
// another reason.
void WorkerPool::enforceDeadlines(std::uint64_t wanted) {
  const AwakeClock::Time now = clock_.now();
  retired_.reap(now);
  for (Slot& slot : slots_) {
    const bool isTimed =
        slot.isReady ? task_.limits.time.count() != 0 && !slot.files.empty() && !slot.isWriting
                     : true;
    if (!slot.process || slot.hasClosed || !isTimed) continue;
    if (!mayBeRead(slot, wanted)) {
      renewDeadline(slot);  // it may have answered: nobody has looked
    } else if (now > slot.deadline) {
      kill(slot,
           slot.isReady ? failureByTime(task_.limits) : failureByLoadTime(task_.timeBesidesFiles));
    }
  }
}

// A child of the module can hold the pipe of a worker that has ended open. Checked only when there
// is nothing else to do.
void WorkerPool::handleEnds(bool isIdle) {
  for (Slot& slot : slots_) {
    if (!slot.process) continue;
    if (!slot.hasClosed && (!isIdle || isReadable(slot.process->results()))) continue;
    if (const std::optional<ProcessEnd> end = slot.process->endIfEnded()) {
      handleEnd(slot, *end);
    } else if (slot.hasClosed && clock_.now() > slot.deadline) {
      kill(slot, failureByClosing());
    }
  }
}

void WorkerPool::handleEnd(Slot& slot, const ProcessEnd& end) {
  FileFailure failure;
  if (slot.exception) {
    failure = failureByException(*slot.exception);
  } else if (!slot.isReady && end.isBySignal(SIGALRM)) {
    failure = failureByLoadTime(task_.timeBesidesFiles);
  } else {
    failure = failureByEnd(end, task_.limits);
  }
  failure.warnings = slot.process->errors().take();
  slot.process.reset();
  handleFailure(slot, failure);
}

void WorkerPool::kill(Slot& slot, FileFailure failure) {
  failure.warnings = slot.process->errors().take();
  retired_.addAndKill(std::move(slot.process), clock_.now());
  handleFailure(slot, failure);
}

// The worker died while parsing the first file in its queue, or sent a malformed frame. The file is
// tried once more, in a worker that has no other.
void WorkerPool::handleFailure(Slot& slot, const FileFailure& failure) {
  slot.hasClosed = false;
  if (!slot.isReady) {
    if (!isProven_) throw notLoaded(failure);
    handleFailedStart(slot, failure.what);
    return;
  }
  if (slot.files.empty()) return;
  const std::uint64_t index = slot.files.front();
  if (slot.isWriting) {
    throw Failure(task_.inputs->all[index].path + ": output cut short: " + failure.what);
  }
  slot.files.pop_front();
  requeue(slot);
  const bool lacksMemory = failure.mayLackMemory && isMemoryShared();
  const bool isTold = !lacksMemory || failure.status != FileStatus::kOutOfMemory;
  if (!firstFailures_.emplace(index, FirstFailure{failure.what, isTold}).second) {
    firstFailures_.erase(index);
    fail(index, failure);
  } else if (lacksMemory) {
    needsWhole_.insert(index);
  } else {
    slot.files.push_back(index);
    slot.isIsolated = true;
  }
}

void WorkerPool::fail(std::uint64_t index, const FileFailure& failure) {
  const Input& input = task_.inputs->all[index];
  FileResult result =
      unansweredResult(task_, input, failure.status, input.path + ": " + failure.what);
  result.warnings = failure.warnings;
  keep(index, std::move(result));
}

void WorkerPool::requeue(Slot& slot) {
  requeued_.insert(slot.files.begin(), slot.files.end());
  slot.files.clear();
  slot.isIsolated = false;
}

void WorkerPool::retire(Slot& slot) {
  requeue(slot);
  slot.process->endRequests();
  retired_.add(std::move(slot.process), clock_.now() + task_.timeBesidesFiles + kTimeGrace);
}

// Not killed: a module that was loaded has something to end, too, even if it cannot be used.
void WorkerPool::abandon(Slot& slot) {
  slot.process->abandon();
  retired_.add(std::move(slot.process), clock_.now() + kTimeToEnd);
}

void WorkerPool::letUnreadyEnd() {
  for (Slot& slot : slots_) {
    if (slot.process && !slot.isReady) abandon(slot);
  }
  EndPause pause;
  for (retired_.reap(clock_.now()); !retired_.isEmpty(); retired_.reap(clock_.now())) pause.sleep();
}

}  // namespace host
