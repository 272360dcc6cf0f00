// Runs every whole-file case in this process, through the built module, and through the
// command-line host; and all cases in one process, in both orders.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/program_runner.h"
#include "plugin/plugin_api.h"
#include "support/temp_dir.h"
#include "whole_file/case_files.h"

namespace whole_file {

void PrintTo(const CaseFile& file, std::ostream* out) { *out << file.name; }

namespace {

const std::vector<CaseFile>& cases() {
  static const std::vector<CaseFile> kCases = loadCases();
  return kCases;
}

struct Run {
  std::string records;
  std::string standardOutput;
  std::string standardError;
};

using ParseFunction = decltype(&ParseJS);

// Returns the answer of one call and what it prints; the working directory is the case's folder.
Run runWith(ParseFunction parse, const CaseFile& file) {
  std::filesystem::current_path(file.folder);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const char* answer = parse(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
  Run run;
  run.records = answer == nullptr ? "(null)" : answer;
  run.standardOutput = testing::internal::GetCapturedStdout();
  run.standardError = testing::internal::GetCapturedStderr();
  return run;
}

void expectAsCase(const Run& run, const CaseFile& file) {
  EXPECT_EQ(run.records, file.records);
  EXPECT_EQ(run.standardOutput, file.standardOutput);
  EXPECT_EQ(run.standardError, file.standardError);
}

// What quorl-js reports: what is left out, and one line that sums up the module's warnings, which
// are all alike.
std::string messagesFor(const CaseFile& file) {
  constexpr std::string_view kWarning = "Warning: Attempting to pop from empty element stack\n";
  const std::string start = "quorl-js: " + file.input + ": ";
  const std::string omission = file.omission.empty() ? "" : start + file.omission;
  if (file.standardError.empty()) return omission;
  const std::size_t count = file.standardError.size() / kWarning.size();
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += kWarning;
  EXPECT_EQ(file.standardError, all);
  return omission + start + std::to_string(count) + (count == 1 ? " warning" : " warnings") +
         ": Attempting to pop from empty element stack\n";
}

ParseFunction parseOfModule() {
  static void* const kModule = dlopen(QUORL_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
  if (kModule == nullptr) return nullptr;
  return reinterpret_cast<ParseFunction>(dlsym(kModule, "ParseJS"));
}

class WholeFile : public testing::TestWithParam<CaseFile> {};

TEST_P(WholeFile, InProcess) { expectAsCase(runWith(&ParseJS, GetParam()), GetParam()); }

TEST_P(WholeFile, ThroughTheModule) {
  const ParseFunction parse = parseOfModule();
  ASSERT_NE(parse, nullptr) << dlerror();
  ASSERT_NE(parse, &ParseJS) << "the module's own function is meant";
  expectAsCase(runWith(parse, GetParam()), GetParam());
}

TEST_P(WholeFile, ThroughTheCommandLineHost) {
  const CaseFile& file = GetParam();
  const support::TempDir folder;
  const std::string diagnostics = folder.path("diagnostics");
  std::filesystem::current_path(file.folder);
  std::vector<std::string> arguments{"--plugin", QUORL_PLUGIN_PATH, "--diagnostics", diagnostics};
  // The host joins defines with line feeds, so one value with line feeds passes the bytes
  // unchanged.
  if (file.defines) arguments.insert(arguments.end(), {"--defines", *file.defines});
  arguments.push_back(file.input);
  const host_test::Outcome outcome = host_test::runProgram(QUORL_JS_PATH, arguments);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, file.records);
  EXPECT_EQ(readFile(diagnostics), file.standardOutput);
  EXPECT_EQ(outcome.err, messagesFor(file));
}

std::string testName(const testing::TestParamInfo<CaseFile>& info) {
  std::string name = info.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char byte) { return std::isalnum(byte) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Cases, WholeFile, testing::ValuesIn(cases()), testName);

// Run state is global; none of it may leak from one file into the next.
TEST(WholeFileOrder, EachFileAnswersTheSameAfterAnyOther) {
  std::vector<const CaseFile*> order;
  for (const CaseFile& file : cases()) order.push_back(&file);
  for (int round = 0; round < 2; ++round) {
    for (const CaseFile* file : order) {
      SCOPED_TRACE(file->name);
      expectAsCase(runWith(&ParseJS, *file), *file);
    }
    std::reverse(order.begin(), order.end());
  }
}

}  // namespace
}  // namespace whole_file
