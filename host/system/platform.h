// What POSIX leaves to each system. Where a system lacks something, the function does what comes
// nearest, which is told at each.
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace host {

// The processor cores that this process may use; at least 1.
unsigned availableCores();

// How many files this process may have open at once.
std::uint64_t openFileLimit();

// Has this process, a child of parent, killed when parent ends. Elsewhere than on Linux a child
// learns of that when it next reads from its parent or writes to it.
void endWithParent(pid_t parent);

// A descriptor that becomes readable when the process ends; -1 for one that is not there or cannot
// be watched.
int watchProcess(pid_t process);

// The memory of the machine in bytes, 0 where it is not told.
std::uint64_t machineMemory();

// The most memory that this process has had at once, in bytes.
std::uint64_t peakMemory();

// Lets this process have no more address space than that, nor than it may have already. macOS takes
// the limit and does not hold to it; a build for AddressSanitizer, which reserves more than any
// limit, sets none.
void limitMemory(std::uint64_t bytes);

// Lets a pipe hold as much as an ordinary user may ask for, where that can be asked for at all.
void widenPipe(int descriptor);

// Whether what is written there has nobody left to read it.
bool isAbandoned(int descriptor);

// The columns of the terminal, or 0 when the descriptor leads to none.
unsigned terminalWidth(int descriptor);

}  // namespace host
