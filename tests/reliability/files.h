// Replaces the functions that open and read files in the program that links this, as the module and
// the C++ library under it call them, so that a test can say how each call goes.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <optional>

namespace reliability {

// While a test has set it up, calls are counted and go as told; then they are the system's own.
struct Files {
  bool isWatched = false;
  int openError = 0;                       // with which opening fails; 0 to let it succeed
  std::optional<std::size_t> failingSeek;  // the number of the one that fails, from 0
  int closeError = 0;                      // which closing gives behind having closed
  // Given the number of the call, from 0, and the bytes asked for: how many of them to ask the
  // system for, or an error as a negative number. Without it, all.
  std::function<ssize_t(std::size_t number, std::size_t bytes)> read;

  std::size_t opens = 0;
  std::size_t reads = 0;
  std::size_t seeks = 0;
};
extern Files files;

}  // namespace reliability
