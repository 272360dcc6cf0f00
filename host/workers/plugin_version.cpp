#include "workers/plugin_version.h"

#include <poll.h>

#include <chrono>
#include <optional>

#include "system/failure.h"
#include "workers/awake_clock.h"
#include "workers/file_failure.h"
#include "workers/worker_frame.h"
#include "workers/worker_process.h"

namespace host {
namespace {

constexpr int kPollMilliseconds = 100;

Failure noVersion(const FileFailure& failure) {
  return Failure("cannot get the plug-in's version: " + failure.what);
}

FileFailure failureByEndOfFrames(WorkerProcess& worker, const FileLimits& limits) {
  const std::optional<ProcessEnd> end = worker.waitForEnd(kTimeToDie);
  return end ? failureByEnd(*end, limits) : failureByClosing();
}

// The worker's next frame; none if it does not come in time. A limit of 0 is none.
std::optional<Frame> nextFrame(WorkerProcess& worker, const FileLimits& limits,
                               std::chrono::microseconds limit) {
  AwakeClock clock;
  while (true) {
    Frame frame;
    const FrameReader::State state = worker.frames().next(frame);
    if (state == FrameReader::State::kWhole) return frame;
    if (state == FrameReader::State::kMalformed) throw noVersion(failureByGarbage());
    pollfd results{worker.results(), POLLIN, 0};
    if (::poll(&results, 1, kPollMilliseconds) > 0) {
      if (worker.frames().read(worker.results()) == FrameReader::State::kEnded) {
        throw noVersion(failureByEndOfFrames(worker, limits));
      }
    } else if (clock.now() > limit + kTimeGrace && limit.count() != 0) {
      return std::nullopt;
    }
  }
}

}  // namespace

Version askVersion(const WorkerTask& task) {
  WorkerProcess worker(task, {});
  worker.request(kVersionRequest);
  worker.endRequests();
  std::optional<Frame> frame = nextFrame(worker, task.limits, task.timeBesidesFiles);
  if (!frame) throw notLoaded(failureByLoadTime(task.timeBesidesFiles));
  if (frame->kind == FrameKind::kReady) {
    frame = nextFrame(worker, task.limits, task.limits.time);
    if (!frame) throw noVersion(failureByTime(task.limits));
  }
  // A module that was loaded has something to end, too, even if it cannot be used.
  const std::optional<ProcessEnd> end = worker.waitForEnd(
      std::chrono::duration_cast<std::chrono::milliseconds>(task.timeBesidesFiles + kTimeGrace));
  if (frame->kind == FrameKind::kUnusable) throw Failure(frame->message);
  if (frame->kind == FrameKind::kThrew) throw noVersion(failureByException(frame->message));
  const bool diagnosticsLost = end && end->isWithStatus(kWorkerLostDiagnostics);
  return {frame->text, frame->diagnosticsLost || diagnosticsLost};
}

}  // namespace host
