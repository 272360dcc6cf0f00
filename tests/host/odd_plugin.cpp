// A plug-in module for tests of hosts. It answers what a test can foresee byte by byte, does what
// the real module does seldom or never, and writes to standard output in every way there is.
//
// The path chooses the answer; any path that is not listed is answered by the records text
// "[\nPATH|DEFINES\n]\n".

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "plugin/plugin_api.h"

#define EXPORTED __attribute__((visibility("default")))

namespace {

constexpr std::size_t kBigAnswerBytes = 3'000'000;  // far more than a pipe holds

// Speaks when the module is loaded and when the process ends.
struct Talker {
  Talker() { std::puts("loaded"); }
  ~Talker() { std::puts("unloaded"); }
} talker;

// Writes three lines, the last of which stays in C's buffer.
void makeNoise() {
  std::cout << "by iostream" << std::endl;
  const std::string_view line = "by descriptor\n";
  [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, line.data(), line.size());
  std::fputs("by stdio\n", stdout);
}

std::string answer;

}  // namespace

extern "C" {

EXPORTED const char* ParseJS(const char* path, const char* defines) {
  const std::string_view name = path;
  if (name == "no-memory") return nullptr;
  if (name == "error") {
    answer = R"([{"error": "it\'s \"odd\": x"}])";
  } else if (name == "control-bytes") {
    answer = "[{\"error\": \"\x01 \x1b[31mred\x7f \t\r\n caf\xc3\xa9 \xff\"}]";
  } else if (name == "cut-error") {
    answer = R"([{"error": "no end)";
  } else if (name == "object") {
    answer = R"({ "error": "Invalid root node" })";
  } else if (name == "empty-array") {
    answer = "[]";
  } else if (name == "no-text") {
    answer = "";
  } else if (name == "no-records") {
    answer = "[\n]\n";
  } else if (name == "big") {
    answer = "[\n" + std::string(kBigAnswerBytes, 'x') + "\n]\n";
  } else {
    if (name == "noisy") makeNoise();
    if (name == "warning") std::fputs("a warning of the module\n", stderr);
    answer = "[\n" + std::string(path) + "|" + (defines == nullptr ? "null" : defines) + "\n]\n";
  }
  return answer.c_str();
}

EXPORTED void CleanupJS() { std::puts("cleaned up"); }

#ifndef ODD_PLUGIN_LACKS_INFO
EXPORTED const char* Info() {
  return std::getenv("ODD_PLUGIN_HAS_NO_MEMORY") == nullptr ? "odd plug-in\n" : nullptr;
}
#endif

}  // extern "C"
