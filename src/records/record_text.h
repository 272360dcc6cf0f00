// The text of an answer under construction, in memory from malloc, so that the host can own the
// finished text without a copy.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

namespace records {

struct FreeMemory {
  void operator()(char* memory) const { std::free(memory); }
};

// NUL-terminated text, released by free().
using MallocText = std::unique_ptr<char, FreeMemory>;

class RecordText {
 public:
  RecordText() = default;
  // Starts an empty text in memory from an earlier take(), which may be null.
  RecordText(MallocText memory, std::size_t capacity)
      : memory_(std::move(memory)), capacity_(memory_ == nullptr ? 0 : capacity) {}

  // Returns where to write next, with room for bytes more. Throws std::bad_alloc.
  char* reserve(std::size_t bytes) {
    if (capacity_ - size_ < bytes) grow(bytes);
    return memory_.get() + size_;
  }
  // Adds the bytes written up to end to the text.
  void commit(const char* end) { size_ = static_cast<std::size_t>(end - memory_.get()); }

  // Prepares an empty text for this many bytes, if they are many and there is memory for them. Room
  // that stays unused costs nothing: it is never touched.
  void expect(std::size_t bytes);

  void append(std::string_view text);

  std::string_view view() const { return {memory_.get(), size_}; }

  // Releases the text, NUL-terminated, with the size of its memory, about that of the text. Throws
  // std::bad_alloc.
  struct Taken {
    MallocText text;
    std::size_t capacity;
  };
  Taken take() &&;

 private:
  void grow(std::size_t bytes);

  MallocText memory_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// A stream that holds the text and stands behind it. Throws std::bad_alloc, where writing to a
// stream would only mark it as bad and leave a part of the text in it.
std::ostringstream toStream(const RecordText& text);

}  // namespace records
