// A worker as its parent sees it: a child process with a pipe for requests and one for frames.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "workers/worker.h"
#include "workers/worker_frame.h"

namespace host {

// How a process ended.
struct ProcessEnd {
  int state = 0;  // as waitpid gives it

  bool isBySignal(int number) const;
  bool isWithStatus(int status) const;
};

class WorkerProcess {
 public:
  // Forks. The others are its siblings, whose pipes it is not to keep open. Throws Failure when the
  // system has no process or pipe to give.
  WorkerProcess(const WorkerTask& task, std::span<const WorkerProcess* const> siblings);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  ~WorkerProcess();  // kills it if it has not ended

  void request(std::uint64_t index);  // not behind endRequests
  void endRequests();                 // it finishes what it has, and ends
  void abandon();                     // it ends when it next has something to tell

  int results() const { return results_; }
  CapturedErrors& errors() { return errors_; }
  FrameReader& frames() { return frames_; }
  const FrameReader& frames() const { return frames_; }

  // None of these once its end is known, that is, behind the two last.
  bool hasEnded() const;
  void kill();
  ProcessEnd waitForEnd();
  std::optional<ProcessEnd> endIfEnded();

 private:
  [[noreturn]] void becomeWorker(const WorkerTask& task, pid_t parent, int requestsEnd,
                                 int resultsEnd, std::span<const WorkerProcess* const> siblings);
  void closeOurEnds() const;

  pid_t pid_ = 0;  // 0 once its end is known
  int requests_ = -1;
  int results_ = -1;
  CapturedErrors errors_;
  FrameReader frames_;
};

struct Version {
  std::string text;
  bool diagnosticsLost;
};

// Has a worker ask the module. Throws Failure when it has no version to tell.
Version askVersion(const WorkerTask& task);

}  // namespace host
