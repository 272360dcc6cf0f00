#include "detect/statement.h"

#include "text/string_primitives.h"

namespace detect {

void Statement::reset(std::string_view text) {
  text_ = text;
  split_ = false;
  functionAnswer_.reset();
}

std::string_view Statement::firstWord() const { return text::firstWordView(text_); }

const std::vector<text::Part>& Statement::parts() const {
  if (!split_) {
    parts_.clear();
    text::splitIntoParts(text_, parts_);
    split_ = true;
  }
  return parts_;
}

}  // namespace detect
