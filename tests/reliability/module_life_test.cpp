// Opens and closes the module again and again in one process, with a parse each time.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string_view>
#include <vector>

#include "reliability/kept_memory.h"
#include "reliability/memory.h"
#include "support/leaks_allowed.h"
#include "support/redirected.h"
#include "whole_file/case_files.h"

namespace {

using reliability::Heap;
using reliability::heap;
using whole_file::CaseFile;

constexpr std::size_t kCycles = 1'000;
constexpr std::size_t kFirstCycles = 10;
constexpr std::int64_t kRegistryBytes = sizeof(std::set<ObjectBranch*>);
constexpr std::int64_t kMaxSlack = 32;  // a block may be somewhat larger than requested
constexpr std::size_t kMaxDestroyedBlocks = 100'000;

Heap operator-(const Heap& a, const Heap& b) { return {a.blocks - b.blocks, a.bytes - b.bytes}; }

struct Cycle {
  bool isRight = false;  // the answer is correct
  bool isGone = false;   // the module is unloaded at the end
  Heap kept;             // the trees and the registry
};

Cycle openParseAndClose(const CaseFile& file, const reliability::KeepReleased& nodes) {
  const support::LeaksAllowed kept;  // closing the module makes the trees unreachable
  Cycle cycle;
  void* const module = dlopen(QUORL_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return cycle;
  const auto parse =
      reinterpret_cast<const char* (*)(const char*, const char*)>(dlsym(module, "ParseJS"));
  const auto cleanup = reinterpret_cast<void (*)()>(dlsym(module, "CleanupJS"));
  const auto* const registry =
      static_cast<const std::set<ObjectBranch*>*>(dlsym(module, "allAllocatedNodes"));
  const char* const answer =
      parse(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
  cycle.isRight = answer != nullptr && std::string_view(answer) == file.records;
  cycle.kept = reliability::keptBy(*registry, nodes.blocks());
  cleanup();
  dlclose(module);
  cycle.isGone = dlopen(QUORL_PLUGIN_PATH, RTLD_NOW | RTLD_NOLOAD) == nullptr;
  return cycle;
}

// On unload the module moves its registry into a set that is never freed.
TEST(ModuleLife, OpensAndClosesAThousandTimes) {
  const reliability::KeepReleased nodes(sizeof(ObjectBranch), kMaxDestroyedBlocks);
  const std::vector<CaseFile> files = whole_file::loadCases();
  std::size_t wrong = 0;
  std::size_t left = 0;
  std::size_t uneven = 0;
  Heap kept;
  {
    const support::Redirected output(STDOUT_FILENO, "/dev/null", O_WRONLY);
    const support::Redirected errors(STDERR_FILENO, "/dev/null", O_WRONLY);
    for (std::size_t i = 0; i < kCycles; ++i) {
      const CaseFile& file = files[i % files.size()];
      std::filesystem::current_path(file.folder);
      const Heap start = heap;
      const Cycle cycle = openParseAndClose(file, nodes);
      wrong += cycle.isRight ? 0U : 1U;
      left += cycle.isGone ? 0U : 1U;
      const Heap other = heap - start - cycle.kept;
      const bool isRegistryAlone = other.blocks == 1 && other.bytes >= kRegistryBytes &&
                                   other.bytes < kRegistryBytes + kMaxSlack;
      // The loader allocates tables of its own in the first cycles.
      uneven += i < kFirstCycles || isRegistryAlone ? 0U : 1U;
      kept.blocks += cycle.kept.blocks;
      kept.bytes += cycle.kept.bytes;
    }
    std::fflush(stdout);
  }
  EXPECT_EQ(wrong, 0U);
  EXPECT_EQ(left, 0U) << "modules that stayed";
  EXPECT_EQ(uneven, 0U) << "cycles that kept other things than trees and a registry";
  EXPECT_GT(kept.blocks, 0);
  std::printf("%zu cycles: %lld blocks and %lld bytes kept in trees and registries\n", kCycles,
              static_cast<long long>(kept.blocks), static_cast<long long>(kept.bytes));
}

}  // namespace
