// Captures what a test writes to standard output or standard error.
#pragma once

#include <string>

#include <gtest/gtest.h>

namespace support {

// Returns everything that run() writes to C's stdout and to std::cout.
template <typename Run>
std::string stdoutOf(Run run) {
  testing::internal::CaptureStdout();
  run();
  return testing::internal::GetCapturedStdout();
}

// Returns what run() writes to standard error.
template <typename Run>
std::string stderrOf(Run run) {
  testing::internal::CaptureStderr();
  run();
  return testing::internal::GetCapturedStderr();
}

}  // namespace support
