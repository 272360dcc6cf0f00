#include "detect/statement.h"

#include "text/string_primitives.h"

namespace detect {

void Statement::reset(std::string_view text, Answers answers) {
  text_ = text;
  reader_.reset();
  parts_.clear();
  firstWord_.reset();
  answers_ = answers;
}

std::string_view Statement::firstWord() const {
  if (!firstWord_) firstWord_ = text::firstWordView(text_);
  return *firstWord_;
}

const std::vector<text::Part>& Statement::parts() const {
  if (!reader_) reader_.emplace(text_);
  while (reader_->readInto(parts_)) {
  }
  return parts_;
}

const text::Part* Statement::part(std::size_t index) const {
  if (!reader_) reader_.emplace(text_);
  while (parts_.size() <= index) {
    if (!reader_->readInto(parts_)) return nullptr;
  }
  return &parts_[index];
}

}  // namespace detect
