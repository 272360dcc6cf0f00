// What every program that a test starts needs: pipes, a clean beginning, an end that is told.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace host_test {

constexpr int kNoDescriptor = -1;

// A failing system call of the tests' own is no result: it ends the test with an exception.
int checked(int result, const char* call);

// The descriptors of one channel. Both are closed in any program that is started meanwhile.
struct Channel {
  int programEnd = kNoDescriptor;
  int ourEnd = kNoDescriptor;
};

Channel makePipe();  // to us

// What one read gives; nothing at the end, and of a terminal that nobody else has open.
std::string readSome(int descriptor);

// The rest. Closes the descriptor.
std::string readToEnd(int descriptor);

// A program and its arguments as execv takes them, for as long as this lives.
class ProgramWords {
 public:
  ProgramWords(const std::string& program, const std::vector<std::string>& arguments);
  ProgramWords(const ProgramWords&) = delete;
  ProgramWords& operator=(const ProgramWords&) = delete;

  char* const* argv() const { return argv_.data(); }

 private:
  std::vector<std::string> words_;
  std::vector<char*> argv_;
};

// The child's side of a fork. Whatever the tests were started with, the program has each signal at
// its default action, none blocked, and no descriptor from 3 on. out may be kNoDescriptor.
[[noreturn]] void becomeProgram(char* const* argv, int out, int err);

// Waits for the child's end. Exit status, or 128 and the number of the signal.
int waitFor(pid_t child);

}  // namespace host_test
