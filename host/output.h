// Where the program's bytes go.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace host {

// Ends the run with exit status 2; what() is the one line that the user sees.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A Failure that gives the system's reason: "SUBJECT: No space left on device".
Failure systemFailure(const std::string& subject, int errorNumber);

// Writes all of the text; gives 0, or the error number of the write that failed.
int writeAll(int descriptor, std::string_view text);

// Closes what was written to, since some file systems tell only then that a write has failed. Gives
// 0, or the number of that error.
int closeWritten(int descriptor);

// Writes one line to standard error: "quorl-js: ", the message and a line feed. It is
// one line whatever a file is called, see onOneLine.
void complain(std::string_view message);

// Keeps clear of 0 and 2, should they be closed.
inline constexpr int kFirstFreeDescriptor = 3;

// The same as descriptor, which is closed, with a number from kFirstFreeDescriptor on and closed in
// programs that are run; negative, with errno set, if there is none.
int outOfTheWay(int descriptor);

// The standard output of the run.
class Output {
 public:
  // Throws Failure when standard output is closed.
  Output();

  // Writes all of the text, or throws Failure: a full disk, a reader that has gone.
  void write(std::string_view text);

  // Throws Failure for the number of an error that another process had in writing, unless it is 0.
  void check(int errorNumber) const;

  // Throws Failure when the reader has gone, which nothing tells while nothing is written.
  void checkReader() const;

  // Ends the output, see closeWritten. Throws Failure.
  void close();
};

}  // namespace host
