// The memory that a call needs to report that memory ran out.
#pragma once

namespace plugin {

// Allocates in advance what would end the process if it were missing later:
//
// - The thread's exception state. In a host without the C++ library it is allocated at the
//   thread's first throw, and if that fails the C library aborts the process.
// - Stack. A main thread's stack grows page by page, and where the address space is used up the
//   next page is a segmentation fault.
//
// Asks first whether the memory is there and returns false if it is not: the call must then return
// without doing anything that may throw or take a page of stack. Every exported function that a
// host in C may call begins with this, unless it does neither, and keeps its own frame small.
bool reserveFailureMemory() noexcept;

}  // namespace plugin
