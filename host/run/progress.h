// The progress line. It is erased before anything else is printed.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

class Progress {
 public:
  // There is none without isWanted, or if standard error is not a terminal.
  Progress(bool isWanted, std::uint64_t fileCount);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { erase(); }

  bool isShown() const { return width_ != 0; }

  // Tells of the file that is waited for, but not too often.
  void show(std::uint64_t done, std::uint64_t failed, std::string_view path);
  void erase();

 private:
  std::uint64_t fileCount_;
  std::size_t width_;
  std::chrono::steady_clock::time_point next_;
  bool isThere_ = false;
};

}  // namespace host
