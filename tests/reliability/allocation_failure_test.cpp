// Every request for memory of a run fails in turn: once, and with all that follow. The answer is
// then the full text, an error text, or the text without the one line that had no node; nothing is
// thrown into the host, and the next run is as if nothing had been.
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "plugin/plugin_api.h"
#include "reliability/failing_new.h"
#include "whole_file/case_files.h"

namespace {

using reliability::Requests;
using reliability::requests;
using whole_file::CaseFile;

std::string answerFor(const CaseFile& file, const Requests& plan = {}) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  requests = plan;
  const char* const text =
      ParseJS(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
  const std::size_t count = requests.count;
  requests = {};
  std::string answer = text == nullptr ? "(null)" : text;
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
  requests.count = count;
  return answer;
}

bool isError(const std::string& answer) {
  return answer == "[{\"error\": \"Parser exception: std::bad_alloc\"}]" ||
         answer == "[{\"error\": \"Parser exception: Memory allocation failed for ObjectBranch\"}]";
}

// The lines of the records that hold source text.
std::vector<std::string> contentsIn(const std::string& answer) {
  std::vector<std::string> contents;
  for (std::size_t at = answer.find("\n    \"contents\": "); at != std::string::npos;
       at = answer.find("\n    \"contents\": ", at + 1)) {
    contents.push_back(answer.substr(at, answer.find('\n', at + 1) - at));
  }
  return contents;
}

// Whether some is all without one element at most.
bool lacksOneAtMost(const std::vector<std::string>& some, const std::vector<std::string>& all) {
  if (some.size() + 1 < all.size() || some.size() > all.size()) return false;
  std::size_t at = 0;
  while (at < some.size() && some[at] == all[at]) ++at;
  const std::size_t skipped = all.size() - some.size();
  for (; at < some.size(); ++at) {
    if (some[at] != all[at + skipped]) return false;
  }
  return true;
}

TEST(AllocationFailure, GivesAnAnswerWhicheverRequestFails) {
  for (const CaseFile& file : whole_file::loadCases()) {
    SCOPED_TRACE(file.name);
    std::filesystem::current_path(file.folder);
    ASSERT_EQ(answerFor(file), file.records);
    answerFor(file);  // the first run of a process makes requests that no later one needs
    const std::size_t total = requests.count;
    const std::vector<std::string> all = contentsIn(file.records);
    std::size_t errors = 0;
    for (std::size_t failing = 0; failing < total; ++failing) {
      const std::string answer = answerFor(file, {0, failing, false});
      errors += isError(answer) ? 1U : 0U;
      ASSERT_TRUE(isError(answer) || lacksOneAtMost(contentsIn(answer), all))
          << "request " << failing << " of " << total << ": " << answer;
      const std::string later = answerFor(file, {0, failing, true});
      // A node at an address that was given out before is known to the registry already, and makes
      // a run a request shorter than the one that was counted.
      const bool failed = requests.count > failing;
      ASSERT_TRUE(failed ? isError(later) : later == file.records)
          << "request " << failing << " and all behind: " << later;
      if (failing % 16 == 0) {
        ASSERT_EQ(answerFor(file), file.records) << "behind " << failing;
      }
    }
    EXPECT_GT(errors, 0U) << "the failures did not reach the run";
    ASSERT_EQ(answerFor(file), file.records);
  }
}

}  // namespace
