#include "workers/file_failure.h"

#include <sys/wait.h>

#include <csignal>
#include <cstring>

#include "workers/worker.h"

namespace host {

FileFailure failureByEnd(const ProcessEnd& end, const FileLimits& limits) {
  if (end.isBySignal(SIGALRM)) return failureByTime(limits);
  if (end.isWithStatus(kWorkerOutOfMemory)) {
    return {FileStatus::kOutOfMemory, "out of memory (--max-memory)", true};
  }
  if (end.isWithStatus(kWorkerTooLarge)) {
    return {FileStatus::kTooLarge,
            "answer larger than " + sizeText(limits.answerBytes) + " (--max-output)"};
  }
  const std::string what =
      WIFSIGNALED(end.state)
          ? std::string("the plug-in crashed: ") + ::strsignal(WTERMSIG(end.state))
          : "the plug-in exited with status " + std::to_string(WEXITSTATUS(end.state));
  return {FileStatus::kCrashed, what, true};
}

FileFailure failureByException(std::string_view text) {
  std::string what = "the plug-in threw an exception";
  if (!text.empty()) what.append(": ").append(text);
  return {FileStatus::kCrashed, what, true};
}

FileFailure failureByTime(const FileLimits& limits) {
  return {FileStatus::kTimedOut, "timed out after " + timeText(limits.time) + " (--timeout)"};
}

FileFailure failureByLoadTime(std::chrono::microseconds time) {
  return {FileStatus::kTimedOut, "not loaded after " + timeText(time)};
}

FileFailure failureByGarbage() {
  return {FileStatus::kCrashed, "the plug-in wrote to the result pipe"};
}

FileFailure failureByClosing() {
  return {FileStatus::kCrashed, "the plug-in closed the result pipe"};
}

Failure notLoaded(const FileFailure& failure) {
  return Failure("cannot load the plug-in: " + failure.what);
}

}  // namespace host
