// Every whole-file case, truncated at every byte, returns records.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "answer_check.h"
#include "reliability/parse.h"
#include "support/temp_dir.h"
#include "whole_file/case_files.h"

namespace {

// A carriage return ends a line like a line feed; the two together end two lines.
int lastLineOf(std::string_view text) {
  const auto endsLine = [](char byte) { return byte == '\n' || byte == '\r'; };
  return static_cast<int>(std::count_if(text.begin(), text.end(), endsLine)) + 1;
}

class CutShort : public testing::Test {
 protected:
  const support::TempDir folder_;
  const support::WorkingDirectory here_{folder_.path(".")};
};

TEST_F(CutShort, EveryCaseAtEveryByte) {
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    const std::string whole = whole_file::readFile(file.folder / file.input);
    const char* const defines = reliability::definesOf(file);
    folder_.write(file.input, "");
    EXPECT_EQ(reliability::parse(file.input, defines),
              "[{\"error\": \"File is empty: " + file.input + "\"}]");
    for (std::size_t size = 1; size < whole.size(); ++size) {
      const std::string text = whole.substr(0, size);
      folder_.write(file.input, text);
      const std::string answer = reliability::parse(file.input, defines).value_or("(null)");
      ASSERT_EQ(fuzz::checkAnswer(answer, file.input, lastLineOf(text)).fault, "")
          << file.name << " cut at " << size << ": " << answer;
    }
    std::filesystem::remove(file.input);
  }
}

}  // namespace
