#include "base/stream_writer.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace base {

StreamWriter& StreamWriter::operator<<(std::string_view text) noexcept {
  if (text.size() > buffer_.size() - used_) drain();
  if (text.size() > buffer_.size()) {
    std::fwrite(text.data(), 1, text.size(), stream_);
    return *this;
  }
  std::memcpy(buffer_.data() + used_, text.data(), text.size());
  used_ += text.size();
  return *this;
}

StreamWriter& StreamWriter::operator<<(std::int32_t number) noexcept {
  std::array<char, 12> digits;  // a sign and ten digits at most
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return *this << std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

void StreamWriter::flush() noexcept {
  drain();
  std::fflush(stream_);
}

void StreamWriter::drain() noexcept {
  if (used_ > 0) std::fwrite(buffer_.data(), 1, used_, stream_);
  used_ = 0;
}

}  // namespace base
