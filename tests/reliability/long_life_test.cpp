// A long-running process returns the same bytes each time, and its memory grows only by the trees
// and the registry that the contract keeps.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "plugin/plugin_api.h"
#include "reliability/kept_memory.h"
#include "reliability/memory.h"
#include "reliability/parse.h"
#include "support/redirected.h"
#include "support/sanitized.h"
#include "tree/object_branch.h"
#include "whole_file/case_files.h"

namespace {

using reliability::Heap;
using reliability::heap;
using whole_file::CaseFile;

constexpr std::size_t kParses = 10'000;
constexpr std::size_t kMaxDestroyedBlocks = 1'000'000;

Heap operator-(const Heap& a, const Heap& b) { return {a.blocks - b.blocks, a.bytes - b.bytes}; }

// Whether the answer is correct. Releases it.
bool parsesAsEver(const CaseFile& file) {
  const char* const answer = ParseJS(file.input.c_str(), reliability::definesOf(file));
  const bool isSame = answer != nullptr && std::string_view(answer) == file.records;
  CleanupJS();
  return isSame;
}

TEST(LongLife, TenThousandParsesKeepOnlyTheirTrees) {
  const reliability::KeepReleased nodes(sizeof(ObjectBranch), kMaxDestroyedBlocks);
  const std::vector<CaseFile> files = whole_file::loadCases();
  std::vector<std::int64_t> growth(files.size());  // in blocks, per parse of each case
  std::size_t wrong = 0;
  std::size_t uneven = 0;
  Heap before;
  Heap keptBefore;
  std::size_t parses = 0;
  {
    const support::Redirected output(STDOUT_FILENO, "/dev/null", O_WRONLY);
    const support::Redirected errors(STDERR_FILENO, "/dev/null", O_WRONLY);
    // The first round allocates stream buffers and the capacity of the run state.
    for (std::size_t round = 0; parses < kParses; ++round) {
      if (round == 1) {
        before = heap;
        keptBefore = reliability::keptBy(allAllocatedNodes, nodes.blocks());
      }
      for (std::size_t i = 0; i < files.size(); ++i) {
        std::filesystem::current_path(files[i].folder);
        const Heap start = heap;
        wrong += parsesAsEver(files[i]) ? 0U : 1U;
        const Heap grown = heap - start;
        if (round == 1) growth[i] = grown.blocks;
        if (round > 1 && grown.blocks != growth[i]) ++uneven;
        parses += round == 0 ? 0U : 1U;
      }
    }
    std::fflush(stdout);
  }
  EXPECT_EQ(wrong, 0U);
  EXPECT_EQ(uneven, 0U) << "parses that kept more or less than the same one before";
  const Heap grown = heap - before;
  const Heap kept = reliability::keptBy(allAllocatedNodes, nodes.blocks()) - keptBefore;
  EXPECT_GT(kept.blocks, 0);
  EXPECT_EQ(grown.blocks, kept.blocks);
  EXPECT_EQ(grown.bytes, kept.bytes);
  std::printf("%zu parses: %lld blocks and %lld bytes kept, all of them nodes and registry\n",
              parses, static_cast<long long>(grown.blocks), static_cast<long long>(grown.bytes));
  RecordProperty("bytes_a_parse", std::to_string(grown.bytes / static_cast<long long>(parses)));
}

TEST(LongLife, AnswersWithoutATreeKeepNothing) {
  const CaseFile file = whole_file::loadCases().front();
  std::filesystem::current_path(file.folder);
  for (const char* path : {"no-such-file.js", "."}) {
    ParseJS(path, "A\nB\n");
    CleanupJS();
    const Heap before = heap;
    for (int i = 0; i < 1'000; ++i) {
      ParseJS(path, "A\nB\n");
      CleanupJS();
    }
    EXPECT_EQ((heap - before).blocks, 0) << path;
    EXPECT_EQ((heap - before).bytes, 0) << path;
  }
}

// The next answer replaces the one before.
TEST(LongLife, AHostThatNeverCleansUpKeepsOneAnswer) {
  const CaseFile file = whole_file::loadCases().front();
  std::filesystem::current_path(file.folder);
  CleanupJS();
  // A new answer is allocated before the last one is freed, so they alternate between two places,
  // and a block may be larger at one of them.
  for (int i = 0; i < 2; ++i) ParseJS("no-such-file.js", nullptr);
  const Heap before = heap;
  for (int i = 0; i < 1'000; ++i) ParseJS("no-such-file.js", nullptr);
  EXPECT_EQ((heap - before).blocks, 0);
  EXPECT_EQ((heap - before).bytes, 0);
}

// Each line stays readable until CleanupJS, which frees the last; the others are the host's loss.
TEST(LongLife, InfoAThousandTimesGivesAThousandLines) {
  constexpr std::size_t kCalls = 1'000;
  const std::string opening = "Quorl JavaScript Parser Plugin v1.0 - HTML/JS Support (Address: 0x";
  const std::string closing = ")\n";
  std::vector<char*> lines;
  lines.reserve(kCalls);
  CleanupJS();
  const Heap before = heap;
  for (std::size_t i = 0; i < kCalls; ++i) lines.push_back(const_cast<char*>(Info()));
  const Heap held = heap - before;
  const std::string first = lines.front();
  ASSERT_GT(first.size(), opening.size() + closing.size());
  EXPECT_TRUE(first.starts_with(opening) && first.ends_with(closing)) << first;
  EXPECT_EQ(first.find_first_not_of("0123456789abcdef", opening.size()),
            first.size() - closing.size());
  for (const char* const line : lines) ASSERT_EQ(line, first);
  const std::set<const char*> apart(lines.begin(), lines.end());
  EXPECT_EQ(apart.size(), kCalls);

  const Heap beforeCleanup = heap;
  CleanupJS();
  const Heap freed = beforeCleanup - heap;
#ifndef QUORL_TEST_IS_SANITIZED  // which has a malloc of its own
  EXPECT_EQ(held.blocks, static_cast<std::int64_t>(kCalls));
  EXPECT_EQ(freed.blocks, 1);
  EXPECT_EQ(freed.bytes * static_cast<std::int64_t>(kCalls), held.bytes);
#else
  EXPECT_EQ(held.blocks, 0);
  EXPECT_EQ(freed.blocks, 0);
#endif
  lines.pop_back();
  for (char* const line : lines) {
    ASSERT_EQ(line, first);
    std::free(line);
  }
}

}  // namespace
