// Texts on their way from a worker to its parent, in a ring of memory that both have. Through a
// pipe the system copies them twice, page by page, which is a tenth of a run over small files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

class SharedTexts {
 public:
  // That much of texts may wait for the parent: some of a worker that is ahead of it, and little
  // for a processor's cache.
  static constexpr std::size_t kMostBytes = std::size_t{512} << 10U;

  // Made before the fork. Without memory for it there is never room.
  SharedTexts();
  SharedTexts(const SharedTexts&) = delete;
  SharedTexts& operator=(const SharedTexts&) = delete;
  ~SharedTexts() { unmap(); }

  // For the worker. False if there is no room for the text by now: it has to go through the pipe.
  bool put(std::string_view text);

  // For the parent, once the worker has told of the text: they are taken in the order in which they
  // were put. Nothing for more bytes than there can be.
  std::optional<std::string> take(std::uint64_t bytes);

  // For a process that is neither.
  void unmap() const;

 private:
  struct Ring;

  Ring* ring_;
  std::uint64_t put_ = 0;    // bytes in all, known to the worker
  std::uint64_t taken_ = 0;  // and to the parent, which tells the worker
};

}  // namespace host
