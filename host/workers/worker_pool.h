// The workers of a run. Files are handed out as workers come free; results are taken in input
// order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "workers/awake_clock.h"
#include "workers/file_failure.h"
#include "workers/retired_workers.h"
#include "workers/start_retry.h"
#include "workers/worker.h"
#include "workers/worker_process.h"

namespace host {

struct FileResult {
  FileStatus status = FileStatus::kAnswered;
  bool hasAnswer = false;        // the module gave one, though it may be empty
  bool diagnosticsLost = false;  // up to this file
  bool hasChanged = false;       // the file, each time that it was read
  std::string message;           // empty unless the file failed
  std::string warnings;          // a line on what the module wrote to standard error, or empty
  std::string omitted;           // a line on what the answer leaves out, or empty
  bool isOtherText = false;      // what has omitted
  std::string text;              // for the output
  bool isWritten = false;        // the worker has written the text itself, or tried to
  int outputError = 0;           // the number of the error that kept it from that
  std::string firstFailure;      // what was wrong at the first of two attempts, or empty
};

// Of a file that the module has not answered.
FileResult unansweredResult(const WorkerTask& task, const Input& input, FileStatus status,
                            std::string_view message);

// What to do while waiting.
struct Idle {
  int milliseconds;  // between two calls, at most AwakeClock::kLongestStep
  int watched;       // a descriptor: action is called as soon as it is readable
  std::function<void()> action;
};

class WorkerPool {
 public:
  // In lockstep no file is begun before the one before it has been taken, by one worker at a time.
  WorkerPool(const WorkerTask& task, unsigned jobs, bool lockstep);
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // The result for an input that is a file. Each is taken once, in their order. While there is
  // none, idle is called now and then. Throws Failure when no worker can be had.
  FileResult waitFor(std::uint64_t index, const Idle& idle);

  // Waits for the workers to end. Returns false if diagnostics were lost meanwhile.
  bool finish(const Idle& idle);

 private:
  struct Slot {
    std::unique_ptr<WorkerProcess> process;
    std::deque<std::uint64_t> files;       // not answered yet; sent once there is a process
    bool isReady = false;                  // has loaded the module
    bool isIsolated = false;               // has one file only, at its second attempt
    bool isWriting = false;                // to the output itself
    bool hasClosed = false;                // its result pipe
    std::optional<std::string> exception;  // what the module threw
    AwakeClock::Time deadline{0};          // for the next that is heard of it
    StartRetry retry;
  };

  struct FirstFailure {
    std::string what;
    bool isTold;
  };

  bool isMemoryShared() const;
  std::uint64_t memoryFor(const Slot& slot) const;

  void dispatch(std::uint64_t wanted);
  void dispatchAlone(std::uint64_t wanted);
  void handOut(std::uint64_t wanted);
  bool isAllowed(std::uint64_t index, std::uint64_t wanted) const;
  Slot* slotFor(bool mustBe);
  bool start(Slot& slot);
  void handleFailedStart(Slot& slot, const std::string& what);
  void send(Slot& slot, std::uint64_t index);

  bool receive(std::uint64_t wanted, const Idle& idle, int timeout);
  int pollTimeout(const Idle& idle) const;
  bool mayBeRead(const Slot& slot, std::uint64_t wanted) const;
  void receiveFrom(Slot& slot);
  static bool takeSharedText(Slot& slot, Frame& frame);
  void accept(Slot& slot, Frame frame);
  void acceptFile(Slot& slot, Frame frame);

  void keep(std::uint64_t index, FileResult result);

  void renewDeadline(Slot& slot);
  void enforceDeadlines(std::uint64_t wanted);
  void handleEnds(bool isIdle);
  void handleEnd(Slot& slot, const ProcessEnd& end);
  void kill(Slot& slot, FileFailure failure);
  void handleFailure(Slot& slot, const FileFailure& failure);
  void fail(std::uint64_t index, const FileFailure& failure);
  void requeue(Slot& slot);
  void retire(Slot& slot);
  void abandon(Slot& slot);
  void letUnreadyEnd();

  const WorkerTask& task_;
  const bool lockstep_;
  std::vector<Slot> slots_;  // one a job; the last is for files that get all memory
  RetiredWorkers retired_;
  AwakeClock clock_;
  bool isProven_ = false;               // the module was loaded before
  bool isRoomKept_ = false;             // for a retired worker that has all memory
  std::uint64_t nextFile_ = 0;          // the first that was never handed out
  std::set<std::uint64_t> requeued_;    // handed out to workers that did not get to them
  std::set<std::uint64_t> needsWhole_;  // failed within a share of the memory
  std::map<std::uint64_t, FileResult> finished_;
  std::size_t finishedBytes_ = 0;
  std::map<std::uint64_t, FirstFailure> firstFailures_;
};

}  // namespace host
