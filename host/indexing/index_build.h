// Builds an index, or brings one up to date.
#pragma once

#include <string>
#include <vector>

#include "index/index_file.h"
#include "indexing/file_changes.h"
#include "indexing/recorded_options.h"

namespace host::indexing {

// How an index came to be; an older one with other values is not to be built upon.
struct Origin {
  std::string tool;    // name and version
  std::string module;  // hash of its file
  std::string defines;
};

Origin originOf(const RunOptions& options);

// What is wrong with building upon the index, in words such as "made by quorl-js 1.0.0", or
// nothing.
std::string reasonToReadAll(const index::IndexReader& known, const Origin& origin);

// The nanoseconds since 1970.
std::int64_t wallClock();

// When the index was written.
std::int64_t writtenAt(const index::IndexReader& known);

// Brings the index up to date. known is what it holds, or nothing to build it anew. Returns false
// if the run counts as failed.
bool updateIndex(index::IndexFile& file, const Sources& sources, const Origin& origin,
                 KnownFiles known, bool isSameRecord);

// Builds the index from shards. Returns false if a file in them was not read.
bool buildFromShards(index::IndexFile& file, const std::vector<std::string>& shards);

}  // namespace host::indexing
