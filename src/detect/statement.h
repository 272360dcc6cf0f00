// One statement's text on its way through a chain of questions. What they need of it is worked out
// at most once, and only when one needs it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/parts_list.h"

namespace detect {

class Statement {
 public:
  explicit Statement(std::string_view text = {}) : text_(text) {}

  // Starts over with another text, keeping the storage. The text must outlive the questions.
  void reset(std::string_view text);

  std::string_view text() const { return text_; }
  std::string_view firstWord() const;
  const std::vector<text::Part>& parts() const;

  // The answer to a question that several chains put twice, once it is known.
  std::optional<bool>& functionAnswer() const { return functionAnswer_; }

 private:
  std::string_view text_;
  mutable std::vector<text::Part> parts_;
  mutable bool split_ = false;
  mutable std::optional<std::string_view> firstWord_;
  mutable std::optional<bool> functionAnswer_;
};

}  // namespace detect
