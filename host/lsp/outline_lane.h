// One worker of the server and the request it works on. A worker that died is replaced, and asked
// once more; one that has grown is replaced when it has answered.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "lsp/file_outline.h"
#include "lsp/outline_worker.h"
#include "workers/worker_process.h"

namespace host::lsp {

// The workers of all lanes, so that each new one closes the pipes of the others.
using Siblings = std::vector<const WorkerProcess*>;

struct LaneReply {
  enum class Kind {
    kOutline,
    kPaths,     // some of a walk
    kWalked,    // all of it
    kFailed,    // no answer: failure says why
    kUnusable,  // the module cannot be used: failure says why
  };
  Kind kind = Kind::kOutline;
  FileOutline outline = {};
  std::vector<std::string> paths = {};
  std::string failure = {};
};

class OutlineLane {
 public:
  using Clock = std::chrono::steady_clock;

  // The siblings have to outlive the lane.
  OutlineLane(OutlineTask task, Siblings& siblings);
  OutlineLane(const OutlineLane&) = delete;
  OutlineLane& operator=(const OutlineLane&) = delete;
  ~OutlineLane() { stop(); }

  // Descriptors of the server that workers have no use for.
  void closeInWorkers(std::vector<int> descriptors) { task_.closed = std::move(descriptors); }

  bool isBusy() const { return !request_.empty(); }

  // Makes the request. Not while busy.
  void begin(RequestKind kind, Encoding encoding, const std::string& path);

  // The descriptor to wait at, negative if there is no worker.
  int descriptor() const { return worker_ ? worker_->results() : -1; }

  // When a worker that does not end by itself is killed; nothing while idle.
  std::optional<Clock::time_point> deadline() const { return deadline_; }

  // Makes one read and adds what has come. The lane is idle again but after kPaths.
  void read(std::vector<LaneReply>& replies);

  // Kills the worker if its time is up. Also tells that none could be started.
  std::optional<LaneReply> checkTime(Clock::time_point now);

  // Starts a worker if there is none, so that the next request need not wait for that. Called when
  // there is nothing more urgent.
  void prepare();

  void stop();

 private:
  void start();
  std::unique_ptr<WorkerProcess> releaseWorker();
  void send();
  std::optional<LaneReply> take(Frame& frame);
  std::optional<LaneReply> handleDeath();
  LaneReply finish(LaneReply reply);
  LaneReply fail(std::string reason);
  std::string timeUp() const;

  OutlineTask task_;
  Siblings& siblings_;
  std::unique_ptr<WorkerProcess> worker_;
  std::unique_ptr<WorkerProcess> retired_;  // ends by itself
  std::string request_;                     // being worked on, or empty
  bool isRetried_ = false;
  bool isWalk_ = false;
  std::string startFailure_;
  std::optional<Clock::time_point> deadline_;
};

}  // namespace host::lsp
