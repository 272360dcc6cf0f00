// What a host has done to its streams and locales does not reach the bytes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <clocale>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <locale>
#include <sstream>
#include <string>

#include "plugin/plugin_api.h"
#include "support/temp_dir.h"
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
  std::cout.imbue(std::locale());
  std::ostringstream shown;
  shown << 1234567;
  EXPECT_EQ(shown.str(), "12.34.567") << "the locale is not in force";
  expectCases(true);
  std::cout.imbue(before);
  std::locale::global(before);
}

// A locale of C, and one thing in which it differs from "C".
struct CLocale {
  const char* source;
  const char* charset;
  bool (*isInForce)();
};

// For compilers toupper('i') is 'I'.
volatile int letterThatCompilersDoNotKnow = 'i';

bool hasDecimalComma() { return std::localeconv()->decimal_point == std::string(","); }

constexpr std::array<CLocale, 5> kCLocales{
    {{"tr_TR", "UTF-8", [] { return hasDecimalComma() && std::towupper(L'i') == 0x130; }},
     {"tr_TR", "ISO-8859-9", [] { return std::toupper(letterThatCompilersDoNotKnow) == 0xDD; }},
     {"de_DE", "UTF-8", hasDecimalComma},
     {"de_DE", "ISO-8859-1", [] { return hasDecimalComma() && std::isalpha(0xE4) != 0; }},
     {"ja_JP", "EUC-JP", [] { return MB_CUR_MAX == 3; }}}};

// Whether the system could make the locale in the folder that LOCPATH names.
bool makeLocale(const CLocale& locale, const std::string& path) {
  const std::string command = std::string("localedef -i ") + locale.source + " -f " +
                              locale.charset + " " + path + " >/dev/null 2>&1";
  return std::system(command.c_str()) == 0;
}

TEST(HostSettings, LocalesOfC) {
  const support::TempDir directory;
  ASSERT_EQ(setenv("LOCPATH", directory.path("").c_str(), 1), 0);
  std::size_t made = 0;
  for (const CLocale& locale : kCLocales) {
    const std::string name = std::string(locale.source) + "." + locale.charset;
    SCOPED_TRACE(name);
    if (!makeLocale(locale, directory.path(name))) continue;
    ++made;
    ASSERT_NE(std::setlocale(LC_ALL, name.c_str()), nullptr);
    EXPECT_TRUE(locale.isInForce());
    expectCases(true);
    const std::locale before = std::locale::global(std::locale(name));
    expectCases(true);
    std::locale::global(before);
  }
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
  if (made == 0)
    GTEST_SKIP() << "localedef has no sources here: Debian's package locales is missing";
  EXPECT_EQ(made, kCLocales.size());
}

TEST(HostSettings, AStreamLeftInHexWithAWidth) {
  const std::ios::fmtflags before = std::cout.flags();
  std::cout << std::hex << std::showbase << std::uppercase << std::setfill('*') << std::setw(20);
  expectCases(true);
  EXPECT_EQ(std::cout.width(), 20) << "the plug-in leaves the host's stream as it is";
  std::cout.flags(before);
  std::cout.fill(' ');
  std::cout.width(0);
}

TEST(HostSettings, AStreamThatThrows) {
  std::cout.exceptions(std::ios::badbit | std::ios::failbit);
  EXPECT_THROW(std::cout.setstate(std::ios::failbit), std::ios::failure);
  expectCases(true);
  std::cout.exceptions(std::ios::goodbit);
  std::cout.clear();
}

TEST(HostSettings, AStreamWithoutABuffer) {
  std::streambuf* const before = std::cout.rdbuf(nullptr);
  std::cout.exceptions(std::ios::goodbit);
  expectCases(true);
  std::cout.rdbuf(before);
}

// Runs the cases with file descriptor 1 as it is made by point, and sets it right again.
template <typename Point>
void expectCasesWithOutput(Point point) {
  std::fflush(stdout);
  const int before = dup(STDOUT_FILENO);
  point();
  expectCases(false);
  EXPECT_TRUE(std::fputs("x", stdout) == EOF || std::fflush(stdout) == EOF)
      << "standard output works, so nothing was tested";
  __fpurge(stdout);  // what could not be written is still in the buffer
  std::clearerr(stdout);
  dup2(before, STDOUT_FILENO);
  close(before);
}

void closeOutput() { close(STDOUT_FILENO); }

void fillOutput() {
  const int full = open("/dev/full", O_WRONLY);
  ASSERT_GE(full, 0);
  dup2(full, STDOUT_FILENO);
  close(full);
}

void leaveOutputWithoutAReader() {
  std::array<int, 2> ends;
  ASSERT_EQ(pipe(ends.data()), 0);
  close(ends[0]);
  dup2(ends[1], STDOUT_FILENO);
  close(ends[1]);
}

void makeOutputReadOnly() {
  const int input = open("/dev/null", O_RDONLY);
  ASSERT_GE(input, 0);
  dup2(input, STDOUT_FILENO);
  close(input);
}

TEST(HostSettings, AStandardOutputThatIsClosed) { expectCasesWithOutput(closeOutput); }

TEST(HostSettings, AStandardOutputThatIsFull) { expectCasesWithOutput(fillOutput); }

TEST(HostSettings, AStandardOutputThatIsReadOnly) { expectCasesWithOutput(makeOutputReadOnly); }

TEST(HostSettings, AStandardOutputWhoseReaderHasGone) {
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  expectCasesWithOutput(leaveOutputWithoutAReader);
  std::signal(SIGPIPE, before);
}

// All at once, and a std::cout that throws.
TEST(HostSettings, AStreamThatThrowsOverAStandardOutputThatIsFull) {
  std::cout.exceptions(std::ios::badbit | std::ios::failbit);
  expectCasesWithOutput(fillOutput);
  std::cout.exceptions(std::ios::goodbit);
  std::cout.clear();
}

// Without a buffer each line that the plug-in writes is a call of its own that fails.
TEST(HostSettings, AStandardOutputThatIsFullAndHasNoBuffer) {
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  expectCasesWithOutput(fillOutput);
}

TEST(HostSettings, AStandardErrorThatIsClosed) {
  const int before = dup(STDERR_FILENO);
  std::fflush(stderr);
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    std::filesystem::current_path(file.folder);
    testing::internal::CaptureStdout();
    close(STDERR_FILENO);
    const std::string answer =
        ParseJS(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
    dup2(before, STDERR_FILENO);
    std::clearerr(stderr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), file.standardOutput) << file.name;
    EXPECT_EQ(answer, file.records) << file.name;
  }
  close(before);
}

}  // namespace
