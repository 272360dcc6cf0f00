// A statement's text and the answers to the questions asked about it, each computed at most once
// and only on demand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/parts_list.h"

namespace detect {

// Questions that more than one caller asks about the same text.
enum class Question : std::uint8_t { kFunction, kVariable, kLogic, kLoop };

// Known answers for one text, one bit per question.
struct Answers {
  std::uint8_t known = 0;
  std::uint8_t yes = 0;
};

class Statement {
 public:
  explicit Statement(std::string_view text = {}) : text_(text) {}

  // Starts over with another text and its known answers; keeps the storage. The text must stay
  // alive while questions are asked.
  void reset(std::string_view text, Answers answers = {});

  std::string_view text() const { return text_; }
  std::string_view firstWord() const;
  const std::vector<text::Part>& parts() const;

  // Returns the part at index, or null if there are fewer. Splits the text no further than that.
  const text::Part* part(std::size_t index) const;

  template <std::size_t kSize>
  bool partIs(std::size_t index, const char (&word)[kSize]) const {
    const text::Part* const found = part(index);
    return found != nullptr && found->is(word);
  }

  Answers answers() const { return answers_; }

  // Returns the answer to the question; calls find() if it is not known yet.
  template <typename Find>
  bool answer(Question question, Find find) const {
    const auto bit = static_cast<std::uint8_t>(1U << static_cast<unsigned>(question));
    if ((answers_.known & bit) == 0) {
      if (find()) answers_.yes |= bit;
      answers_.known |= bit;
    }
    return (answers_.yes & bit) != 0;
  }

 private:
  std::string_view text_;
  mutable std::optional<text::PartsReader> reader_;  // reads the parts that are not in parts_ yet
  mutable std::vector<text::Part> parts_;
  mutable std::optional<std::string_view> firstWord_;
  mutable Answers answers_;
};

}  // namespace detect
