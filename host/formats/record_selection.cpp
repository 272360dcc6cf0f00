#include "formats/record_selection.h"

#include <algorithm>

#include "records/labels.h"

namespace host {
namespace {

bool isOneOf(std::string_view label, const std::vector<std::string>& labels) {
  return std::any_of(labels.begin(), labels.end(), [label](const std::string& wanted) {
    return wanted == label || (wanted == kErrorLabel && isErrorLabel(label));
  });
}

}  // namespace

void RecordSelection::take(const Record& record) {
  const bool hasParent =
      record.parentId >= 0 && static_cast<std::size_t>(record.parentId) < levels_.size();
  std::size_t level = hasParent ? levels_[static_cast<std::size_t>(record.parentId)] + 1 : 1;
  if (levels_.empty() && record.label == kFileLabel) level = 0;
  levels_.push_back(level);
  isWanted_ = (!settings_.depth || level <= *settings_.depth) &&
              (settings_.onlyLabels.empty() || isOneOf(record.label, settings_.onlyLabels));
}

}  // namespace host
