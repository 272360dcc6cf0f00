// What an item takes of its record, kept until the items of the answer are known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "records/record_reader.h"

namespace host {

class KeptRecords {
 public:
  // Takes the next record of the answer; every one has to come, in order.
  void take(const Record& record);

  std::size_t count() const { return records_.size(); }

  // Records are numbered in their order.
  bool holds(std::int32_t record) const {
    return record >= 0 && static_cast<std::size_t>(record) < records_.size();
  }

  // The contents of a record, and the number of its label in labels(). It has to be there.
  std::string_view text(std::int32_t record) const;
  std::size_t label(std::int32_t record) const {
    return records_[static_cast<std::size_t>(record)].label;
  }

  // The different labels, in the order in which they came.
  const std::vector<std::string>& labels() const { return labels_; }

 private:
  struct Place {
    std::size_t begin;
    std::size_t bytes;
    std::size_t label;
  };

  std::size_t numberOf(std::string_view label);

  std::string texts_;
  std::vector<Place> records_;
  std::vector<std::string> labels_;
  std::size_t lastLabel_ = 0;
};

}  // namespace host
