// The outcome of one file.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "system/file_times.h"

namespace host {

namespace outline {
struct Omission;
}

enum class FileStatus {
  kAnswered,     // answer holds the records
  kEmpty,        // the file has no bytes, and so no records; not a failure
  kFailed,       // the module or the program could not read the file; message says why
  kCrashed,      // the worker died while parsing it
  kTimedOut,     // longer than --timeout
  kOutOfMemory,  // more than --max-memory
  kTooLarge,     // larger than --max-size, or an answer longer than --max-output
};

// Whether the file counts as read.
constexpr bool isGood(FileStatus status) {
  return status == FileStatus::kAnswered || status == FileStatus::kEmpty;
}

// Views, valid as long as their maker says.
struct FileReport {
  std::uint64_t index = 0;     // the file's place among all files of the run, zero-based
  std::string_view path = {};  // the bytes as given or found, which need not be UTF-8
  FileStatus status = FileStatus::kAnswered;
  std::string_view message = {};  // one line for a person; empty unless the file failed
  std::string_view answer = {};   // the module's text, records or its error answer; may be empty
  std::string_view source = {};   // the bytes that the module saw; only where the task wants them
  const std::vector<outline::Omission>* omitted = nullptr;  // what the answer leaves out, or null
  std::uint64_t sourceBytes = 0;
  std::optional<FileTimes> times = {};  // of a regular file that stayed the same meanwhile
  std::optional<std::uint64_t> microseconds = {};  // only where the user asked for times
};

}  // namespace host
