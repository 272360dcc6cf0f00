// A host's settings of its streams and locales do not affect the bytes.
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
#include <vector>

#include "plugin/plugin_api.h"
#include "support/leaks_allowed.h"
#include "support/redirected.h"
#include "support/temp_dir.h"
#include "whole_file/case_files.h"

namespace {

// Makes a stream print 1234567 as 12.34.567.
class Grouping : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3\2"; }
};

std::string answerFor(const whole_file::CaseFile& file) {
  return ParseJS(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
}

// Checks each case's answer and its standard output.
void expectCases() {
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    SCOPED_TRACE(file.name);
    std::filesystem::current_path(file.folder);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const std::string answer = answerFor(file);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), file.standardOutput);
    EXPECT_EQ(answer, file.records);
  }
}

TEST(HostSettings, ALocaleThatGroupsDigits) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  std::cout.imbue(std::locale());
  std::ostringstream shown;
  shown << 1234567;
  EXPECT_EQ(shown.str(), "12.34.567") << "the locale is not in force";
  expectCases();
  std::cout.imbue(before);
  std::locale::global(before);
}

// A locale of C, and one property in which it differs from "C".
struct CLocale {
  const char* source;
  const char* charset;
  bool (*isInForce)();
};

// volatile: compilers fold toupper('i') to 'I'.
volatile int letterThatCompilersDoNotKnow = 'i';

bool hasDecimalComma() { return std::localeconv()->decimal_point == std::string(","); }

constexpr std::array<CLocale, 4> kCLocales{
    {{"tr_TR", "UTF-8", [] { return hasDecimalComma() && std::towupper(L'i') == 0x130; }},
     {"tr_TR", "ISO-8859-9", [] { return std::toupper(letterThatCompilersDoNotKnow) == 0xDD; }},
     {"de_DE", "UTF-8", hasDecimalComma},
     {"de_DE", "ISO-8859-1", [] { return hasDecimalComma() && std::isalpha(0xE4) != 0; }}}};

// Whether the system could build the locale in the folder that LOCPATH names.
bool makeLocale(const CLocale& locale, const std::string& path) {
  const std::string command = std::string("localedef -i ") + locale.source + " -f " +
                              locale.charset + " " + path + " >/dev/null 2>&1";
  return std::system(command.c_str()) == 0;
}

TEST(HostSettings, CLocales) {
  const support::TempDir directory;
  ASSERT_EQ(setenv("LOCPATH", directory.path("").c_str(), 1), 0);
  std::size_t made = 0;
  for (const CLocale& locale : kCLocales) {
    const std::string name = std::string(locale.source) + "." + locale.charset;
    SCOPED_TRACE(name);
    if (!makeLocale(locale, directory.path(name))) continue;
    ++made;
    const support::LeaksAllowed ofTheLibrary;  // setlocale keeps its copy of LOCPATH
    ASSERT_NE(std::setlocale(LC_ALL, name.c_str()), nullptr);
    EXPECT_TRUE(locale.isInForce());
    expectCases();
    const std::locale before = std::locale::global(std::locale(name));
    expectCases();
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
  expectCases();
  EXPECT_EQ(std::cout.width(), 20) << "the plug-in leaves the host's stream as it is";
  std::cout.flags(before);
  std::cout.fill(' ');
  std::cout.width(0);
}

TEST(HostSettings, ThrowingStream) {
  std::cout.exceptions(std::ios::badbit | std::ios::failbit);
  EXPECT_THROW(std::cout.setstate(std::ios::failbit), std::ios::failure);
  expectCases();
  std::cout.exceptions(std::ios::goodbit);
  std::cout.clear();
}

TEST(HostSettings, AStreamWithoutABuffer) {
  std::streambuf* const before = std::cout.rdbuf(nullptr);
  std::cout.exceptions(std::ios::goodbit);
  expectCases();
  std::cout.rdbuf(before);
}

// Runs the cases with the descriptor of stdout or stderr changed by spoil, then restores it. The
// other stream receives all its bytes. Capturing must not start meanwhile: it opens files, and one
// of them would take a free descriptor number.
void expectCasesWith(std::FILE* spoilt, void (*spoil)(int descriptor)) {
  const bool isOutput = spoilt == stdout;
  const std::vector<whole_file::CaseFile> files = whole_file::loadCases();
  std::vector<std::string> answers;
  bool works = true;
  isOutput ? testing::internal::CaptureStderr() : testing::internal::CaptureStdout();
  {
    const support::Redirected lost(fileno(spoilt), "/dev/null", O_WRONLY);
    spoil(fileno(spoilt));
    for (const whole_file::CaseFile& file : files) {
      std::filesystem::current_path(file.folder);
      answers.push_back(answerFor(file));
    }
    works = std::fputs("x", spoilt) != EOF && std::fflush(spoilt) != EOF;
    __fpurge(spoilt);  // drop unwritten bytes that are still buffered
    std::clearerr(spoilt);
  }
  const std::string other =
      isOutput ? testing::internal::GetCapturedStderr() : testing::internal::GetCapturedStdout();
  EXPECT_FALSE(works) << "what was to be tested did not come about";
  std::string expected;
  for (const whole_file::CaseFile& file : files) {
    expected += isOutput ? file.standardError : file.standardOutput;
  }
  EXPECT_EQ(other, expected);
  for (std::size_t i = 0; i < files.size(); ++i) EXPECT_EQ(answers[i], files[i].records);
}

void closeIt(int descriptor) { close(descriptor); }

void openInstead(int descriptor, const char* path, int flags) {
  const int other = open(path, flags);
  ASSERT_GE(other, 0);
  dup2(other, descriptor);
  close(other);
}

void fill(int descriptor) { openInstead(descriptor, "/dev/full", O_WRONLY); }

void makeReadOnly(int descriptor) { openInstead(descriptor, "/dev/null", O_RDONLY); }

void leaveWithoutAReader(int descriptor) {
  std::array<int, 2> ends;
  ASSERT_EQ(pipe(ends.data()), 0);
  close(ends[0]);
  dup2(ends[1], descriptor);
  close(ends[1]);
}

void expectCasesWithoutAReaderOf(std::FILE* spoilt) {
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  expectCasesWith(spoilt, leaveWithoutAReader);
  std::signal(SIGPIPE, before);
}

TEST(HostSettings, ClosedStandardOutput) { expectCasesWith(stdout, closeIt); }
TEST(HostSettings, FullStandardOutput) { expectCasesWith(stdout, fill); }
TEST(HostSettings, ReadOnlyStandardOutput) { expectCasesWith(stdout, makeReadOnly); }
TEST(HostSettings, StandardOutputWithoutAReader) { expectCasesWithoutAReaderOf(stdout); }

TEST(HostSettings, ClosedStandardError) { expectCasesWith(stderr, closeIt); }
TEST(HostSettings, FullStandardError) { expectCasesWith(stderr, fill); }
TEST(HostSettings, ReadOnlyStandardError) { expectCasesWith(stderr, makeReadOnly); }
TEST(HostSettings, StandardErrorWithoutAReader) { expectCasesWithoutAReaderOf(stderr); }

// All at once, with a std::cout that throws.
TEST(HostSettings, ThrowingStreamOverAFullStandardOutput) {
  std::cout.exceptions(std::ios::badbit | std::ios::failbit);
  expectCasesWith(stdout, fill);
  std::cout.exceptions(std::ios::goodbit);
  std::cout.clear();
}

// Without a buffer each line is a separate call that fails.
TEST(HostSettings, FullUnbufferedStandardOutput) {
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  expectCasesWith(stdout, fill);
}

}  // namespace
