// Helpers shared by the fuzz targets.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace fuzz {

// Reports a violation and aborts the process, which is how a fuzzer learns of a finding.
void require(bool holds, std::string_view what);

// While alive, captures what is written to one of C's output streams. It replaces the stream, not
// its descriptor, so that reports of fuzzers and sanitizers still get out.
class Capture {
 public:
  explicit Capture(std::FILE*& stream);
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture();

  std::string text();

 private:
  std::FILE*& stream_;
  std::FILE* const saved_;
  std::FILE* memory_ = nullptr;
  char* text_ = nullptr;
  std::size_t size_ = 0;
};

// What one piece of a run printed.
struct Printed {
  std::string out;
  std::string err;
  bool operator==(const Printed&) const = default;
};

template <typename Run>
Printed printedBy(Run run) {
  Capture out(stdout);
  Capture err(stderr);
  run();
  return {out.text(), err.text()};
}

}  // namespace fuzz
