#include "base/fresh_memory.h"

#include <sys/mman.h>
#include <unistd.h>

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

void fetchHeapBehind(const void* block) noexcept {
  static std::uintptr_t fetchedEnd = 0;
  const auto here = reinterpret_cast<std::uintptr_t>(block);
  if (here < fetchedEnd) return;
  const auto end = reinterpret_cast<std::uintptr_t>(::sbrk(0));
  if (here >= end) return;  // another thread's heap
  static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::uintptr_t begin = here / page * page;
  ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
  fetchedEnd = end;
}

#else

void fetchHeapBehind(const void*) noexcept {}

#endif

}  // namespace base
