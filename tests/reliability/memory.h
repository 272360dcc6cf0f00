// Replaces the functions that give memory in the program that links this: operator new, and malloc,
// calloc, realloc and the aligned ones. Chosen requests fail, and what is allocated is counted.
//
// Under AddressSanitizer, whose own malloc has to stay, only the calls that the linked objects make
// themselves can be made to fail, and only what comes from operator new is counted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace reliability {

enum class Source { kNew, kMalloc, kBoth };

// What the functions have been asked for and are to do. Requests from another source are neither
// counted nor do they fail.
struct Requests {
  Source source = Source::kBoth;
  std::optional<std::size_t> failing = std::nullopt;  // the number of the one that fails, from 0
  bool andAllBehind = false;
  std::size_t count = 0;
  std::size_t failed = 0;
};
extern Requests requests;

// The blocks that are allocated now, and their bytes as malloc_usable_size tells them.
struct Heap {
  std::int64_t blocks = 0;
  std::int64_t bytes = 0;
  bool operator==(const Heap&) const = default;
};
extern Heap heap;

// While it lives, blocks of about a size that operator delete is given are counted as released, but
// kept, so that no other object gets their address.
class KeepReleased {
 public:
  KeepReleased(std::size_t bytes, std::size_t atMost);
  KeepReleased(const KeepReleased&) = delete;
  KeepReleased& operator=(const KeepReleased&) = delete;
  ~KeepReleased();

  // All of them, in order of their addresses.
  std::vector<const void*> blocks() const;

  // Whether the block is to be kept.
  bool take(void* block) noexcept;

 private:
  const std::size_t bytes_;
  std::vector<void*> kept_;
};

}  // namespace reliability
