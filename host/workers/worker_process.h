// A worker as its parent sees it: a child process with a pipe for requests and one for frames.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "workers/worker.h"
#include "workers/worker_frame.h"

namespace host {

// A process that has closed its pipes, or was killed, ends within this time, unless it is stuck.
inline constexpr std::chrono::seconds kTimeToDie{1};

// How a process ended.
struct ProcessEnd {
  int state = 0;  // as waitpid gives it

  bool isBySignal(int number) const;
  bool isWithStatus(int status) const;
};

// What a worker runs: it reads requests, writes frames, and ends its process.
using WorkerBody = std::function<void(const WorkerEnds&)>;

class WorkerProcess {
 public:
  // Forks. The child closes the pipes of its siblings. Throws Failure when the system has no
  // process or pipe to give.
  WorkerProcess(const WorkerBody& body, std::span<const WorkerProcess* const> siblings);
  WorkerProcess(const WorkerTask& task, std::span<const WorkerProcess* const> siblings);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  ~WorkerProcess();  // kills it if it has not ended

  // Neither after endRequests.
  void request(std::uint64_t index);
  void request(std::string_view bytes);
  void endRequests();  // it finishes what it has, and ends
  void abandon();      // it ends when it next writes to its parent

  int results() const { return results_; }
  CapturedErrors& errors() { return errors_; }
  SharedTexts& texts() { return texts_; }
  FrameReader& frames() { return frames_; }
  const FrameReader& frames() const { return frames_; }

  // None of these once its end is known, that is, after one of the last two returned it.
  bool hasEnded() const;
  void kill();
  std::optional<ProcessEnd> endIfEnded();
  std::optional<ProcessEnd> waitForEnd(std::chrono::milliseconds longest);

 private:
  [[noreturn]] void becomeWorker(const WorkerBody& body, pid_t parent, int requestsEnd,
                                 int resultsEnd,
                                 std::span<const WorkerProcess* const> siblings) noexcept;
  void closeOurEnds() const;
  void forget();

  pid_t pid_ = 0;  // 0 once its end is known
  int requests_ = -1;
  int results_ = -1;
  CapturedErrors errors_;
  SharedTexts texts_;
  FrameReader frames_;
};

// Pauses between checks for processes that have ended: short at first, since most end at once.
class EndPause {
 public:
  void sleep();

 private:
  std::chrono::microseconds next_{50};
};

}  // namespace host
