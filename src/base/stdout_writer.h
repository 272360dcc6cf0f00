// The one writer to standard output. The module's diagnostic lines are part of its behaviour: they
// go through C's stdout, so that they keep their order with what the host prints itself by stdio
// or by std::cout, and they are gathered here so that a run makes few calls.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace base {

// Collects text and hands it to stdout in large pieces, the rest at the end of its life. Numbers
// are plain decimal whatever locale the host has set. A standard output that is closed, full or
// broken loses the text and nothing else: no function throws.
class StdoutWriter {
 public:
  StdoutWriter() = default;
  StdoutWriter(const StdoutWriter&) = delete;
  StdoutWriter& operator=(const StdoutWriter&) = delete;
  ~StdoutWriter() { drain(); }

  StdoutWriter& operator<<(std::string_view text) noexcept;
  StdoutWriter& operator<<(std::int32_t number) noexcept;

  // Hands over what was collected and flushes stdout itself.
  void flush() noexcept;

 private:
  void drain() noexcept;

  std::array<char, 8192> buffer_;
  std::size_t used_ = 0;
};

}  // namespace base
