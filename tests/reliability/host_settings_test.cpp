// What a host has done to its streams and locales does not reach the bytes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <locale>
#include <string>

#include "plugin/plugin_api.h"
#include "whole_file/case_files.h"

namespace {

// 1234567 reads 12.34.567 to a stream with this.
class Grouping : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3\2"; }
};

// Each case's answer, and with checkOutput what it writes to standard output.
void expectCases(bool checkOutput) {
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    SCOPED_TRACE(file.name);
    std::filesystem::current_path(file.folder);
    if (checkOutput) testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const std::string answer =
        ParseJS(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(answer, file.records);
    if (checkOutput) {
      EXPECT_EQ(testing::internal::GetCapturedStdout(), file.standardOutput);
    }
  }
}

TEST(HostSettings, ALocaleThatGroupsDigits) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  expectCases(true);
  std::locale::global(before);
}

TEST(HostSettings, LocalesOfC) {
  for (const char* name : {"tr_TR.UTF-8", "de_DE.UTF-8", "C.UTF-8", "C"}) {
    // One that is not installed leaves the locale as it is, which has to do as well.
    std::setlocale(LC_ALL, name);
    expectCases(true);
  }
}

TEST(HostSettings, AStreamLeftInHexWithAWidth) {
  const std::ios::fmtflags before = std::cout.flags();
  std::cout << std::hex << std::showbase << std::setw(20);
  expectCases(true);
  std::cout.flags(before);
  std::cout.width(0);
}

TEST(HostSettings, AStreamThatThrows) {
  std::cout.exceptions(std::ios::badbit | std::ios::failbit);
  EXPECT_THROW(std::cout.setstate(std::ios::failbit), std::ios::failure);
  expectCases(true);
  std::cout.exceptions(std::ios::goodbit);
  std::cout.clear();
}

// Runs the cases with file descriptor 1 as it is made by point, and sets it right again.
template <typename Point>
void expectCasesWithOutput(Point point) {
  std::fflush(stdout);
  const int before = dup(STDOUT_FILENO);
  point();
  expectCases(false);
  std::fflush(stdout);
  std::clearerr(stdout);
  dup2(before, STDOUT_FILENO);
  close(before);
}

TEST(HostSettings, AStandardOutputThatIsClosed) {
  expectCasesWithOutput([] { close(STDOUT_FILENO); });
}

TEST(HostSettings, AStandardOutputThatIsFull) {
  expectCasesWithOutput([] {
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    dup2(full, STDOUT_FILENO);
    close(full);
  });
}

}  // namespace
