// A program that is watched and disturbed while it runs.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "child_process.h"

namespace host_test {

class RunningProgram {
 public:
  // Where standard error leads: to a pipe, or to a terminal of 40 columns. Standard output is a
  // pipe.
  enum class StandardError { kPipe, kTerminal };

  // Why this machine has no terminals to give, as a container may; nothing if it has.
  static std::string whyNoTerminal();

  // Starts it in the current directory, as a process group of its own, with signals at their
  // default actions and no descriptors but the standard ones.
  RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                 StandardError standardError = StandardError::kPipe);
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram();

  pid_t pid() const { return pid_; }

  // Waits for the file to be there. The test fails if the program ends without having made it.
  void waitForFile(const std::string& path) const;

  void send(int signal) const;
  void sendToGroup(int signal) const;  // as a terminal does
  void leaveStandardOutput();          // as a reader who has seen enough

  // What is written to standard error until its end is the text given.
  std::string readErrorsUpTo(const std::string& text) const;

  // What was written to standard error until each process that has it ended, children too.
  std::string errorsToTheEnd();

  // The next bytes of standard output, so many unless it ends before.
  std::string readOutput(std::size_t count) const;

  // The rest of standard output.
  std::string outputToTheEnd();

  // Exit status, or 128 and the number of the signal.
  int waitForEnd();

 private:
  bool hasEnded() const;

  pid_t pid_ = 0;
  int out_ = kNoDescriptor;
  int err_ = kNoDescriptor;
};

// Waits until nobody holds a lock on the file or directory. The end of standard error is no sign of
// that: a process that ends closes its descriptors one after the other, the first of them first.
void waitForUnlocked(const std::string& path);

}  // namespace host_test
