#include "base/fresh_memory.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "support/large_pages.h"

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20U;

std::uintptr_t pageBytes() { return static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE)); }

bool isResident(std::uintptr_t page) {
  unsigned char state = 0;
  return ::mincore(reinterpret_cast<void*>(page), pageBytes(), &state) == 0 && (state & 1U) != 0;
}

// The flags that the system keeps for the mapping of this address, as in "rd wr mr mw me ac hg".
std::string flagsOf(const void* address) {
  std::ifstream maps("/proc/self/smaps");
  bool isHere = false;
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t begin = 0, end = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx", &begin, &end) == 2) {
      const auto sought = reinterpret_cast<std::uintptr_t>(address);
      isHere = begin <= sought && sought < end;
    } else if (isHere && line.starts_with("VmFlags:")) {
      return line;
    }
  }
  return {};
}

// A mapping of its own, since neighbours with the same flags become one.
struct Unmap {
  void operator()(char* block) const { ::munmap(block, 2 * kLargePage); }
};
std::unique_ptr<char, Unmap> freshBlock() {
  void* const block =
      ::mmap(nullptr, 2 * kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return std::unique_ptr<char, Unmap>(static_cast<char*>(block));
}

TEST(FreshMemory, AsksForLargePagesFromTheFirstWholePageToTheLast) {
  if (!support::hasLargePages()) GTEST_SKIP() << "the system has no large pages";
  const auto block = freshBlock();
  // Begins and ends within a page, as a block of the C library does.
  base::preferLargePages(block.get() + 16, kLargePage - 32);
  const std::size_t page = pageBytes();
  EXPECT_EQ(flagsOf(block.get()).find(" hg"), std::string::npos) << "shared with other blocks";
  EXPECT_NE(flagsOf(block.get() + page).find(" hg"), std::string::npos);
  EXPECT_NE(flagsOf(block.get() + kLargePage - page - 1).find(" hg"), std::string::npos);
  EXPECT_EQ(flagsOf(block.get() + kLargePage - page).find(" hg"), std::string::npos);
}

TEST(FreshMemory, LeavesABlockWithoutAWholePageAlone) {
  if (!support::hasLargePages()) GTEST_SKIP() << "the system has no large pages";
  const auto block = freshBlock();
  base::preferLargePages(block.get() + 1, pageBytes());
  base::preferLargePages(block.get(), 0);
  EXPECT_EQ(flagsOf(block.get()).find(" hg"), std::string::npos);
}

// Ends the process with the answer of work, 0 for yes, in a child whose heap is its own.
bool isTrueInChild(bool (*work)()) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work() ? EXIT_SUCCESS : EXIT_FAILURE);
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

TEST(FreshMemory, FetchesTheHeapUpToItsEnd) {
  EXPECT_TRUE(isTrueInChild([] {
    const auto begin = reinterpret_cast<std::uintptr_t>(::sbrk(static_cast<int>(64 * pageBytes())));
    const std::uintptr_t end = begin + 64 * pageBytes();
    if (isResident(end - pageBytes())) return false;
    base::fetchHeapBehind(reinterpret_cast<void*>(begin + pageBytes() + 16));
    for (std::uintptr_t page = begin + pageBytes(); page < end; page += pageBytes()) {
      if (!isResident(page)) return false;
    }
    return true;
  }));
}

TEST(FreshMemory, FetchesNoMoreThanTheNextPieceOfALargeHeap) {
  EXPECT_TRUE(isTrueInChild([] {
    constexpr std::uintptr_t kPiece = std::uintptr_t{256} << 10U;
    const auto heapEnd = reinterpret_cast<std::uintptr_t>(::sbrk(8 * static_cast<int>(kPiece)));
    const std::uintptr_t begin = (heapEnd / pageBytes() + 1) * pageBytes();
    for (const std::uintptr_t piece : {begin, begin + kPiece}) {
      base::fetchHeapBehind(reinterpret_cast<void*>(piece));
      if (!isResident(piece + kPiece - pageBytes()) || isResident(piece + kPiece)) return false;
      // Nothing is fetched twice.
      base::fetchHeapBehind(reinterpret_cast<void*>(piece + kPiece - 1));
      if (isResident(piece + kPiece)) return false;
    }
    return true;
  }));
}

TEST(FreshMemory, LeavesMemoryBehindTheHeapAlone) {
  const auto block = freshBlock();
  base::fetchHeapBehind(block.get());
  EXPECT_FALSE(isResident(reinterpret_cast<std::uintptr_t>(block.get())));
}

}  // namespace
