#include "detect/statement.h"

#include "text/string_primitives.h"

namespace detect {

void Statement::reset(std::string_view text) {
  text_ = text;
  split_ = false;
  firstWord_.reset();
  functionAnswer_.reset();
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
