// Replaces the functions that open and read files in the program that links this, as called by the
// module and by the C++ library, so that a test can decide how each call ends.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <optional>

namespace reliability {

// Counts calls and controls their results while a test has set it up; otherwise calls go to the
// system.
struct Files {
  bool isWatched = false;
  int openError = 0;                       // errno of opening; 0: it succeeds
  std::optional<std::size_t> failingSeek;  // number of the seek that fails, from 0
  int closeError = 0;                      // errno of closing, after really closing
  // Gets the number of the call, from 0, and the bytes requested. Returns how many bytes to request
  // from the system, or an error as a negative number. If empty, all are requested.
  std::function<ssize_t(std::size_t number, std::size_t bytes)> read;

  std::size_t opens = 0;
  std::size_t reads = 0;
  std::size_t seeks = 0;
};
extern Files files;

}  // namespace reliability
