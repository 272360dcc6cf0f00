// Gets fresh memory from the system in larger pieces than one page at its first touch, which is a
// quarter of a run's time. Both functions only ask: where the system does not know them, nothing
// happens, and no memory is ever more than asked for.
#pragma once

#include <cstddef>

namespace base {

// Lets the system back a large block with large pages, of 2 MB, before it is touched.
void preferLargePages(void* block, std::size_t bytes) noexcept;

// Fetches the pages from a new block on the heap up to the heap's end, at most 256 KB, at once, if
// they have not been fetched yet. The C library extends the heap by some 130 KB at a time.
void fetchHeapBehind(void* block) noexcept;

}  // namespace base
