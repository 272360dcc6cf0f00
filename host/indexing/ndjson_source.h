// The ndjson outputs of other runs as the source of an index.
#pragma once

#include <string>
#include <vector>

#include "index/index_writer.h"

namespace host::indexing {

class NdjsonSource {
 public:
  explicit NdjsonSource(const std::vector<std::string>& shards) : shards_(shards) {}

  // Puts the files of all shards into the index; of several with one path, the first. Returns false
  // if one of them was not read. Throws Failure for what is no such output.
  bool write(index::IndexWriter& writer);

  // Of the program that wrote the shards.
  const std::string& version() const { return version_; }

 private:
  const std::vector<std::string>& shards_;
  std::string version_;
};

}  // namespace host::indexing
