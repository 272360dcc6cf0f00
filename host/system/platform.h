// Calls that differ between systems. Each says what it does where the system has no such thing.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace host {

// The processor cores that this process may use; at least 1.
unsigned availableCores();

// How many files this process may have open at once.
std::uint64_t openFileLimit();

// Kills this process, a child of parent, when parent ends. Only on Linux: elsewhere a child notices
// when it next reads from its parent or writes to it.
void endWithParent(pid_t parent);

// A descriptor that becomes readable when the process ends; -1 for one that is not there or cannot
// be watched.
int watchProcess(pid_t process);

// The memory of the machine in bytes, or 0 if unknown.
std::uint64_t machineMemory();

// The most memory that this process has had at once, in bytes.
std::uint64_t peakMemory();

// Limits the address space of this process, and never raises its limit. macOS does not enforce it;
// a build for AddressSanitizer, which reserves more than any limit, sets none.
void limitMemory(std::uint64_t bytes);

// Has the C library keep what is freed for later, up to 128 MB, in one heap and another for further
// threads, and take none but huge blocks from the system one by one. Only with glibc.
void keepFreedMemory();

// Extends the heap by that many bytes, at most 112 MB, and asks the system for large pages there,
// each of which is fetched at once when it is first used. After keepFreedMemory; without it nothing
// happens.
void extendHeap(std::size_t bytes);

// Fetches that many bytes at the free end of the heap, as far as it has been extended, so that
// their first use takes no time. Only with glibc, on Linux 5.14 or later.
void fetchHeap(std::size_t bytes);

// Gives a pipe the largest buffer that an ordinary user may have, where it can be set.
void widenPipe(int descriptor);

// Whether a pipe has no reader left.
bool isAbandoned(int descriptor);

// The columns of the terminal, or 0 if the descriptor is not one.
unsigned terminalWidth(int descriptor);

}  // namespace host
