// What the tests of the command-line program share.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "support/temp_dir.h"

namespace host_test {

using Words = std::vector<std::string>;

inline std::string contentsOf(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline void writeFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// A list of arguments for a failure message.
inline std::string joined(const Words& words) {
  std::string text;
  for (const std::string& word : words) text += "[" + word + "]";
  return text;
}

// Each test has an empty current directory of its own.
class QuorlJs : public testing::Test {
 protected:
  QuorlJs() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(own_.path("."));
    directory_ = std::filesystem::current_path();
  }

  ~QuorlJs() override { std::filesystem::current_path(before_); }

  // Runs the program with the module that comes with it.
  static Outcome run(const Words& arguments, StandardOutput out = StandardOutput::kFile) {
    return runProgram(QUORL_JS_PATH, arguments, out);
  }

  // Runs it with the module whose answers are known; see there.
  static Outcome runOdd(Words arguments, StandardOutput out = StandardOutput::kFile) {
    arguments.insert(arguments.begin(), {"--plugin", ODD_PLUGIN_PATH});
    return run(arguments, out);
  }

  const std::filesystem::path& directory() const { return directory_; }

 private:
  const support::TempDir own_;
  const std::filesystem::path before_;
  std::filesystem::path directory_;
};

}  // namespace host_test
