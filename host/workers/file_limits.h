// The limits on one file. 0 means no limit.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace host {

struct FileLimits {
  std::chrono::microseconds time = std::chrono::seconds(60);
  std::uint64_t memory = 0;        // of the worker's address space
  std::uint64_t memoryBudget = 0;  // without a limit in memory: what all workers share
  std::uint64_t answerBytes = 0;   // of the module's own text
  std::uint64_t sourceBytes = std::uint64_t{256} << 20U;
};

// For messages: "256M", or "1000 bytes" if it is not a whole number of K, M or G.
std::string sizeText(std::uint64_t bytes);

// For messages: "60 s", "0.5 s".
std::string timeText(std::chrono::microseconds time);

}  // namespace host
