// System calls on descriptors, retried where a signal or a non-blocking descriptor cuts them short.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// read(2), retried after signals and, on a descriptor that somebody made non-blocking, once there
// is something to read. Returns the bytes read, 0 at the end, or -1 with errno set.
ssize_t readSome(int descriptor, char* buffer, std::size_t bytes);

// All that is left to read. Throws Failure, which names the subject.
std::string readToEnd(int descriptor, const std::string& subject);

// Writes all of the text. Returns 0, or the error number of the write that failed.
int writeAll(int descriptor, std::string_view text);

// Closes a descriptor that was written to: some file systems report a failed write only then.
// Returns 0, or the error number.
int closeWritten(int descriptor);

// The directory for temporary files: TMPDIR, or /tmp.
std::string temporaryParent();

// Descriptors of our own start here, so that they never stand in for a closed 0, 1 or 2.
inline constexpr int kFirstFreeDescriptor = 3;

// Replaces the descriptor by a copy at kFirstFreeDescriptor or above that is closed on exec.
// Returns the copy, or -1 with errno set.
int outOfTheWay(int descriptor);

}  // namespace host
