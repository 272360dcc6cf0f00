// The text of an answer under construction, in memory from malloc, so that the finished text can be
// given to the host as it is.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace records {

struct FreeMemory {
  void operator()(char* memory) const { std::free(memory); }
};

// A NUL-terminated text that is released by free().
using MallocText = std::unique_ptr<char, FreeMemory>;

class RecordText {
 public:
  // Where to write next, with room for bytes more. Throws std::bad_alloc.
  char* reserve(std::size_t bytes) {
    if (capacity_ - size_ < bytes) grow(bytes);
    return memory_.get() + size_;
  }
  // Takes what was written, up to end, into the text.
  void commit(const char* end) { size_ = static_cast<std::size_t>(end - memory_.get()); }

  void append(std::string_view text);

  std::string_view view() const { return {memory_.get(), size_}; }

  // The text, with a NUL behind it, in memory of about its size. Throws std::bad_alloc.
  MallocText take() &&;

 private:
  void grow(std::size_t bytes);

  MallocText memory_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace records
