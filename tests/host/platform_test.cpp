#include "system/platform.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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

[[maybe_unused]] bool canFetch() {
#ifdef MADV_POPULATE_WRITE
  void* const page = ::mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  const bool isDone = ::madvise(page, 1, MADV_POPULATE_WRITE) == 0;
  ::munmap(page, 1);
  return isDone;
#else
  return false;
#endif
}

// The page faults of using sixteen megabytes of an extended heap, in a process of its own, up to 8.
int faultsBehind(std::size_t fetchedBytes) {
  constexpr int kMost = 8;
  const pid_t child = ::fork();
  if (child == 0) {
    host::keepFreedMemory();
    host::extendHeap(3 * kBlocks * kBlockBytes);
    host::fetchHeap(fetchedBytes);
    const long before = pageFaults();
    for (std::size_t i = 0; i < 2 * kBlocks; ++i) {
      auto* const block = static_cast<volatile char*>(std::malloc(kBlockBytes));
      for (std::size_t at = 0; at < kBlockBytes; at += 1024) block[at] = 1;
    }
    ::_exit(static_cast<int>(std::min<long>(pageFaults() - before, kMost)));
  }
  int state = 0;
  ::waitpid(child, &state, 0);
  return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
}

TEST(Platform, FetchesTheFreeEndOfTheHeap) {
#if defined(__GLIBC__) && !defined(QUORL_TEST_IS_SANITIZED)
  if (!canFetch()) GTEST_SKIP() << "the system has no such request";
  // Without large pages four thousand, with them one for each.
  EXPECT_EQ(faultsBehind(0), 8);
  // The process may touch a page of its own for the first time.
  EXPECT_LE(faultsBehind(3 * kBlocks * kBlockBytes), 1);
#else
  EXPECT_EQ(faultsBehind(3 * kBlocks * kBlockBytes), 8);
#endif
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
