// What a file may cost. In each, 0 is no limit.
#pragma once

#include <chrono>
#include <cstdint>

namespace host {

struct FileLimits {
  std::chrono::microseconds time = std::chrono::seconds(60);  // to be answered
  std::uint64_t memory = 0;                                   // of the worker's address space
  std::uint64_t answerBytes = 0;                              // as the module gives it
  std::uint64_t sourceBytes = std::uint64_t{256} << 20U;      // of the file itself
};

}  // namespace host
