#include "records/record_text.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "base/fresh_memory.h"

namespace records {
namespace {

// Where the system has pages of this size, an answer of several takes a sixth of the time to touch.
constexpr std::size_t kLargePage = std::size_t{2} << 20U;

}  // namespace

void RecordText::expect(std::size_t bytes) {
  // The estimate is on the safe side: the memory of an equal answer has half as much.
  if (bytes < kLargePage || capacity_ >= bytes / 2) return;
  const std::size_t room = (bytes + kLargePage - 1) / kLargePage * kLargePage;
  MallocText fresh(static_cast<char*>(std::aligned_alloc(kLargePage, room)));
  if (fresh == nullptr) return;
  base::preferLargePages(fresh.get(), room);
  memory_ = std::move(fresh);
  capacity_ = room;
}

void RecordText::append(std::string_view text) {
  if (text.empty()) return;
  char* const to = reserve(text.size());
  std::memcpy(to, text.data(), text.size());
  commit(to + text.size());
}

RecordText::Taken RecordText::take() && {
  *reserve(1) = '\0';
  // Shrink the block, but for some room: in a block that fits exactly, the last record of an equal
  // answer would have all of it moved. If that fails, the larger one will do.
  const std::size_t room = std::min(capacity_, size_ + size_ / 16 + 1);
  if (char* const fitted = static_cast<char*>(std::realloc(memory_.get(), room))) {
    static_cast<void>(memory_.release());
    memory_.reset(fitted);
    capacity_ = room;
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

std::ostringstream toStream(const RecordText& text) {
  return std::ostringstream(std::string(text.view()), std::ios::ate);
}

}  // namespace records
