// Every memory request of a run fails in turn: alone, and with all later ones; requests to operator
// new, to malloc and its relatives, and to both. The answer is then the full text, an error text,
// the text without the one line or the defines whose node failed, or null if there is no memory for
// an answer; nothing is thrown into the host, and the next run is unaffected.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugin/plugin_api.h"
#include "reliability/memory.h"
#include "reliability/parse.h"
#include "support/sanitized.h"
#include "whole_file/case_files.h"

namespace {

using reliability::Requests;
using reliability::requests;
using reliability::Source;
using whole_file::CaseFile;

using Answer = std::optional<std::string>;

Requests seen;  // the state of requests after the last run

Answer answerFor(const CaseFile& file, const Requests& plan = {}) {
  return reliability::parse(
      file.input, reliability::definesOf(file), [&plan] { requests = plan; },
      [] {
        seen = requests;
        requests = {};
      });
}

// Without memory the C library opens no file.
bool isError(const Answer& answer, const CaseFile& file) {
  return answer == "[{\"error\": \"Could not open file: " + file.input + "\"}]" ||
         answer == "[{\"error\": \"Parser exception: std::bad_alloc\"}]" ||
         answer == "[{\"error\": \"Parser exception: Memory allocation failed for ObjectBranch\"}]";
}

// The fields that other records keep when a line is lost: a lost scope leaves the lines after it in
// the enclosing scope, which may change their labels.
struct Record {
  std::string line;
  std::string contents;
  bool operator==(const Record&) const = default;
};

std::string valueOf(std::string_view key, std::string_view record) {
  const std::string head = "\n    \"" + std::string(key) + "\": ";
  const std::size_t begin = record.find(head) + head.size();
  return std::string(record.substr(begin, record.find('\n', begin) - begin));
}

// Returns the records of a complete answer; none for any other text.
std::vector<Record> recordsIn(std::string_view answer) {
  constexpr std::string_view kBegin = "[\n  {\n";
  constexpr std::string_view kBetween = "\n  },\n  {\n";
  constexpr std::string_view kEnd = "\n  }\n]\n";
  std::vector<Record> records;
  if (!answer.starts_with(kBegin) || !answer.ends_with(kEnd)) return records;
  answer.remove_prefix(kBegin.size() - 1);
  answer.remove_suffix(kEnd.size());
  for (std::size_t at = 0; at != std::string_view::npos;) {
    const std::size_t end = answer.find(kBetween, at);
    const std::string_view record = answer.substr(at, end - at);
    records.push_back({valueOf("lineNumber", record), valueOf("contents", record)});
    at = end == std::string_view::npos ? end : end + kBetween.size() - 1;
  }
  return records;
}

// Whether some equals all, or lacks only a record that a failure may cost: a line of a script, or
// the defines.
bool lacksWhatItMayLack(const std::vector<Record>& some, const std::vector<Record>& all,
                        bool mayLackALine) {
  if (some == all) return true;
  if (some.size() + 1 != all.size()) return false;
  const auto gap = std::mismatch(some.begin(), some.end(), all.begin()).second;
  if (!std::equal(some.begin() + (gap - all.begin()), some.end(), gap + 1)) return false;
  // The defines are the last record and have no line.
  return gap->line == "0," ? gap + 1 == all.end() : mayLackALine;
}

TEST(Records, ComparisonDetectsDifferences) {
  const Record line{"1,", "\"a\","};
  const Record other{"2,", "\"b\","};
  const Record defines{"0,", "\"c\","};
  const std::vector<Record> all{line, other, defines};
  EXPECT_TRUE(lacksWhatItMayLack(all, all, false));
  EXPECT_TRUE(lacksWhatItMayLack({line, other}, all, false));
  EXPECT_TRUE(lacksWhatItMayLack({line, defines}, all, true));
  EXPECT_FALSE(lacksWhatItMayLack({line, defines}, all, false));
  EXPECT_FALSE(lacksWhatItMayLack({line}, all, true));
  EXPECT_FALSE(lacksWhatItMayLack({line}, {{"0,", "\"d\","}, line}, true));
  EXPECT_FALSE(lacksWhatItMayLack({}, all, true));
  EXPECT_FALSE(lacksWhatItMayLack({line, defines, other}, all, true));
  EXPECT_FALSE(lacksWhatItMayLack({other, line}, all, true));
}

// Whether the answer is allowed after one failed request.
bool isFitAnswer(const Answer& answer, const CaseFile& file, const std::vector<Record>& all) {
  return answer && (isError(answer, file) || *answer == file.records ||
                    lacksWhatItMayLack(recordsIn(*answer), all, !file.name.starts_with("text/")));
}

// Whether the answer is allowed when a request and all later ones of that source fail. The answer
// itself is requested from malloc: without it, an error text is possible only in the memory of an
// earlier answer.
bool isFitLastAnswer(const Answer& answer, const CaseFile& file, Source source) {
  if (source == Source::kNew) return isError(answer, file);
  if (!answer || isError(answer, file)) return true;
  // The very last request shrinks the answer's memory, and the run can do without it.
  return (source == Source::kMalloc || seen.failed == 1) && *answer == file.records;
}

std::size_t failAll(Source source) {
  std::size_t failures = 0;
  for (const CaseFile& file : whole_file::loadCases()) {
    SCOPED_TRACE(file.name);
    std::filesystem::current_path(file.folder);
    EXPECT_EQ(answerFor(file), file.records);
    answerFor(file, {.source = source});  // the first run of a process makes extra requests
    const std::size_t total = seen.count;
    EXPECT_GT(total, 0U) << "the requests of the run were not seen";
    const std::vector<Record> all = recordsIn(file.records);
    for (std::size_t failing = 0; failing < total; ++failing) {
      const Answer answer = answerFor(file, {.source = source, .failing = failing});
      failures += seen.failed;
      // A node at a reused address is already in the registry, which saves the run one of the
      // requests that were counted.
      const bool isFit = seen.failed == 0 ? answer == file.records : isFitAnswer(answer, file, all);
      EXPECT_TRUE(isFit) << "request " << failing << " of " << total << ": "
                         << answer.value_or("(null)");
      const Answer last =
          answerFor(file, {.source = source, .failing = failing, .andAllBehind = true});
      failures += seen.failed;
      EXPECT_TRUE(seen.failed == 0 ? last == file.records : isFitLastAnswer(last, file, source))
          << "request " << failing << " of " << total
          << " and all behind: " << last.value_or("(null)");
      EXPECT_EQ(answerFor(file), file.records) << "behind " << failing;
      if (testing::Test::HasFailure()) return failures;
    }
  }
  std::printf("requests failed: %zu\n", failures);
  testing::Test::RecordProperty("requests_failed", std::to_string(failures));
  return failures;
}

TEST(AllocationFailure, InOperatorNewReturnsAnAnswer) { EXPECT_GT(failAll(Source::kNew), 1'000U); }

TEST(AllocationFailure, InMallocReturnsAnAnswerOrNull) {
  EXPECT_GT(failAll(Source::kMalloc), 100U);
}

TEST(AllocationFailure, InBothReturnsAnAnswerOrNull) { EXPECT_GT(failAll(Source::kBoth), 1'000U); }

// One child process per request, since a process has its first run only once.
int statusOfChild(const CaseFile& file, const Requests& plan, const std::vector<Record>& all) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const Answer answer = answerFor(file, plan);
    const bool isFit = plan.andAllBehind ? isFitLastAnswer(answer, file, plan.source)
                                         : isFitAnswer(answer, file, all);
    const bool isFitOrFull = seen.failed == 0 ? answer == file.records : isFit;
    _exit(isFitOrFull && answerFor(file) == file.records ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

std::size_t requestsOfFirstRun(const CaseFile& file) {
  int ends[2];
  if (pipe(ends) != 0) return 0;
  const pid_t child = fork();
  if (child == 0) {
    answerFor(file);
    _exit(write(ends[1], &seen.count, sizeof(seen.count)) == sizeof(seen.count) ? 0 : 1);
  }
  close(ends[1]);
  std::size_t count = 0;
  if (read(ends[0], &count, sizeof(count)) != sizeof(count)) count = 0;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return count;
}

TEST(AllocationFailure, InTheFirstRunReturnsAnAnswerOrNull) {
  for (const CaseFile& file : whole_file::loadCases()) {
    if (file.name != "script/class-members-and-private-fields" && file.name != "page/worked-page" &&
        file.name != "text/defines") {
      continue;
    }
    SCOPED_TRACE(file.name);
    std::filesystem::current_path(file.folder);
    const std::vector<Record> all = recordsIn(file.records);
    const std::size_t total = requestsOfFirstRun(file);
    ASSERT_GT(total, 0U);
    for (std::size_t failing = 0; failing < total; ++failing) {
      for (const bool andAllBehind : {false, true}) {
        ASSERT_EQ(statusOfChild(file, {.failing = failing, .andAllBehind = andAllBehind}, all), 0)
            << "request " << failing << " of " << total << (andAllBehind ? " and all behind" : "");
      }
    }
  }
}

TEST(AllocationFailure, MakesInfoReturnNull) {
#ifdef QUORL_TEST_IS_SANITIZED
  GTEST_SKIP() << "requests of the C library itself do not fail under a sanitizer";
#endif
  requests = {.failing = 0};
  const char* const none = Info();
  const std::size_t failed = requests.failed;
  requests = {};
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(failed, 1U);
  CleanupJS();
  const char* const line = Info();
  ASSERT_NE(line, nullptr);
  EXPECT_TRUE(std::string_view(line).starts_with("Quorl JavaScript Parser Plugin v1.0"));
  CleanupJS();
}

}  // namespace
