#include "workers/retired_workers.h"

#include <optional>
#include <utility>

#include "workers/worker.h"

namespace host {

void RetiredWorkers::add(std::unique_ptr<WorkerProcess> process, AwakeClock::Time latest) {
  workers_.push_back({std::move(process), latest, false});
}

void RetiredWorkers::addAndKill(std::unique_ptr<WorkerProcess> process, AwakeClock::Time now) {
  process->kill();
  workers_.push_back({std::move(process), now + kTimeToDie, true});
}

void RetiredWorkers::reap(AwakeClock::Time now) {
  std::erase_if(workers_, [&](Retired& worker) { return isOver(worker, now); });
}

bool RetiredWorkers::isOver(Retired& worker, AwakeClock::Time now) {
  if (const std::optional<ProcessEnd> end = worker.process->endIfEnded()) {
    if (end->isWithStatus(kWorkerLostDiagnostics)) diagnosticsLost_ = true;
    return true;
  }
  if (now < worker.latest) return false;
  if (worker.isKilled) return true;  // it is stuck in the kernel
  worker.process->kill();
  worker.isKilled = true;
  worker.latest = now + kTimeToDie;
  return false;
}

void RetiredWorkers::appendTo(std::vector<const WorkerProcess*>& processes) const {
  for (const Retired& worker : workers_) processes.push_back(worker.process.get());
}

}  // namespace host
