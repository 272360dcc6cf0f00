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
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "builder/tree_builder.h"
#include "plugin/batch_driver.h"
#include "plugin/plugin_api.h"
#include "records/record_pass.h"
#include "reliability/memory.h"
#include "reliability/parse.h"
#include "support/sanitized.h"
#include "tree/object_branch.h"
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

// The records that the call hands out in a stream: whole, or an exception.
template <typename Call>
void expectWholeStreamsOrNone(const Call& call) {
  requests = {};
  std::ostringstream whole = call();
  const std::size_t total = requests.count;
  const std::string text = whole.str();
  ASSERT_GT(text.size(), 1'000U) << "more than a stream holds without memory";
  EXPECT_TRUE(whole.good());
  EXPECT_EQ(whole.exceptions(), std::ios::goodbit);
  EXPECT_EQ(whole.tellp(), std::streampos(static_cast<std::streamoff>(text.size())));
  std::size_t thrown = 0;
  for (std::size_t failing = 0; failing < total; ++failing) {
    std::optional<std::ostringstream> stream;
    bool isOutOfMemory = false;
    requests = {.failing = failing, .andAllBehind = true};
    try {
      stream = call();
    } catch (const std::bad_alloc&) {
      isOutOfMemory = true;
    } catch (const std::runtime_error& error) {
      requests = {};
      isOutOfMemory = error.what() == std::string("Memory allocation failed for ObjectBranch");
    }
    const bool hasFailed = requests.failed > 0;
    requests = {};
    if (isOutOfMemory) {
      ++thrown;
      continue;
    }
    ASSERT_TRUE(stream) << "request " << failing << " of " << total;
    EXPECT_TRUE(stream->good()) << "request " << failing << " of " << total;
    // A failure at the defines or at a line may cost the node alone.
    if (!hasFailed) {
      EXPECT_EQ(stream->str(), text) << "request " << failing << " of " << total;
    }
    EXPECT_TRUE(stream->str().ends_with("\n]\n")) << "request " << failing << " of " << total;
  }
  EXPECT_GT(thrown, 10U);
}

const std::string kManyCalls = [] {
  std::string text;
  for (int i = 0; i < 20; ++i) text += "call" + std::to_string(i) + "();\n";
  return text;
}();

TEST(AllocationFailure, NeverCutsTheStreamOfTreeBuilderJS) {
  expectWholeStreamsOrNone([] {
    currentIndex = 0;
    ObjectBranch root;
    root.nodeID = currentIndex++;
    return TreeBuilderJS("a.txt", "", "", kManyCalls, true, &root, {});
  });
}

TEST(AllocationFailure, NeverCutsTheStreamOfStartGeneratingObjects) {
  expectWholeStreamsOrNone([] {
    currentIndex = 2;
    ObjectBranch root;
    ObjectBranch child;
    root.nodeID = 0;
    root.branchType = kBranchFilePath;
    root.contents = std::string(2'000, 'r');
    child.nodeID = 1;
    child.branchType = kBranchLine;
    child.contents = "call()";
    child.parent = &root;
    root.children = {&child};
    return StartGeneratingObjects(&root, "");
  });
}

// An address that was given out before has its place in the registry already: these take all such
// that are free.
std::vector<std::unique_ptr<ObjectBranch>> takeKnownAddresses() {
  std::vector<std::unique_ptr<ObjectBranch>> held(10'000);
  for (auto& node : held) node = std::make_unique<ObjectBranch>();
  return held;
}

// What leaves allocateObjectBranch when the request of this number, from 0, fails.
std::string messageOfFailure(std::size_t failing) {
  std::string message = "nothing";
  requests = {.source = Source::kNew, .failing = failing};
  try {
    allocateObjectBranch();
  } catch (const std::bad_alloc& error) {
    requests = {};
    message = std::string("bad_alloc ") + error.what();
  } catch (const std::runtime_error& error) {
    requests = {};
    message = std::string("runtime_error ") + error.what();
  }
  requests = {};
  return message;
}

TEST(AllocationFailure, OfANodeAndOfItsPlaceInTheRegistryAreToldApart) {
  const std::vector<std::unique_ptr<ObjectBranch>> held = takeKnownAddresses();
  const std::size_t registered = allAllocatedNodes.size();
  const std::int32_t counted = objectCount;
  reliability::Heap before = reliability::heap;
  const std::string node = messageOfFailure(0);
  const std::string place = messageOfFailure(1);
  EXPECT_EQ(node, "runtime_error Memory allocation failed for ObjectBranch");
  EXPECT_EQ(place, "bad_alloc std::bad_alloc");
  EXPECT_EQ(allAllocatedNodes.size(), registered) << "nothing is registered";
  EXPECT_EQ(objectCount, counted) << "nothing is counted";
  // The two messages, which are too long for a string itself, and nothing else.
  before.blocks += (node.size() > 15 ? 1 : 0) + (place.size() > 15 ? 1 : 0);
  EXPECT_EQ(reliability::heap.blocks, before.blocks) << "no node is lost";
}

// The request for the root's place in the registry is the one behind that for the root.
TEST(AllocationFailure, OfTheRootAndOfItsPlaceAreAnswered) {
  const CaseFile file = whole_file::loadCases().front();
  std::filesystem::current_path(file.folder);
  EXPECT_EQ(answerFor(file), file.records);
  answerFor(file, {.source = Source::kNew});
  const std::size_t total = seen.count;
  std::size_t failing = 0;
  while (failing < total &&
         answerFor(file, {.source = Source::kNew, .failing = failing}) !=
             "[{\"error\": \"Parser exception: Memory allocation failed for ObjectBranch\"}]") {
    ++failing;
  }
  ASSERT_LT(failing, total) << "no request was that for the root";
  const std::vector<std::unique_ptr<ObjectBranch>> held = takeKnownAddresses();
  const std::size_t registered = allAllocatedNodes.size();
  EXPECT_EQ(answerFor(file, {.source = Source::kNew, .failing = failing + 1}),
            "[{\"error\": \"Parser exception: std::bad_alloc\"}]");
  EXPECT_EQ(allAllocatedNodes.size(), registered);
}

TEST(AllocationFailure, LeavesBatchFunctionsWithNothing) {
  const std::string name(100, 'n');
  const std::string path = "/tmp/" + name + ".js";
  const std::string text = "namespace " + name + " {";
  const std::string folder = whole_file::loadCases().front().folder;
  requests = {.source = Source::kNew, .failing = 0, .andAllBehind = true};
  const std::string sanitized = SanitizeFileName(name);
  const std::string found = ExtractNamespaceName(text);
  const std::string base = GetFileNameWithoutExtension(path);
  const std::vector<std::string> files = GetFilesInDirectory(folder);
  const std::size_t failed = requests.failed;
  requests = {};
  EXPECT_EQ(sanitized, "");
  EXPECT_EQ(found, "");
  EXPECT_EQ(base, "");
  EXPECT_TRUE(files.empty());
  EXPECT_EQ(failed, 4U);
  EXPECT_EQ(SanitizeFileName(name), name);
  EXPECT_EQ(ExtractNamespaceName(text), name);
  EXPECT_EQ(GetFileNameWithoutExtension(path), name);
  EXPECT_EQ(GetFilesInDirectory(folder).size(), 1U);
}

TEST(AllocationFailure, MakesInfoReturnNull) {
#ifdef QUORL_TEST_IS_SANITIZED
  GTEST_SKIP() << "requests of the C library itself do not fail under a sanitizer";
#endif
  // The question whether there is memory at all, and the line itself.
  for (const std::size_t failing : {0U, 1U}) {
    requests = {.failing = failing};
    const char* const none = Info();
    const std::size_t failed = requests.failed;
    requests = {};
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(failed, 1U);
    CleanupJS();
  }
  const char* const line = Info();
  ASSERT_NE(line, nullptr);
  EXPECT_TRUE(std::string_view(line).starts_with("Quorl JavaScript Parser Plugin v1.0"));
  CleanupJS();
}

}  // namespace
