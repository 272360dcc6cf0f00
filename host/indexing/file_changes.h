// What has changed on disk since an index was written.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/run_options.h"
#include "index/index_reader.h"
#include "sources/input_list.h"

namespace host::indexing {

// An index as it was written the last time; empty if all is to be read.
struct KnownFiles {
  std::vector<index::KnownFile> files;
  // In nanoseconds since 1970. What was changed shortly before may have been changed again within
  // the same tick of the file system's clock.
  std::int64_t writtenAt = 0;
};

struct FileChanges {
  Inputs inputs;                                      // to be read, and what there is to report
  std::unordered_map<std::string, std::int64_t> ids;  // of known files by path
  std::vector<index::KnownFile> gone;                 // or not asked for any more
  std::vector<std::pair<std::int64_t, FileTimes>> touched;  // files with other times, same bytes
};

// Compares by size and times, and where these differ by the bytes. Files that failed are read
// again. found is what the names lead to with binary files included, see inputsFor.
FileChanges findChanges(KnownFiles known, Inputs found, const RunOptions& options);

// All that the names lead to: binary files are left out by findChanges, which need not open those
// that are known.
// The files of the index itself are left out.
Inputs inputsFor(const std::vector<std::string>& names, const WalkRules& rules,
                 const std::string& index);

}  // namespace host::indexing
