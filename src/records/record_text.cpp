#include "records/record_text.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace records {

void RecordText::append(std::string_view text) {
  if (text.empty()) return;
  char* const to = reserve(text.size());
  std::memcpy(to, text.data(), text.size());
  commit(to + text.size());
}

RecordText::Taken RecordText::take() && {
  *reserve(1) = '\0';
  // Shrink the block to fit; if that fails, the larger one will do.
  if (char* const fitted = static_cast<char*>(std::realloc(memory_.get(), size_ + 1))) {
    static_cast<void>(memory_.release());
    memory_.reset(fitted);
    capacity_ = size_ + 1;
  }
  size_ = 0;
  return {std::move(memory_), std::exchange(capacity_, 0)};
}

void RecordText::grow(std::size_t bytes) {
  const std::size_t capacity = std::max(2 * capacity_, size_ + bytes);
  char* const grown = static_cast<char*>(std::realloc(memory_.get(), capacity));
  if (grown == nullptr) throw std::bad_alloc();
  static_cast<void>(memory_.release());
  memory_.reset(grown);
  capacity_ = capacity;
}

}  // namespace records
