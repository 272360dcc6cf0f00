// Every hostile text returns an answer, and the same one twice. This checks correctness under
// sanitizers, not cost.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

#include "hostile/generators.h"
#include "plugin/plugin_api.h"
#include "support/temp_dir.h"

namespace hostile {

void PrintTo(const Generator& generator, std::ostream* out) { *out << generator.name; }

namespace {

constexpr std::size_t kBytes = 100'000;

struct Outcome {
  std::string answer;
  std::string standardOutput;
  std::string standardError;
};

Outcome parse(const std::string& path) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const char* const answer = ParseJS(path.c_str(), nullptr);
  Outcome outcome;
  outcome.answer = answer == nullptr ? "(null)" : answer;
  outcome.standardOutput = testing::internal::GetCapturedStdout();
  outcome.standardError = testing::internal::GetCapturedStderr();
  return outcome;
}

Outcome parse(const Generator& generator) {
  const support::TempDir directory;
  return parse(
      directory.write(std::string("text") + generator.extension, generator.generate(kBytes)));
}

// Returns the offset of the first byte in which the texts differ, -1 if there is none: texts of
// megabytes are too long to print.
std::ptrdiff_t firstDifference(std::string_view a, std::string_view b) {
  const auto [inA, inB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  return inA == a.end() && inB == b.end() ? -1 : inA - a.begin();
}

class HostileText : public testing::TestWithParam<Generator> {};

TEST_P(HostileText, HasTheRequestedSize) {
  for (const std::size_t bytes : {std::size_t{2'000}, std::size_t{20'000}, kBytes}) {
    const std::size_t size = GetParam().generate(bytes).size();
    EXPECT_LE(std::max(size, bytes) - std::min(size, bytes), kSizeTolerance) << bytes << " asked";
  }
}

TEST_P(HostileText, ReturnsTheSameRecordsTwice) {
  const support::TempDir directory;
  const std::string path =
      directory.write(std::string("text") + GetParam().extension, GetParam().generate(kBytes));
  const Outcome first = parse(path);
  EXPECT_TRUE(first.answer.starts_with("[\n")) << first.answer.substr(0, 200);
  EXPECT_TRUE(first.answer.ends_with("]\n"));
  // A reported directive would, by contract, make output that grows with the square of a line.
  EXPECT_EQ(first.standardOutput.find("[["), std::string::npos);
  const Outcome second = parse(path);
  EXPECT_EQ(firstDifference(first.answer, second.answer), -1);
  EXPECT_EQ(firstDifference(first.standardOutput, second.standardOutput), -1);
  EXPECT_EQ(firstDifference(first.standardError, second.standardError), -1);
}

INSTANTIATE_TEST_SUITE_P(Generators, HostileText, testing::ValuesIn(generators()),
                         [](const auto& each) { return std::string(each.param.name); });

// A text that is parsed differently than intended is harmless. So if the harm is in the number or
// size of nodes, check that they appear.
struct Yield {
  std::string_view name;
  std::size_t records;      // at least
  std::size_t answerBytes;  // at least
  const char* why;
};

constexpr std::array<Yield, 20> kYields{
    {{"page_script_openers", 12'500, 0, "an element each 8 bytes"},
     {"page_inline_scripts", 16'500, 0, "an element, a script and a line each 18"},
     {"page_text_under_a_long_tag", 18'900, 0, "an element each 5, after the tag"},
     {"page_open_tags", 33'300, 0, "an element each 3"},
     {"page_tags_over_the_limit", 7, 70'000, "seven tags of 10,000 bytes and more"},
     {"page_paragraphs_never_closed", 20'000, 0, "an element each 5"},
     {"text_conditionals_with_new_names", 3, 30'000, "a define of six bytes each 17 to 20"},
     {"text_one_statement_of_assignments", 3, 100'000, "a line of the whole text"},
     {"text_one_statement_of_calls", 3, 100'000, "a line of the whole text"},
     {"text_long_header_over_small_children", 25'000, 50'000, "a line each 2 in one half"},
     {"text_classes_under_long_headers", 10'000, 0, "a line each 8 in four fifths"},
     {"text_blocks_never_closed", 50'000, 0, "a block each 2"},
     {"text_blocks_closed_at_the_end", 33'300, 0, "a block each 2 in two thirds"},
     {"text_blocks_in_one_leaf", 16'600, 0, "a block and a line each 12"},
     {"text_nested_blocks_in_one_leaf", 14'200, 0, "a block each 7"},
     {"script_open_functions", 6'600, 0, "a function each 15"},
     {"script_open_conditions", 11'100, 0, "a function each 9"},
     {"script_lines_of_blocks", 199, 100'000, "a line each 501"},
     {"script_classes_under_long_heads", 8'800, 0, "a class each 9 in four fifths"},
     {"script_string_never_closed", 14'200, 0, "a variable each 7"}}};

std::size_t countOf(std::string_view needle, std::string_view text) {
  std::size_t count = 0;
  for (std::size_t hit = text.find(needle); hit != std::string_view::npos; ++count) {
    hit = text.find(needle, hit + needle.size());
  }
  return count;
}

TEST(HostileTexts, AreParsedAsIntended) {
  for (const Yield& yield : kYields) {
    SCOPED_TRACE(std::string(yield.name) + ": " + yield.why);
    const auto list = generators();
    const auto found = std::find_if(list.begin(), list.end(), [&yield](const Generator& each) {
      return each.name == yield.name;
    });
    ASSERT_NE(found, list.end());
    const std::string answer = parse(*found).answer;
    EXPECT_GE(countOf("\"nodeID\": ", answer), yield.records);
    EXPECT_GE(answer.size(), yield.answerBytes);
  }
}

}  // namespace
}  // namespace hostile
