// What the builder learned about the nodes' texts, for later passes that ask the same questions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "detect/statement.h"

namespace detect {

class AnswerTable {
 public:
  // Covers nodes numbered firstId and up.
  explicit AnswerTable(std::int32_t firstId) : firstId_(firstId) {}

  // Stores what is known about the statement, which must be the whole, final text of this node.
  void note(std::int32_t id, const Statement& statement) {
    const std::int64_t index = indexOf(id);
    if (index < 0) return;
    const auto place = static_cast<std::size_t>(index);
    if (place >= answers_.size()) answers_.resize(place + place / 2 + 64);
    answers_[place] = statement.answers();
  }

  // Returns no answers for a number that was never noted.
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
