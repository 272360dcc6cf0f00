#include "base/stream_writer.h"

#include <charconv>
#include <cstdio>
#include <limits>

namespace base {

StreamWriter& StreamWriter::writeLong(std::string_view text) noexcept {
  drain();
  if (text.size() <= buffer_.size()) return *this << text;
  std::fwrite(text.data(), 1, text.size(), stream_);
  return *this;
}

StreamWriter& StreamWriter::operator<<(std::int32_t number) noexcept {
  // A sign and as many digits as a number may have.
  constexpr std::size_t kMaxBytes = std::numeric_limits<std::int32_t>::digits10 + 2;
  if (kMaxBytes > buffer_.size() - used_) drain();
  char* const to = buffer_.data() + used_;
  used_ += static_cast<std::size_t>(std::to_chars(to, to + kMaxBytes, number).ptr - to);
  return *this;
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
