#include "base/fresh_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <functional>

namespace base {

#ifdef MADV_HUGEPAGE

void preferLargePages(void* block, std::size_t bytes) noexcept {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t skipped = (page - reinterpret_cast<std::uintptr_t>(block) % page) % page;
  if (skipped >= bytes) return;
  ::madvise(static_cast<char*>(block) + skipped, (bytes - skipped) / page * page, MADV_HUGEPAGE);
}

#else

void preferLargePages(void*, std::size_t) noexcept {}

#endif

#ifdef MADV_POPULATE_WRITE

// A host may have freed much more at the heap's end than a run takes.
constexpr std::ptrdiff_t kMostFetched = std::ptrdiff_t{256} << 10U;

void fetchHeapBehind(void* block) noexcept {
  static const char* fetchedEnd = nullptr;
  if (std::less<>{}(block, fetchedEnd)) return;
  char* const heapEnd = static_cast<char*>(::sbrk(0));
  if (!std::less<>{}(block, heapEnd)) return;  // another thread's heap
  static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  char* const begin = static_cast<char*>(block) - reinterpret_cast<std::uintptr_t>(block) % page;
  const std::ptrdiff_t fetched = std::min(heapEnd - begin, kMostFetched);
  ::madvise(begin, static_cast<std::size_t>(fetched), MADV_POPULATE_WRITE);
  fetchedEnd = begin + fetched;
}

#else

void fetchHeapBehind(void*) noexcept {}

#endif

}  // namespace base
