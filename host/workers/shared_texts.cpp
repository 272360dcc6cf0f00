#include "workers/shared_texts.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

namespace host {

// A lock would be one in each process.
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

struct SharedTexts::Ring {
  std::atomic<std::uint64_t> taken = 0;
  std::array<char, kMostBytes> bytes;

  // The bytes in one piece that begin behind so many others.
  char* at(std::uint64_t count) { return bytes.data() + count % kMostBytes; }
  static std::size_t inOnePiece(std::uint64_t count, std::size_t wanted) {
    return std::min<std::size_t>(wanted, kMostBytes - count % kMostBytes);
  }
};

SharedTexts::SharedTexts() {
  void* const memory =
      ::mmap(nullptr, sizeof(Ring), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ring_ = memory == MAP_FAILED ? nullptr : new (memory) Ring;
}

void SharedTexts::unmap() const {
  if (ring_ != nullptr) ::munmap(ring_, sizeof(Ring));
}

bool SharedTexts::put(std::string_view text) {
  if (ring_ == nullptr) return false;
  const std::uint64_t waiting = put_ - ring_->taken.load(std::memory_order_acquire);
  // A module that writes where it must not may have changed the number.
  if (waiting > kMostBytes || text.size() > kMostBytes - waiting) return false;
  const std::size_t first = Ring::inOnePiece(put_, text.size());
  text.copy(ring_->at(put_), first);
  text.substr(first).copy(ring_->at(0), text.size() - first);
  put_ += text.size();
  return true;
}

std::optional<std::string> SharedTexts::take(std::uint64_t bytes) {
  if (ring_ == nullptr || bytes > kMostBytes) return std::nullopt;
  const std::size_t first = Ring::inOnePiece(taken_, bytes);
  std::string text;
  text.reserve(bytes);
  text.append(ring_->at(taken_), first).append(ring_->at(0), bytes - first);
  taken_ += bytes;
  ring_->taken.store(taken_, std::memory_order_release);
  return text;
}

}  // namespace host
