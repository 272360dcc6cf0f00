// The program's main job: a run over files, from their names to the exit status.
#pragma once

#include "cli/run_options.h"
#include "run/output.h"

namespace host {

// Parses the files that the options name and writes the output where they say. Returns the exit
// status. Throws Failure.
int runFiles(const RunOptions& options);

// Writes the versions of the program and of the module, and where that is. Returns the exit status.
// Throws Failure.
int printVersions(const RunOptions& options, Output& output);

}  // namespace host
