#include "base/fresh_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace base {

#ifdef MADV_HUGEPAGE

void preferLargePages(void* block, std::size_t bytes) noexcept {
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(block) + page - 1) / page * page;
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(block) + bytes) / page * page;
  if (begin < end) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

#else

void preferLargePages(void*, std::size_t) noexcept {}

#endif

#ifdef MADV_POPULATE_WRITE

// A host may have freed much more at the heap's end than a run takes.
constexpr std::uintptr_t kMostFetched = std::uintptr_t{256} << 10U;

void fetchHeapBehind(const void* block) noexcept {
  static std::uintptr_t fetchedEnd = 0;
  const auto here = reinterpret_cast<std::uintptr_t>(block);
  if (here < fetchedEnd) return;
  const auto heapEnd = reinterpret_cast<std::uintptr_t>(::sbrk(0));
  if (here >= heapEnd) return;  // another thread's heap
  static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::uintptr_t begin = here / page * page;
  const std::uintptr_t end = std::min(heapEnd, begin + kMostFetched);
  ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
  fetchedEnd = end;
}

#else

void fetchHeapBehind(const void*) noexcept {}

#endif

}  // namespace base
