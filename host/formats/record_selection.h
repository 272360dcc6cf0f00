// Which records of an answer --only and --depth ask for.
#pragma once

#include <cstddef>
#include <vector>

#include "formats/format.h"
#include "records/record_reader.h"

namespace host {

class RecordSelection {
 public:
  // The settings have to outlive it.
  explicit RecordSelection(const FormatSettings& settings) : settings_(settings) {}

  // Takes the next record of the answer; every one has to come, in order.
  void take(const Record& record);

  // Of the record that was taken last: its level, 0 for the file's own record and 1 for one that
  // names no parent, and whether it is asked for.
  std::size_t level() const { return levels_.back(); }
  bool isWanted() const { return isWanted_; }

 private:
  const FormatSettings& settings_;
  std::vector<std::size_t> levels_;  // by nodeID, which counts the records
  bool isWanted_ = false;
};

}  // namespace host
