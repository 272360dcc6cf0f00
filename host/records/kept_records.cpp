#include "records/kept_records.h"

namespace host {

void KeptRecords::take(const Record& record) {
  if (labels_.empty() || labels_[lastLabel_] != record.label) lastLabel_ = numberOf(record.label);
  records_.push_back({texts_.size(), record.contents.size(), lastLabel_});
  texts_ += record.contents;
}

std::string_view KeptRecords::text(std::int32_t record) const {
  const Place& place = records_[static_cast<std::size_t>(record)];
  return std::string_view(texts_).substr(place.begin, place.bytes);
}

std::size_t KeptRecords::numberOf(std::string_view label) {
  std::size_t number = 0;
  while (number < labels_.size() && labels_[number] != label) ++number;
  if (number == labels_.size()) labels_.emplace_back(label);
  return number;
}

}  // namespace host
