// Workers that get no further files. Each is given time to end by itself: the module may have
// something to do then.
#pragma once

#include <memory>
#include <vector>

#include "workers/awake_clock.h"
#include "workers/worker_process.h"

namespace host {

class RetiredWorkers {
 public:
  // The worker is killed if it has not ended by then.
  void add(std::unique_ptr<WorkerProcess> process, AwakeClock::Time latest);

  void addAndKill(std::unique_ptr<WorkerProcess> process, AwakeClock::Time now);

  // Drops those that have ended, and kills those whose time is over.
  void reap(AwakeClock::Time now);

  bool isEmpty() const { return workers_.empty(); }

  // Whether the diagnostics of one that was dropped could not be written.
  bool areDiagnosticsLost() const { return diagnosticsLost_; }

  void appendTo(std::vector<const WorkerProcess*>& processes) const;

 private:
  struct Retired {
    std::unique_ptr<WorkerProcess> process;
    AwakeClock::Time latest;
    bool isKilled;
  };

  bool isOver(Retired& worker, AwakeClock::Time now);

  std::vector<Retired> workers_;
  bool diagnosticsLost_ = false;
};

}  // namespace host
