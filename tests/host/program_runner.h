// Runs a program as a shell would and tells what came of it.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace host_test {

// What file descriptor 1 of the program is.
enum class StandardOutput {
  kFile,             // an empty file
  kPipe,             // a pipe with a reader
  kNonBlockingPipe,  // the same, with the program's end made non-blocking
  kAbandonedPipe,    // a pipe whose reader has gone
  kBrokenOffPipe,    // a pipe whose reader goes after the first bytes
  kFullDisk,         // /dev/full
  kClosed,
};

struct Outcome {
  int status = 0;  // exit status; 128 and the signal's number for a program that was killed
  std::string out;
  std::string err;

  bool operator==(const Outcome&) const = default;
};

// For failure messages: control bytes and bytes from 0x80 up are shown as \xNN.
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

// Whether they are the same. A failure shows the status, standard error and where standard output
// first differs: for outputs that are too long to be shown.
testing::AssertionResult isOutcome(const Outcome& expected, const Outcome& found);

// Runs the program in the current directory and waits for its end. Signals have their default
// actions in it, so that a program which does not care for SIGPIPE is killed by it, and it has no
// descriptors but the standard ones.
Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                   StandardOutput standardOutput = StandardOutput::kFile);

}  // namespace host_test
