// Why a worker did not answer a file.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "records/file_report.h"
#include "system/failure.h"
#include "workers/file_limits.h"
#include "workers/worker_process.h"

namespace host {

struct FileFailure {
  FileStatus status = FileStatus::kCrashed;
  std::string what;            // for a message, behind the file's name
  bool mayLackMemory = false;  // with more memory the file might be answered
  std::string warnings = {};   // a line on what the module wrote to standard error, or empty
};

// By the end of the process, of which the worker was the cause or its module.
FileFailure failureByEnd(const ProcessEnd& end, const FileLimits& limits);

// By an exception of the module with that text, which may be empty.
FileFailure failureByException(std::string_view text);

// By the time limit, or by that for loading the module.
FileFailure failureByTime(const FileLimits& limits);
FileFailure failureByLoadTime(std::chrono::microseconds time);

// The module wrote to the pipe that the results come through, or closed it.
FileFailure failureByGarbage();
FileFailure failureByClosing();

// To be thrown when the failure kept a worker from loading the module at all.
Failure notLoaded(const FileFailure& failure);

}  // namespace host
