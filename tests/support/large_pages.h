// Whether a program that asks the system for large pages gets them.
#pragma once

#include <fstream>
#include <string>

namespace support {

inline bool hasLargePages() {
  std::ifstream setting("/sys/kernel/mm/transparent_hugepage/enabled");
  std::string words;
  return std::getline(setting, words) && words.find("[never]") == std::string::npos;
}

}  // namespace support
