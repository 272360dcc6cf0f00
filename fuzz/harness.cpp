#include "harness.h"

#include <cstdlib>

#include "run_nodes.h"
#include "targets.h"

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

std::string warningsOf(int strayTags) {
  std::string lines;
  for (int i = 0; i < strayTags; ++i) {
    lines += "Warning: Attempting to pop from empty element stack\n";
  }
  return lines;
}

void run(const Target& target, std::string_view input) {
  const RunNodes nodes;
  target.test(input);
}

}  // namespace fuzz
