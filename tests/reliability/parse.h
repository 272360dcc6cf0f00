// One call of ParseJS in which something fails; its output is kept off the terminal.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "plugin/plugin_api.h"
#include "whole_file/case_files.h"

namespace reliability {

// Returns the answer, nothing for null. Calls arm() right before ParseJS and disarm() right after
// it.
template <typename Arm, typename Disarm>
std::optional<std::string> parse(const std::string& path, const char* defines, Arm arm,
                                 Disarm disarm) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  arm();
  const char* const text = ParseJS(path.c_str(), defines);
  disarm();
  std::optional<std::string> answer;
  if (text != nullptr) answer = text;
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
  return answer;
}

inline std::optional<std::string> parse(const std::string& path, const char* defines = nullptr) {
  return parse(
      path, defines, [] {}, [] {});
}

inline const char* definesOf(const whole_file::CaseFile& file) {
  return file.defines ? file.defines->c_str() : nullptr;
}

}  // namespace reliability
