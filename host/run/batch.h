// The run over all files that the user named.
#pragma once

#include <cstdint>

#include "cli/run_options.h"
#include "run/answer_directory.h"
#include "run/diagnostics.h"
#include "run/output.h"
#include "workers/worker.h"

namespace host {

// Has each file answered, in order, and reports those that fail. The texts go to output or to
// answerDirectory; the other one is null. Returns false if the run counts as failed.
bool answerFiles(const WorkerTask& task, const RunOptions& options, const Diagnostics& diagnostics,
                 Output* output, AnswerDirectory* answerDirectory);

}  // namespace host
