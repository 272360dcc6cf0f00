#include "plugin/failure_memory.h"

#include <sys/mman.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

// The C++ ABI's access to the thread's exception state, which allocates the state if there is none.
// <cxxabi.h> will not do: libstdc++ declares the function free of side effects, so that compilers
// leave out a call, and libc++abi does not declare it.
extern "C" void* __cxa_get_globals() noexcept;

namespace plugin {
namespace {

// A run takes 15 KB of stack, exceptions included.
constexpr std::size_t kStackBytes = 24'576;
constexpr std::size_t kPageBytes = 4'096;  // the smallest there is
// The stack need not begin or end with a page.
constexpr std::size_t kStackPagesBytes = kStackBytes + 2 * kPageBytes;
// The state takes 32 bytes, and the C library's table of such blocks 16 bytes for each library that
// is loaded: enough for 2,000 of them. Too large for malloc's caches of one size, so success
// means that the heap can grow.
constexpr std::size_t kStateBytes = 32'768;

// A thread's first memory may come from the heap or, where the heap cannot grow, from mappings.
bool hasMemoryForState() {
  // Volatile, or the compiler drops an allocation that nothing uses.
  void* volatile const block = std::malloc(kStateBytes);
  std::free(block);
  return block != nullptr;
}

// Not by malloc, whose free blocks are of no use to a stack.
bool hasMemoryForStack() {
  void* const pages =
      mmap(nullptr, kStackPagesBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) return false;
  munmap(pages, kStackPagesBytes);
  return true;
}

// How far down a call has grown its stack, which stays so. Only a main thread's stack grows, so it
// need not be known whose this is.
std::atomic<std::uintptr_t> grownTo{0};

// Whether a call from about the same depth has grown this stack. To ask the system again would be
// 2 % of a run over small files.
bool isStackGrown() {
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  const std::uintptr_t below = here - grownTo.load(std::memory_order_relaxed);
  return below >= kStackBytes - kPageBytes && below <= kStackBytes + kPageBytes;
}

[[gnu::noinline]] void growStack() {
  char pages[kStackBytes];
  // A volatile pointer, or clang keeps no more of the array than the bytes that are written.
  volatile char* volatile const begin = pages;
  for (std::size_t at = 0; at < kStackBytes; at += kPageBytes) begin[at] = 0;
  grownTo.store(reinterpret_cast<std::uintptr_t>(begin), std::memory_order_relaxed);
}

}  // namespace

bool reserveFailureMemory() noexcept {
  if (!isStackGrown()) {
    if (!hasMemoryForStack()) return false;
    growStack();
  }
  if (!hasMemoryForState()) return false;
  __cxa_get_globals();
  return true;
}

}  // namespace plugin
