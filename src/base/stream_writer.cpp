#include "base/stream_writer.h"

#include <cstdio>

#include "base/decimal.h"

namespace base {

StreamWriter& StreamWriter::writeLong(std::string_view text) noexcept {
  drain();
  if (text.size() <= buffer_.size()) return *this << text;
  std::fwrite(text.data(), 1, text.size(), stream_);
  return *this;
}

StreamWriter& StreamWriter::operator<<(std::int32_t number) noexcept {
  if (kMaxDecimalBytes > buffer_.size() - used_) drain();
  used_ = static_cast<std::size_t>(putDecimal(buffer_.data() + used_, number) - buffer_.data());
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
