// The run over all files that the user named.
#pragma once

#include <cstdint>
#include <functional>

#include "cli/run_options.h"
#include "run/answer_directory.h"
#include "run/diagnostics.h"
#include "run/output.h"
#include "sources/input_list.h"
#include "workers/worker.h"
#include "workers/worker_pool.h"

namespace host {

// Where the results go: to one of the three.
struct Destination {
  Output* output = nullptr;
  AnswerDirectory* directory = nullptr;
  std::function<void(const Input&, const FileResult&)> take = {};
};

// What any run asks of its workers. The inputs, the format and what it needs are left to the
// caller.
WorkerTask commonTask(const RunOptions& options, const Diagnostics& diagnostics);

// Has each file answered, in order, and reports those that fail. Returns false if the run counts as
// failed.
bool answerFiles(const WorkerTask& task, const RunOptions& options, const Diagnostics& diagnostics,
                 const Destination& destination);

}  // namespace host
