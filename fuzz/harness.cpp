#include "harness.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "run_nodes.h"

namespace fuzz {

void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

Capture::Capture(std::FILE*& stream) : stream_(stream), saved_(stream) {
  memory_ = open_memstream(&text_, &size_);
  require(memory_ != nullptr, "a stream in memory can be had");
  stream_ = memory_;
}

Capture::~Capture() {
  stream_ = saved_;
  std::fclose(memory_);
  std::free(text_);
}

std::string Capture::text() {
  std::fflush(memory_);
  return {text_, size_};
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::RunNodes nodes;
  fuzz::testOne({reinterpret_cast<const char*>(data), size});
  return 0;
}
