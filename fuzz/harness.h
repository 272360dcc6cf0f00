// What the fuzz targets are made of.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace fuzz {

// Reports what does not hold and ends the process, which is how a fuzzer learns of a finding.
void require(bool holds, std::string_view what);

// While it lives, what is written to one of C's two output streams is kept instead. It swaps the
// stream and not the descriptor below it, so that the reports of fuzzers and sanitizers get out.
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

// What a piece of a run wrote.
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

// What a run writes to standard error for that many closing tags that close nothing.
std::string warningsOf(int strayTags);

}  // namespace fuzz
