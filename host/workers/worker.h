// A worker: a process of its own that loads the module, has it answer file after file, and sends
// each text in its final form. Whatever the module does to its process, the run goes on.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "formats/format.h"
#include "records/file_report.h"
#include "sources/input_list.h"
#include "workers/captured_errors.h"
#include "workers/file_limits.h"
#include "workers/shared_texts.h"

namespace host {

struct WorkerTask {
  std::string plugin;  // the module's path
  std::string defines;
  FileLimits limits;
  std::chrono::microseconds timeBesidesFiles = std::chrono::seconds(60);  // to load, and to exit
  bool isMemoryShared = false;  // limits.memory is a share: what fails with it is tried with more
  int diagnostics = -1;         // descriptor for the module's standard output
  const Inputs* inputs = nullptr;  // none where only the version is asked for
  const Format* format = nullptr;
  FormatSettings settings;
  bool wholeDocuments = false;  // each file is an output of its own
  bool writesOutput = false;    // workers write to standard output themselves: there is one file
  bool times = false;
  bool findsOmissions = false;  // looks for what answers leave out
  bool keepsSources = false;    // keeps the bytes that the module saw
  bool countsWarnings = true;   // reports what the module writes to standard error
  bool quiet = false;           // discards the module's standard error
  int standardError = -1;       // descriptor for it otherwise; -1 leaves it as it is
};

// Asks for the module's version instead of for a file.
inline constexpr std::uint64_t kVersionRequest = UINT64_MAX;

// Exit statuses of a worker that say why it ended.
enum WorkerExit : int {
  kWorkerOutOfMemory = 90,
  kWorkerTooLarge = 91,
  kWorkerLostDiagnostics = 92,
  kWorkerThrew = 93,
};

// Appends the text for the output. Parents make those of files that no worker came to answer. Gives
// what is wrong with an answer that leaves the record format, or nothing.
std::string appendText(const FileReport& report, const WorkerTask& task, std::string& out);

// What a worker has from its parent.
struct WorkerEnds {
  int requests;  // descriptor to read them from
  int results;   // descriptor for frames
  CapturedErrors& errors;
  SharedTexts& texts;
};

// Reads requests, each the index of an input, until their end, and answers each with a frame. It
// runs in a child process and never returns into the parent's code, whatever the module throws.
[[noreturn]] void work(const WorkerTask& task, const WorkerEnds& ends) noexcept;

}  // namespace host
