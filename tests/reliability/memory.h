// Replaces the allocation functions in the program that links this: operator new, malloc, calloc,
// realloc and the aligned variants. Chosen requests fail, and allocated memory is counted.
//
// Under AddressSanitizer, whose own malloc must stay, only calls made directly by the linked
// objects can fail, and only memory from operator new is counted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace reliability {

enum class Source { kNew, kMalloc, kBoth };

// The requests so far, and which of them fail. Requests to another source are not counted and never
// fail.
struct Requests {
  Source source = Source::kBoth;
  std::optional<std::size_t> failing = std::nullopt;  // number of the request that fails, from 0
  bool andAllBehind = false;
  std::size_t count = 0;
  std::size_t failed = 0;
};
extern Requests requests;

// The blocks currently allocated, and their bytes according to malloc_usable_size.
struct Heap {
  std::int64_t blocks = 0;
  std::int64_t bytes = 0;
  bool operator==(const Heap&) const = default;
};
extern Heap heap;

// While alive, blocks of about that size passed to operator delete are counted as released but
// kept, so that no other object gets their address.
class KeepReleased {
 public:
  KeepReleased(std::size_t bytes, std::size_t atMost);
  KeepReleased(const KeepReleased&) = delete;
  KeepReleased& operator=(const KeepReleased&) = delete;
  ~KeepReleased();

  // Returns all of them, sorted by address.
  std::vector<const void*> blocks() const;

  // Returns whether the block is to be kept.
  bool take(void* block) noexcept;

 private:
  const std::size_t bytes_;
  std::vector<void*> kept_;
};

}  // namespace reliability
