#include "system/platform.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>

#include <gtest/gtest.h>

#include "support/large_pages.h"
#include "support/sanitized.h"

namespace {

long pageFaults() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

constexpr std::size_t kBlockBytes = std::size_t{1} << 20U;
constexpr std::size_t kBlocks = 8;
// Half of the small pages that they take: large ones begin and end at multiples of their size.
constexpr long kFewFaults = 1024;

// The page faults of taking and writing eight megabytes, in a process of its own.
int faultsIn(bool isExtended) {
  const pid_t child = ::fork();
  if (child == 0) {
    host::keepFreedMemory();
    if (isExtended) host::extendHeap((kBlocks + 4) * kBlockBytes);
    const long before = pageFaults();
    for (std::size_t i = 0; i < kBlocks; ++i) {
      auto* const block = static_cast<volatile char*>(std::malloc(kBlockBytes));
      for (std::size_t at = 0; at < kBlockBytes; at += 1024) block[at] = 1;
    }
    ::_exit(pageFaults() - before < kFewFaults ? 0 : 1);
  }
  int state = 0;
  ::waitpid(child, &state, 0);
  return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
}

// Another C library, and a sanitizer's heap, are not extended.
TEST(Platform, ExtendsTheHeapByLargePages) {
#if defined(__GLIBC__) && !defined(QUORL_TEST_IS_SANITIZED)
  if (!support::hasLargePages()) GTEST_SKIP() << "the system has no large pages";
  EXPECT_EQ(faultsIn(false), 1);
  EXPECT_EQ(faultsIn(true), 0);
#else
  EXPECT_EQ(faultsIn(true), 1);
#endif
}

}  // namespace
