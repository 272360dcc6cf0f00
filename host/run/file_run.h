// The program's main job: a run over files, from their names to the exit status.
#pragma once

#include "cli/run_options.h"
#include "run/output.h"

namespace host {

// Parses the files that the options name and writes the answers to output, or to the directory that
// the options name, with which output is null. Returns the exit status. Throws Failure.
int runFiles(const RunOptions& options, Output* output);

// Writes the versions of the program and of the module. Returns the exit status. Throws Failure.
int printVersions(const RunOptions& options, Output& output);

}  // namespace host
