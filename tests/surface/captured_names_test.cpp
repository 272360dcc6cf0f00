// A host may define names that the module exports too: neither side uses the other's.
// ENABLE_EXPORTS exports this program's names, and those defined here are the module's.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "plugin/plugin_api.h"
#include "whole_file/case_files.h"

int currentIndex = 1'000'000;
int objectCount = -5;
std::string chunk = "the host's own";

static int cleanupCalls = 0;
void cleanup() { ++cleanupCalls; }
static int trimCalls = 0;
std::string trim(const std::string&) {
  ++trimCalls;
  return "captured";
}

namespace {

TEST(CapturedNames, TheModuleUsesItsOwn) {
  void* const module = dlopen(QUORL_PLUGIN_PATH, RTLD_NOW | RTLD_GLOBAL);
  ASSERT_NE(module, nullptr) << dlerror();
  const auto parse = reinterpret_cast<decltype(&ParseJS)>(dlsym(module, "ParseJS"));
  ASSERT_NE(parse, nullptr);
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    SCOPED_TRACE(file.name);
    std::filesystem::current_path(file.folder);
    testing::internal::CaptureStdout();
    const std::string answer =
        parse(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(answer, file.records);
  }
  EXPECT_EQ(currentIndex, 1'000'000);
  EXPECT_EQ(objectCount, -5);
  EXPECT_EQ(chunk, "the host's own");
  EXPECT_EQ(cleanupCalls, 0);
  EXPECT_EQ(trimCalls, 0);
}

}  // namespace
