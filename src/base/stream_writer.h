// The only code that writes to standard output and standard error. Diagnostic lines go through C's
// streams, so that they stay in order with what the host prints through stdio or std::cout, and are
// buffered here, so that a run makes few calls.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace base {

// Buffers text and writes it to the stream in large pieces; the destructor writes the rest. Numbers
// are plain decimal in any locale. If the stream is closed, full or broken the text is lost; no
// function throws.
class StreamWriter {
 public:
  explicit StreamWriter(std::FILE* stream) : stream_(stream) {}
  StreamWriter(const StreamWriter&) = delete;
  StreamWriter& operator=(const StreamWriter&) = delete;
  ~StreamWriter() { drain(); }

  StreamWriter& operator<<(std::string_view text) noexcept {
    if (text.size() > buffer_.size() - used_) return writeLong(text);
    std::memcpy(buffer_.data() + used_, text.data(), text.size());
    used_ += text.size();
    return *this;
  }
  StreamWriter& operator<<(std::int32_t number) noexcept;

  // Writes what is buffered and flushes the stream itself.
  void flush() noexcept;

 private:
  void drain() noexcept;
  StreamWriter& writeLong(std::string_view text) noexcept;

  std::FILE* const stream_;
  std::array<char, 8192> buffer_;
  std::size_t used_ = 0;
};

}  // namespace base
