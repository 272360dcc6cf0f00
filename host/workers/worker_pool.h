// The workers of a run. Files are handed out as workers come free; results are taken in input
// order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "workers/worker.h"
#include "workers/worker_process.h"

namespace host {

struct FileResult {
  FileStatus status = FileStatus::kAnswered;
  bool hasAnswer = false;        // the module gave one, though it may be empty
  bool diagnosticsLost = false;  // up to this file
  std::string message;           // empty unless the file failed
  std::string warnings;          // a line on what the module wrote to standard error, or empty
  std::string text;              // for the output
  bool isWritten = false;        // the worker has written the text itself, or tried to
  int outputError = 0;           // the number of the error that kept it from that
  std::string firstFailure;      // what was wrong at the first of two attempts, or empty
};

// Of a file that the module has not answered.
FileResult unansweredResult(const WorkerTask& task, const Input& input, FileStatus status,
                            std::string_view message);

// What is done while nothing else is to be.
struct Idle {
  int milliseconds;  // between two calls
  int watched;       // a descriptor that it is called for as soon as there is something to read
  std::function<void()> action;
};

class WorkerPool {
 public:
  // In lockstep no file is begun before the one before it has been taken, by one worker at a time.
  WorkerPool(const WorkerTask& task, unsigned jobs, bool lockstep);
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // The result for an input that is a file. Each is taken once, in their order. While there is
  // none, idle is called now and then. Throws Failure when workers are of no use.
  FileResult take(std::uint64_t index, const Idle& idle);

  // Waits for the workers' ends. Gives false if diagnostics were lost in them.
  bool finish(const Idle& idle);

 private:
  struct Slot {
    std::unique_ptr<WorkerProcess> process;
    std::deque<std::uint64_t> files;  // handed to it and not answered, in its order
    bool isReady = false;             // has loaded the module
    bool isAlone = false;             // is for the first of its files only
    bool isBarred = false;            // the system had no process for it
    bool isWriting = false;           // to the output itself
  };

  void handOut(std::uint64_t wanted);
  bool isAllowed(std::uint64_t index, std::uint64_t wanted) const;
  Slot* slotFor(bool mustBe);
  void start(Slot& slot);
  bool tryStart(Slot& slot);
  void send(Slot& slot, std::uint64_t index);
  bool receive(std::uint64_t wanted, const Idle& idle, int timeout);
  bool mayBeRead(const Slot& slot, std::uint64_t wanted) const;
  void loseEnded();
  void receiveFrom(Slot& slot);
  void accept(Slot& slot, Frame frame);
  void letUnreadyEnd();
  void retire(Slot& slot);
  void lose(Slot& slot, bool isSpoilt);
  void giveBack(Slot& slot);
  void fail(std::uint64_t index, FileStatus status, const std::string& what, std::string warnings);
  void reapRetired(bool wait);

  const WorkerTask& task_;
  const bool lockstep_;
  std::vector<Slot> slots_;
  std::vector<std::unique_ptr<WorkerProcess>> retired_;
  std::uint64_t nextFile_ = 0;         // the first that was never handed out
  std::set<std::uint64_t> givenBack_;  // by workers that ended before their turn
  std::map<std::uint64_t, FileResult> finished_;
  std::size_t finishedBytes_ = 0;
  std::map<std::uint64_t, std::string> firstFailures_;
  bool diagnosticsLost_ = false;  // at the end of a worker
};

}  // namespace host
