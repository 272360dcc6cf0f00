// What the building of a tree found out of its nodes' texts, for the passes that ask again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "detect/statement.h"

namespace detect {

class AnswerTable {
 public:
  // For nodes with numbers from firstId on.
  explicit AnswerTable(std::int32_t firstId) : firstId_(firstId) {}

  // The statement's text is to be the whole text of the node with this number, for good.
  void note(std::int32_t id, const Statement& statement) {
    const std::int64_t index = indexOf(id);
    if (index < 0) return;
    const auto place = static_cast<std::size_t>(index);
    if (place >= answers_.size()) answers_.resize(place + place / 2 + 64);
    answers_[place] = statement.answers();
  }

  // Nothing is known of a number that was not noted.
  Answers of(std::int32_t id) const {
    const std::int64_t index = indexOf(id);
    if (index < 0 || index >= static_cast<std::int64_t>(answers_.size())) return {};
    return answers_[static_cast<std::size_t>(index)];
  }

 private:
  std::int64_t indexOf(std::int32_t id) const { return std::int64_t{id} - firstId_; }

  std::int32_t firstId_;
  std::vector<Answers> answers_;
};

}  // namespace detect
