// Every whole-file case cut at every byte: a file that ends anywhere is answered by records.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "plugin/plugin_api.h"
#include "whole_file/case_files.h"

namespace {

class CutShort : public testing::Test {
 protected:
  CutShort() : before_(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "quorl-cut-short-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    folder_ = name;
    std::filesystem::current_path(folder_);
  }
  ~CutShort() override {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
  }

  std::filesystem::path before_;
  std::filesystem::path folder_;
};

TEST_F(CutShort, EveryCaseAtEveryByte) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    const std::string whole = whole_file::readFile(file.folder / file.input);
    for (std::size_t size = 1; size < whole.size(); ++size) {
      std::ofstream(file.input, std::ios::binary) << whole.substr(0, size);
      const std::string answer = ParseJS(file.input.c_str(), nullptr);
      ASSERT_TRUE(answer.starts_with("[\n  {\n    \"lineNumber\": 0,\n") &&
                  answer.ends_with("\n  }\n]\n"))
          << file.name << " cut at " << size << ": " << answer;
    }
    std::filesystem::remove(file.input);
  }
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
}

}  // namespace
