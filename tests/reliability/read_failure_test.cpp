// Results of opening, reading and seeking: an error at any point returns an error answer, and short
// or interrupted reads return the usual one.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "reliability/files.h"
#include "reliability/parse.h"
#include "support/leaks_allowed.h"
#include "support/temp_dir.h"
#include "whole_file/case_files.h"

namespace {

using reliability::Files;
using reliability::files;
using whole_file::CaseFile;

using Answer = std::optional<std::string>;

constexpr std::string_view kIoError =
    "[{\"error\": \"Parser exception: Could not read file: Input/output error\"}]";

Files seen;  // the state of files after the last run

Answer parseWith(const std::string& path, const char* defines, const Files& plan) {
  return reliability::parse(
      path, defines,
      [&plan] {
        files = plan;
        files.isWatched = true;
      },
      [] {
        seen = files;
        files = {};
      });
}

using Reads = std::function<ssize_t(std::size_t number, std::size_t bytes)>;

Answer parseReading(const CaseFile& file, const Reads& read) {
  Files plan;
  plan.read = read;
  return parseWith(file.input, reliability::definesOf(file), plan);
}

// Calls check(file) for each case in its own folder.
template <typename Check>
void forEachCase(Check check) {
  for (const CaseFile& file : whole_file::loadCases()) {
    SCOPED_TRACE(file.name);
    std::filesystem::current_path(file.folder);
    check(file);
    EXPECT_EQ(reliability::parse(file.input, reliability::definesOf(file)), file.records);
    if (testing::Test::HasFailure()) return;
  }
}

// Files that need more than one read on any route; far too long for the cases.
struct LongFile {
  const char* name;
  const char* piece;
  std::size_t bytes;
};

constexpr LongFile kLongFiles[] = {{"a.js", "function f() {\n  return 1;\n}\n", 20'000},
                                   {"b.js", "var a = 1;\n", 200'000},
                                   {"c.html", "<p class=\"a\">text</p>\n", 100'000},
                                   {"d.txt", "a = b; { c(d); }\n", 100'000}};

// Calls check(path, answer of an undisturbed run, size) for each.
template <typename Check>
void forEachLongFile(Check check) {
  const support::TempDir directory;
  for (const LongFile& file : kLongFiles) {
    SCOPED_TRACE(file.name);
    std::string text;
    while (text.size() < file.bytes) text += file.piece;
    const std::string path = directory.write(file.name, text);
    const Answer answer = reliability::parse(path);
    ASSERT_TRUE(answer && answer->starts_with("[\n") && answer->size() > file.bytes);
    check(path, *answer, text.size());
    EXPECT_TRUE(reliability::parse(path) == answer);
    if (testing::Test::HasFailure()) return;
  }
}

void report(const char* what, std::size_t count) {
  std::printf("%s: %zu\n", what, count);
  testing::Test::RecordProperty("count", std::to_string(count));
}

// Each read of the run fails in turn, with reads of at most so many bytes.
template <typename Parse>
std::size_t failEachRead(std::size_t bytes, Parse parse) {
  const auto atMost = static_cast<ssize_t>(bytes);
  const auto few = [atMost](std::size_t, std::size_t) { return atMost; };
  EXPECT_NE(parse(few), kIoError);
  const std::size_t total = seen.reads;
  EXPECT_GE(total, 2U) << "the reads of the run were not seen";
  for (std::size_t failing = 0; failing < total; ++failing) {
    const Answer answer = parse([atMost, failing](std::size_t number, std::size_t) {
      return number == failing ? -EIO : atMost;
    });
    EXPECT_EQ(answer, kIoError) << "read " << failing << " of " << total;
    EXPECT_EQ(seen.reads, failing + 1) << "nothing is read after an error";
    if (testing::Test::HasFailure()) break;
  }
  return total;
}

constexpr std::size_t kAll = 1 << 30;

TEST(ReadFailure, ReturnsAnErrorAnswerWhicheverReadFails) {
  std::size_t failures = 0;
  forEachCase([&failures](const CaseFile& file) {
    const auto parse = [&file](const Reads& read) { return parseReading(file, read); };
    failures += failEachRead(kAll, parse);
    failures += failEachRead(1, parse);
  });
  forEachLongFile([&failures](const std::string& path, const std::string&, std::size_t) {
    const auto parse = [&path](const Reads& read) {
      Files plan;
      plan.read = read;
      return parseWith(path, nullptr, plan);
    };
    failures += failEachRead(kAll, parse);
    failures += failEachRead(1'000, parse);
  });
  report("reads failed", failures);
}

struct ErrorCase {
  int error;
  const char* answer;
};

TEST(ReadFailure, ReportsTheSystemsMessage) {
  const CaseFile file = whole_file::loadCases().front();
  std::filesystem::current_path(file.folder);
  const ErrorCase cases[] = {
      {EIO, "[{\"error\": \"Parser exception: Could not read file: Input/output error\"}]"},
      {ESTALE, "[{\"error\": \"Parser exception: Could not read file: Stale file handle\"}]"},
      {EAGAIN,
       "[{\"error\": \"Parser exception: Could not read file: Resource temporarily "
       "unavailable\"}]"},
      {EBADF, "[{\"error\": \"Parser exception: Could not read file: Bad file descriptor\"}]"},
      {9'999, "[{\"error\": \"Parser exception: Could not read file: Unknown error 9999\"}]"}};
  for (const ErrorCase& each : cases) {
    EXPECT_EQ(parseReading(file, [&each](std::size_t, std::size_t) { return -each.error; }),
              each.answer);
  }
}

// The system's messages are translated; the host's language must not reach the answer.
TEST(ReadFailure, ReportsItInEnglish) {
  const support::TempDir directory;
  const std::string locale = directory.path("de_DE.UTF-8");
  if (std::system(("localedef -i de_DE -f UTF-8 " + locale + " >/dev/null 2>&1").c_str()) != 0) {
    GTEST_SKIP() << "localedef has no sources here: Debian's package locales is missing";
  }
  const CaseFile file = whole_file::loadCases().front();
  std::filesystem::current_path(file.folder);
  const support::LeaksAllowed ofTheLibrary;  // setlocale keeps its copy of LOCPATH
  ASSERT_EQ(setenv("LOCPATH", directory.path("").c_str(), 1), 0);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  const std::string translated = std::strerror(EIO);
  const Answer answer = parseReading(file, [](std::size_t, std::size_t) { return -EIO; });
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
  EXPECT_EQ(answer, kIoError);
  if (translated == "Input/output error") GTEST_SKIP() << "the system has no translations";
}

TEST(ReadFailure, TreatsADirectoryAsAnEmptyFile) {
  const support::TempDir directory;
  std::filesystem::create_directory(directory.path("a.js"));
  EXPECT_EQ(parseWith(directory.path("a.js"), nullptr, {}),
            "[{\"error\": \"File is empty: " + directory.path("a.js") + "\"}]");
  EXPECT_EQ(seen.reads, 1U);
}

// Ways of reading that do not change the answer.
struct Way {
  const char* name;
  Reads read;
};

std::vector<Way> harmlessWays() {
  const auto fixed = [](ssize_t bytes) {
    return [bytes](std::size_t, std::size_t) { return bytes; };
  };
  std::vector<Way> ways{{"a byte at a time", fixed(1)}, {"seven bytes at a time", fixed(7)}};
  for (const unsigned seed : {1U, 2U, 3U}) {
    ways.push_back({"so many bytes as chance has it",
                    [random = std::mt19937(seed)](std::size_t, std::size_t bytes) mutable {
                      return static_cast<ssize_t>(1 + random() % std::min<std::size_t>(bytes, 999));
                    }});
  }
  ways.push_back({"all but a byte of what is asked for", [](std::size_t, std::size_t bytes) {
                    return static_cast<ssize_t>(std::max<std::size_t>(bytes, 2) - 1);
                  }});
  ways.push_back(
      {"three interruptions before each read", [](std::size_t number, std::size_t bytes) {
         return number % 4 == 3 ? static_cast<ssize_t>(bytes) : ssize_t{-EINTR};
       }});
  ways.push_back({"an interruption before every seven bytes", [](std::size_t number, std::size_t) {
                    return number % 2 == 1 ? ssize_t{7} : ssize_t{-EINTR};
                  }});
  return ways;
}

TEST(ShortReads, AndInterruptionsChangeNothing) {
  std::size_t reads = 0;
  forEachCase([&reads](const CaseFile& file) {
    for (const Way& way : harmlessWays()) {
      EXPECT_EQ(parseReading(file, way.read), file.records) << way.name;
      reads += seen.reads;
    }
  });
  forEachLongFile([&reads](const std::string& path, const std::string& answer, std::size_t bytes) {
    for (const Way& way : harmlessWays()) {
      Files plan;
      plan.read = way.read;
      EXPECT_TRUE(parseWith(path, nullptr, plan) == answer) << way.name;
      reads += seen.reads;
    }
    Files bytewise;
    bytewise.read = [](std::size_t, std::size_t) { return 1; };
    parseWith(path, nullptr, bytewise);
    EXPECT_GT(seen.reads, bytes) << "a read a byte, and one for the end";
  });
  report("reads cut short or interrupted", reads);
}

TEST(ShortReads, EachInterruptionAloneChangesNothing) {
  forEachCase([](const CaseFile& file) {
    parseReading(file, {});
    const std::size_t total = seen.reads;
    for (std::size_t interrupted = 0; interrupted < total; ++interrupted) {
      EXPECT_EQ(parseReading(file,
                             [interrupted](std::size_t number, std::size_t bytes) {
                               return number == interrupted ? -EINTR : static_cast<ssize_t>(bytes);
                             }),
                file.records);
      EXPECT_EQ(seen.reads, total + 1) << "the read is made again";
    }
  });
}

// A text shorter than the file's size is treated like any other text.
TEST(ShortReads, AFileThatEndsEarlyIsReadToItsEnd) {
  const CaseFile file = whole_file::loadCases().front();
  const support::TempDir directory;
  std::filesystem::current_path(file.folder);
  const std::string text = whole_file::readFile(file.input);
  std::filesystem::current_path(directory.path("."));
  directory.write(file.input, text.substr(0, 40));
  const Answer expected = reliability::parse(file.input);
  directory.write(file.input, text);
  std::size_t left = 40;
  Files plan;
  plan.read = [&left](std::size_t, std::size_t bytes) {
    const std::size_t given = std::min(left, bytes);
    left -= given;
    return static_cast<ssize_t>(given);
  };
  EXPECT_EQ(parseWith(file.input, nullptr, plan), expected);
}

TEST(ShortReads, APipeIsReadToItsEnd) {
  const support::TempDir directory;
  const CaseFile file = whole_file::loadCases().front();
  std::filesystem::current_path(file.folder);
  const std::string text = whole_file::readFile(file.input);
  std::filesystem::current_path(directory.path("."));
  ASSERT_EQ(mkfifo(file.input.c_str(), 0600), 0);
  std::thread writer([&text, &file] {
    const int end = open(file.input.c_str(), O_WRONLY);
    for (std::size_t at = 0; at < text.size(); at += 7) {
      const std::string piece = text.substr(at, 7);
      if (write(end, piece.data(), piece.size()) != static_cast<ssize_t>(piece.size())) break;
    }
    close(end);
  });
  const Answer answer = reliability::parse(file.input, reliability::definesOf(file));
  writer.join();
  EXPECT_EQ(answer, file.records);
}

// Returns the full text or an error, never the records of a part.
TEST(SeekFailure, NeverTruncatesAText) {
  std::size_t failures = 0;
  forEachCase([&failures](const CaseFile& file) {
    parseWith(file.input, reliability::definesOf(file), {});
    const std::size_t total = seen.seeks;
    EXPECT_GT(total, 0U) << file.name;
    for (std::size_t failing = 0; failing < total; ++failing) {
      Files plan;
      plan.failingSeek = failing;
      const Answer answer = parseWith(file.input, reliability::definesOf(file), plan);
      EXPECT_TRUE(answer == file.records || answer == kIoError)
          << "seek " << failing << " of " << total << ": " << answer.value_or("(null)");
      ++failures;
    }
  });
  forEachLongFile([&failures](const std::string& path, const std::string& full, std::size_t) {
    parseWith(path, nullptr, {});
    const std::size_t total = seen.seeks;
    EXPECT_GT(total, 0U) << path;
    for (std::size_t failing = 0; failing < total; ++failing) {
      Files plan;
      plan.failingSeek = failing;
      const Answer answer = parseWith(path, nullptr, plan);
      EXPECT_TRUE(answer == full || answer == kIoError)
          << "seek " << failing << " of " << total << ": "
          << answer.value_or("(null)").substr(0, 100);
      ++failures;
    }
  });
  report("seeks failed", failures);
}

TEST(CloseFailure, IsIgnored) {
  forEachCase([](const CaseFile& file) {
    Files plan;
    plan.closeError = EIO;
    EXPECT_EQ(parseWith(file.input, reliability::definesOf(file), plan), file.records);
  });
}

std::string cannotOpen(const std::string& path) {
  return "[{\"error\": \"Could not open file: " + path + "\"}]";
}

TEST(OpenFailure, ReturnsAnErrorAnswer) {
  for (const int error : {EACCES, ENOENT, EMFILE, ENFILE, ELOOP, EIO, ENOMEM, ENAMETOOLONG, ENXIO,
                          EPERM, EOVERFLOW, EINTR}) {
    SCOPED_TRACE(error);
    forEachCase([error](const CaseFile& file) {
      Files plan;
      plan.openError = error;
      EXPECT_EQ(parseWith(file.input, reliability::definesOf(file), plan), cannotOpen(file.input));
      EXPECT_EQ(seen.opens, 1U);
      EXPECT_EQ(seen.reads, 0U);
    });
  }
}

// The same error from the system itself.
TEST(OpenFailure, SymbolicLinkToItself) {
  const support::TempDir directory;
  const std::string path = directory.path("a.js");
  std::filesystem::create_symlink("a.js", path);
  EXPECT_EQ(reliability::parse(path), cannotOpen(path));
}

TEST(OpenFailure, NameTooLong) {
  const std::string path = std::string(300, 'a') + ".js";
  EXPECT_EQ(reliability::parse(path), cannotOpen(path));
}

TEST(OpenFailure, NoFreeDescriptor) {
  const CaseFile file = whole_file::loadCases().front();
  std::filesystem::current_path(file.folder);
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  // A sanitizer needs descriptors when it first meets a class.
  EXPECT_EQ(reliability::parse(file.input, reliability::definesOf(file)), file.records);
  const Answer answer = reliability::parse(
      file.input, reliability::definesOf(file), [&none] { setrlimit(RLIMIT_NOFILE, &none); },
      [&before] { setrlimit(RLIMIT_NOFILE, &before); });
  EXPECT_EQ(answer, cannotOpen(file.input));
  EXPECT_EQ(reliability::parse(file.input, reliability::definesOf(file)), file.records);
}

// Root may read everything, so the call runs as another user.
TEST(OpenFailure, WithoutPermission) {
  constexpr uid_t kNobody = 65534;
  const support::TempDir directory;
  const std::string path = directory.write("a.js", "var a = 1;\n");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  const uid_t before = geteuid();
  const uid_t during = before == 0 ? kNobody : before;
  int changed = -1;
  const Answer answer = reliability::parse(
      path, nullptr, [&changed, during] { changed = seteuid(during); },
      [&changed, before] { changed |= seteuid(before); });
  ASSERT_EQ(changed, 0);
  EXPECT_EQ(answer, cannotOpen(path));
}

// No descriptor stays open, whether the file was read or not.
TEST(Descriptors, AreClosed) {
  const auto openOnes = [] {
    const std::filesystem::directory_iterator list("/proc/self/fd");
    return std::distance(begin(list), end(list));
  };
  const auto before = openOnes();
  for (const CaseFile& file : whole_file::loadCases()) {
    std::filesystem::current_path(file.folder);
    parseReading(file, {});
    parseReading(file, [](std::size_t, std::size_t) { return -EIO; });
    parseReading(file, [](std::size_t number, std::size_t) { return number == 0 ? 1 : -EIO; });
  }
  EXPECT_EQ(openOnes(), before);
}

}  // namespace
