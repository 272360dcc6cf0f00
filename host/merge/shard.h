// A shard: a file with the ndjson output of one run or of several, one after the other.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "merge/line_reader.h"

namespace host {

// The lines of one file of a run.
struct ShardFile {
  std::string path;          // the exact bytes
  bool isGood = false;       // was read; else its line says why not
  std::uint64_t offset = 0;  // of its first line
  std::uint64_t bytes = 0;   // of all its lines
};

// Reads the shard once and gives its files in their order; an empty one has none. Every line has to
// be whole and strict JSON with a line feed alone behind it, each header has to be of this tool and
// schema, and nothing may be missing that a header or a file's line announces; else throws Failure.
// version is that of the tool: all headers have to name the same, and an empty one is set by the
// first.
void readShard(LineReader& lines, std::string& version,
               const std::function<void(const ShardFile& file)>& take);

}  // namespace host
