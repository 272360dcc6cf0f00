// The options and files of a run that an index keeps, so that the next run can take them again.
#pragma once

#include <string>
#include <vector>

#include "cli/argument_parser.h"
#include "cli/run_options.h"
#include "index/index_reader.h"

namespace host::indexing {

// What an index was, or is to be, built from.
struct Sources {
  std::vector<std::string> arguments;  // the recorded part of the command line, FILEs behind "--"
  std::string folder;                  // that relative paths start from
  RunOptions options;
  std::vector<std::string> names;  // of files and directories
};

// Of a command line whose operands are INDEX and at least one FILE, or that has a list.
Sources sourcesOf(const ArgumentParser& arguments);

// Of the run that wrote the index, which has to have recorded some. What only says how the run goes
// comes from this command line.
Sources recordedSources(const index::IndexReader& known, const ArgumentParser& arguments);

// The same to compare with what is on disk.
Sources recordedSources(const index::IndexReader& known);

// Throws Failure for an option that would change what the index was built from.
void checkNoneIsRecorded(const ArgumentParser& arguments);

}  // namespace host::indexing
