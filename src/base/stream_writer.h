// The one writer to standard output and standard error. The module's diagnostic lines are part of
// its behaviour: they go through C's streams, so that they keep their order with what the host
// prints itself by stdio or by std::cout, and they are gathered here so that a run makes few calls.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace base {

// Collects text and hands it to the stream in large pieces, the rest at the end of its life.
// Numbers are plain decimal whatever locale the host has set. A stream that is closed, full or
// broken loses the text and nothing else: no function throws.
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

  // Hands over what was collected and flushes the stream itself.
  void flush() noexcept;

 private:
  void drain() noexcept;
  StreamWriter& writeLong(std::string_view text) noexcept;

  std::FILE* const stream_;
  std::array<char, 8192> buffer_;
  std::size_t used_ = 0;
};

}  // namespace base
