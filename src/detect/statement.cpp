#include "detect/statement.h"

#include "text/string_primitives.h"

namespace detect {

void Statement::reset(std::string_view text, Answers answers) {
  text_ = text;
  split_ = false;
  firstWord_.reset();
  answers_ = answers;
}

std::string_view Statement::firstWord() const {
  if (!firstWord_) firstWord_ = text::firstWordView(text_);
  return *firstWord_;
}

const std::vector<text::Part>& Statement::parts() const {
  if (!split_) {
    parts_.clear();
    text::splitIntoParts(text_, parts_);
    split_ = true;
  }
  return parts_;
}

}  // namespace detect
