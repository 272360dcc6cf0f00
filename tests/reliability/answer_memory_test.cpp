// The memory that a run takes at its peak, against what it reads and what it answers.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <ostream>
#include <string>
#include <string_view>

#include "plugin/plugin_api.h"
#include "support/redirected.h"
#include "support/temp_dir.h"

namespace {

constexpr std::size_t kBytes = 100'000'000;

struct Usage {
  std::size_t answerBytes = 0;
  std::size_t peakBytes = 0;
  bool hasRecords = false;
};

void writeText(const std::string& path, std::string_view line) {
  std::ofstream file(path, std::ios::binary);
  std::size_t written = 0;
  for (; written + line.size() <= kBytes; written += line.size()) file << line;
  file << std::string(kBytes - written, '\n');
}

Usage parseHere(const std::string& path) {
  const support::Redirected output(STDOUT_FILENO, "/dev/null", O_WRONLY);
  const char* const answer = ParseJS(path.c_str(), nullptr);
  rusage used{};
  if (answer == nullptr || getrusage(RUSAGE_SELF, &used) != 0) return {};
  return {std::strlen(answer), static_cast<std::size_t>(used.ru_maxrss) * 1024,
          std::string_view(answer).starts_with("[\n  {\n")};
}

// In a process of its own, since the peak is that of a process.
Usage parseApart(const std::string& path) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const Usage usage = parseHere(path);
    _exit(write(ends[1], &usage, sizeof(usage)) == sizeof(usage) ? 0 : 1);
  }
  close(ends[1]);
  Usage usage;
  if (read(ends[0], &usage, sizeof(usage)) != sizeof(usage)) usage = {};
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return usage;
}

struct Row {
  const char* name;
  std::string_view line;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

class AnswerMemory : public testing::TestWithParam<Row> {};

TEST_P(AnswerMemory, OfAHundredMegabytesIsAtMostTwiceInputAndAnswer) {
  const support::TempDir folder;
  const std::string path = folder.path("a.txt");
  writeText(path, GetParam().line);
  const Usage usage = parseApart(path);
  ASSERT_TRUE(usage.hasRecords);
  EXPECT_GT(usage.peakBytes, kBytes) << "the text was read whole";
  EXPECT_LE(usage.peakBytes, 2 * (kBytes + usage.answerBytes));
  std::printf("%zu bytes read, %zu answered, %zu at the peak\n", kBytes, usage.answerBytes,
              usage.peakBytes);
}

std::string textName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Texts, AnswerMemory,
    testing::Values(Row{"prose",
                        "A line of text as there are many in a log, in a letter or in a manual.\n"},
                    Row{"statements", "let value = first + second; call(value);\n"},
                    Row{"blocks", "void f(int a) {\n  if (a) {\n    g(a);\n  }\n}\n"}),
    textName);

}  // namespace
