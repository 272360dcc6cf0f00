#include "reliability/memory.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <new>

#include "support/sanitized.h"

// The real allocation functions. Where malloc itself cannot be replaced, the linker redirects calls
// to __wrap_malloc.
#ifdef QUORL_TEST_IS_SANITIZED
#define QUORL_REAL(name) __real_##name
#define QUORL_REPLACED(name) __wrap_##name
#else
#define QUORL_REAL(name) __libc_##name
#define QUORL_REPLACED(name) name
#endif

extern "C" {
void* QUORL_REAL(malloc)(std::size_t bytes);
void* QUORL_REAL(calloc)(std::size_t count, std::size_t bytes);
void* QUORL_REAL(realloc)(void* block, std::size_t bytes);
#ifdef QUORL_TEST_IS_SANITIZED
void* QUORL_REPLACED(malloc)(std::size_t bytes);
void* QUORL_REPLACED(calloc)(std::size_t count, std::size_t bytes);
void* QUORL_REPLACED(realloc)(void* block, std::size_t bytes);
#else
void* QUORL_REAL(memalign)(std::size_t alignment, std::size_t bytes);
void QUORL_REAL(free)(void* block);
#endif
}

namespace reliability {

constinit Requests requests;
constinit Heap heap;

namespace {

constexpr std::size_t kMaxSlack = 32;

KeepReleased* keeper = nullptr;

bool fails(Source source) {
  if (requests.source != Source::kBoth && requests.source != source) return false;
  const std::size_t number = requests.count++;
  const bool isChosen = requests.failing && (number == *requests.failing ||
                                             (requests.andAllBehind && number > *requests.failing));
  if (isChosen) ++requests.failed;
  return isChosen;
}

void* counted(void* block) {
  if (block != nullptr) {
    ++heap.blocks;
    heap.bytes += static_cast<std::int64_t>(malloc_usable_size(block));
  }
  return block;
}

void* uncounted(void* block) {
  if (block != nullptr) {
    --heap.blocks;
    heap.bytes -= static_cast<std::int64_t>(malloc_usable_size(block));
  }
  return block;
}

void* makeBlock(std::size_t bytes) {
  return fails(Source::kNew) ? nullptr : counted(QUORL_REAL(malloc)(bytes == 0 ? 1 : bytes));
}

void releaseBlock(void* block) {
  uncounted(block);
  if (block != nullptr && keeper != nullptr && keeper->take(block)) return;
#ifdef QUORL_TEST_IS_SANITIZED
  std::free(block);
#else
  QUORL_REAL(free)(block);
#endif
}

}  // namespace

KeepReleased::KeepReleased(std::size_t bytes, std::size_t atMost) : bytes_(bytes) {
  kept_.reserve(atMost);
  keeper = this;
}

KeepReleased::~KeepReleased() {
  keeper = nullptr;
  for (void* const block : kept_) operator delete(counted(block));
}

std::vector<const void*> KeepReleased::blocks() const {
  std::vector<const void*> sorted(kept_.begin(), kept_.end());
  std::sort(sorted.begin(), sorted.end(), std::less<>());
  return sorted;
}

bool KeepReleased::take(void* block) noexcept {
  // A block may be somewhat larger than requested.
  const std::size_t usable = malloc_usable_size(block);
  if (usable < bytes_ || usable >= bytes_ + kMaxSlack) return false;
  if (kept_.size() == kept_.capacity()) std::abort();  // growing would be another allocation
  kept_.push_back(block);
  return true;
}

}  // namespace reliability

void* operator new(std::size_t bytes) {
  void* const block = reliability::makeBlock(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return reliability::makeBlock(bytes);
}
void operator delete(void* block) noexcept { reliability::releaseBlock(block); }
void operator delete(void* block, std::size_t) noexcept { reliability::releaseBlock(block); }

extern "C" {

#ifdef QUORL_TEST_IS_SANITIZED

void* QUORL_REPLACED(malloc)(std::size_t bytes) {
  return reliability::fails(reliability::Source::kMalloc) ? nullptr : QUORL_REAL(malloc)(bytes);
}

void* QUORL_REPLACED(calloc)(std::size_t count, std::size_t bytes) {
  return reliability::fails(reliability::Source::kMalloc) ? nullptr
                                                          : QUORL_REAL(calloc)(count, bytes);
}

void* QUORL_REPLACED(realloc)(void* block, std::size_t bytes) {
  return reliability::fails(reliability::Source::kMalloc) ? nullptr
                                                          : QUORL_REAL(realloc)(block, bytes);
}

#else

void* malloc(std::size_t bytes) noexcept {
  if (reliability::fails(reliability::Source::kMalloc)) return nullptr;
  return reliability::counted(QUORL_REAL(malloc)(bytes));
}

void* calloc(std::size_t count, std::size_t bytes) noexcept {
  if (reliability::fails(reliability::Source::kMalloc)) return nullptr;
  return reliability::counted(QUORL_REAL(calloc)(count, bytes));
}

void* realloc(void* block, std::size_t bytes) noexcept {
  if (reliability::fails(reliability::Source::kMalloc)) return nullptr;
  reliability::uncounted(block);
  void* const resized = QUORL_REAL(realloc)(block, bytes);
  // On failure the old block stays as it was.
  reliability::counted(resized == nullptr && bytes != 0 ? block : resized);
  return resized;
}

void* memalign(std::size_t alignment, std::size_t bytes) noexcept {
  if (reliability::fails(reliability::Source::kMalloc)) return nullptr;
  return reliability::counted(QUORL_REAL(memalign)(alignment, bytes));
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
  return memalign(alignment, bytes);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) noexcept {
  void* const aligned = memalign(alignment, bytes);
  if (aligned == nullptr) return ENOMEM;
  *block = aligned;
  return 0;
}

void free(void* block) noexcept { QUORL_REAL(free)(reliability::uncounted(block)); }

#endif
}
